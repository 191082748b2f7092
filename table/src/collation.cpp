#include "zephyr/table/collation.h"

#include <locale.h>
#include <wctype.h>

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>
#include <tuple>

namespace zephyr {

namespace {

// Decodes a UTF-8 text that holds exactly one character; false otherwise.
bool SingleCodePoint(std::string_view text, char32_t* code) {
  if (text.empty()) return false;
  auto lead = static_cast<unsigned char>(text[0]);
  size_t length = lead < 0x80 ? 1 : (lead >> 5) == 0x6 ? 2 : (lead >> 4) == 0xE ? 3 : 4;
  if (text.size() != length) return false;
  char32_t value = length == 1 ? lead : lead & (0x7F >> length);
  for (size_t i = 1; i < length; ++i) value = (value << 6) | (text[i] & 0x3F);
  *code = value;
  return true;
}

std::string EncodeUtf8(char32_t code) {
  std::string out;
  if (code < 0x80) {
    out.push_back(static_cast<char>(code));
  } else if (code < 0x800) {
    out.push_back(static_cast<char>(0xC0 | (code >> 6)));
    out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
  } else {
    out.push_back(static_cast<char>(0xE0 | (code >> 12)));
    out.push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
  }
  return out;
}

// The base letter of a Latin letter (upper case), or 0 for any other
// character. Covers ASCII, Latin-1 and Latin Extended-A, which hold every
// letter of the Latin single-byte code pages.
char BaseLatinLetter(char32_t code) {
  static constexpr std::string_view kLatin1 =  // U+00C0 .. U+00FF
      "AAAAAAACEEEEIIIIDNOOOOO-OUUUUY-S"
      "AAAAAAACEEEEIIIIDNOOOOO-OUUUUY-Y";
  static constexpr std::string_view kExtendedA =  // U+0100 .. U+017F
      "AAAAAACCCCCCCCDDDDEEEEEEEEEEGGGGGGGGHHHHIIIIIIIIIIIIJJKKKLLLLLLLLLL"
      "NNNNNNNNNOOOOOOOORRRRRRSSSSSSSSTTTTTTUUUUUUUUUUUUWWYYYZZZZZZS";
  static_assert(kLatin1.size() == 64 && kExtendedA.size() == 128);
  if (code >= 'A' && code <= 'Z') return static_cast<char>(code);
  if (code >= 'a' && code <= 'z') return static_cast<char>(code - 'a' + 'A');
  char base = 0;
  if (code >= 0xC0 && code <= 0xFF) base = kLatin1[code - 0xC0];
  if (code >= 0x100 && code <= 0x17F) base = kExtendedA[code - 0x100];
  if (code == 0x192) base = 'F';
  return base == '-' ? 0 : base;
}

enum CharacterClass { kControl, kBlank, kSymbol, kDigit, kLatinLetter, kOtherLetter };

using SortTuple = std::tuple<int, char, bool, char32_t>;

SortTuple Classify(char32_t folded, locale_t unicode) {
  if (folded < 0x20 || (folded >= 0x7F && folded < 0xA0)) return {kControl, 0, false, folded};
  if (folded == ' ') return {kBlank, 0, false, folded};
  if (folded >= '0' && folded <= '9') return {kDigit, 0, false, folded};
  bool letter = unicode ? iswalpha_l(static_cast<wint_t>(folded), unicode) != 0
                        : BaseLatinLetter(folded) != 0;
  if (!letter) return {kSymbol, 0, false, folded};
  char base = BaseLatinLetter(folded);
  if (base == 0) return {kOtherLetter, 0, false, folded};
  bool accented = folded != static_cast<char32_t>(base);
  return {kLatinLetter, base, accented, folded};
}

}  // namespace

CodePageCollation::CodePageCollation(const CodePage& code_page) {
  // Case mapping comes from the Unicode tables of C.UTF-8, which do not
  // change with the user's language settings.
  locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", static_cast<locale_t>(nullptr));
  std::array<SortTuple, 256> tuples;
  for (int b = 0; b < 256; ++b) {
    auto byte = static_cast<unsigned char>(b);
    upper_[byte] = byte;
    char32_t code = byte;
    if (!SingleCodePoint(code_page.ToUtf8(std::string(1, static_cast<char>(byte))), &code)) {
      code = byte;
    }
    char32_t folded = code;
    if (unicode) folded = static_cast<char32_t>(towupper_l(static_cast<wint_t>(code), unicode));
    if (!unicode && code >= 'a' && code <= 'z') folded = code - 'a' + 'A';
    if (folded != code) {
      std::string encoded = code_page.FromUtf8(EncodeUtf8(folded));
      if (encoded.size() == 1 && encoded[0] != '?') {
        upper_[byte] = static_cast<unsigned char>(encoded[0]);
      } else {
        folded = code;  // the upper-case form is not in the code page
      }
    }
    tuples[byte] = Classify(folded, unicode);
  }
  if (unicode) freelocale(unicode);

  std::array<int, 256> order;
  for (int b = 0; b < 256; ++b) order[b] = b;
  std::stable_sort(order.begin(), order.end(), [&](int a, int b) { return tuples[a] < tuples[b]; });
  uint8_t rank = 0;
  for (int i = 0; i < 256; ++i) {
    if (i > 0 && tuples[order[i]] != tuples[order[i - 1]]) ++rank;
    weight_[order[i]] = rank;
  }
}

const CodePageCollation& CodePageCollation::Active() {
  return Of(ActiveCodePage());
}

const CodePageCollation& CodePageCollation::Of(const CodePage& code_page) {
  static std::mutex mutex;
  static std::map<const CodePage*, std::unique_ptr<const CodePageCollation>> built;
  std::lock_guard lock(mutex);
  auto& slot = built[&code_page];
  if (!slot) slot = std::make_unique<const CodePageCollation>(code_page);
  return *slot;
}

std::string CodePageCollation::UpperCase(std::string_view bytes) const {
  std::string out(bytes);
  for (char& c : out) c = static_cast<char>(upper_[static_cast<unsigned char>(c)]);
  return out;
}

int CodePageCollation::Compare(std::string_view a, std::string_view b) const {
  size_t common = std::min(a.size(), b.size());
  for (size_t i = 0; i < common; ++i) {
    int wa = weight_[static_cast<unsigned char>(a[i])];
    int wb = weight_[static_cast<unsigned char>(b[i])];
    if (wa != wb) return wa < wb ? -1 : 1;
  }
  if (a.size() == b.size()) return 0;
  return a.size() < b.size() ? -1 : 1;
}

void CodePageCollation::Weigh(std::string* bytes) const {
  for (char& c : *bytes) c = static_cast<char>(weight_[static_cast<unsigned char>(c)]);
}

bool CodePageCollation::WeighsInByteOrder(const std::bitset<256>& present) const {
  int last = -1;
  for (size_t byte = 0; byte < present.size(); ++byte) {
    if (!present[byte]) continue;
    if (weight_[byte] <= last) return false;
    last = weight_[byte];
  }
  return true;
}

}  // namespace zephyr
