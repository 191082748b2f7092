#include "zephyr/excel/excel_array.h"

#include "zephyr/support/text.h"

namespace zephyr::excel {

namespace {
const std::string kEmpty;
}  // namespace

void ExcelArray::AddRow(std::vector<std::string> cells) {
  if (cells.size() > static_cast<size_t>(columns_)) cells.resize(static_cast<size_t>(columns_));
  rows_.push_back(std::move(cells));
}

const std::string& ExcelArray::Cell(int32_t row, int32_t column) const {
  if (row < 1 || row > RowCount() || column < 1) return kEmpty;
  const auto& cells = rows_[static_cast<size_t>(row - 1)];
  return static_cast<size_t>(column) <= cells.size() ? cells[static_cast<size_t>(column - 1)]
                                                     : kEmpty;
}

std::string ExcelArray::Trimmed(int32_t row, int32_t column) const {
  return std::string(Trim(Cell(row, column)));
}

}  // namespace zephyr::excel
