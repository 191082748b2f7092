#include "zephyr/support/text.h"

namespace zephyr {

std::string_view LTrim(std::string_view text) {
  size_t begin = text.find_first_not_of(' ');
  return begin == std::string_view::npos ? std::string_view() : text.substr(begin);
}

std::string_view RTrim(std::string_view text) {
  size_t end = text.find_last_not_of(' ');
  return end == std::string_view::npos ? std::string_view() : text.substr(0, end + 1);
}

std::string_view Trim(std::string_view text) { return RTrim(LTrim(text)); }

std::string RemoveBlanks(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (char c : text) {
    if (c != ' ') result.push_back(c);
  }
  return result;
}

std::string UpperAscii(std::string_view text) {
  std::string result(text);
  for (char& c : result) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return result;
}

}  // namespace zephyr
