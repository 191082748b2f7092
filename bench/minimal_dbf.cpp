#include "minimal_dbf.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>

namespace zephyr::bench {

namespace {

uint32_t Le(const std::string& bytes, size_t offset, int width) {
  uint32_t value = 0;
  for (int i = 0; i < width; ++i) {
    value |= uint32_t{static_cast<unsigned char>(bytes[offset + i])} << (8 * i);
  }
  return value;
}

void PutLe(std::string* bytes, size_t offset, uint32_t value, int width) {
  for (int i = 0; i < width; ++i) (*bytes)[offset + i] = static_cast<char>(value >> (8 * i));
}

}  // namespace

std::vector<std::string> MinimalRead(const std::string& path) {
  int fd = ::open(path.c_str(), O_RDONLY);
  struct stat info;
  ::fstat(fd, &info);
  std::string bytes(static_cast<size_t>(info.st_size), '\0');
  ssize_t got = ::pread(fd, bytes.data(), bytes.size(), 0);
  ::close(fd);
  bytes.resize(got < 0 ? 0 : static_cast<size_t>(got));

  uint32_t count = Le(bytes, 4, 4);
  uint32_t header_length = Le(bytes, 8, 2);
  uint32_t record_length = Le(bytes, 10, 2);
  std::vector<uint32_t> lengths;
  for (size_t d = 32; d + 32 <= header_length; d += 32) {
    lengths.push_back(static_cast<unsigned char>(bytes[d + 16]));
  }
  std::vector<std::string> values;
  values.reserve(size_t{count} * lengths.size());
  for (uint32_t r = 0; r < count; ++r) {
    const char* field = bytes.data() + header_length + size_t{r} * record_length + 1;
    for (uint32_t length : lengths) {
      values.emplace_back(field, length);
      field += length;
    }
  }
  return values;
}

void MinimalWrite(const std::string& path, const std::vector<MinimalColumn>& columns,
                  const std::vector<std::vector<std::string>>& rows) {
  uint32_t record_length = 1;
  for (const auto& column : columns) record_length += static_cast<uint32_t>(column.length);
  const auto header_length = static_cast<uint32_t>(32 * columns.size() + 33);
  std::string bytes(header_length + rows.size() * record_length + 1, ' ');
  std::memset(bytes.data(), 0, header_length);
  bytes[0] = 0x03;
  bytes[1] = 126;
  bytes[2] = 1;
  bytes[3] = 1;
  PutLe(&bytes, 4, static_cast<uint32_t>(rows.size()), 4);
  PutLe(&bytes, 8, header_length, 2);
  PutLe(&bytes, 10, record_length, 2);
  uint32_t position = 1;
  for (size_t c = 0; c < columns.size(); ++c) {
    char* descriptor = bytes.data() + 32 + 32 * c;
    columns[c].name.copy(descriptor, 11);
    descriptor[11] = 'C';
    PutLe(&bytes, 32 + 32 * c + 12, position, 4);
    descriptor[16] = static_cast<char>(columns[c].length);
    position += static_cast<uint32_t>(columns[c].length);
  }
  bytes[header_length - 1] = 0x0D;
  char* record = bytes.data() + header_length;
  for (const auto& row : rows) {
    char* field = record + 1;
    for (size_t c = 0; c < columns.size(); ++c) {
      row[c].copy(field, static_cast<size_t>(columns[c].length));
      field += columns[c].length;
    }
    record += record_length;
  }
  bytes.back() = 0x1A;
  int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
  ssize_t written = ::write(fd, bytes.data(), bytes.size());
  (void)written;
  ::close(fd);
}

}  // namespace zephyr::bench
