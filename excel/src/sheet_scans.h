// The two whole-sheet uniqueness rules of the import, by hashing. Each names
// the same rows as comparing every row with every other row would.
#ifndef ZEPHYR_EXCEL_SHEET_SCANS_H_
#define ZEPHYR_EXCEL_SHEET_SCANS_H_

#include <cstdint>
#include <optional>
#include <utility>

#include "zephyr/excel/excel_array.h"

namespace zephyr::excel {

// The first data row (2 and up) whose trimmed key (column 1) equals the key
// of an earlier data row.
std::optional<int32_t> FirstRepeatedKeyRow(const ExcelArray& sheet);

// The first pair of data rows (r1 < r2) whose trimmed cells are all equal:
// the smallest r1 that has an identical later row, and the first such r2.
std::optional<std::pair<int32_t, int32_t>> FirstIdenticalRows(const ExcelArray& sheet);

}  // namespace zephyr::excel

#endif  // ZEPHYR_EXCEL_SHEET_SCANS_H_
