// The row order of SortTableValues, worked out on sort keys alone.
#ifndef ZEPHYR_TABLE_ROW_ORDER_H_
#define ZEPHYR_TABLE_ROW_ORDER_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zephyr {

// One sort key per row, packed into one buffer. Keys compare as plain
// strings (CodePageCollation::AppendSortKey makes them so).
class SortKeys {
 public:
  SortKeys() { ends_.push_back(0); }

  void Reserve(size_t rows, size_t bytes);
  // Grows the next key; Finish closes it.
  std::string* Buffer() { return &bytes_; }
  void Finish() { ends_.push_back(bytes_.size()); }

  size_t Count() const { return ends_.size() - 1; }
  std::string_view Key(size_t row) const {
    return std::string_view(bytes_).substr(ends_[row], ends_[row + 1] - ends_[row]);
  }

 private:
  std::string bytes_;
  std::vector<size_t> ends_;
};

// The order a Shell sort with halving gaps leaves the rows in: with n rows
// and gap = n / 2, n / 4, ... 1, each row from gap on sinks by steps of gap
// while the row one gap above it has a greater key. Result[k] is the 0-based
// row that ends at position k. Quadratic at worst; the reference for
// SortOrder.
std::vector<uint32_t> ShellSortOrder(const SortKeys& keys);

// The same order as ShellSortOrder. When all keys differ, the sorted order is
// the only possible result and comes from an O(n log n) sort; only keys that
// compare equal (whose relative order depends on the algorithm) make it run
// the Shell sort itself.
std::vector<uint32_t> SortOrder(const SortKeys& keys);

}  // namespace zephyr

#endif  // ZEPHYR_TABLE_ROW_ORDER_H_
