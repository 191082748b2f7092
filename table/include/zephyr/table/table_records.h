// TableRecords: the live records of a table, read in one piece and kept as
// their bytes. A cell becomes a value only when it is asked for, so a table
// in memory takes little more than its file; GetTableValues makes every cell
// a Variant at once.
//
// Rows are numbered from 1, in file order until SortBy orders them. Once
// sorted the records are only read, and may be shared between threads.
#ifndef ZEPHYR_TABLE_TABLE_RECORDS_H_
#define ZEPHYR_TABLE_TABLE_RECORDS_H_

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "zephyr/support/codepage.h"
#include "zephyr/support/variant.h"

namespace zephyr {

class TableRecords {
 public:
  // Where a column's value lies in every record.
  struct Column {
    bool text;         // a "C" column; columns of other types read as empty
    int32_t position;  // 1-based in the record; byte 1 is the deletion mark
    int32_t length;
  };

  // Takes `count` records of `record_length` bytes each and keeps those not
  // marked deleted, whose cells are converted from `code_page`.
  TableRecords(std::unique_ptr<char[]> records, size_t count, size_t record_length,
               std::vector<Column> columns, const CodePage& code_page);

  int32_t ColumnCount() const { return static_cast<int32_t>(columns_.size()); }
  int32_t RowCount() const { return static_cast<int32_t>(rows_); }

  // The cell as GetTableValues gives it: the text of a "C" column, trailing
  // blanks included, or an empty Variant. A column or row outside the table
  // raises subscript out of range (9).
  Variant Cell(int32_t column, int32_t row) const;

  // The cell's bytes in the code page; none for a column that is not "C".
  // Column and row must lie inside the table.
  std::string_view Bytes(int32_t column, int32_t row) const;
  // The cell's text in UTF-8 ("" for a column that is not "C"): its bytes
  // when they read the same in UTF-8, otherwise converted into *scratch.
  std::string_view Text(int32_t column, int32_t row, std::string* scratch) const;
  // Whether bytes of the code page read the same in UTF-8.
  bool ReadsAsItself(std::string_view bytes) const;

  const CodePage& CodePageOf() const { return *code_page_; }

  // Orders the rows by a column exactly as SortTableValues orders a table
  // array of these cells, ascending. The records are moved into that order,
  // so that reading the rows in turn reads memory in turn.
  void SortBy(int32_t column);

 private:
  // The record that each row takes when sorted by the column.
  std::vector<uint32_t> OrderBy(int32_t column) const;

  std::unique_ptr<char[]> records_;  // the rows' records, one after another
  size_t rows_ = 0;
  size_t record_length_;
  std::vector<Column> columns_;
  const CodePage* code_page_;
};

}  // namespace zephyr

#endif  // ZEPHYR_TABLE_TABLE_RECORDS_H_
