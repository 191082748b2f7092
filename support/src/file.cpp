#include "zephyr/support/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "zephyr/support/errors.h"

namespace zephyr {

namespace {

int FlagsFor(File::Mode mode) {
  switch (mode) {
    case File::Mode::kRead:
      return O_RDONLY;
    case File::Mode::kReadWrite:
      return O_RDWR;
    case File::Mode::kCreate:
      return O_RDWR | O_CREAT | O_TRUNC;
    case File::Mode::kOpenOrCreate:
      return O_RDWR | O_CREAT;
  }
  return O_RDONLY;
}

}  // namespace

File::~File() {
  Close();
}

File::File(File&& other) noexcept : fd_(other.fd_), path_(std::move(other.path_)) {
  other.fd_ = -1;
}

File& File::operator=(File&& other) noexcept {
  if (this != &other) {
    Close();
    fd_ = other.fd_;
    path_ = std::move(other.path_);
    other.fd_ = -1;
  }
  return *this;
}

File File::TryOpen(const std::string& path, Mode mode, int* error_number) {
  int fd = ::open(path.c_str(), FlagsFor(mode) | O_CLOEXEC, 0666);
  if (fd < 0) {
    *error_number = errno;
    return File();
  }
  struct stat info;
  if (::fstat(fd, &info) == 0 && S_ISDIR(info.st_mode)) {
    ::close(fd);
    *error_number = EISDIR;
    return File();
  }
  *error_number = 0;
  return File(fd, path);
}

File File::Open(const std::string& path, Mode mode) {
  int error_number = 0;
  File file = TryOpen(path, mode, &error_number);
  if (!file.IsOpen()) RaiseFileError(error_number, "open", path);
  return file;
}

uint64_t File::Size() const {
  struct stat info;
  if (::fstat(fd_, &info) != 0) RaiseFileError(errno, "read the size of", path_);
  return static_cast<uint64_t>(info.st_size);
}

size_t File::ReadAt(uint64_t offset, void* buffer, size_t count) const {
  size_t done = 0;
  auto* bytes = static_cast<char*>(buffer);
  while (done < count) {
    ssize_t got = ::pread(fd_, bytes + done, count - done, static_cast<off_t>(offset + done));
    if (got < 0) {
      if (errno == EINTR) continue;
      RaiseFileError(errno, "read", path_);
    }
    if (got == 0) break;
    done += static_cast<size_t>(got);
  }
  return done;
}

void File::WriteAt(uint64_t offset, const void* data, size_t count) {
  size_t done = 0;
  const auto* bytes = static_cast<const char*>(data);
  while (done < count) {
    ssize_t put = ::pwrite(fd_, bytes + done, count - done, static_cast<off_t>(offset + done));
    if (put < 0) {
      if (errno == EINTR) continue;
      RaiseFileError(errno, "write", path_);
    }
    done += static_cast<size_t>(put);
  }
}

void File::Sync() {
  if (::fsync(fd_) != 0) RaiseFileError(errno, "flush", path_);
}

void File::Close() {
  if (fd_ >= 0) ::close(fd_);
  fd_ = -1;
}

void SyncFolder(const std::string& folder) {
  int fd = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) RaiseFileError(errno, "open the folder", folder);
  int result = ::fsync(fd);
  int error_number = errno;
  ::close(fd);
  if (result != 0) RaiseFileError(error_number, "flush the folder", folder);
}

}  // namespace zephyr
