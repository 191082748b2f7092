// The original tree-loading algorithm, written out literally as the
// baseline the real loader is measured against: every item scans the whole
// sorted table for the rows that match its child pattern, so loading is
// quadratic in the number of rows.
#ifndef ZEPHYR_BENCH_LITERAL_LOADER_H_
#define ZEPHYR_BENCH_LITERAL_LOADER_H_

#include <cmath>
#include <string>
#include <vector>

#include "zephyr/support/variant.h"

namespace zephyr::bench {

struct Node {
  std::string key;
  std::string loaded_key;
  int level = 0;
  std::vector<std::string> values;
  std::string question;  // of this node's children
  std::vector<Node> children;
  bool operator==(const Node&) const = default;
};

inline std::string TrimBlanks(const std::string& text, bool left, bool right) {
  size_t begin = 0, end = text.size();
  while (left && begin < end && text[begin] == ' ') ++begin;
  while (right && end > begin && text[end - 1] == ' ') --end;
  return text.substr(begin, end - begin);
}

// The original algorithm, with its own pattern, match and level rules.
class LiteralLoader {
 public:
  struct Failure {
    int number;  // 457 duplicate key, 9 missing level, 28 endless descent (depth 300)
  };

  LiteralLoader(const VariantArray* values, int levels, std::vector<std::string> questions)
      : values_(values), levels_(levels), questions_(std::move(questions)) {}

  void LoadTopLevel(std::vector<Node>& top) {
    std::string pattern = Pattern("");
    for (int32_t i = 1; i <= Rows(); ++i) {
      if (!Matches(Cell(1, i), pattern)) continue;
      Node& item = AddItem(top, i);
      item.loaded_key = item.key;
      item.level = 1;
      LoadChildren(item, 1);
    }
  }

  int progress = 0;

 private:
  void LoadChildren(Node& parent, int depth) {
    if (depth > 300) throw Failure{28};
    std::string pattern = Pattern(parent.key);
    std::string compact;
    for (char c : parent.key) {
      if (c != ' ') compact.push_back(c);
    }
    int child_level = static_cast<int>(std::nearbyint(compact.size() / 2.0 + 1));
    for (int32_t i = 1; i <= Rows(); ++i) {
      if (!Matches(Cell(1, i), pattern)) continue;
      Node& child = AddItem(parent.children, i);
      if (child_level < 1 || child_level > static_cast<int>(questions_.size())) throw Failure{9};
      parent.question = questions_[static_cast<size_t>(child_level - 1)];
      child.level = child_level;
      child.loaded_key = child.key;
      LoadChildren(child, depth + 1);
    }
  }

  Node& AddItem(std::vector<Node>& siblings, int32_t row) {
    std::string key = TrimBlanks(Cell(1, row), false, true);
    for (const Node& sibling : siblings) {
      if (sibling.key == key) throw Failure{457};
    }
    siblings.push_back(Node{key, "", 0, {}, "", {}});
    ++progress;
    Node& item = siblings.back();
    for (int32_t j = 2; j <= values_->UBound(1); ++j) {
      std::string cell = Cell(j, row);
      item.values.push_back(TrimBlanks(cell, true, true).empty() ? " "
                                                                 : TrimBlanks(cell, false, true));
    }
    return item;
  }

  std::string Pattern(const std::string& key) const {
    std::string pattern(static_cast<size_t>(2 * levels_ - 2), ' ');
    pattern += "*";
    std::string compact;
    for (char c : TrimBlanks(key, true, true)) {
      if (c != ' ') compact.push_back(c);
    }
    for (size_t i = 0; i < compact.size() && i < pattern.size(); ++i) pattern[i] = compact[i];
    return pattern;
  }

  static bool Matches(const std::string& cell, const std::string& pattern) {
    return cell.substr(0, pattern.size() - 1) + "*" == pattern;
  }

  std::string Cell(int32_t column, int32_t row) const { return values_->At(column, row).ToText(); }
  int32_t Rows() const { return values_->UBound(2); }

  const VariantArray* values_;
  int levels_;
  std::vector<std::string> questions_;
};

}  // namespace zephyr::bench

#endif  // ZEPHYR_BENCH_LITERAL_LOADER_H_
