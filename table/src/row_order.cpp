#include "row_order.h"

#include <algorithm>
#include <numeric>

namespace zephyr {

namespace {

// The first eight key bytes as a big-endian number, so most comparisons of
// distinct keys are one integer comparison.
uint64_t Prefix(std::string_view key) {
  uint64_t prefix = 0;
  for (size_t i = 0; i < 8; ++i) {
    prefix = prefix << 8 | (i < key.size() ? static_cast<unsigned char>(key[i]) : 0u);
  }
  return prefix;
}

struct Entry {
  uint64_t prefix;
  uint32_t row;
};

}  // namespace

void SortKeys::Reserve(size_t rows, size_t bytes) {
  ends_.reserve(rows + 1);
  bytes_.reserve(bytes);
}

std::vector<uint32_t> ShellSortOrder(const SortKeys& keys) {
  std::vector<uint32_t> order(keys.Count());
  std::iota(order.begin(), order.end(), 0u);
  size_t n = order.size();
  for (size_t gap = n / 2; gap > 0; gap /= 2) {
    for (size_t i = gap; i < n; ++i) {
      // The rows at 1-based j and j + gap are order[j - 1] and order[j + gap - 1].
      for (size_t j = i - gap + 1; j >= 1; j -= gap) {
        uint32_t& upper = order[j - 1];
        uint32_t& lower = order[j + gap - 1];
        if (keys.Key(upper) <= keys.Key(lower)) break;
        std::swap(upper, lower);
        if (j <= gap) break;
      }
    }
  }
  return order;
}

std::vector<uint32_t> SortOrder(const SortKeys& keys) {
  std::vector<Entry> entries(keys.Count());
  for (size_t row = 0; row < entries.size(); ++row) {
    entries[row] = {Prefix(keys.Key(row)), static_cast<uint32_t>(row)};
  }
  std::sort(entries.begin(), entries.end(), [&](const Entry& a, const Entry& b) {
    if (a.prefix != b.prefix) return a.prefix < b.prefix;
    return keys.Key(a.row) < keys.Key(b.row);
  });
  for (size_t k = 1; k < entries.size(); ++k) {
    if (entries[k].prefix == entries[k - 1].prefix &&
        keys.Key(entries[k].row) == keys.Key(entries[k - 1].row)) {
      return ShellSortOrder(keys);
    }
  }
  std::vector<uint32_t> order(entries.size());
  for (size_t k = 0; k < entries.size(); ++k) order[k] = entries[k].row;
  return order;
}

}  // namespace zephyr
