// PopupItems: an ordered set of sibling items keyed by their stored key, plus
// the question shown for this set of siblings.
#ifndef ZEPHYR_RUNTIME_POPUP_ITEMS_H_
#define ZEPHYR_RUNTIME_POPUP_ITEMS_H_

#include <cstdint>
#include <memory>
#include <string>

#include "zephyr/runtime/collection.h"
#include "zephyr/runtime/load_allocator.h"
#include "zephyr/runtime/popup_item.h"

namespace zephyr {

struct ItemAccess;

class PopupItems : public Object {
 public:
  // A new item with PopupKey = key, appended under that key; a key already
  // present raises duplicate key (457) and nothing is added. The new item's
  // Index is the count after adding.
  std::shared_ptr<PopupItem> Add(const std::string& key);
  // The item at a 1-based position or under a key; null when there is none
  // (no error).
  std::shared_ptr<PopupItem> Item(const Variant& vntIndexKey) const;
  int32_t Count() const { return items_.Count(); }
  // Removes the item at a position or under a key; a missing one raises the
  // collection's error (9 or 5).
  void Remove(const Variant& vntIndexKey) { items_.Remove(vntIndexKey); }
  void Clear() { items_.Clear(); }

  // The question for these siblings (the loader copies the children's level question).
  const std::string& Question() const { return question_; }
  void Question(std::string question) { question_ = std::move(question); }

  auto begin() const { return items_.begin(); }
  auto end() const { return items_.end(); }

 private:
  friend struct ItemAccess;

  Collection<PopupItem, LoadAllocator> items_;
  std::string question_;
};

// The number of items in the list and in all their branches.
int64_t CountItemsInTree(PopupItems& items);

}  // namespace zephyr

#endif  // ZEPHYR_RUNTIME_POPUP_ITEMS_H_
