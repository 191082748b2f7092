// The bulk operations of dBase: a whole table into a table array, sorting
// such an array, and appending one.
#include <algorithm>
#include <bitset>
#include <cstdint>
#include <limits>

#include "huge_pages.h"
#include "row_order.h"
#include "zephyr/support/codepage.h"
#include "zephyr/table/collation.h"
#include "zephyr/table/dbase.h"

namespace zephyr {

namespace {

[[noreturn]] void RaiseArrayError(int32_t number, const char* description) {
  throw AutomationError(number, kDBaseErrorSource, description);
}

int32_t ElementCount(const VariantArray& array, int dimension) {
  return array.UBound(dimension) - array.LBound(dimension) + 1;
}

// Puts row order[k] at row k (0-based) by following the permutation's
// cycles, so each row block moves once and no second array is needed.
void PermuteRows(VariantArray* array, const std::vector<uint32_t>& order) {
  const auto columns = static_cast<size_t>(ElementCount(*array, 1));
  std::vector<Variant>& elements = array->Elements();
  auto row = [&](size_t r) { return elements.begin() + static_cast<std::ptrdiff_t>(r * columns); };
  std::vector<bool> placed(order.size(), false);
  std::vector<Variant> held(columns);
  for (size_t start = 0; start < order.size(); ++start) {
    if (placed[start] || order[start] == start) continue;
    std::move(row(start), row(start) + columns, held.begin());
    size_t target = start;
    while (order[target] != start) {
      size_t source = order[target];
      std::move(row(source), row(source) + columns, row(target));
      placed[target] = true;
      target = source;
    }
    std::move(held.begin(), held.end(), row(target));
    placed[target] = true;
  }
}

}  // namespace

std::unique_ptr<TableRecords> dBase::ReadRecords() {
  if (!FileExists()) return nullptr;
  WriteHeldRecords();
  ReadHeader();
  if (header_.record_count == 0) return nullptr;

  const int64_t count = header_.record_count;
  const auto record_length = static_cast<size_t>(record_length_);
  if (record_length == 0) {
    throw RuntimeError(
        RuntimeErrorCode::kPathFileAccessError,
        "'" + filename_ + "' promises " + std::to_string(count) + " records of length 0");
  }
  const int64_t first = RecordOffset(1);
  const uint64_t size = file_.Size();
  const int64_t held = size > static_cast<uint64_t>(first)
                           ? static_cast<int64_t>((size - first) / record_length)
                           : 0;
  if (held < count) {
    throw RuntimeError(RuntimeErrorCode::kInputPastEndOfFile,
                       "record " + std::to_string(held + 1) + " of '" + filename_ +
                           "' lies beyond the end of the file");
  }
  if (count > std::numeric_limits<int32_t>::max()) {
    throw RuntimeError(RuntimeErrorCode::kOverflow,
                       "'" + filename_ + "' holds too many records for an array");
  }

  const size_t bytes = static_cast<size_t>(count) * record_length;
  auto records = std::make_unique_for_overwrite<char[]>(bytes);
  AdviseHugePages(records.get(), bytes);
  size_t got = file_.ReadAt(static_cast<uint64_t>(first), records.get(), bytes);
  if (got < bytes) {
    throw RuntimeError(RuntimeErrorCode::kInputPastEndOfFile,
                       "record " + std::to_string(got / record_length + 1) + " of '" + filename_ +
                           "' lies beyond the end of the file");
  }
  // The buffer ends holding the last record, as after reading it alone.
  buffer_.assign(records.get() + bytes - record_length, record_length);
  record_no_ = static_cast<int32_t>(count);

  std::vector<TableRecords::Column> columns;
  for (const auto& field : Columns()) {
    columns.push_back({field->FieldType() == "C", field->Position(), field->Length()});
  }
  auto table = std::make_unique<TableRecords>(std::move(records), static_cast<size_t>(count),
                                              record_length, std::move(columns), ActiveCodePage());
  if (table->RowCount() == 0) {
    // With every record deleted there is no row to keep: the error a table
    // array sized to no rows raises.
    throw RuntimeError(RuntimeErrorCode::kSubscriptOutOfRange,
                       "cannot resize an array to upper bound 0");
  }
  return table;
}

Variant dBase::GetTableValues() {
  std::unique_ptr<TableRecords> records = ReadRecords();
  if (!records) return Variant();
  // Elements are appended row by row and handed to the array at the end, so
  // each one is written once.
  std::vector<Variant> elements;
  elements.reserve(static_cast<size_t>(records->ColumnCount()) *
                   static_cast<size_t>(records->RowCount()));
  AdviseHugePages(elements.data(), elements.capacity() * sizeof(Variant));
  for (int32_t row = 1; row <= records->RowCount(); ++row) {
    for (int32_t column = 1; column <= records->ColumnCount(); ++column) {
      elements.push_back(records->Cell(column, row));
    }
  }
  VariantArray table({1, records->ColumnCount()}, {1, 0});
  table.Elements() = std::move(elements);
  table.RedimPreserve(records->RowCount());
  return Variant(std::move(table));
}

Variant& dBase::SortTableValues(Variant& values, int32_t sort_column, bool descending) {
  VariantArray* array = values.AsArray();
  if (!array || ElementCount(*array, 1) <= 0) {
    RaiseArrayError(kDBaseArrayHasNoColumns, "Array has no columns");
  }
  if (array->Dimensions() < 2 || ElementCount(*array, 2) <= 0) {
    RaiseArrayError(kDBaseArrayHasNoRows, "Array has no rows");
  }
  if (array->LBound(1) != 1) RaiseArrayError(kDBaseColumnsNotBase1, "Array columns must be Base 1");
  if (array->LBound(2) != 1) RaiseArrayError(kDBaseRowsNotBase1, "Array rows must be Base 1");
  if (sort_column < 1 || sort_column > array->UBound(1)) {
    RaiseArrayError(kDBaseInvalidSortColumn, "Invalid Sort Column");
  }

  const CodePage& code_page = ActiveCodePage();
  const int32_t rows = array->UBound(2);
  SortKeys keys;
  keys.Reserve(static_cast<size_t>(rows), 0);
  std::bitset<256> present;
  for (int32_t r = 1; r <= rows; ++r) {
    const Variant& value = array->At(sort_column, r);
    std::string bytes = code_page.FromUtf8(value.IsText() ? value.Text() : value.ToText());
    for (char& c : bytes) {
      if (descending) c = static_cast<char>(255 - static_cast<unsigned char>(c));
      present[static_cast<unsigned char>(c)] = true;
    }
    keys.Buffer()->append(bytes);
    keys.Finish();
  }
  const CodePageCollation& collation = CodePageCollation::Of(code_page);
  if (!collation.WeighsInByteOrder(present)) collation.Weigh(keys.Buffer());
  PermuteRows(array, SortOrder(keys));
  return values;
}

void dBase::PutTableValues(Variant& values) {
  const VariantArray* array = values.AsArray();
  if (!FileExists() || !array) return;
  auto dimension1 = [](const Variant& element) {
    const VariantArray* inner = element.AsArray();
    if (!inner) {
      throw RuntimeError(RuntimeErrorCode::kTypeMismatch, "an array element is no array");
    }
    return ElementCount(*inner, 1);
  };
  if (dimension1(array->At(2)) == 0) return;
  if (dimension1(array->At(1)) != Columns().Count()) {
    RaiseArrayError(kDBaseArrayDoesNotMatchFields, "Array does not match Fields");
  }
  batch_ = true;
  for (int32_t r = array->LBound(2); r <= array->UBound(2); ++r) {
    InitRecord();
    int32_t column = 1;
    for (int32_t k = array->LBound(1); k <= array->UBound(1); ++k) {
      Value(column++, array->At(k, r));
    }
    PutRecord(0);
  }
  batch_ = false;
}

}  // namespace zephyr
