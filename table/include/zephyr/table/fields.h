// Fields: the ordered list of a table's columns, numbered from 1.
#ifndef ZEPHYR_TABLE_FIELDS_H_
#define ZEPHYR_TABLE_FIELDS_H_

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "zephyr/support/variant.h"
#include "zephyr/table/field.h"

namespace zephyr {

class Fields : public Object {
 public:
  using const_iterator = std::vector<std::shared_ptr<Field>>::const_iterator;

  // Appends a new column, set through the Field setters (so the name is cut
  // to 11 characters and upper-cased), and returns it.
  std::shared_ptr<Field> Add(std::string_view name, std::string_view field_type, int32_t length,
                             int32_t decimals, int32_t position);

  // The column at a 1-based index, or null when there is none.
  std::shared_ptr<Field> Item(int32_t index) const;

  int32_t Count() const { return static_cast<int32_t>(fields_.size()); }

  void Clear() { fields_.clear(); }

  // Removes the column at a 1-based index; an index that does not exist
  // raises subscript out of range (9).
  void Remove(int32_t index);

  // Iteration over the columns in order (NewEnum).
  const_iterator begin() const { return fields_.begin(); }
  const_iterator end() const { return fields_.end(); }

 private:
  std::vector<std::shared_ptr<Field>> fields_;
};

}  // namespace zephyr

#endif  // ZEPHYR_TABLE_FIELDS_H_
