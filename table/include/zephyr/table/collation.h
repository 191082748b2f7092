// CodePageCollation: the order SortTableValues gives texts, and the upper
// case of field names, for the 8-bit code page that table files use.
//
// Texts are compared as code-page bytes, character by character: the first
// character that differs decides, and a text that is the beginning of a
// longer one sorts first ("AB" before "ABC"). Each byte weighs by class:
//
//   control characters < blank < other punctuation and symbols < digits 0-9
//   < letters
//
// Letters ignore case: a letter and its upper-case form weigh the same.
// Latin letters follow the alphabet, each accented letter directly after its
// base letter (E < É < Ê < F, ß after S); letters of other scripts follow Z.
// Within a class characters keep their Unicode order. So "  02" < "0101" <
// "abc" = "ABC" < "abd". The order depends on the code page alone, never on
// the environment's locale, so every machine sorts a table the same way.
//
// Multi-byte code pages are weighed one byte at a time by the same rules.
#ifndef ZEPHYR_TABLE_COLLATION_H_
#define ZEPHYR_TABLE_COLLATION_H_

#include <array>
#include <bitset>
#include <cstdint>
#include <string>
#include <string_view>

#include "zephyr/support/codepage.h"

namespace zephyr {

class CodePageCollation {
 public:
  explicit CodePageCollation(const CodePage& code_page);

  // The collation of ActiveCodePage(); built once per code page. Bulk
  // operations fetch it once rather than per value.
  static const CodePageCollation& Active();
  // The collation of a code page; built once per code page.
  static const CodePageCollation& Of(const CodePage& code_page);

  uint8_t Weight(unsigned char byte) const { return weight_[byte]; }
  unsigned char Upper(unsigned char byte) const { return upper_[byte]; }
  std::string UpperCase(std::string_view bytes) const;

  // Negative, zero or positive as a sorts before, with or after b (both
  // code-page bytes).
  int Compare(std::string_view a, std::string_view b) const;

  // Replaces every byte by its weight: two weighed texts compare as plain
  // strings exactly as Compare compares the texts.
  void Weigh(std::string* bytes) const;

  // True when the weights of the bytes in `present` rise strictly with the
  // bytes themselves. Texts made only of those bytes then compare as their
  // bytes do and are sorted without weighing; digits and blanks always
  // weigh so.
  bool WeighsInByteOrder(const std::bitset<256>& present) const;

 private:
  std::array<uint8_t, 256> weight_{};
  std::array<unsigned char, 256> upper_{};
};

}  // namespace zephyr

#endif  // ZEPHYR_TABLE_COLLATION_H_
