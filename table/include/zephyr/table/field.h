// Field: the description of one column of a dBase table. The setters
// normalise what they store, so a Field always holds what a descriptor on
// disk can represent.
#ifndef ZEPHYR_TABLE_FIELD_H_
#define ZEPHYR_TABLE_FIELD_H_

#include <cstdint>
#include <string>

#include "zephyr/support/variant.h"

namespace zephyr {

class Field : public Object {
 public:
  // The column name. Writing keeps the first 11 code-page characters, in
  // upper case.
  const std::string& Name() const { return name_; }
  void Name(std::string_view value);

  // The one-letter column type ("C" character, "N" numeric, "D" date, ...).
  // Writing keeps the first character, in upper case.
  const std::string& FieldType() const { return field_type_; }
  void FieldType(std::string_view value);

  // The width of the column in bytes.
  int32_t Length() const { return length_; }
  void Length(int32_t value) { length_ = value; }

  int32_t Decimals() const { return decimals_; }
  void Decimals(int32_t value) { decimals_ = value; }

  // The 1-based index of the column's first byte in the record buffer; byte 1
  // is the deletion flag, so the first column starts at 2.
  int32_t Position() const { return position_; }
  void Position(int32_t value) { position_ = value; }

 private:
  std::string name_;
  std::string field_type_;
  int32_t length_ = 0;
  int32_t decimals_ = 0;
  int32_t position_ = 0;
};

// The letter a descriptor's type byte stands for: the byte itself for
// "B", "D", "F", "I", "L", "N", "S", "Y" and "Z", "C" for any other byte (so
// memo and unknown columns read as character columns).
std::string TypeCodeToName(unsigned char code);
// The type byte written for a letter: the reverse mapping, "C" for any letter
// outside the list.
unsigned char TypeNameToCode(std::string_view name);

}  // namespace zephyr

#endif  // ZEPHYR_TABLE_FIELD_H_
