// NumberFormat: the text a spreadsheet shows for a number under a format
// code. Covers what pick lists hold: General, zero-padded integers ("0000"),
// fixed decimals ("0.00", "#,##0.00"), percentages, scientific notation,
// literal prefixes and suffixes, text ("@") and dates as ISO yyyy-mm-dd.
// Fractions, conditions and colours fall back to a close rendering.
#ifndef ZEPHYR_EXCEL_SRC_NUMBER_FORMAT_H_
#define ZEPHYR_EXCEL_SRC_NUMBER_FORMAT_H_

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace zephyr::excel {

class NumberFormat {
 public:
  // The General format.
  NumberFormat() = default;
  // A format code such as "0000", "#,##0.00;[Red]-#,##0.00" or "yyyy-mm-dd".
  explicit NumberFormat(std::string_view code);
  // A built-in format by its number (0 to 49); unknown numbers give General.
  static NumberFormat Builtin(int id);

  bool IsGeneral() const { return sections_ == nullptr; }

  // The number as shown.
  std::string Format(double value) const;

  struct Section;  // one parsed section; defined with the formatter

 private:
  // The code's sections, parsed once (positive; negative; zero; text);
  // null for General. Shared: formats are copied per style.
  std::shared_ptr<const std::vector<Section>> sections_;
};

// True when `text` is already the General text of the number it spells: a
// plain decimal ("-12.5") of at most 15 significant digits, without exponent,
// leading or trailing zeros, or a sign on zero. Readers then keep the text
// as stored instead of formatting the parsed number again.
bool IsGeneralText(std::string_view text);

}  // namespace zephyr::excel

#endif  // ZEPHYR_EXCEL_SRC_NUMBER_FORMAT_H_
