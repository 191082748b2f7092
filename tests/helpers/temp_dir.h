// TempDir: a fresh folder under the system's temporary folder, removed with
// everything in it when the object goes away; plus whole-file helpers.
#ifndef ZEPHYR_TESTS_HELPERS_TEMP_DIR_H_
#define ZEPHYR_TESTS_HELPERS_TEMP_DIR_H_

#include <string>

namespace zephyr::testing {

class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  // The folder, without a trailing "/".
  const std::string& Path() const { return path_; }
  // Path() + "/" + name.
  std::string File(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

// The file's bytes; fails the current test when it cannot be read.
std::string ReadBytes(const std::string& path);
// Writes the bytes, replacing the file.
void WriteBytes(const std::string& path, const std::string& bytes);

}  // namespace zephyr::testing

#endif  // ZEPHYR_TESTS_HELPERS_TEMP_DIR_H_
