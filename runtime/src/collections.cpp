// The Add and Item members of the four public collections.
#include "zephyr/runtime/popup_fields.h"
#include "zephyr/runtime/popup_items.h"
#include "zephyr/runtime/popup_levels.h"
#include "zephyr/runtime/popup_values.h"

namespace zephyr {

std::shared_ptr<PopupItem> PopupItems::Add(const std::string& key) {
  auto item = PopupItem::Create();
  item->PopupKey(key);
  items_.Add(item, key);
  item->Index(items_.Count());
  return item;
}

std::shared_ptr<PopupItem> PopupItems::Item(const Variant& vntIndexKey) const {
  try {
    return items_.Item(vntIndexKey);
  } catch (const Error&) {
    return nullptr;  // a missing item is no error here
  }
}

std::shared_ptr<PopupData> PopupValues::Add(std::string Value, const std::string& sKey) {
  auto data = std::make_shared<PopupData>();
  data->Value(std::move(Value));
  if (sKey.empty()) {
    values_.Add(data);
  } else {
    values_.Add(data, sKey);
  }
  return data;
}

std::shared_ptr<PopupData> PopupValues::Item(const Variant& vntIndexKey) const {
  return values_.Item(vntIndexKey);
}

std::shared_ptr<PopupLevel> PopupLevels::Add(Variant Question, int32_t IntialIndex, Variant Tag,
                                             const std::string& sKey) {
  auto level = std::make_shared<PopupLevel>();
  level->Question(std::move(Question));
  level->IntialIndex(ToInt16Checked(IntialIndex));
  level->Tag(std::move(Tag));
  if (sKey.empty()) {
    levels_.Add(level);
  } else {
    levels_.Add(level, sKey);
  }
  return level;
}

std::shared_ptr<PopupLevel> PopupLevels::Item(const Variant& vntIndexKey) const {
  return levels_.Item(vntIndexKey);
}

std::shared_ptr<PopupField> PopupFields::Add(std::string FieldName, int16_t FieldLength,
                                             int16_t InitialIndex, int16_t StartCharPos,
                                             const std::string& sKey) {
  auto field = std::make_shared<PopupField>();
  field->Index(fields_.Count() + 1);
  field->Name(std::move(FieldName));
  field->FieldLength(FieldLength);
  field->StartCharPos(StartCharPos);
  field->InitialIndex(InitialIndex);
  field->Key(sKey);
  if (sKey.empty()) {
    fields_.Add(field);
  } else {
    fields_.Add(field, sKey);
  }
  return field;
}

std::shared_ptr<PopupField> PopupFields::Item(const Variant& vntIndexKey) const {
  return fields_.Item(vntIndexKey);
}

int64_t CountItemsInTree(PopupItems& items) {
  int64_t count = 0;
  for (const auto& item : items) {
    ++count;
    if (item->HasChildren()) count += CountItemsInTree(*item->Children());
  }
  return count;
}

}  // namespace zephyr
