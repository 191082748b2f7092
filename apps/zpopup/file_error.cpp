#include "file_error.h"

#include <unistd.h>

#include <filesystem>

namespace zephyr::cli {

void RequireWritableFolder(const std::string& folder) {
  std::string path = folder.empty() ? "." : folder;
  std::error_code error;
  if (!std::filesystem::is_directory(path, error)) throw FileError{path, "No such folder"};
  if (::access(path.c_str(), W_OK | X_OK) != 0) throw FileError{path, "Permission denied"};
}

}  // namespace zephyr::cli
