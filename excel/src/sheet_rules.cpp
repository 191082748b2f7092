#include "sheet_rules.h"

#include "sheet_scans.h"
#include "zephyr/support/codepage.h"
#include "zephyr/support/debug_log.h"
#include "zephyr/support/text.h"
#include "zephyr/support/variant.h"

namespace zephyr::excel {

namespace {

constexpr const char* kModule = "mExcel";
constexpr const char* kRulesHelp = " Please refer to ZephyrPopup Excel Import Rules in Help.";
constexpr const char* kInvalidKey =
    "Invalid Key! Please check that your keys conform to Zephyr 5.0 Popup Key Standards";
constexpr const char* kUnequalKeys =
    "Invalid Key! the Keys found in the excel sheet are not all the same size. Please check that "
    "your keys conform to Zephyr 5.0 Popup Key Standards.";

bool IsNumeric(const std::string& text) {
  double ignored;
  return ParseNumber(text, &ignored);
}

bool IsTwoDigitCode(std::string_view code) {
  return code.size() == 2 && code[0] >= '0' && code[0] <= '9' && code[1] >= '0' && code[1] <= '9' &&
         code != "00";
}

// The key rules count data rows: the first row under the headings is 1.
int32_t DataRow(int32_t array_row) {
  return array_row - 1;
}

// The first level column of the row whose trimmed cell is empty.
std::optional<int32_t> FirstBlankLevelColumn(const ExcelArray& sheet, int32_t row, int levels) {
  for (int32_t column = 2; column <= levels + 1; ++column) {
    if (sheet.Trimmed(row, column).empty()) return column;
  }
  return std::nullopt;
}

RuleBreach Breach(std::string prompt, std::string title,
                  MessageButtons buttons = MessageButtons::kOkHelp) {
  return {std::move(prompt), std::move(title), buttons, ImportOutcome::kRuleFailed};
}

}  // namespace

std::optional<RuleBreach> ScanNoKey(const ExcelArray& sheet, const RowVisit& visit) {
  DebugLog(kModule, "ScanNoKey", "Started");
  for (int32_t row = 2; row <= sheet.RowCount(); ++row) {
    DebugLog(kModule, "ScanNoKey", "scanning Row: " + std::to_string(DataRow(row)));
    visit(row);
    if (!sheet.Trimmed(row, 1).empty()) {
      return Breach(std::string("Inconsistent Key Values. Keys must either all be numeric, of the "
                                "same length or all blank.") +
                        kRulesHelp,
                    "Invalid Key Data");
    }
  }
  if (sheet.RowCount() < 2) {
    return Breach(std::string("Excel Source must contain at least 2 rows of data.") + kRulesHelp,
                  "Invalid Excel Data");
  }
  DebugLog(kModule, "ScanNoKey", "Passed Validation");
  return std::nullopt;
}

std::optional<RuleBreach> ScanWithKey(const ExcelArray& sheet, int* levels, const RowVisit& visit) {
  auto fail = [](const std::string& prompt, const char* title) {
    DebugLog(kModule, "ScanWithKey", "failed Validation");
    return Breach(prompt + kRulesHelp, title);
  };
  std::string first = sheet.Trimmed(2, 1);
  if (!IsNumeric(first)) {
    return fail("First Key not numeric. A non numerical character was found in the first key cell.",
                "Key Not Numeric");
  }
  if (first.size() % 2 != 0) {
    return fail(
        "The First Key does not conform to ZephyrPopup Key Standards. The Keys must be an "
        "even number lenght and numeric.",
        "Invalid Key Length");
  }
  *levels = static_cast<int>(first.size() / 2);
  for (int32_t row = 2; row <= sheet.RowCount(); ++row) {
    DebugLog(kModule, "ScanWithKey", "Scanning Row: " + std::to_string(DataRow(row)));
    visit(row);
    std::string key = sheet.Trimmed(row, 1);
    if (!IsNumeric(key)) {
      return fail("Key Not Numeric. A non numerical character was found in the key on row " +
                      std::to_string(DataRow(row)) + ".",
                  "Key Not Numeric");
    }
    if (key.size() != first.size()) {
      return fail("Invalid Key Length found. The Key in Row " + std::to_string(DataRow(row)) +
                      " is not the same lenght as your first key. Please ensure the keys are all "
                      "the same length.",
                  "Invalid Key Length");
    }
    if (FirstBlankLevelColumn(sheet, row, *levels)) {
      return fail("Blank Level Data Found. PLease make sure that all Level columns contain data.",
                  "Invalid Key Length");
    }
  }
  if (auto repeated = FirstRepeatedKeyRow(sheet)) {
    return fail("The Excel Row: " + std::to_string(DataRow(*repeated)) +
                    " contains a Key that is already assigned. Please ensure that the keys are "
                    "unique.",
                "Duplicate Key found");
  }
  return std::nullopt;
}

std::optional<RuleBreach> MissingCompanionColumn(const ExcelArray& sheet, int levels) {
  if (levels >= 1 && sheet.ColumnCount() - 1 - levels >= 1) return std::nullopt;
  return Breach(
      "Missing Companion Data Column. ZephyrPopup needs at least 1 companion Data Column after "
      "the Level Columns.  Please refer to ZephyrPopup Excel Import Rules in Help.  ",
      "Missing Data Column");
}

std::optional<RuleBreach> ValidateExcel(const ExcelArray& sheet, int levels) {
  DebugLog(kModule, "ValidateExcel", "Start");
  if (auto identical = FirstIdenticalRows(sheet)) {
    return Breach("The Excel Rows: " + std::to_string(identical->first + 1) + " and " +
                      std::to_string(identical->second + 1) +
                      " contain identical data.  Please ensure each record contains unique data.",
                  "Identical Data Found", MessageButtons::kOk);
  }
  for (int32_t row = 2; row <= sheet.RowCount(); ++row) {
    if (auto column = FirstBlankLevelColumn(sheet, row, levels)) {
      return Breach("The Excel Row: " + std::to_string(row + 1) +
                        " Col: " + std::to_string(*column) +
                        " contains blank Level Data . Please ensure that all level columns "
                        "contain data." +
                        kRulesHelp,
                    "Invalid Key Length");
    }
  }
  return std::nullopt;
}

std::optional<RuleBreach> OverlongValue(const ExcelArray& sheet,
                                        const std::vector<int32_t>& sheet_rows,
                                        const std::function<std::string(int32_t)>& field_name) {
  for (int32_t row = 2; row <= sheet.RowCount(); ++row) {
    for (int32_t column = 2; column <= sheet.ColumnCount(); ++column) {
      size_t length = ActiveCodePage().CharacterCount(RTrim(sheet.Cell(row, column)));
      if (length <= static_cast<size_t>(kMaxImportFieldLength)) continue;
      return Breach("The Excel Row: " + std::to_string(sheet_rows[static_cast<size_t>(row - 1)]) +
                        " Col: " + std::to_string(column) + " holds " + std::to_string(length) +
                        " characters for the field '" + field_name(column) +
                        "'. A field holds at most " + std::to_string(kMaxImportFieldLength) +
                        " characters.",
                    "Value Too Long", MessageButtons::kOk);
    }
  }
  return std::nullopt;
}

std::optional<RuleBreach> KeyFormatBreach(std::string_view key, size_t width) {
  if (key.size() != width) return Breach(kUnequalKeys, "", MessageButtons::kOk);
  for (size_t at = 0; at < width; at += 2) {
    if (!IsTwoDigitCode(key.substr(at, 2))) return InvalidKeyBreach();
  }
  return std::nullopt;
}

RuleBreach InvalidKeyBreach() {
  return Breach(kInvalidKey, "", MessageButtons::kOk);
}

}  // namespace zephyr::excel
