#include "sheet_scans.h"

#include <string>
#include <unordered_map>

namespace zephyr::excel {

std::optional<int32_t> FirstRepeatedKeyRow(const ExcelArray& sheet) {
  std::unordered_map<std::string, int32_t> seen;
  for (int32_t row = 2; row <= sheet.RowCount(); ++row) {
    if (!seen.emplace(sheet.Trimmed(row, 1), row).second) return row;
  }
  return std::nullopt;
}

std::optional<std::pair<int32_t, int32_t>> FirstIdenticalRows(const ExcelArray& sheet) {
  // Rows are joined into one text with a separator no cell holds, so equal
  // texts mean equal rows.
  auto row_text = [&](int32_t row) {
    std::string text;
    for (int32_t column = 1; column <= sheet.ColumnCount(); ++column) {
      text += sheet.Trimmed(row, column);
      text.push_back('\0');
    }
    return text;
  };
  // For every group of identical rows: its first row and its second.
  std::unordered_map<std::string, std::pair<int32_t, int32_t>> groups;
  std::optional<std::pair<int32_t, int32_t>> best;
  for (int32_t row = 2; row <= sheet.RowCount(); ++row) {
    auto [group, first] = groups.try_emplace(row_text(row), row, 0);
    if (first || group->second.second != 0) continue;
    group->second.second = row;
    if (!best || group->second.first < best->first) best = group->second;
  }
  return best;
}

}  // namespace zephyr::excel
