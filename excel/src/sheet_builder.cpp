#include "sheet_builder.h"

#include <algorithm>

namespace zephyr::excel {

namespace {

// Heap bytes a text takes beyond its Cell; short texts live inside the string.
size_t TextBytes(std::string_view text) {
  return text.size() < 16 ? 0 : text.size() + 1;
}

}  // namespace

SheetBuilder::SheetBuilder(std::string path, std::string name) : path_(std::move(path)) {
  sheet_.name = std::move(name);
}

void SheetBuilder::Charge(size_t bytes) {
  bytes_ += bytes;
  if (bytes_ > WorkbookLimits::kMaxSheetBytes) {
    throw WorkbookError(WorkbookError::Kind::kTooLarge, path_,
                        "sheet '" + sheet_.name + "' holds more cells than can be read");
  }
}

void SheetBuilder::SetCell(size_t row, size_t column, CellKind kind, std::string_view text) {
  if (row >= WorkbookLimits::kMaxRows) {
    throw WorkbookError(WorkbookError::Kind::kTooLarge, path_,
                        "sheet '" + sheet_.name + "' has a cell beyond the last row");
  }
  if (column >= WorkbookLimits::kMaxColumns) {
    throw WorkbookError(WorkbookError::Kind::kTooLarge, path_,
                        "sheet '" + sheet_.name + "' has a cell beyond the last column");
  }
  std::vector<SheetRow>& rows = sheet_.rows;
  if (row >= rows.size()) {
    Charge((row + 1 - rows.size()) * sizeof(SheetRow));
    rows.resize(row + 1);
  }
  std::vector<Cell>& cells = rows[row].cells;
  // Rows tend to be as wide as the one before: one allocation instead of
  // several. The guess is capped so that one wide row costs little.
  if (cells.empty() && row > 0) {
    constexpr size_t kMaxGuess = 64;
    size_t width = std::max(column + 1, std::min(rows[row - 1].cells.size(), kMaxGuess));
    cells.reserve(width);
    Charge(width * sizeof(Cell));
  }
  if (column >= cells.size()) {
    // Vectors grow geometrically; charge the capacity actually taken.
    size_t before = cells.capacity();
    cells.resize(column + 1);
    Charge((cells.capacity() - before) * sizeof(Cell));
  }
  Charge(TextBytes(text));
  Cell& cell = cells[column];
  cell.kind = kind;
  cell.text.assign(text.data(), text.size());
}

void SheetBuilder::HideRows(size_t first_row, size_t count) {
  if (count == 0 || first_row >= WorkbookLimits::kMaxRows) return;
  count = std::min(count, WorkbookLimits::kMaxRows - first_row);
  if (!hidden_.empty() && hidden_.back().first + hidden_.back().second == first_row) {
    hidden_.back().second += count;
    return;
  }
  Charge(sizeof(hidden_[0]));
  hidden_.emplace_back(first_row, count);
}

Sheet SheetBuilder::Finish() {
  std::vector<SheetRow>& rows = sheet_.rows;
  auto holds_something = [](const SheetRow& row) {
    return std::any_of(row.cells.begin(), row.cells.end(),
                       [](const Cell& cell) { return cell.kind != CellKind::kEmpty; });
  };
  while (!rows.empty() && !holds_something(rows.back())) rows.pop_back();
  for (const auto& [first, count] : hidden_) {
    for (size_t row = first; row < rows.size() && row - first < count; ++row) {
      rows[row].hidden = true;
    }
  }
  return std::move(sheet_);
}

}  // namespace zephyr::excel
