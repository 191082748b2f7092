#include "record_text.h"

#include <algorithm>

#include "zephyr/support/errors.h"

namespace zephyr {

std::string_view RecordSlice(std::string_view record, int32_t position, int32_t length) {
  if (position < 1 || length < 0) {
    throw RuntimeError(RuntimeErrorCode::kInvalidArgument,
                       "column at position " + std::to_string(position) + " with length " +
                           std::to_string(length));
  }
  auto start = static_cast<size_t>(position - 1);
  if (start >= record.size()) return {};
  return record.substr(start, static_cast<size_t>(length));
}

void OverwriteRecord(std::string* record, int32_t position, std::string_view text) {
  if (position < 1 || static_cast<size_t>(position) > record->size()) {
    throw RuntimeError(RuntimeErrorCode::kInvalidArgument,
                       "position " + std::to_string(position) + " lies outside a record of " +
                           std::to_string(record->size()) + " bytes");
  }
  auto start = static_cast<size_t>(position - 1);
  size_t count = std::min(text.size(), record->size() - start);
  record->replace(start, count, text.substr(0, count));
}

}  // namespace zephyr
