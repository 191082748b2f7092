// Design edits: levels and fields, kept in step with the level count and the
// key field, and the item changes a new design asks for.
#include <algorithm>

#include "zephyr/runtime/popup_class.h"

namespace zephyr {

namespace {

constexpr const char* kKeyFieldName = "Popup Code";

}  // namespace

void PopupClass::SyncLevelCount() {
  levels_count_ = ToInt16Checked(PopupLevels()->Count());
  auto fields = PopupFields();
  if (fields->Count() > 0) fields->Item(1)->FieldLength(ToInt16Checked(2.0 * levels_count_));
}

void PopupClass::ReplaceLevels(const std::vector<LevelSpec>& levels) {
  auto collection = PopupLevels();
  while (collection->Count() > 0) collection->Remove(collection->Count());
  for (const LevelSpec& level : levels) collection->Add(level.question, level.initial_index);
  SyncLevelCount();
}

void PopupClass::RemoveLastLevel() {
  auto collection = PopupLevels();
  if (collection->Count() > 0) collection->Remove(collection->Count());
  SyncLevelCount();
}

void PopupClass::ReplaceFields(const std::vector<FieldSpec>& companions) {
  auto fields = PopupFields();
  while (fields->Count() > 0) fields->Remove(fields->Count());
  fields->Add(kKeyFieldName, ToInt16Checked(2.0 * PopupLevels()->Count()), 0, 0);
  for (const FieldSpec& field : companions) {
    fields->Add(field.name, field.length, field.initial_index, field.start_char_pos);
  }
}

void FormatKeysToLevels(PopupItems& items, int levels) {
  const int64_t width = 2 * static_cast<int64_t>(levels);
  for (const auto& item : items) {
    std::string key = item->PopupKey();
    int64_t difference = width - static_cast<int64_t>(key.size());
    if (key.size() >= 2 && difference != 0) {
      std::string own = key.substr(key.size() - 2);
      if (difference > 0) {
        key =
            key.substr(0, key.size() - 2) + std::string(static_cast<size_t>(difference), ' ') + own;
      } else {
        key = key.substr(0, static_cast<size_t>(std::max<int64_t>(width - 2, 0))) + own;
      }
      item->PopupKey(std::move(key));
    }
    if (item->HasChildren()) FormatKeysToLevels(*item->Children(), levels);
  }
}

void ReorderValues(PopupItems& items, const std::vector<int16_t>& map) {
  for (const auto& item : items) {
    auto values = item->PopupValues();
    std::vector<std::string> old;
    old.reserve(static_cast<size_t>(values->Count()));
    for (const auto& value : *values) old.push_back(value->Value());
    while (values->Count() > 0) values->Remove(values->Count());
    for (int16_t from : map) {
      // A position past the item's values reads as empty, as a new field does.
      bool present = from >= 1 && static_cast<size_t>(from) <= old.size();
      values->Add(present ? old[static_cast<size_t>(from - 1)] : std::string());
    }
    if (item->HasChildren()) ReorderValues(*item->Children(), map);
  }
}

}  // namespace zephyr
