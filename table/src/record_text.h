// Text in a record buffer, with the platform's substring rules: a start
// before character 1 or a negative length is an invalid argument (5), and a
// slice reaching past the end of the buffer is cut short.
#ifndef ZEPHYR_TABLE_RECORD_TEXT_H_
#define ZEPHYR_TABLE_RECORD_TEXT_H_

#include <cstdint>
#include <string>
#include <string_view>

#include "zephyr/support/codepage.h"

namespace zephyr {

// The length characters of record from the 1-based position (fewer at the
// end, none when position lies beyond it).
std::string_view RecordSlice(std::string_view record, int32_t position, int32_t length);

// Overwrites record from position with text, as far as both reach; a
// position beyond the end of record is an invalid argument.
void OverwriteRecord(std::string* record, int32_t position, std::string_view text);

// Writes bytes into the column of length bytes at position: blank-padded,
// or cut to the column, and cut again at the end of the record.
void WriteColumn(std::string* record, int32_t position, int32_t length, std::string_view bytes);

bool IsAscii(std::string_view text);

// The code-page form of UTF-8 text. ASCII text that the code page spells the
// same is returned as it is; otherwise the conversion lands in *scratch.
std::string_view ToRecordBytes(const CodePage& code_page, std::string_view text,
                               std::string* scratch);

}  // namespace zephyr

#endif  // ZEPHYR_TABLE_RECORD_TEXT_H_
