// The loader must give exactly the tree of the original algorithm: every
// item scans the whole sorted table for rows matching its child pattern.
// That algorithm is written out here, literally, and run on the same sorted
// rows as OpenPopup on many random tables.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "helpers/popup_files.h"
#include "helpers/recorders.h"
#include "helpers/temp_dir.h"
#include "zephyr/runtime/item_access.h"
#include "zephyr/runtime/popup_class.h"

namespace zephyr {
namespace {

struct Node {
  std::string key;
  std::string loaded_key;
  int level = 0;
  std::vector<std::string> values;
  std::string question;  // of this node's children
  std::vector<Node> children;
  bool operator==(const Node&) const = default;
};

std::string TrimBlanks(const std::string& text, bool left, bool right) {
  size_t begin = 0, end = text.size();
  while (left && begin < end && text[begin] == ' ') ++begin;
  while (right && end > begin && text[end - 1] == ' ') --end;
  return text.substr(begin, end - begin);
}

// The original algorithm, with its own pattern, match and level rules.
class LiteralLoader {
 public:
  struct Failure {
    int number;  // 457 duplicate key, 9 missing level, 28 endless descent
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

  std::string Cell(int32_t column, int32_t row) const {
    return values_->At(column, row).ToText();
  }
  int32_t Rows() const { return values_->UBound(2); }

  const VariantArray* values_;
  int levels_;
  std::vector<std::string> questions_;
};

std::vector<Node> ToNodes(PopupItems& items) {
  std::vector<Node> nodes;
  for (const auto& item : items) {
    Node node{item->PopupKey(), ItemAccess::LoadedKey(*item), item->Level(), {}, "", {}};
    for (const auto& value : *item->PopupValues()) node.values.push_back(value->Value());
    if (item->HasChildren()) {
      node.children = ToNodes(*item->Children());
      node.question = item->Children()->Question();
    }
    nodes.push_back(std::move(node));
  }
  return nodes;
}

// A random table: a tree of proper keys, plus orphans, repeated keys, blank
// own codes and keys of arbitrary blanks and digits, as the test asks for.
class RandomTable {
 public:
  explicit RandomTable(uint32_t seed) : random_(seed) {}

  std::vector<testing::Row> Rows(int levels, bool allow_blank_codes) {
    rows_.clear();
    levels_ = levels;
    int top = Uniform(0, 8);
    for (int i = 0; i < top; ++i) Branch(Code(), 1);
    int extras = Uniform(0, 6);
    for (int i = 0; i < extras; ++i) {
      switch (Uniform(0, allow_blank_codes ? 3 : 2)) {
        case 0:  // an orphan: its parent's path was never added
          AddRow(Format("9" + std::to_string(Uniform(0, 9)) + Code(), levels));
          break;
        case 1:  // a repeat of an existing key
          if (!rows_.empty()) rows_.push_back(rows_[Index(rows_.size())]);
          break;
        case 2:  // digits and blanks anywhere
          AddRow(Scrambled(levels));
          break;
        case 3: {  // a blank own code
          std::string key = Format(Code(), levels);
          key.replace(key.size() - 2, 2, "  ");
          AddRow(key);
          break;
        }
      }
    }
    std::shuffle(rows_.begin(), rows_.end(), random_);
    return rows_;
  }

 private:
  void Branch(const std::string& path, int level) {
    AddRow(Format(path, levels_));
    if (level == levels_) return;
    int children = Uniform(0, 4);
    for (int i = 0; i < children; ++i) Branch(path + Code(), level + 1);
  }

  void AddRow(const std::string& key) {
    static const char* kValues[] = {"", "  lead", "trail  ", "x", "Apples", "   "};
    rows_.push_back({key, kValues[Index(6)], kValues[Index(6)]});
  }

  std::string Format(const std::string& path, int levels) {
    size_t width = static_cast<size_t>(2 * levels);
    std::string own = path.substr(path.size() - 2);
    std::string key = path.substr(0, path.size() - 2);
    key.resize(width - 2, ' ');
    return (key + own).substr(0, width);
  }

  std::string Scrambled(int levels) {
    std::string key;
    for (int i = 0; i < 2 * levels; ++i) key.push_back(" 0123"[Index(5)]);
    return key;
  }

  std::string Code() {
    char code[3];
    std::snprintf(code, sizeof code, "%02d", Uniform(1, 12));
    return code;
  }

  int Uniform(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random_); }
  size_t Index(size_t count) { return static_cast<size_t>(Uniform(0, static_cast<int>(count) - 1)); }

  std::mt19937 random_;
  std::vector<testing::Row> rows_;
  int levels_ = 1;
};

TEST(TreeLoaderEquivalenceTest, MatchesTheLiteralAlgorithmOnRandomTables) {
  testing::TempDir dir;
  RandomTable generator(7);
  int loaded = 0, duplicates = 0, endless = 0;
  for (int round = 0; round < 400; ++round) {
    int levels = 1 + round % 4;
    testing::PopupDesign design;
    for (int l = 1; l <= levels; ++l) design.questions.push_back("Question " + std::to_string(l));
    design.fields = {{"A", 6}, {"B", 4}};
    auto rows = generator.Rows(levels, round % 3 == 0);
    testing::WritePopupFiles(dir.Path(), "R", design, rows);

    PopupClass popup;
    auto progress = std::make_shared<testing::RecordingProgress>();
    popup.SetProgress(progress);
    popup.PopupPath(dir.Path());
    popup.DataSource("R");
    int error = 0;
    try {
      popup.OpenPopup();
    } catch (const Error& raised) {
      error = raised.Number();
    }

    std::vector<Node> expected;
    int expected_error = 0;
    const VariantArray* sorted = nullptr;
    Variant copy;
    if (popup.RowCount() > 0) {
      VariantArray table = VariantArray::Table(3, popup.RowCount());
      for (int32_t r = 1; r <= popup.RowCount(); ++r) {
        for (int32_t c = 1; c <= 3; ++c) table.At(c, r) = popup.Values(c, r);
      }
      copy = Variant(std::move(table));
      sorted = copy.AsArray();
    }
    LiteralLoader reference(sorted, levels, design.questions);
    try {
      if (sorted) reference.LoadTopLevel(expected);
    } catch (const LiteralLoader::Failure& failure) {
      expected_error = failure.number;
    }

    ASSERT_EQ(error, expected_error) << "round " << round;
    if (error == 28) {
      ++endless;
      continue;  // the literal algorithm never ends; ours stops
    }
    duplicates += error == 457;
    loaded += error == 0;
    ASSERT_EQ(ToNodes(*popup.PopupItems()), expected) << "round " << round;
    EXPECT_EQ(std::max(progress->value, 0), reference.progress) << "round " << round;
  }
  // The random tables cover each outcome.
  EXPECT_GT(loaded, 50);
  EXPECT_GT(duplicates, 10);
  EXPECT_GT(endless, 5);
}

}  // namespace
}  // namespace zephyr
