#include "zephyr/table/table_records.h"

#include <algorithm>
#include <bitset>
#include <cstring>

#include "record_text.h"
#include "row_order.h"
#include "zephyr/support/errors.h"
#include "zephyr/table/collation.h"

namespace zephyr {

TableRecords::TableRecords(std::unique_ptr<char[]> records, size_t count, size_t record_length,
                           std::vector<Column> columns, const CodePage& code_page)
    : records_(std::move(records)),
      record_length_(record_length),
      columns_(std::move(columns)),
      code_page_(&code_page) {
  // A header may promise shorter records than its columns span: such cells
  // are cut at the end of the record.
  for (Column& column : columns_) {
    auto start = static_cast<size_t>(column.position - 1);
    size_t room = start < record_length_ ? record_length_ - start : 0;
    column.length = static_cast<int32_t>(std::min(static_cast<size_t>(column.length), room));
  }
  // Deleted records give way to the live ones after them.
  for (size_t record = 0; record < count; ++record) {
    const char* from = records_.get() + record * record_length_;
    if (*from == '*') continue;
    char* to = records_.get() + rows_ * record_length_;
    if (to != from) std::memcpy(to, from, record_length_);
    ++rows_;
  }
}

Variant TableRecords::Cell(int32_t column, int32_t row) const {
  if (column < 1 || column > ColumnCount() || row < 1 || row > RowCount()) {
    throw RuntimeError(
        RuntimeErrorCode::kSubscriptOutOfRange,
        "array element (" + std::to_string(column) + ", " + std::to_string(row) + ")");
  }
  if (!columns_[static_cast<size_t>(column - 1)].text) return Variant();
  std::string scratch;
  return Variant(Text(column, row, &scratch));
}

std::string_view TableRecords::Bytes(int32_t column, int32_t row) const {
  const Column& slice = columns_[static_cast<size_t>(column - 1)];
  if (!slice.text) return {};
  const char* record = records_.get() + static_cast<size_t>(row - 1) * record_length_;
  return {record + slice.position - 1, static_cast<size_t>(slice.length)};
}

std::string_view TableRecords::Text(int32_t column, int32_t row, std::string* scratch) const {
  std::string_view bytes = Bytes(column, row);
  if (ReadsAsItself(bytes)) return bytes;
  *scratch = code_page_->ToUtf8(bytes);
  return *scratch;
}

bool TableRecords::ReadsAsItself(std::string_view bytes) const {
  return code_page_->KeepsAscii() && IsAscii(bytes);
}

void TableRecords::SortBy(int32_t column) {
  const Column& key = columns_[static_cast<size_t>(column - 1)];
  // Keys of another type all read as "", and equal keys never move.
  if (!key.text || rows_ < 2) return;
  std::vector<uint32_t> order = OrderBy(column);
  // Row k takes the record at order[k]. Following each cycle of the
  // permutation moves every record once, in place; a moved row is marked in
  // the order's top bit, which row numbers never use.
  constexpr uint32_t kMoved = uint32_t{1} << 31;
  std::string held(record_length_, '\0');
  auto record = [&](size_t row) { return records_.get() + row * record_length_; };
  for (size_t start = 0; start < rows_; ++start) {
    if (order[start] & kMoved || order[start] == start) continue;
    std::memcpy(held.data(), record(start), record_length_);
    size_t row = start;
    while (order[row] != start) {
      size_t from = order[row];
      std::memcpy(record(row), record(from), record_length_);
      order[row] |= kMoved;
      row = from;
    }
    std::memcpy(record(row), held.data(), record_length_);
    order[row] |= kMoved;
  }
}

std::vector<uint32_t> TableRecords::OrderBy(int32_t column) const {
  const Column& key = columns_[static_cast<size_t>(column - 1)];
  std::bitset<256> present;
  for (int32_t row = 1; row <= RowCount(); ++row) {
    for (char c : Bytes(column, row)) present[static_cast<unsigned char>(c)] = true;
  }
  // ASCII that reads as itself is the very bytes SortTableValues compares.
  bool plain = (present >> 128).none() && code_page_->KeepsAscii();
  const CodePageCollation& collation = CodePageCollation::Of(*code_page_);
  if (plain && collation.WeighsInByteOrder(present)) {
    return SortOrder(RecordKeys(records_.get(), record_length_,
                                static_cast<size_t>(key.position - 1),
                                static_cast<size_t>(key.length), rows_));
  }
  SortKeys keys;
  keys.Reserve(rows_, rows_ * static_cast<size_t>(key.length));
  for (int32_t row = 1; row <= RowCount(); ++row) {
    std::string_view bytes = Bytes(column, row);
    if (plain) {
      keys.Buffer()->append(bytes);
    } else {
      keys.Buffer()->append(code_page_->FromUtf8(code_page_->ToUtf8(bytes)));
    }
    keys.Finish();
  }
  collation.Weigh(keys.Buffer());
  return SortOrder(keys);
}

}  // namespace zephyr
