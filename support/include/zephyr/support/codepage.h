// Conversion between the 8-bit code page that files use and the UTF-8 text the
// program works with. The code page is Windows-1252 unless the environment
// variable ZEPHYR_CODEPAGE names another one that iconv knows (e.g. CP1250).
#ifndef ZEPHYR_SUPPORT_CODEPAGE_H_
#define ZEPHYR_SUPPORT_CODEPAGE_H_

#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

namespace zephyr {

class CodePage {
 public:
  // Builds the converter for an iconv code-page name; raises invalid argument
  // (5) when iconv does not know the name.
  explicit CodePage(std::string name);

  const std::string& Name() const { return name_; }
  // True when every character of the code page is one byte.
  bool IsSingleByte() const { return single_byte_; }
  // True when ASCII text converts to and from the code page unchanged, so
  // that such text needs no conversion.
  bool KeepsAscii() const { return keeps_ascii_; }

  // Code-page bytes to UTF-8. A byte the code page leaves undefined becomes
  // the character with the same number, so that it survives a round trip.
  std::string ToUtf8(std::string_view bytes) const;
  // UTF-8 to code-page bytes. A character the code page cannot hold (and any
  // malformed UTF-8 sequence) becomes "?".
  std::string FromUtf8(std::string_view text) const;

  // The number of code-page characters the UTF-8 text converts to.
  size_t CharacterCount(std::string_view text) const;

 private:
  std::string ConvertWithIconv(std::string_view input, bool to_utf8) const;

  std::string name_;
  bool single_byte_ = false;
  bool ascii_compatible_ = false;
  bool keeps_ascii_ = false;
  std::array<std::string, 256> decode_;                 // byte -> UTF-8
  std::unordered_map<char32_t, unsigned char> encode_;  // code point -> byte (non-ASCII)
};

// The process-wide code page: ZEPHYR_CODEPAGE, or Windows-1252.
const CodePage& ActiveCodePage();
// Replaces the process-wide code page (hosts and tests).
void SetActiveCodePage(const std::string& name);

// Shorthands over the active code page.
inline std::string FromCodePage(std::string_view bytes) {
  return ActiveCodePage().ToUtf8(bytes);
}
inline std::string ToCodePage(std::string_view text) {
  return ActiveCodePage().FromUtf8(text);
}

}  // namespace zephyr

#endif  // ZEPHYR_SUPPORT_CODEPAGE_H_
