// FileStamp: what a file held when it was read, to tell later whether another
// program has changed it since: its size, its modification time and a hash
// of its bytes (a file rewritten within the same second, at the same size,
// still differs).
#ifndef ZEPHYR_SUPPORT_FILE_STAMP_H_
#define ZEPHYR_SUPPORT_FILE_STAMP_H_

#include <cstdint>
#include <string>

namespace zephyr {

struct FileStamp {
  bool exists = false;
  uint64_t size = 0;
  int64_t modified_ns = 0;
  uint64_t hash = 0;

  // The file as it is now; a missing file gives a stamp that does not exist.
  static FileStamp Of(const std::string& path);
  // True when the file is no longer what the stamp records. Reads the file
  // only when its size and time are unchanged.
  bool ChangedAt(const std::string& path) const;

  bool operator==(const FileStamp& other) const = default;
};

}  // namespace zephyr

#endif  // ZEPHYR_SUPPORT_FILE_STAMP_H_
