// TableHeader: the first 12 bytes of a dBase III table (version, date of the
// last update, record count, header length, record length). The engine reads
// and writes this block in one piece; the 20 bytes after it are kept opaque.
#ifndef ZEPHYR_TABLE_TABLE_HEADER_H_
#define ZEPHYR_TABLE_TABLE_HEADER_H_

#include <array>
#include <cstddef>
#include <cstdint>

namespace zephyr {

struct TableHeader {
  static constexpr std::size_t kSize = 12;
  using Bytes = std::array<unsigned char, kSize>;

  uint8_t version = 0;
  uint8_t year = 0;  // two-digit year + 100 (2026 is 126)
  uint8_t month = 0;
  uint8_t day = 0;
  uint32_t record_count = 0;
  int16_t header_length = 0;  // where record 1 starts
  uint16_t record_length = 0;

  // The little-endian layout on disk.
  Bytes Encode() const;
  static TableHeader Decode(const unsigned char* bytes);

  // Sets year, month and day to today's local date.
  void StampToday();

  friend bool operator==(const TableHeader&, const TableHeader&) = default;
};

}  // namespace zephyr

#endif  // ZEPHYR_TABLE_TABLE_HEADER_H_
