#include "zephyr/runtime/popup_key.h"

#include "zephyr/support/errors.h"
#include "zephyr/support/text.h"

namespace zephyr {

std::string OwnCode(std::string_view key) {
  return std::string(key.size() >= 2 ? key.substr(key.size() - 2) : key);
}

std::string CompactPath(std::string_view key) {
  return RemoveBlanks(key);
}

int KeyLevel(std::string_view key) {
  return static_cast<int>(CompactPath(key).size() / 2);
}

std::string ChildPattern(std::string_view key, int levels) {
  if (levels < 1) {
    throw RuntimeError(RuntimeErrorCode::kInvalidArgument,
                       "a popup with " + std::to_string(levels) + " levels has no key pattern");
  }
  std::string pattern(static_cast<size_t>(2 * levels - 2), ' ');
  pattern.push_back('*');
  std::string compact = RemoveBlanks(Trim(key));
  pattern.replace(0, std::min(compact.size(), pattern.size()), compact, 0,
                  std::min(compact.size(), pattern.size()));
  return pattern;
}

bool MatchesChildPattern(std::string_view stored_key, std::string_view pattern) {
  if (pattern.empty() || pattern.back() != '*') return false;
  size_t compared = pattern.size() - 1;
  return stored_key.size() >= compared &&
         stored_key.compare(0, compared, pattern, 0, compared) == 0;
}

std::string GetParentKey(std::string_view key) {
  if (key.size() < 2) return {};
  return std::string(Trim(key.substr(0, key.size() - 2)));
}

std::string FormatStoredKey(std::string_view base_key, int levels) {
  std::string_view trimmed = RTrim(base_key);
  size_t width = levels > 0 ? static_cast<size_t>(2 * levels) : 0;
  std::string own(trimmed.substr(trimmed.size() >= 2 ? trimmed.size() - 2 : 0));
  std::string key(trimmed.substr(0, trimmed.size() - own.size()));
  key.resize(std::max(width, key.size()), ' ');
  key.replace(key.size() - std::min(own.size(), key.size()), own.size(), own);
  return key;
}

}  // namespace zephyr
