#include "zephyr/table/fields.h"

#include <string>

#include "zephyr/support/errors.h"

namespace zephyr {

std::shared_ptr<Field> Fields::Add(std::string_view name, std::string_view field_type,
                                   int32_t length, int32_t decimals, int32_t position) {
  auto field = std::make_shared<Field>();
  field->Name(name);
  field->FieldType(field_type);
  field->Length(length);
  field->Decimals(decimals);
  field->Position(position);
  fields_.push_back(field);
  return field;
}

std::shared_ptr<Field> Fields::Item(int32_t index) const {
  if (index < 1 || index > Count()) return nullptr;
  return fields_[static_cast<size_t>(index - 1)];
}

void Fields::Remove(int32_t index) {
  if (index < 1 || index > Count()) {
    throw RuntimeError(RuntimeErrorCode::kSubscriptOutOfRange,
                       "no field at position " + std::to_string(index));
  }
  fields_.erase(fields_.begin() + (index - 1));
}

}  // namespace zephyr
