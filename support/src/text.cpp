#include "zephyr/support/text.h"

namespace zephyr {

// Plain loops: find_first_not_of with one character searches the set once
// per character, which shows in loads of a million values.
std::string_view LTrim(std::string_view text) {
  size_t begin = 0;
  while (begin < text.size() && text[begin] == ' ') ++begin;
  return text.substr(begin);
}

std::string_view RTrim(std::string_view text) {
  size_t end = text.size();
  while (end > 0 && text[end - 1] == ' ') --end;
  return text.substr(0, end);
}

std::string_view Trim(std::string_view text) {
  return RTrim(LTrim(text));
}

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
