// Shared helpers of the table tests: building tables through the public
// interface and reading header fields straight from the bytes on disk.
#ifndef ZEPHYR_TESTS_TABLE_TABLE_TEST_UTIL_H_
#define ZEPHYR_TESTS_TABLE_TABLE_TEST_UTIL_H_

#include <cstdint>
#include <ctime>
#include <string>
#include <utility>
#include <vector>

#include "zephyr/table/dbase.h"

namespace zephyr::testing {

struct Column {
  std::string name;
  std::string type;
  int32_t length;
};

using Rows = std::vector<std::vector<std::string>>;

// Creates path with the columns and appends the rows one record at a time.
inline void CreateTable(const std::string& path, const std::vector<Column>& columns,
                        const Rows& rows) {
  dBase table;
  for (const Column& column : columns) {
    table.Fields()->Add(column.name, column.type, column.length, 0, 0);
  }
  table.OpenMode(dBase::kCreate);
  table.OpenFile(path);
  for (const auto& row : rows) {
    table.InitRecord();
    for (size_t c = 0; c < row.size(); ++c) table.Value(static_cast<int32_t>(c + 1), row[c]);
    table.PutRecord(0);
  }
  table.CloseFile();
}

inline uint32_t Le32(const std::string& bytes, size_t offset) {
  uint32_t value = 0;
  for (size_t i = 0; i < 4; ++i)
    value |= uint32_t{static_cast<unsigned char>(bytes[offset + i])} << (8 * i);
  return value;
}

inline void PutLe32(std::string* bytes, size_t offset, uint32_t value) {
  for (size_t i = 0; i < 4; ++i) (*bytes)[offset + i] = static_cast<char>(value >> (8 * i));
}

inline void PutLe16(std::string* bytes, size_t offset, uint16_t value) {
  (*bytes)[offset] = static_cast<char>(value);
  (*bytes)[offset + 1] = static_cast<char>(value >> 8);
}

// Today's date as the header stores it: year + 100, month, day.
inline std::string TodayBytes() {
  std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  return {static_cast<char>(local.tm_year % 100 + 100), static_cast<char>(local.tm_mon + 1),
          static_cast<char>(local.tm_mday)};
}

// The text values of a table array, row by row.
inline Rows ArrayRows(const Variant& values) {
  Rows rows;
  const VariantArray* array = values.AsArray();
  if (!array) return rows;
  for (int32_t r = 1; r <= array->UBound(2); ++r) {
    rows.emplace_back();
    for (int32_t c = 1; c <= array->UBound(1); ++c) rows.back().push_back(array->At(c, r).ToText());
  }
  return rows;
}

// The cells of table records as text, row by row.
inline Rows RecordRows(const TableRecords& records) {
  Rows rows;
  for (int32_t r = 1; r <= records.RowCount(); ++r) {
    rows.emplace_back();
    for (int32_t c = 1; c <= records.ColumnCount(); ++c) {
      rows.back().push_back(records.Cell(c, r).ToText());
    }
  }
  return rows;
}

// The columns of an open table as "NAME type length@position".
inline std::vector<std::string> ColumnsOf(dBase& table) {
  std::vector<std::string> columns;
  for (const auto& field : *table.Fields()) {
    columns.push_back(field->Name() + " " + field->FieldType() + std::to_string(field->Length()) +
                      "@" + std::to_string(field->Position()));
  }
  return columns;
}

}  // namespace zephyr::testing

#endif  // ZEPHYR_TESTS_TABLE_TABLE_TEST_UTIL_H_
