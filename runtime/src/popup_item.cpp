#include "zephyr/runtime/popup_item.h"

#include <array>
#include <limits>
#include <mutex>
#include <vector>

#include "item_arena.h"
#include "loaded_table.h"
#include "item_access.h"
#include "zephyr/runtime/popup_items.h"
#include "zephyr/support/text.h"

namespace zephyr {

namespace {

// Maps registry ids to live items. An item registers itself when it is made
// and unregisters in its destructor, before its memory goes away; lookups
// then go through weak_from_this(), so an item on its way out yields null.
//
// Ids are handed out in increasing order and never reused while an item
// holds them, so a stale id finds nothing. Consecutive ids share a page of
// slots, made when the first of them is handed out and freed with the last:
// a million items loaded together cost eight bytes each, and registering
// or unregistering one is a single slot write.
class ItemRegistry {
 public:
  int32_t Register(PopupItem* item) {
    std::lock_guard lock(mutex_);
    do {
      next_ = next_ == std::numeric_limits<int32_t>::max() ? 1 : next_ + 1;
    } while (Slot(next_) && *Slot(next_));
    size_t number = static_cast<size_t>(next_) >> kPageBits;
    if (number >= pages_.size()) pages_.resize(number + 1);
    auto& page = pages_[number];
    if (!page) page = std::make_unique<Page>();
    page->items[static_cast<size_t>(next_) & kPageMask] = item;
    ++page->live;
    return next_;
  }

  void Unregister(int32_t identity) {
    std::lock_guard lock(mutex_);
    PopupItem** slot = Slot(identity);
    if (!slot || !*slot) return;
    *slot = nullptr;
    auto& page = pages_[static_cast<size_t>(identity) >> kPageBits];
    if (--page->live == 0) page.reset();
  }

  std::shared_ptr<PopupItem> Find(int32_t identity) {
    std::lock_guard lock(mutex_);
    PopupItem** slot = Slot(identity);
    return slot && *slot ? (*slot)->weak_from_this().lock() : nullptr;
  }

 private:
  static constexpr size_t kPageBits = 12;
  static constexpr size_t kPageMask = (size_t{1} << kPageBits) - 1;
  struct Page {
    std::array<PopupItem*, size_t{1} << kPageBits> items{};
    uint32_t live = 0;
  };

  // The slot of an identity, or null when its page does not exist.
  PopupItem** Slot(int32_t identity) {
    if (identity < 1) return nullptr;
    size_t page = static_cast<size_t>(identity) >> kPageBits;
    if (page >= pages_.size() || !pages_[page]) return nullptr;
    return &pages_[page]->items[static_cast<size_t>(identity) & kPageMask];
  }

  std::mutex mutex_;
  int32_t next_ = 0;
  std::vector<std::unique_ptr<Page>> pages_;  // by identity >> kPageBits
};

ItemRegistry& Registry() {
  static ItemRegistry* registry = new ItemRegistry();  // outlives every item
  return *registry;
}

// Branches whose freeing is under way on this thread. An item hands its
// children here instead of freeing them itself, and the outermost item being
// freed frees them one after another, so no tree is deep enough to exhaust
// the stack.
struct PendingBranches {
  std::vector<std::shared_ptr<PopupItems>> branches;
  bool freeing = false;
};

void FreeBranch(std::shared_ptr<PopupItems> branch) {
  thread_local PendingBranches pending;
  pending.branches.push_back(std::move(branch));
  if (pending.freeing) return;
  pending.freeing = true;
  while (!pending.branches.empty()) {
    std::shared_ptr<PopupItems> next = std::move(pending.branches.back());
    pending.branches.pop_back();
    next.reset();
  }
  pending.freeing = false;
}

const std::string kNoKey;

// A value as loaded: right-trimmed, and one blank when there is no text.
std::string_view LoadedValue(std::string_view text) {
  return Trim(text).empty() ? std::string_view(" ") : RTrim(text);
}

}  // namespace

std::shared_ptr<PopupItem> PopupItem::Create() {
  if (ItemArena::Current()) {
    return std::allocate_shared<PopupItem>(ArenaAllocator<PopupItem>(), Token{});
  }
  return std::make_shared<PopupItem>(Token{});
}

PopupItem::PopupItem(Token) : identity_(Registry().Register(this)) {}

PopupItem::~PopupItem() {
  Registry().Unregister(identity_);
  LoadedTable::Release(table_);
  if (extra_ && extra_->children) FreeBranch(std::move(extra_->children));
}

PopupItem::Extra& PopupItem::Extras() {
  if (!extra_) extra_ = std::make_unique<Extra>();
  return *extra_;
}

void PopupItem::ForgetRow() {
  LoadedTable::Release(table_);
  table_ = nullptr;
}

std::shared_ptr<PopupValues> PopupItem::PopupValues() {
  Extra& extra = Extras();
  if (extra.values) return extra.values;
  extra.values = std::make_shared<zephyr::PopupValues>();
  if (table_) {
    const TableRecords& records = table_->Records();
    extra.values->Reserve(records.ColumnCount() - 1);
    std::string scratch;
    for (int32_t column = 2; column <= records.ColumnCount(); ++column) {
      extra.values->Add(std::string(LoadedValue(records.Text(column, row_, &scratch))));
    }
    ForgetRow();
  }
  return extra.values;
}

void PopupItem::PopupValues(std::shared_ptr<zephyr::PopupValues> values) {
  ForgetRow();
  Extras().values = std::move(values);
}

void PopupItem::PopupKey(std::string key) {
  if (loaded_key_is_key_ && key != key_) {
    Extras().loaded_key = key_;
    loaded_key_is_key_ = false;
  }
  key_ = std::move(key);
}

std::shared_ptr<PopupItems> PopupItem::Children() {
  Extra& extra = Extras();
  if (!extra.children) extra.children = std::make_shared<PopupItems>();
  return extra.children;
}

void PopupItem::Children(std::shared_ptr<PopupItems> children) {
  Extras().children = std::move(children);
}

bool PopupItem::HasChildren() const {
  return extra_ && extra_->children && extra_->children->Count() > 0;
}

std::shared_ptr<PopupItem> FindItemByIdentity(int32_t identity) {
  return Registry().Find(identity);
}

const std::string& ItemAccess::LoadedKey(const PopupItem& item) {
  if (item.loaded_key_is_key_) return item.key_;
  return item.extra_ ? item.extra_->loaded_key : kNoKey;
}

void ItemAccess::SetLoadedKey(PopupItem& item, std::string key) {
  item.loaded_key_is_key_ = key == item.key_;
  if (item.loaded_key_is_key_) {
    if (item.extra_) item.extra_->loaded_key = std::string();
  } else {
    item.Extras().loaded_key = std::move(key);
  }
}

void ItemAccess::SetLoadedRow(PopupItem& item, const LoadedTable& table, int32_t row) {
  LoadedTable::Release(item.table_);
  item.table_ = LoadedTable::Hold(&table);
  item.row_ = row;
}

void ItemAccess::VisitValues(const PopupItem& item,
                             const std::function<void(std::string_view)>& visit) {
  if (item.extra_ && item.extra_->values) {
    for (const auto& value : *item.extra_->values) visit(value->Value());
  } else if (item.table_) {
    const TableRecords& records = item.table_->Records();
    std::string scratch;
    for (int32_t column = 2; column <= records.ColumnCount(); ++column) {
      visit(LoadedValue(records.Text(column, item.row_, &scratch)));
    }
  }
}

void ItemAccess::Reserve(PopupItems& items, int32_t count) {
  items.items_.Reserve(count);
}

std::pair<std::shared_ptr<PopupItem>, CollectionKey> ItemAccess::TakeAt(PopupItems& items,
                                                                        int32_t position) {
  return items.items_.TakeAt(position);
}

void ItemAccess::PutAt(PopupItems& items, int32_t position, std::shared_ptr<PopupItem> item,
                       CollectionKey key) {
  items.items_.PutAt(position, std::move(item), std::move(key));
}

const CollectionKey& ItemAccess::KeyAt(const PopupItems& items, int32_t position) {
  return items.items_.KeyAt(position);
}

void ItemAccess::Append(PopupItems& items, std::shared_ptr<PopupItem> item,
                        const CollectionKey& key) {
  if (key.HasKey()) {
    items.items_.Add(std::move(item), std::string(key.Text()));
  } else {
    items.items_.Add(std::move(item));
  }
}

}  // namespace zephyr
