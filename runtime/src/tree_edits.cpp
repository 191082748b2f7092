// Adding and removing items with their parent, level and key kept right.
#include "zephyr/runtime/item_access.h"
#include "zephyr/runtime/popup_class.h"

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
}

}  // namespace zephyr
