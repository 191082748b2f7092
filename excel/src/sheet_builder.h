// SheetBuilder: collects the cells of one sheet in any order into the dense
// rows of a Sheet, within WorkbookLimits. Readers pass only cells that hold
// something, so a claimed extent or a far-away empty cell costs nothing;
// every byte stored is charged against kMaxSheetBytes.
#ifndef ZEPHYR_EXCEL_SRC_SHEET_BUILDER_H_
#define ZEPHYR_EXCEL_SRC_SHEET_BUILDER_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "zephyr/excel/workbook.h"

namespace zephyr::excel {

class SheetBuilder {
 public:
  // `path` names the file in errors.
  SheetBuilder(std::string path, std::string name);

  // Stores a cell at a 0-based row and column, replacing what was there.
  // Raises WorkbookError (kTooLarge) beyond kMaxRows, kMaxColumns or
  // kMaxSheetBytes.
  void SetCell(size_t row, size_t column, CellKind kind, std::string_view text);

  // Flags `count` rows from `first_row` (0-based) as hidden; rows past the
  // last stored cell are ignored, so any count is cheap.
  void HideRows(size_t first_row, size_t count);

  // The sheet with trailing empty rows dropped and hidden flags applied.
  Sheet Finish();

 private:
  void Charge(size_t bytes);

  std::string path_;
  Sheet sheet_;
  size_t bytes_ = 0;
  std::vector<std::pair<size_t, size_t>> hidden_;  // first row, count
};

}  // namespace zephyr::excel

#endif  // ZEPHYR_EXCEL_SRC_SHEET_BUILDER_H_
