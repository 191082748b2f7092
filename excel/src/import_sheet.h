// The reading step of an import: the active worksheet of a workbook file as
// the cells the rules and builders work on.
#ifndef ZEPHYR_EXCEL_IMPORT_SHEET_H_
#define ZEPHYR_EXCEL_IMPORT_SHEET_H_

#include <cstdint>
#include <functional>
#include <string>
#include <variant>
#include <vector>

#include "sheet_rules.h"
#include "zephyr/excel/excel_array.h"
#include "zephyr/excel/workbook.h"
#include "zephyr/support/progress.h"

namespace zephyr::excel {

struct ImportSheet {
  // From A1 to the last used column, up to the stop row (the first whose key
  // and first level are both empty), hidden rows left out, error values
  // (#N/A) read as empty text.
  ExcelArray cells;
  // The sheet row of each row of `cells`.
  std::vector<int32_t> sheet_rows;
  // The workbook's file: the source's name, or the file of the document open
  // in a program.
  std::string workbook_path;
};

// Reads the active worksheet. A workbook that cannot be read, has no sheets
// or whose active sheet is no worksheet, and a sheet with fewer than two used
// rows, come back as a breach; `unreadable` hears of a file that cannot be
// read at all before that.
std::variant<ImportSheet, RuleBreach> GetExcelBounds(
    const SheetSource& source, Progress& progress,
    const std::function<void(const WorkbookError&)>& unreadable);

}  // namespace zephyr::excel

#endif  // ZEPHYR_EXCEL_IMPORT_SHEET_H_
