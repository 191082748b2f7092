#include "zephyr/runtime/popup_item.h"

#include <limits>
#include <mutex>
#include <unordered_map>

#include "zephyr/runtime/popup_items.h"

namespace zephyr {

namespace {

// Maps registry ids to live items. An item registers itself when it is made
// and unregisters in its destructor, before its memory goes away; lookups
// then go through weak_from_this(), so an item on its way out yields null.
class ItemRegistry {
 public:
  int32_t Register(PopupItem* item) {
    std::lock_guard lock(mutex_);
    do {
      next_ = next_ == std::numeric_limits<int32_t>::max() ? 1 : next_ + 1;
    } while (items_.count(next_) != 0);
    items_.emplace(next_, item);
    return next_;
  }

  void Unregister(int32_t identity) {
    std::lock_guard lock(mutex_);
    items_.erase(identity);
  }

  std::shared_ptr<PopupItem> Find(int32_t identity) {
    std::lock_guard lock(mutex_);
    auto found = items_.find(identity);
    return found == items_.end() ? nullptr : found->second->weak_from_this().lock();
  }

 private:
  std::mutex mutex_;
  int32_t next_ = 0;
  std::unordered_map<int32_t, PopupItem*> items_;
};

ItemRegistry& Registry() {
  static ItemRegistry* registry = new ItemRegistry();  // outlives every item
  return *registry;
}

}  // namespace

std::shared_ptr<PopupItem> PopupItem::Create() { return std::make_shared<PopupItem>(Token{}); }

PopupItem::PopupItem(Token) : identity_(Registry().Register(this)) {}

PopupItem::~PopupItem() { Registry().Unregister(identity_); }

std::shared_ptr<PopupValues> PopupItem::PopupValues() {
  if (!values_) values_ = std::make_shared<zephyr::PopupValues>();
  return values_;
}

std::shared_ptr<PopupItems> PopupItem::Children() {
  if (!children_) children_ = std::make_shared<PopupItems>();
  return children_;
}

bool PopupItem::HasChildren() const { return children_ && children_->Count() > 0; }

std::shared_ptr<PopupItem> FindItemByIdentity(int32_t identity) {
  return Registry().Find(identity);
}

}  // namespace zephyr
