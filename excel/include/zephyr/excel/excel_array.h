// ExcelArray: the part of the active sheet an import works on, as displayed
// text indexed (row, column) from 1. Row 1 is the heading row; column 1 the
// key column. Cells beyond a row's end read as empty text.
#ifndef ZEPHYR_EXCEL_EXCEL_ARRAY_H_
#define ZEPHYR_EXCEL_EXCEL_ARRAY_H_

#include <cstdint>
#include <string>
#include <vector>

namespace zephyr::excel {

class ExcelArray {
 public:
  ExcelArray() = default;
  explicit ExcelArray(int32_t columns) : columns_(columns) {}

  // Appends a row; cells beyond `columns` are ignored.
  void AddRow(std::vector<std::string> cells);

  int32_t RowCount() const { return static_cast<int32_t>(rows_.size()); }
  int32_t ColumnCount() const { return columns_; }

  // The cell's text; empty for a cell outside the array.
  const std::string& Cell(int32_t row, int32_t column) const;
  // The cell's text without leading and trailing blanks.
  std::string Trimmed(int32_t row, int32_t column) const;

 private:
  int32_t columns_ = 0;
  std::vector<std::vector<std::string>> rows_;
};

}  // namespace zephyr::excel

#endif  // ZEPHYR_EXCEL_EXCEL_ARRAY_H_
