// The bulk operations of dBase: a whole table into a table array, sorting
// such an array, and appending one.
#include <sys/mman.h>

#include <algorithm>
#include <cstdint>
#include <limits>

#include "record_text.h"
#include "row_order.h"
#include "zephyr/support/codepage.h"
#include "zephyr/table/collation.h"
#include "zephyr/table/dbase.h"

namespace zephyr {

namespace {

// Records are read in slices of about this many bytes: few system calls,
// little memory beyond the array itself.
constexpr size_t kReadSliceBytes = size_t{1} << 20;

// Where a column's value lies in every record; text only for "C" columns.
struct ColumnSlice {
  bool text;
  int32_t position;
  int32_t length;
};

// The table array of a large table spans hundreds of megabytes; huge pages
// spare most of the page faults of filling it.
void AdviseHugePages(void* start, size_t bytes) {
  constexpr uintptr_t kHugePage = uintptr_t{2} << 20;
  auto first = (reinterpret_cast<uintptr_t>(start) + kHugePage - 1) & ~(kHugePage - 1);
  auto last = (reinterpret_cast<uintptr_t>(start) + bytes) & ~(kHugePage - 1);
  if (last > first) ::madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
}

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

Variant dBase::GetTableValues() {
  if (!FileExists()) return Variant();
  ReadHeader();
  if (header_.record_count == 0) return Variant();

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

  zephyr::Fields& columns = Columns();
  std::vector<ColumnSlice> slices;
  for (const auto& field : columns) {
    slices.push_back({field->FieldType() == "C", field->Position(), field->Length()});
  }
  const size_t width = slices.size();
  // Elements are appended row by row and handed to the array at the end, so
  // each one is written once.
  std::vector<Variant> elements;
  elements.reserve(static_cast<size_t>(count) * width);
  AdviseHugePages(elements.data(), elements.capacity() * sizeof(Variant));
  const CodePage& code_page = ActiveCodePage();

  std::string chunk;
  const size_t per_slice = std::max<size_t>(1, kReadSliceBytes / record_length);
  size_t rows = 0;
  for (int64_t done = 0; done < count;) {
    size_t records = static_cast<size_t>(std::min<int64_t>(per_slice, count - done));
    chunk.resize(records * record_length);
    if (file_.ReadAt(first + done * record_length_, chunk.data(), chunk.size()) < chunk.size()) {
      throw RuntimeError(RuntimeErrorCode::kInputPastEndOfFile,
                         "record " + std::to_string(done + 1) + " of '" + filename_ +
                             "' lies beyond the end of the file");
    }
    for (size_t r = 0; r < records; ++r) {
      std::string_view record(chunk.data() + r * record_length, record_length);
      if (record[0] == '*') continue;
      ++rows;
      for (const ColumnSlice& slice : slices) {
        if (slice.text) {
          elements.emplace_back(
              code_page.ToUtf8(RecordSlice(record, slice.position, slice.length)));
        } else {
          elements.emplace_back();
        }
      }
    }
    done += static_cast<int64_t>(records);
  }
  // The buffer ends holding the last record, as after reading it alone.
  buffer_.assign(chunk.data() + chunk.size() - record_length, record_length);
  record_no_ = static_cast<int32_t>(count);

  VariantArray table({1, static_cast<int32_t>(width)}, {1, 0});
  table.Elements() = std::move(elements);
  // With every record deleted there is no row to keep: subscript out of range.
  table.RedimPreserve(static_cast<int32_t>(rows));
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
  const CodePageCollation& collation = CodePageCollation::Active();
  const int32_t rows = array->UBound(2);
  SortKeys keys;
  keys.Reserve(static_cast<size_t>(rows), 0);
  for (int32_t r = 1; r <= rows; ++r) {
    const Variant& value = array->At(sort_column, r);
    std::string bytes = code_page.FromUtf8(value.IsText() ? value.Text() : value.ToText());
    collation.AppendSortKey(bytes, descending, keys.Buffer());
    keys.Finish();
  }
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
