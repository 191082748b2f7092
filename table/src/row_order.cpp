#include "row_order.h"

#include <numeric>

namespace zephyr {

void SortKeys::Reserve(size_t rows, size_t bytes) {
  ends_.reserve(rows + 1);
  bytes_.reserve(bytes);
}

uint64_t KeyPrefix(std::string_view key) {
  uint64_t prefix = 0;
  for (size_t i = 0; i < 8; ++i) {
    prefix = prefix << 8 | (i < key.size() ? static_cast<unsigned char>(key[i]) : 0u);
  }
  return prefix;
}

std::vector<uint32_t> ShellSortOrder(const std::vector<uint32_t>& ranks) {
  std::vector<uint32_t> order(ranks.size());
  std::iota(order.begin(), order.end(), 0u);
  size_t n = order.size();
  for (size_t gap = n / 2; gap > 0; gap /= 2) {
    for (size_t i = gap; i < n; ++i) {
      // The rows at 1-based j and j + gap are order[j - 1] and order[j + gap - 1].
      for (size_t j = i - gap + 1; j >= 1; j -= gap) {
        uint32_t& upper = order[j - 1];
        uint32_t& lower = order[j + gap - 1];
        if (ranks[upper] <= ranks[lower]) break;
        std::swap(upper, lower);
        if (j <= gap) break;
      }
    }
  }
  return order;
}

}  // namespace zephyr
