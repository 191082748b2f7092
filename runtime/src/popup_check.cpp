#include "zephyr/runtime/popup_check.h"

#include <algorithm>
#include <deque>
#include <unordered_map>
#include <unordered_set>

#include "zephyr/runtime/popup_key.h"
#include "zephyr/support/text.h"

namespace zephyr {

namespace {

bool AllDigits(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

std::string Quote(std::string_view key) {
  return "'" + std::string(key) + "'";
}

// The rows the loader would place in the tree: those reachable from the root
// through child patterns.
std::vector<bool> ReachableRows(const std::vector<std::string>& keys, int levels) {
  size_t compared = static_cast<size_t>(2 * levels - 2);
  std::unordered_map<std::string_view, std::vector<size_t>> groups;
  for (size_t i = 0; i < keys.size(); ++i) {
    if (keys[i].size() >= compared)
      groups[std::string_view(keys[i]).substr(0, compared)].push_back(i);
  }
  std::vector<bool> reached(keys.size(), false);
  std::unordered_set<std::string> visited;
  std::deque<std::string> patterns{ChildPattern("", levels)};
  while (!patterns.empty()) {
    std::string pattern = std::move(patterns.front());
    patterns.pop_front();
    if (pattern.back() != '*' || !visited.insert(pattern).second) continue;
    auto group = groups.find(std::string_view(pattern).substr(0, compared));
    if (group == groups.end()) continue;
    for (size_t row : group->second) {
      if (reached[row]) continue;
      reached[row] = true;
      patterns.push_back(ChildPattern(RTrim(keys[row]), levels));
    }
  }
  return reached;
}

}  // namespace

std::vector<CheckFinding> CheckPopupKeys(const VariantArray& values, int levels) {
  std::vector<CheckFinding> findings;
  if (levels < 1) return {{0, "the template has " + std::to_string(levels) + " levels"}};
  int32_t rows = values.UBound(2);
  std::vector<std::string> keys;
  for (int32_t row = 1; row <= rows; ++row) keys.push_back(values.At(1, row).ToText());

  size_t width = static_cast<size_t>(2 * levels);
  std::unordered_map<std::string, int32_t> first_row;
  std::vector<bool> reached = ReachableRows(keys, levels);
  for (int32_t row = 1; row <= rows; ++row) {
    const std::string& cell = keys[static_cast<size_t>(row - 1)];
    std::string key(RTrim(cell));
    std::string compact = CompactPath(key);
    auto add = [&](const std::string& text) { findings.push_back({row, text}); };

    if (cell.size() >= 2 && Trim(cell.substr(cell.size() - 2)).empty()) {
      add("key " + Quote(cell) + " has a blank own code");
    } else if (key.size() != width) {
      add("key " + Quote(key) + " is " + std::to_string(key.size()) + " characters wide, not " +
          std::to_string(width));
    } else if (!AllDigits(compact) || compact.size() % 2 != 0 ||
               !AllDigits(key.substr(key.size() - 2))) {
      add("key " + Quote(key) + " has a code that is not two digits");
    }
    auto [earlier, inserted] = first_row.emplace(key, row);
    if (!inserted) {
      add("key " + Quote(key) + " repeats the key of row " + std::to_string(earlier->second));
    }
    if (!reached[static_cast<size_t>(row - 1)]) {
      std::string parent = GetParentKey(key);
      add("key " + Quote(key) + " has no parent" +
          (parent.empty() ? std::string() : " (no item " + Quote(parent) + ")"));
    }
  }
  return findings;
}

}  // namespace zephyr
