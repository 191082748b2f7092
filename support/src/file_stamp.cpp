#include "zephyr/support/file_stamp.h"

#include <sys/stat.h>

#include <fstream>
#include <vector>

namespace zephyr {

namespace {

// FNV-1a over the file's bytes, read in large blocks.
uint64_t HashOf(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  uint64_t hash = 14695981039346656037ull;
  std::vector<char> block(1 << 20);
  while (in) {
    in.read(block.data(), static_cast<std::streamsize>(block.size()));
    for (std::streamsize i = 0; i < in.gcount(); ++i) {
      hash = (hash ^ static_cast<unsigned char>(block[static_cast<size_t>(i)])) * 1099511628211ull;
    }
  }
  return hash;
}

bool Stat(const std::string& path, struct stat& info) {
  return ::stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

int64_t ModifiedNs(const struct stat& info) {
  return static_cast<int64_t>(info.st_mtim.tv_sec) * 1'000'000'000 + info.st_mtim.tv_nsec;
}

}  // namespace

FileStamp FileStamp::Of(const std::string& path) {
  FileStamp stamp;
  struct stat info {};
  if (!Stat(path, info)) return stamp;
  stamp.exists = true;
  stamp.size = static_cast<uint64_t>(info.st_size);
  stamp.modified_ns = ModifiedNs(info);
  stamp.hash = HashOf(path);
  return stamp;
}

bool FileStamp::ChangedAt(const std::string& path) const {
  struct stat info {};
  if (!Stat(path, info)) return exists;
  if (!exists || static_cast<uint64_t>(info.st_size) != size) return true;
  // The same size and time: the bytes decide, as a copy may keep the time.
  if (ModifiedNs(info) == modified_ns) return false;
  return HashOf(path) != hash;
}

}  // namespace zephyr
