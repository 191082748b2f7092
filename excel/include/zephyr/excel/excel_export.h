// Exporting a popup to a new workbook or CSV file that the import reads back: a heading
// row (the key field's name, the level questions, the companion field names)
// and one row per leaf with its key as text, the texts of the items on its
// path and its companion values.
#ifndef ZEPHYR_EXCEL_EXCEL_EXPORT_H_
#define ZEPHYR_EXCEL_EXCEL_EXPORT_H_

#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "zephyr/runtime/popup_class.h"

namespace zephyr::excel {

struct ExportReport {
  int64_t rows_written = 0;
  // One line for each item that the import could not bring back as it is
  // (a leaf above the deepest level, a parent's companion values, a blank
  // text); everything else is written all the same.
  std::vector<std::string> cannot_round_trip;
};

// Writes the popup's items to a new workbook at `path` (replacing it): .xlsx,
// whose one sheet is named after the title as far as sheet names allow, or
// .csv (UTF-8, RFC 4180 quoting, CR LF). Raises a run-time error naming the
// file when it cannot be written or has another extension.
ExportReport ExportToWorkbook(PopupClass& popup, const std::string& path);

// The rows an export writes, the heading row first, and its report: for
// writers of other places, such as a running spreadsheet program.
struct ExportedRows {
  std::vector<std::vector<std::string>> rows;
  ExportReport report;
};
ExportedRows ExportRows(PopupClass& popup);

// A sheet name the workbook formats accept, made from a title: at most 31
// characters, none of []:*?/\, no apostrophe or blank at either end; "Popup"
// when nothing is left.
std::string ExportSheetName(const std::string& title);

// The same rows as CSV text on a stream; `name` stands for it in errors.
ExportReport ExportToCsv(PopupClass& popup, std::ostream& out, const std::string& name);

// One CSV field: quoted, with doubled quotes, when it holds a comma, a quote
// or a line break.
std::string CsvField(std::string_view text);

}  // namespace zephyr::excel

#endif  // ZEPHYR_EXCEL_EXCEL_EXPORT_H_
