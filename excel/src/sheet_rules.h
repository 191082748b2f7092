// The import's sheet rules, each a check of the sheet's cells that names the
// first thing it finds wrong. They tell nothing themselves: the import shows
// the breach it gets back and stops.
#ifndef ZEPHYR_EXCEL_SHEET_RULES_H_
#define ZEPHYR_EXCEL_SHEET_RULES_H_

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "zephyr/excel/excel_array.h"
#include "zephyr/excel/excel_import.h"
#include "zephyr/support/message_box.h"

namespace zephyr::excel {

// A broken rule: the message to show and what the import then answers.
struct RuleBreach {
  std::string prompt;
  std::string title;
  // OK and Help point at the import rules; OK alone does not.
  MessageButtons buttons = MessageButtons::kOkHelp;
  ImportOutcome outcome = ImportOutcome::kRuleFailed;
};

// The widest value a field holds.
inline constexpr int16_t kMaxImportFieldLength = 254;

// Called with each array row a rule works through, for progress.
using RowVisit = std::function<void(int32_t row)>;

// A sheet without keys: no row may hold one, and there must be data rows.
std::optional<RuleBreach> ScanNoKey(const ExcelArray& sheet, const RowVisit& visit);

// A sheet with keys: numeric, of one even length, level cells filled, no key
// twice. Sets the level count from the first key.
std::optional<RuleBreach> ScanWithKey(const ExcelArray& sheet, int* levels,
                                      const RowVisit& visit);

// At least one companion column after the level columns.
std::optional<RuleBreach> MissingCompanionColumn(const ExcelArray& sheet, int levels);

// No two identical rows, and every level cell filled.
std::optional<RuleBreach> ValidateExcel(const ExcelArray& sheet, int levels);

// No value longer than a field holds. `sheet_rows` gives the sheet row of each
// array row, `field_name` the field a column fills.
std::optional<RuleBreach> OverlongValue(const ExcelArray& sheet,
                                        const std::vector<int32_t>& sheet_rows,
                                        const std::function<std::string(int32_t)>& field_name);

// A key of `width` digits made of two-digit codes from 01 to 99.
std::optional<RuleBreach> KeyFormatBreach(std::string_view key, size_t width);
// The same breach for keys that cannot be made: more than 99 siblings.
RuleBreach InvalidKeyBreach();

}  // namespace zephyr::excel

#endif  // ZEPHYR_EXCEL_SHEET_RULES_H_
