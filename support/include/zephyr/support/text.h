// Small text helpers with the platform's meaning: trimming removes blanks
// (the space character) only, never tabs or other white space.
#ifndef ZEPHYR_SUPPORT_TEXT_H_
#define ZEPHYR_SUPPORT_TEXT_H_

#include <string>
#include <string_view>

namespace zephyr {

std::string_view LTrim(std::string_view text);
std::string_view RTrim(std::string_view text);
std::string_view Trim(std::string_view text);
// The text with every blank removed.
std::string RemoveBlanks(std::string_view text);
// The text in upper case (ASCII letters only; other bytes are kept).
std::string UpperAscii(std::string_view text);

}  // namespace zephyr

#endif  // ZEPHYR_SUPPORT_TEXT_H_
