// Library-internal access to the members of PopupItem that clients cannot
// write: the level, the key the item had when last loaded or written, and
// the table row its values are made from. Loaders, the save path and the
// editor use it; host applications do not.
#ifndef ZEPHYR_RUNTIME_ITEM_ACCESS_H_
#define ZEPHYR_RUNTIME_ITEM_ACCESS_H_

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "zephyr/runtime/popup_item.h"
#include "zephyr/runtime/popup_items.h"

namespace zephyr {

struct ItemAccess {
  static void SetLevel(PopupItem& item, int16_t level) { item.level_ = level; }
  static const std::string& LoadedKey(const PopupItem& item);
  static void SetLoadedKey(PopupItem& item, std::string key);

  // Gives the item the row of a loaded table that its values are made from
  // when first read (column 1 is the key, the values follow).
  static void SetLoadedRow(PopupItem& item, const LoadedTable& table, int32_t row);
  // Passes each of the item's values to `visit`, in order, without making
  // PopupData objects for values not yet made.
  static void VisitValues(const PopupItem& item,
                          const std::function<void(std::string_view)>& visit);
  // Makes room for `count` items in all.
  static void Reserve(PopupItems& items, int32_t count);
  // Takes the item at a position out of a sibling list, with its key, and
  // puts such an item back.
  static std::pair<std::shared_ptr<PopupItem>, CollectionKey> TakeAt(PopupItems& items,
                                                                     int32_t position);
  static void PutAt(PopupItems& items, int32_t position, std::shared_ptr<PopupItem> item,
                    CollectionKey key);
  // The key the item at a position was added under.
  static const CollectionKey& KeyAt(const PopupItems& items, int32_t position);
  // Appends an item under a key, or none.
  static void Append(PopupItems& items, std::shared_ptr<PopupItem> item, const CollectionKey& key);
};

}  // namespace zephyr

#endif  // ZEPHYR_RUNTIME_ITEM_ACCESS_H_
