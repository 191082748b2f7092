// PopupField: one field definition. Field 1 of a popup is the key field
// "Popup Code"; fields 2 and up are the companion columns FIELD2, FIELD3, ...
#ifndef ZEPHYR_RUNTIME_POPUP_FIELD_H_
#define ZEPHYR_RUNTIME_POPUP_FIELD_H_

#include <cstdint>
#include <string>

#include "zephyr/support/variant.h"

namespace zephyr {

class PopupField : public Object {
 public:
  // The field's position when it was loaded (0 for a new field).
  int16_t InitialIndex() const { return initial_index_; }
  void InitialIndex(int16_t value) { initial_index_ = value; }
  // Width of the field's data-table column.
  int16_t FieldLength() const { return field_length_; }
  void FieldLength(int16_t value) { field_length_ = value; }
  // The 1-based character position read from the template; carried, not used.
  int16_t StartCharPos() const { return start_char_pos_; }
  void StartCharPos(int16_t value) { start_char_pos_ = value; }
  // The 1-based position PopupFields::Add assigned.
  int32_t Index() const { return index_; }
  void Index(int32_t value) { index_ = value; }
  // The field's description.
  const std::string& Name() const { return name_; }
  void Name(std::string value) { name_ = std::move(value); }
  // The collection key the field was added under, if any; not used by the runtime.
  const std::string& Key() const { return key_; }
  void Key(std::string value) { key_ = std::move(value); }

 private:
  int16_t initial_index_ = 0;
  int16_t field_length_ = 0;
  int16_t start_char_pos_ = 0;
  int32_t index_ = 0;
  std::string name_;
  std::string key_;
};

}  // namespace zephyr

#endif  // ZEPHYR_RUNTIME_POPUP_FIELD_H_
