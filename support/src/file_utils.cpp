#include "zephyr/support/file_utils.h"

#include <dirent.h>
#include <strings.h>
#include <sys/stat.h>

#include <algorithm>

#include "zephyr/support/codepage.h"
#include "zephyr/support/debug_log.h"
#include "zephyr/support/text.h"

namespace zephyr {

bool PathExists(const std::string& path) {
  struct stat info;
  return !path.empty() && ::stat(path.c_str(), &info) == 0;
}

bool isFileReadOnly(const std::string& path) {
  DebugLog("mGlobals", "isFileReadOnly", "");
  if (!PathExists(path)) return false;
  int error_number = 0;
  File file = File::TryOpen(path, File::Mode::kRead, &error_number);
  return !file.IsOpen();
}

std::string ReadWholeFile(const File& file, size_t count) {
  if (count == 0) return {};
  std::string bytes(count, ' ');
  bytes.resize(file.ReadAt(0, bytes.data(), count));
  return FromCodePage(bytes);
}

std::vector<std::string> SplitLine(std::string_view line) {
  char separator = line.find('\t') != std::string_view::npos ? '\t' : ',';
  std::vector<std::string> elements;
  size_t start = 0;
  while (true) {
    size_t end = line.find(separator, start);
    elements.emplace_back(line.substr(start, end == std::string_view::npos ? end : end - start));
    if (end == std::string_view::npos) break;
    start = end + 1;
  }
  return elements;
}

std::string StripQuotes(std::string_view value) {
  if (value.size() >= 2 && value.front() == '"' && value.back() == '"') {
    value = value.substr(1, value.size() - 2);
  }
  return std::string(Trim(value));
}

std::string ResolveCaseVariant(const std::string& folder, const std::string& name) {
  std::string prefix = WithTrailingSlash(folder);
  if (name.empty() || PathExists(prefix + name)) return name;
  DIR* dir = ::opendir(prefix.c_str());
  if (!dir) return name;
  std::vector<std::string> variants;
  while (const dirent* entry = ::readdir(dir)) {
    if (::strcasecmp(entry->d_name, name.c_str()) == 0) variants.emplace_back(entry->d_name);
  }
  ::closedir(dir);
  if (variants.empty()) return name;
  return *std::min_element(variants.begin(), variants.end());
}

std::string WithTrailingSlash(std::string_view folder) {
  if (folder.empty()) return "./";
  std::string result(folder);
  if (result.back() != '/') result.push_back('/');
  return result;
}

}  // namespace zephyr
