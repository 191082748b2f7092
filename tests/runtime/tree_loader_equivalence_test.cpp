// The loader must give exactly the tree of the original algorithm, in which
// every item scans the whole sorted table for rows matching its child
// pattern. That algorithm (helpers/literal_loader.h) runs on the same sorted
// rows as OpenPopup, on many random tables.
#include <gtest/gtest.h>

#include <numeric>
#include <random>

#include "helpers/literal_loader.h"
#include "helpers/popup_files.h"
#include "helpers/recorders.h"
#include "helpers/temp_dir.h"
#include "item_access.h"
#include "zephyr/runtime/popup_class.h"

namespace zephyr {
namespace {

using testing::LiteralLoader;
using testing::Node;

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
  explicit RandomTable(uint32_t start) : random_(start) {}

  // Wide tables have dozens of distinct top-level keys, so that sibling
  // sets are large enough to be looked up through their index.
  std::vector<testing::Row> Rows(int levels, bool allow_blank_codes, bool wide) {
    rows_.clear();
    levels_ = levels;
    if (wide) {
      std::vector<int> codes(99);
      std::iota(codes.begin(), codes.end(), 1);
      std::shuffle(codes.begin(), codes.end(), random_);
      for (int i = 0; i < 30; ++i) Branch(std::to_string(100 + codes[i]).substr(1), 1);
    }
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
  size_t Index(size_t count) {
    return static_cast<size_t>(Uniform(0, static_cast<int>(count) - 1));
  }

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
    auto rows = generator.Rows(levels, round % 3 == 0, round % 10 == 1);
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
