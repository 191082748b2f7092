// File: an open file descriptor with positioned reads and writes. Files are
// opened shared for reading and writing and never locked, so several
// processes can use one table at once. Every failure raises a run-time error
// whose description names the file.
#ifndef ZEPHYR_SUPPORT_FILE_H_
#define ZEPHYR_SUPPORT_FILE_H_

#include <cstddef>
#include <cstdint>
#include <string>

namespace zephyr {

class File {
 public:
  enum class Mode {
    kRead,          // existing file, read only
    kReadWrite,     // existing file, read and write
    kCreate,        // new empty file (truncated when it exists), read and write
    kOpenOrCreate,  // existing file or a new empty one, read and write
  };

  File() = default;
  ~File();
  File(File&& other) noexcept;
  File& operator=(File&& other) noexcept;
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  // Opens path; raises a run-time error naming the file on failure.
  static File Open(const std::string& path, Mode mode);
  // Opens path; on failure returns a closed File and sets *error_number.
  static File TryOpen(const std::string& path, Mode mode, int* error_number);

  bool IsOpen() const { return fd_ >= 0; }
  int Descriptor() const { return fd_; }
  const std::string& Path() const { return path_; }

  uint64_t Size() const;
  // Reads up to count bytes at offset; returns the bytes read (fewer only at
  // the end of the file).
  size_t ReadAt(uint64_t offset, void* buffer, size_t count) const;
  // Writes all count bytes at offset.
  void WriteAt(uint64_t offset, const void* data, size_t count);
  // Flushes the file's data and metadata to the disk.
  void Sync();
  void Close();

 private:
  File(int fd, std::string path) : fd_(fd), path_(std::move(path)) {}

  int fd_ = -1;
  std::string path_;
};

// Flushes a folder's entries (after a create or rename in it) to the disk.
void SyncFolder(const std::string& folder);

}  // namespace zephyr

#endif  // ZEPHYR_SUPPORT_FILE_H_
