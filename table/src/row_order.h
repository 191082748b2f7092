// The row order of SortTableValues, worked out on sort keys alone.
#ifndef ZEPHYR_TABLE_ROW_ORDER_H_
#define ZEPHYR_TABLE_ROW_ORDER_H_

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "huge_pages.h"

namespace zephyr {

// One sort key per row, packed into one buffer. Keys compare as plain
// strings (CodePageCollation::Weigh makes them so where bytes alone do not).
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

// The keys of fixed width that lie at one offset in consecutive records of
// fixed length: a column of a record block, compared where it lies.
class RecordKeys {
 public:
  RecordKeys(const char* records, size_t record_length, size_t offset, size_t width, size_t count)
      : records_(records + offset), record_length_(record_length), width_(width), count_(count) {}

  size_t Count() const { return count_; }
  std::string_view Key(size_t row) const { return {records_ + row * record_length_, width_}; }

 private:
  const char* records_;
  size_t record_length_;
  size_t width_;
  size_t count_;
};

// The order a Shell sort with halving gaps leaves the rows in when row r
// carries ranks[r]: with n rows and gap = n / 2, n / 4, ... 1, each row from
// gap on sinks by steps of gap while the row one gap above it has a greater
// rank. Result[k] is the 0-based row that ends at position k. Quadratic at
// worst; the reference for SortOrder.
std::vector<uint32_t> ShellSortOrder(const std::vector<uint32_t>& ranks);

// The first eight key bytes as a big-endian number, so that most
// comparisons of distinct keys are one integer comparison.
uint64_t KeyPrefix(std::string_view key);

// The same order as ShellSortOrder on the keys' ranks (Keys: SortKeys or
// RecordKeys). When all keys differ, the sorted order is the only possible
// result and comes from an O(n log n) sort; only keys that compare equal
// (whose relative order depends on the algorithm) make the Shell sort itself
// run, on the ranks.
template <typename Keys>
std::vector<uint32_t> SortOrder(const Keys& keys) {
  struct Entry {
    uint64_t prefix;
    uint32_t row;
  };
  std::vector<Entry> entries;
  entries.reserve(keys.Count());
  AdviseHugePages(entries.data(), keys.Count() * sizeof(Entry));
  for (size_t row = 0; row < keys.Count(); ++row) {
    entries.push_back({KeyPrefix(keys.Key(row)), static_cast<uint32_t>(row)});
  }
  std::sort(entries.begin(), entries.end(), [&](const Entry& a, const Entry& b) {
    if (a.prefix != b.prefix) return a.prefix < b.prefix;
    return keys.Key(a.row) < keys.Key(b.row);
  });
  auto tied = [&](size_t k) {
    return entries[k].prefix == entries[k - 1].prefix &&
           keys.Key(entries[k].row) == keys.Key(entries[k - 1].row);
  };
  size_t first_tie = 1;
  while (first_tie < entries.size() && !tied(first_tie)) ++first_tie;
  if (first_tie >= entries.size()) {
    std::vector<uint32_t> order(entries.size());
    for (size_t k = 0; k < entries.size(); ++k) order[k] = entries[k].row;
    return order;
  }
  std::vector<uint32_t> ranks(entries.size());
  uint32_t rank = 0;
  for (size_t k = 0; k < entries.size(); ++k) {
    if (k > 0 && !tied(k)) rank = static_cast<uint32_t>(k);
    ranks[entries[k].row] = rank;
  }
  return ShellSortOrder(ranks);
}

}  // namespace zephyr

#endif  // ZEPHYR_TABLE_ROW_ORDER_H_
