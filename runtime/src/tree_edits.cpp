// Adding, removing and moving items with their parent, level and key kept right.
#include <functional>

#include "item_access.h"
#include "zephyr/runtime/popup_class.h"
#include "zephyr/runtime/popup_key.h"

namespace zephyr {

std::shared_ptr<PopupItems> PopupClass::SiblingsOf(const PopupItem& item) {
  if (item.Level() == 1) return PopupItems();
  auto parent = item.Parent();
  return parent ? parent->Children() : nullptr;
}

std::shared_ptr<PopupItem> PopupClass::AddItem(const std::shared_ptr<PopupItem>& parent,
                                               const std::string& key,
                                               const std::vector<std::string>& values) {
  auto siblings = parent ? parent->Children() : PopupItems();
  auto item = siblings->Add(key);
  auto item_values = item->PopupValues();
  item_values->Reserve(static_cast<int32_t>(values.size()));
  for (const std::string& value : values) item_values->Add(value);
  ItemAccess::SetLoadedKey(*item, key);
  ItemAccess::SetLevel(*item, parent ? static_cast<int16_t>(parent->Level() + 1) : int16_t{1});
  if (parent) item->Parent(parent);
  return item;
}

bool PopupClass::RemoveItem(const std::shared_ptr<PopupItem>& item) {
  return DetachItem(item).item != nullptr;
}

PopupClass::DetachedItem PopupClass::DetachItem(const std::shared_ptr<PopupItem>& item) {
  auto siblings = SiblingsOf(*item);
  if (!siblings) return {};
  int32_t position = 1;
  for (const auto& sibling : *siblings) {
    if (sibling == item) {
      auto [taken, key] = ItemAccess::TakeAt(*siblings, position);
      return {std::move(taken), item->Level() == 1 ? nullptr : item->Parent(), position,
              std::move(key)};
    }
    ++position;
  }
  return {};
}

void PopupClass::ReattachItem(const DetachedItem& detached) {
  auto siblings = detached.parent ? detached.parent->Children() : PopupItems();
  ItemAccess::PutAt(*siblings, detached.position, detached.item, detached.key);
  detached.item->Parent(detached.parent);
}

namespace {

// Visits an item and every item below it, parents first.
void VisitBranch(const std::shared_ptr<PopupItem>& item,
                 const std::function<void(const std::shared_ptr<PopupItem>&)>& visit) {
  visit(item);
  if (!item->HasChildren()) return;
  for (const auto& child : *item->Children()) VisitBranch(child, visit);
}

}  // namespace

PopupClass::BranchKeys PopupClass::KeysOf(const std::shared_ptr<PopupItem>& item) {
  BranchKeys keys;
  VisitBranch(item, [&keys](const std::shared_ptr<PopupItem>& visited) {
    keys.entries.push_back({visited, visited->PopupKey(), visited->Level()});
  });
  return keys;
}

void PopupClass::RestoreKeys(const BranchKeys& keys) {
  for (const BranchKeys::Entry& entry : keys.entries) {
    entry.item->PopupKey(entry.key);
    ItemAccess::SetLevel(*entry.item, entry.level);
  }
}

std::string PopupClass::KeyUnder(const std::shared_ptr<PopupItem>& parent,
                                 std::string_view code) const {
  std::string path = parent ? CompactPath(parent->PopupKey()) : std::string();
  return FormatStoredKey(path + std::string(code), levels_count_);
}

void PopupClass::AppendBranch(const std::shared_ptr<PopupItem>& item,
                              const std::shared_ptr<PopupItem>& parent, std::string_view code) {
  auto siblings = parent ? parent->Children() : PopupItems();
  const std::string key = KeyUnder(parent, code);
  if (siblings->Item(Variant(key))) {
    throw RuntimeError(RuntimeErrorCode::kDuplicateKey, "key '" + key + "'");
  }
  const std::string path = CompactPath(key);
  const size_t own_depth = 2 * static_cast<size_t>(item->Level());
  const int16_t shift = static_cast<int16_t>((parent ? parent->Level() + 1 : 1) - item->Level());
  VisitBranch(item, [&](const std::shared_ptr<PopupItem>& visited) {
    // Below the moved item, each key keeps the codes of its own path.
    std::string compact = CompactPath(visited->PopupKey());
    std::string below = compact.size() > own_depth ? compact.substr(own_depth) : std::string();
    visited->PopupKey(FormatStoredKey(path + below, levels_count_));
    ItemAccess::SetLevel(*visited, static_cast<int16_t>(visited->Level() + shift));
  });
  ItemAccess::PutAt(*siblings, siblings->Count() + 1, item, CollectionKey(key));
  item->Parent(parent);
}

void CopyItemData(PopupItem& target, PopupItem& source) {
  ItemAccess::SetLevel(target, source.Level());
  target.PopupKey(source.PopupKey());
  ItemAccess::SetLoadedKey(target, ItemAccess::LoadedKey(source));
  auto values = target.PopupValues();
  while (values->Count() > 0) values->Remove(Variant(values->Count()));
  for (const auto& value : *source.PopupValues()) values->Add(value->Value());
}

}  // namespace zephyr
