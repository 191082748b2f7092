#include "number_format.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "zephyr/support/variant.h"

namespace zephyr::excel {

namespace {

// Hostile codes cannot ask for unbounded output.
constexpr int kMaxDigits = 30;

}  // namespace

// One section of a format code (codes hold up to four, separated by ';').
struct NumberFormat::Section {
  std::string prefix;  // literal text before the digits
  std::string suffix;  // literal text after the digits
  bool general = false;
  bool date = false;  // shows a date part (y, d, or m without h/s)
  bool time = false;  // shows a time part (h, s)
  bool has_digits = false;
  int min_integer = 0;  // '0' placeholders before the decimal point
  int integer_places = 0;
  int min_decimals = 0;
  int max_decimals = 0;
  bool grouping = false;
  int percents = 0;
  int thousands_scale = 0;
  bool scientific = false;
  bool exponent_plus = false;
  int exponent_digits = 0;
};

namespace {

using Section = NumberFormat::Section;

bool IsPlaceholder(char c) {
  return c == '0' || c == '#' || c == '?';
}

// Splits at ';' outside quotes, escapes and brackets.
std::vector<std::string_view> SplitSections(std::string_view code) {
  std::vector<std::string_view> sections;
  size_t start = 0;
  bool quoted = false;
  bool bracket = false;
  for (size_t i = 0; i < code.size(); ++i) {
    char c = code[i];
    if (quoted) {
      quoted = c != '"';
    } else if (bracket) {
      bracket = c != ']';
    } else if (c == '"') {
      quoted = true;
    } else if (c == '[') {
      bracket = true;
    } else if (c == '\\') {
      ++i;
    } else if (c == ';') {
      sections.push_back(code.substr(start, i - start));
      start = i + 1;
    }
  }
  sections.push_back(code.substr(start));
  return sections;
}

Section ParseSection(std::string_view code) {
  Section s;
  bool decimals = false;
  bool exponent = false;
  bool month_seen = false;
  auto literal = [&](std::string_view text) { (s.has_digits ? s.suffix : s.prefix).append(text); };
  for (size_t i = 0; i < code.size(); ++i) {
    char c = code[i];
    char lower = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    if (c == '"') {
      size_t end = code.find('"', i + 1);
      if (end == std::string_view::npos) end = code.size();
      literal(code.substr(i + 1, end - i - 1));
      i = end;
    } else if (c == '\\') {
      if (i + 1 < code.size()) literal(code.substr(++i, 1));
    } else if (c == '_') {
      ++i;
      literal(" ");
    } else if (c == '*') {
      ++i;
    } else if (c == '[') {
      size_t end = std::min(code.find(']', i), code.size());
      std::string_view inside = code.substr(i + 1, end - i - 1);
      if (inside.starts_with("$")) literal(inside.substr(1, inside.find('-') - 1));
      // Elapsed time ("[h]", "[mm]"); colours and conditions are skipped.
      if (!inside.empty() && inside.find_first_not_of("hHmMsS") == std::string_view::npos) {
        s.time = true;
      }
      i = end;
    } else if (code.substr(i).size() >= 7 && (lower == 'g') &&
               (code.substr(i, 7) == "General" || code.substr(i, 7) == "GENERAL" ||
                code.substr(i, 7) == "general")) {
      s.general = true;
      s.has_digits = true;
      i += 6;
    } else if (IsPlaceholder(c)) {
      s.has_digits = true;
      if (exponent) {
        s.exponent_digits = std::min(s.exponent_digits + 1, kMaxDigits);
      } else if (decimals) {
        s.max_decimals = std::min(s.max_decimals + 1, kMaxDigits);
        if (c == '0') s.min_decimals = s.max_decimals;
      } else {
        s.integer_places = std::min(s.integer_places + 1, kMaxDigits);
        if (c == '0') s.min_integer = std::min(s.min_integer + 1, kMaxDigits);
      }
    } else if (c == '.' && !decimals && !exponent &&
               (s.has_digits || (i + 1 < code.size() && IsPlaceholder(code[i + 1])))) {
      decimals = true;
      s.has_digits = true;
    } else if (c == ',' && s.has_digits && !exponent) {
      if (i + 1 < code.size() && IsPlaceholder(code[i + 1])) {
        s.grouping = true;
      } else {
        ++s.thousands_scale;
      }
    } else if (c == '%') {
      ++s.percents;
      literal("%");
    } else if (lower == 'e' && s.has_digits && i + 1 < code.size() &&
               (code[i + 1] == '+' || code[i + 1] == '-')) {
      s.scientific = exponent = true;
      s.exponent_plus = code[i + 1] == '+';
      ++i;
    } else if (lower == 'y' || lower == 'd') {
      s.date = true;
    } else if (lower == 'h' || lower == 's') {
      s.time = true;
    } else if (lower == 'm') {
      month_seen = true;
    } else if (lower == 'a' && (code.substr(i, 5) == "AM/PM" || code.substr(i, 3) == "A/P")) {
      s.time = true;
      i += code.substr(i, 5) == "AM/PM" ? 4 : 2;
    } else if (c == '@') {
      s.general = true;
      s.has_digits = true;
    } else {
      literal(code.substr(i, 1));
    }
  }
  if (month_seen && !s.time) s.date = true;
  if (s.date || s.time) s.has_digits = true;
  // Fractions ("# ?/?") are shown as plain numbers.
  if (s.prefix.find('/') != std::string::npos || s.suffix.find('/') != std::string::npos) {
    if (!s.date && !s.time && s.has_digits) {
      s.general = true;
      s.prefix.clear();
      s.suffix.clear();
    }
  }
  return s;
}

// Days since 1899-12-30 to a civil date (proleptic Gregorian).
void CivilFromSerial(int64_t days, int* year, int* month, int* day) {
  int64_t z = days - 25569 + 719468;  // 25569: 1899-12-30 .. 1970-01-01
  int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  int64_t doe = z - era * 146097;
  int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  int64_t mp = (5 * doy + 2) / 153;
  *day = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  *month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  *year = static_cast<int>(yoe + era * 400 + (*month <= 2 ? 1 : 0));
}

std::string FormatDate(const Section& s, double value) {
  constexpr double kLastSerial = 2958466;  // 10000-01-01
  if (value < 0 || value >= kLastSerial) return NumberToText(value);
  auto days = static_cast<int64_t>(std::floor(value));
  auto seconds = static_cast<int64_t>(std::llround((value - static_cast<double>(days)) * 86400));
  if (seconds >= 86400) {
    ++days;
    seconds -= 86400;
  }
  char buffer[48];
  std::string out;
  if (s.date || !s.time) {
    int year = 1900, month = 2, day = 29;  // serial 60 is the non-existent 1900-02-29
    if (days != 60) CivilFromSerial(days < 60 ? days + 1 : days, &year, &month, &day);
    if (days == 0) year = 1900, month = 1, day = 0;
    std::snprintf(buffer, sizeof buffer, "%04d-%02d-%02d", year, month, day);
    out = buffer;
  }
  if (s.time) {
    std::snprintf(buffer, sizeof buffer, "%02d:%02d:%02d", static_cast<int>(seconds / 3600),
                  static_cast<int>(seconds / 60 % 60), static_cast<int>(seconds % 60));
    if (!out.empty()) out += ' ';
    out += buffer;
  }
  return out;
}

// The value rounded to 15 significant digits, the precision a spreadsheet
// keeps, so that 2.345 (stored as 2.34499...) rounds like the 2.345 it shows.
double RoundToDisplayed(double value) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%.14e", value);
  return std::strtod(buffer, nullptr);
}

// The value in fixed notation with `decimals` digits after the point,
// halves rounded away from zero.
std::string Fixed(double value, int decimals) {
  constexpr double kExactIntegers = 9007199254740992.0;  // 2^53
  if (value != std::floor(value) || value >= kExactIntegers) {
    const double scale = std::pow(10.0, decimals);
    const double scaled = RoundToDisplayed(RoundToDisplayed(value) * scale);
    if (scaled < kExactIntegers) value = std::round(scaled) / scale;
  }
  char buffer[400];
  auto result =
      std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed, decimals);
  if (result.ec != std::errc()) return NumberToText(value);
  return std::string(buffer, result.ptr);
}

// Integer digits padded and grouped, then the decimals trimmed to the section.
std::string Digits(const Section& s, double value) {
  std::string fixed = Fixed(value, s.max_decimals);
  size_t point = fixed.find('.');
  std::string integer = fixed.substr(0, point);
  std::string fraction = point == std::string::npos ? "" : fixed.substr(point + 1);
  while (static_cast<int>(fraction.size()) > s.min_decimals && !fraction.empty() &&
         fraction.back() == '0') {
    fraction.pop_back();
  }
  if (integer == "0" && s.min_integer == 0) integer.clear();
  if (static_cast<int>(integer.size()) < s.min_integer) {
    integer.insert(0, s.min_integer - integer.size(), '0');
  }
  if (s.grouping) {
    std::string grouped;
    for (size_t i = 0; i < integer.size(); ++i) {
      if (i > 0 && (integer.size() - i) % 3 == 0) grouped += ',';
      grouped += integer[i];
    }
    integer = std::move(grouped);
  }
  std::string out = integer;
  if (s.max_decimals > 0) {
    out += '.';
    out += fraction;
  }
  return out;
}

std::string Scientific(const Section& s, double value) {
  int exponent = value == 0 ? 0 : static_cast<int>(std::floor(std::log10(value)));
  int step = s.integer_places > 1 && s.min_integer < s.integer_places ? s.integer_places : 1;
  auto align = [&](int e) { return e - ((e % step) + step) % step; };
  exponent = align(exponent);
  double mantissa = value / std::pow(10.0, exponent);
  if (!std::isfinite(mantissa)) return NumberToText(value);
  std::string digits = Fixed(mantissa, s.max_decimals);
  if (std::strtod(digits.c_str(), nullptr) >= std::pow(10.0, step)) {
    exponent += step;
    mantissa = value / std::pow(10.0, exponent);
  }
  Section mantissa_section = s;
  mantissa_section.min_integer = std::max(s.min_integer, 1);
  std::string out = Digits(mantissa_section, mantissa) + 'E';
  if (exponent < 0) {
    out += '-';
  } else if (s.exponent_plus) {
    out += '+';
  }
  std::string power = std::to_string(std::abs(exponent));
  if (static_cast<int>(power.size()) < s.exponent_digits) {
    power.insert(0, s.exponent_digits - power.size(), '0');
  }
  return out + power;
}

// The section applied to a non-negative value.
std::string FormatSection(const Section& s, double value) {
  if (s.date || s.time) return FormatDate(s, value);
  for (int i = 0; i < s.percents; ++i) value *= 100;
  for (int i = 0; i < s.thousands_scale; ++i) value /= 1000;
  if (!std::isfinite(value)) return NumberToText(value);
  std::string digits;
  if (s.general) {
    digits = NumberToText(value);
  } else if (s.scientific) {
    digits = Scientific(s, value);
  } else if (s.has_digits) {
    digits = Digits(s, value);
  }
  return s.prefix + digits + s.suffix;
}

bool AllZero(std::string_view text) {
  return std::none_of(text.begin(), text.end(), [](char c) { return c >= '1' && c <= '9'; });
}

constexpr std::string_view kBuiltins[] = {
    "",                            // 0 General
    "0",                           // 1
    "0.00",                        // 2
    "#,##0",                       // 3
    "#,##0.00",                    // 4
    "#,##0_);(#,##0)",             // 5
    "#,##0_);[Red](#,##0)",        // 6
    "#,##0.00_);(#,##0.00)",       // 7
    "#,##0.00_);[Red](#,##0.00)",  // 8
    "0%",                          // 9
    "0.00%",                       // 10
    "0.00E+00",                    // 11
    "# ?/?",                       // 12
    "# ?\?/?\?",                   // 13
    "yyyy-mm-dd",                  // 14
    "d-mmm-yy",                    // 15
    "d-mmm",                       // 16
    "mmm-yy",                      // 17
    "h:mm AM/PM",                  // 18
    "h:mm:ss AM/PM",               // 19
    "h:mm",                        // 20
    "h:mm:ss",                     // 21
    "yyyy-mm-dd h:mm",             // 22
};

}  // namespace

NumberFormat::NumberFormat(std::string_view code) {
  if (code.empty() || code == "General" || code == "GENERAL" || code == "general") return;
  auto sections = std::make_shared<std::vector<Section>>();
  for (std::string_view text : SplitSections(code)) sections->push_back(ParseSection(text));
  sections_ = std::move(sections);
}

NumberFormat NumberFormat::Builtin(int id) {
  if (id >= 0 && id < static_cast<int>(std::size(kBuiltins))) return NumberFormat(kBuiltins[id]);
  switch (id) {
    case 37:
      return NumberFormat("#,##0 ;(#,##0)");
    case 38:
      return NumberFormat("#,##0 ;[Red](#,##0)");
    case 39:
      return NumberFormat("#,##0.00;(#,##0.00)");
    case 40:
      return NumberFormat("#,##0.00;[Red](#,##0.00)");
    case 45:
      return NumberFormat("mm:ss");
    case 46:
      return NumberFormat("[h]:mm:ss");
    case 47:
      return NumberFormat("mm:ss.0");
    case 48:
      return NumberFormat("##0.0E+0");
    case 49:
      return NumberFormat("@");
    default:
      break;
  }
  // East Asian date formats.
  if ((id >= 27 && id <= 36) || (id >= 50 && id <= 58)) return NumberFormat("yyyy-mm-dd");
  return NumberFormat();
}

bool IsGeneralText(std::string_view text) {
  if (text.starts_with('-')) {
    text.remove_prefix(1);
    if (text == "0") return false;
  }
  size_t point = text.find('.');
  std::string_view integer = text.substr(0, point);
  std::string_view fraction = point == std::string_view::npos ? "" : text.substr(point + 1);
  auto all_digits = [](std::string_view part) {
    return std::all_of(part.begin(), part.end(), [](char c) { return c >= '0' && c <= '9'; });
  };
  if (integer.empty() || !all_digits(integer) || !all_digits(fraction)) return false;
  if (integer.size() > 1 && integer[0] == '0') return false;
  if (point != std::string_view::npos && (fraction.empty() || fraction.back() == '0')) {
    return false;
  }
  if (integer.size() > 15 || fraction.size() > 15) return false;
  size_t significant = integer == "0" ? 0 : integer.size();
  if (significant == 0) {
    significant = fraction.size() - std::min(fraction.find_first_not_of('0'), fraction.size());
  } else {
    significant += fraction.size();
  }
  return significant <= 15;
}

std::string NumberFormat::Format(double value) const {
  if (!sections_ || !std::isfinite(value)) return NumberToText(value);
  const std::vector<Section>& sections = *sections_;
  if (value < 0 && sections.size() >= 2) return FormatSection(sections[1], -value);
  if (value == 0 && sections.size() >= 3) return FormatSection(sections[2], 0);
  const Section& section = sections[0];
  std::string text = FormatSection(section, std::fabs(value));
  if (value < 0 && !section.date && !section.time && !AllZero(text)) text.insert(text.begin(), '-');
  return text;
}

}  // namespace zephyr::excel
