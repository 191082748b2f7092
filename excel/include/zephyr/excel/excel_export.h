// Exporting a popup to a new workbook that the import reads back: a heading
// row (the key field's name, the level questions, the companion field names)
// and one row per leaf with its key as text, the texts of the items on its
// path and its companion values.
#ifndef ZEPHYR_EXCEL_EXCEL_EXPORT_H_
#define ZEPHYR_EXCEL_EXCEL_EXPORT_H_

#include <cstdint>
#include <string>
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

// Writes the popup's items to a new .xlsx workbook at `path` (replacing it).
// Raises a run-time error naming the file when it cannot be written.
ExportReport ExportToWorkbook(PopupClass& popup, const std::string& path);

}  // namespace zephyr::excel

#endif  // ZEPHYR_EXCEL_EXCEL_EXPORT_H_
