// Library-internal access to the members of PopupItem that clients cannot
// write: the level and the key the item had when last loaded or written.
// Loaders, the save path and the editor use it; host applications do not.
#ifndef ZEPHYR_RUNTIME_ITEM_ACCESS_H_
#define ZEPHYR_RUNTIME_ITEM_ACCESS_H_

#include <string>

#include "zephyr/runtime/popup_item.h"

namespace zephyr {

struct ItemAccess {
  static void SetLevel(PopupItem& item, int16_t level) { item.level_ = level; }
  static const std::string& LoadedKey(const PopupItem& item) { return item.loaded_key_; }
  static void SetLoadedKey(PopupItem& item, std::string key) { item.loaded_key_ = std::move(key); }
};

}  // namespace zephyr

#endif  // ZEPHYR_RUNTIME_ITEM_ACCESS_H_
