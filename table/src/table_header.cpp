#include "zephyr/table/table_header.h"

#include <ctime>

namespace zephyr {

namespace {

// Appends write the date after every record, so the broken-down date is only
// recomputed when the clock has moved on by a second.
struct Today {
  std::time_t second = -1;
  uint8_t year = 0;
  uint8_t month = 0;
  uint8_t day = 0;
};

const Today& CurrentDate() {
  thread_local Today today;
  std::time_t now = std::time(nullptr);
  if (now != today.second) {
    std::tm local{};
    localtime_r(&now, &local);
    today.second = now;
    today.year = static_cast<uint8_t>(local.tm_year % 100 + 100);
    today.month = static_cast<uint8_t>(local.tm_mon + 1);
    today.day = static_cast<uint8_t>(local.tm_mday);
  }
  return today;
}

}  // namespace

TableHeader::Bytes TableHeader::Encode() const {
  auto count = record_count;
  auto header = static_cast<uint16_t>(header_length);
  return {version,
          year,
          month,
          day,
          static_cast<unsigned char>(count),
          static_cast<unsigned char>(count >> 8),
          static_cast<unsigned char>(count >> 16),
          static_cast<unsigned char>(count >> 24),
          static_cast<unsigned char>(header),
          static_cast<unsigned char>(header >> 8),
          static_cast<unsigned char>(record_length),
          static_cast<unsigned char>(record_length >> 8)};
}

TableHeader TableHeader::Decode(const unsigned char* bytes) {
  TableHeader header;
  header.version = bytes[0];
  header.year = bytes[1];
  header.month = bytes[2];
  header.day = bytes[3];
  header.record_count = static_cast<uint32_t>(bytes[4]) | static_cast<uint32_t>(bytes[5]) << 8 |
                        static_cast<uint32_t>(bytes[6]) << 16 |
                        static_cast<uint32_t>(bytes[7]) << 24;
  header.header_length = static_cast<int16_t>(bytes[8] | bytes[9] << 8);
  header.record_length = static_cast<uint16_t>(bytes[10] | bytes[11] << 8);
  return header;
}

void TableHeader::StampToday() {
  const Today& today = CurrentDate();
  year = today.year;
  month = today.month;
  day = today.day;
}

}  // namespace zephyr
