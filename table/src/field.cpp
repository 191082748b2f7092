#include "zephyr/table/field.h"

#include "zephyr/support/codepage.h"
#include "zephyr/table/collation.h"

namespace zephyr {

namespace {

constexpr size_t kMaxNameLength = 11;
constexpr std::string_view kTypedLetters = "BDFILNSYZ";

// Keeps the first count code-page characters of a text, in upper case.
std::string UpperPrefix(std::string_view text, size_t count) {
  const CodePage& code_page = ActiveCodePage();
  std::string bytes = code_page.FromUtf8(text);
  if (bytes.size() > count) bytes.resize(count);
  return code_page.ToUtf8(CodePageCollation::Active().UpperCase(bytes));
}

}  // namespace

void Field::Name(std::string_view value) {
  name_ = UpperPrefix(value, kMaxNameLength);
}

void Field::FieldType(std::string_view value) {
  field_type_ = UpperPrefix(value, 1);
}

std::string TypeCodeToName(unsigned char code) {
  if (code != 0 && kTypedLetters.find(static_cast<char>(code)) != std::string_view::npos) {
    return std::string(1, static_cast<char>(code));
  }
  return "C";
}

unsigned char TypeNameToCode(std::string_view name) {
  if (name.size() == 1 && kTypedLetters.find(name[0]) != std::string_view::npos) {
    return static_cast<unsigned char>(name[0]);
  }
  return 'C';
}

}  // namespace zephyr
