#include "zephyr/runtime/design_state.h"

#include <utility>

#include "item_access.h"
#include "zephyr/runtime/popup_fields.h"
#include "zephyr/runtime/popup_levels.h"
#include "zephyr/runtime/popup_values.h"

namespace zephyr {

std::vector<DesignState::Sibling> DesignState::SiblingsIn(PopupItems& list) {
  std::vector<Sibling> siblings;
  siblings.reserve(static_cast<size_t>(list.Count()));
  for (int32_t position = 1; position <= list.Count(); ++position) {
    siblings.push_back({list.Item(position), ItemAccess::KeyAt(list, position)});
  }
  return siblings;
}

void DesignState::Refill(PopupItems& list, const std::vector<Sibling>& siblings) {
  bool same = list.Count() == static_cast<int32_t>(siblings.size());
  for (int32_t position = 1; same && position <= list.Count(); ++position) {
    same = list.Item(position) == siblings[static_cast<size_t>(position - 1)].item;
  }
  if (same) return;
  list.Clear();
  ItemAccess::Reserve(list, static_cast<int32_t>(siblings.size()));
  for (const Sibling& sibling : siblings) ItemAccess::Append(list, sibling.item, sibling.key);
}

DesignState DesignState::Capture(PopupClass& popup) {
  DesignState state;
  state.levels_ = popup.Levels();
  for (const auto& level : *popup.PopupLevels()) {
    state.level_specs_.push_back({level->Question(), level->IntialIndex()});
  }
  bool key_field = true;
  for (const auto& field : *popup.PopupFields()) {
    if (std::exchange(key_field, false)) continue;
    state.field_specs_.push_back(
        {field->Name(), field->FieldLength(), field->StartCharPos(), field->InitialIndex()});
  }
  state.top_level_ = SiblingsIn(*popup.PopupItems());
  // Depth first with an explicit stack: a deep popup cannot exhaust the stack.
  std::vector<std::shared_ptr<PopupItem>> pending;
  for (auto it = state.top_level_.rbegin(); it != state.top_level_.rend(); ++it) {
    pending.push_back(it->item);
  }
  while (!pending.empty()) {
    std::shared_ptr<PopupItem> item = std::move(pending.back());
    pending.pop_back();
    ItemState saved{item, item->PopupKey(), item->Level(), {}, {}};
    ItemAccess::VisitValues(*item,
                            [&](std::string_view value) { saved.values.emplace_back(value); });
    if (item->HasChildren()) saved.children = SiblingsIn(*item->Children());
    for (auto it = saved.children.rbegin(); it != saved.children.rend(); ++it) {
      pending.push_back(it->item);
    }
    state.items_.push_back(std::move(saved));
  }
  return state;
}

void DesignState::Restore(PopupClass& popup) const {
  popup.ReplaceLevels(level_specs_);
  popup.ReplaceFields(field_specs_);
  popup.Levels(levels_);
  Refill(*popup.PopupItems(), top_level_);
  for (const ItemState& saved : items_) {
    PopupItem& item = *saved.item;
    item.PopupKey(saved.key);
    ItemAccess::SetLevel(item, saved.level);
    auto values = std::make_shared<PopupValues>();
    values->Reserve(static_cast<int32_t>(saved.values.size()));
    for (const std::string& value : saved.values) values->Add(value);
    item.PopupValues(std::move(values));
    if (!saved.children.empty() || item.HasChildren()) Refill(*item.Children(), saved.children);
  }
}

}  // namespace zephyr
