// The import's two uniqueness rules as first written: every row compared
// with every other row. The baseline the hashing scans are measured against.
#ifndef ZEPHYR_BENCH_LITERAL_SCANS_H_
#define ZEPHYR_BENCH_LITERAL_SCANS_H_

#include <optional>
#include <utility>

#include "zephyr/excel/excel_array.h"

namespace zephyr::bench {

inline std::optional<int32_t> LiteralRepeatedKey(const excel::ExcelArray& sheet) {
  for (int32_t row = 2; row <= sheet.RowCount(); ++row) {
    for (int32_t earlier = 2; earlier < row; ++earlier) {
      if (sheet.Trimmed(row, 1) == sheet.Trimmed(earlier, 1)) return row;
    }
  }
  return std::nullopt;
}

inline std::optional<std::pair<int32_t, int32_t>> LiteralIdenticalRows(
    const excel::ExcelArray& sheet) {
  for (int32_t first = 2; first <= sheet.RowCount(); ++first) {
    for (int32_t second = first + 1; second <= sheet.RowCount(); ++second) {
      bool same = true;
      for (int32_t column = 1; same && column <= sheet.ColumnCount(); ++column) {
        same = sheet.Trimmed(first, column) == sheet.Trimmed(second, column);
      }
      if (same) return std::make_pair(first, second);
    }
  }
  return std::nullopt;
}

}  // namespace zephyr::bench

#endif  // ZEPHYR_BENCH_LITERAL_SCANS_H_
