// Character slices of a record buffer with the platform's substring rules:
// a start before character 1 or a negative length is an invalid argument (5);
// a slice reaching past the end of the buffer is cut short.
#ifndef ZEPHYR_TABLE_RECORD_TEXT_H_
#define ZEPHYR_TABLE_RECORD_TEXT_H_

#include <cstdint>
#include <string>
#include <string_view>

namespace zephyr {

// The length characters of record from the 1-based position (fewer at the
// end, none when position lies beyond it).
std::string_view RecordSlice(std::string_view record, int32_t position, int32_t length);

// Overwrites record from position with text, as far as both reach; a
// position beyond the end of record is an invalid argument.
void OverwriteRecord(std::string* record, int32_t position, std::string_view text);

}  // namespace zephyr

#endif  // ZEPHYR_TABLE_RECORD_TEXT_H_
