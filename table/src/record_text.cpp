#include "record_text.h"

#include <algorithm>
#include <cstring>

#include "zephyr/support/errors.h"

namespace zephyr {

bool IsAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

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
  if (count > 0) std::memcpy(record->data() + start, text.data(), count);  // no text may be null
}

void WriteColumn(std::string* record, int32_t position, int32_t length, std::string_view bytes) {
  if (length < 0) {
    throw RuntimeError(RuntimeErrorCode::kInvalidArgument,
                       "column at position " + std::to_string(position) + " with length " +
                           std::to_string(length));
  }
  auto width = static_cast<size_t>(length);
  bytes = bytes.substr(0, width);
  OverwriteRecord(record, position, bytes);
  auto start = static_cast<size_t>(position - 1);
  size_t end = std::min(start + width, record->size());
  if (start + bytes.size() < end) {
    std::memset(record->data() + start + bytes.size(), ' ', end - start - bytes.size());
  }
}

std::string_view ToRecordBytes(const CodePage& code_page, std::string_view text,
                               std::string* scratch) {
  if (code_page.KeepsAscii() && IsAscii(text)) return text;
  *scratch = code_page.FromUtf8(text);
  return *scratch;
}

}  // namespace zephyr
