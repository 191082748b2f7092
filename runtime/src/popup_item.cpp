#include "zephyr/runtime/popup_item.h"

#include <limits>
#include <mutex>
#include <vector>

#include "zephyr/runtime/popup_items.h"

namespace zephyr {

namespace {

// Maps registry ids to live items. An item registers itself when it is made
// and unregisters in its destructor, before its memory goes away; lookups
// then go through weak_from_this(), so an item on its way out yields null.
//
// Ids are handed out in increasing order and never reused while an item
// holds them, so a stale id finds nothing. The table is an open-addressing
// hash table (linear probing, deletion by backward shift): a million items
// cost no allocation each.
class ItemRegistry {
 public:
  int32_t Register(PopupItem* item) {
    std::lock_guard lock(mutex_);
    if (2 * (count_ + 1) > slots_.size()) Grow();
    do {
      next_ = next_ == std::numeric_limits<int32_t>::max() ? 1 : next_ + 1;
    } while (FindSlot(next_) != kNone);
    Place(next_, item);
    return next_;
  }

  void Unregister(int32_t identity) {
    std::lock_guard lock(mutex_);
    size_t slot = FindSlot(identity);
    if (slot == kNone) return;
    // Backward-shift deletion keeps every probe chain unbroken.
    size_t mask = slots_.size() - 1;
    size_t hole = slot;
    for (size_t next = (hole + 1) & mask; slots_[next].item; next = (next + 1) & mask) {
      size_t home = Home(slots_[next].identity);
      if (((next - home) & mask) >= ((next - hole) & mask)) {
        slots_[hole] = slots_[next];
        hole = next;
      }
    }
    slots_[hole] = {};
    --count_;
  }

  std::shared_ptr<PopupItem> Find(int32_t identity) {
    std::lock_guard lock(mutex_);
    size_t slot = FindSlot(identity);
    return slot == kNone ? nullptr : slots_[slot].item->weak_from_this().lock();
  }

 private:
  struct Slot {
    int32_t identity = 0;
    PopupItem* item = nullptr;
  };
  static constexpr size_t kNone = static_cast<size_t>(-1);

  size_t Home(int32_t identity) const {
    return (static_cast<uint32_t>(identity) * 2654435761u) & (slots_.size() - 1);
  }

  size_t FindSlot(int32_t identity) const {
    if (slots_.empty()) return kNone;
    size_t mask = slots_.size() - 1;
    for (size_t slot = Home(identity); slots_[slot].item; slot = (slot + 1) & mask) {
      if (slots_[slot].identity == identity) return slot;
    }
    return kNone;
  }

  void Place(int32_t identity, PopupItem* item) {
    size_t mask = slots_.size() - 1;
    size_t slot = Home(identity);
    while (slots_[slot].item) slot = (slot + 1) & mask;
    slots_[slot] = {identity, item};
    ++count_;
  }

  void Grow() {
    std::vector<Slot> old = std::move(slots_);
    slots_.assign(old.empty() ? 1024 : old.size() * 2, Slot{});
    count_ = 0;
    for (const Slot& slot : old) {
      if (slot.item) Place(slot.identity, slot.item);
    }
  }

  std::mutex mutex_;
  int32_t next_ = 0;
  size_t count_ = 0;
  std::vector<Slot> slots_;
};

ItemRegistry& Registry() {
  static ItemRegistry* registry = new ItemRegistry();  // outlives every item
  return *registry;
}

}  // namespace

std::shared_ptr<PopupItem> PopupItem::Create() {
  return std::make_shared<PopupItem>(Token{});
}

PopupItem::PopupItem(Token) : identity_(Registry().Register(this)) {}

PopupItem::~PopupItem() {
  Registry().Unregister(identity_);
}

std::shared_ptr<PopupValues> PopupItem::PopupValues() {
  if (!values_) values_ = std::make_shared<zephyr::PopupValues>();
  return values_;
}

std::shared_ptr<PopupItems> PopupItem::Children() {
  if (!children_) children_ = std::make_shared<PopupItems>();
  return children_;
}

bool PopupItem::HasChildren() const {
  return children_ && children_->Count() > 0;
}

std::shared_ptr<PopupItem> FindItemByIdentity(int32_t identity) {
  return Registry().Find(identity);
}

}  // namespace zephyr
