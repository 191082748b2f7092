#include "tree_loader.h"

#include <string_view>
#include <unordered_map>
#include <vector>

#include "zephyr/runtime/item_access.h"
#include "zephyr/runtime/popup_key.h"
#include "zephyr/support/errors.h"
#include "zephyr/support/text.h"

namespace zephyr {

namespace {

// Rows grouped by the first (pattern length - 1) characters of their key:
// the part a child pattern compares. Each group lists its rows in table order.
class RowGroups {
 public:
  RowGroups(const VariantArray& values, size_t compared) {
    int32_t rows = values.UBound(2);
    keys_.reserve(static_cast<size_t>(rows));
    for (int32_t row = 1; row <= rows; ++row) {
      const Variant& cell = values.At(1, row);
      keys_.push_back(cell.IsText() ? cell.Text() : cell.ToText());
      const std::string& key = keys_.back();
      if (key.size() < compared) continue;  // too short to match any pattern
      groups_[std::string_view(key).substr(0, compared)].push_back(row);
    }
  }

  // The rows whose key matches the pattern, in table order.
  const std::vector<int32_t>* Matching(std::string_view pattern) const {
    if (pattern.empty() || pattern.back() != '*') return nullptr;
    auto found = groups_.find(pattern.substr(0, pattern.size() - 1));
    return found == groups_.end() ? nullptr : &found->second;
  }

  const std::string& Key(int32_t row) const { return keys_[static_cast<size_t>(row - 1)]; }

 private:
  std::vector<std::string> keys_;  // column 1 of every row, as text
  std::unordered_map<std::string_view, std::vector<int32_t>> groups_;
};

class TreeBuilder {
 public:
  TreeBuilder(const TreeSource& source, Progress& progress)
      : source_(source),
        progress_(progress),
        columns_(source.values->UBound(1)),
        groups_(*source.values, static_cast<size_t>(2 * source.levels - 2)) {}

  void Build(PopupItems& top) {
    std::string root = ChildPattern("", source_.levels);
    const std::vector<int32_t>* rows = groups_.Matching(root);
    if (!rows) return;
    for (int32_t row : *rows) {
      auto item = AddItem(top, row);
      ItemAccess::SetLoadedKey(*item, item->PopupKey());
      ItemAccess::SetLevel(*item, 1);
      path_.assign(1, root);
      LoadChildren(item, row);
    }
  }

 private:
  // One item whose children are still being added.
  struct Frame {
    std::shared_ptr<PopupItem> parent;
    const std::vector<int32_t>* rows;
    size_t next;
    int16_t child_level;
    std::string question;
  };

  // Depth first, with an explicit stack, so deep or malformed trees never
  // exhaust the call stack.
  void LoadChildren(const std::shared_ptr<PopupItem>& first, int32_t row) {
    std::vector<Frame> stack;
    Push(stack, first, row);
    while (!stack.empty()) {
      Frame& frame = stack.back();
      if (!frame.rows || frame.next == frame.rows->size()) {
        stack.pop_back();
        path_.pop_back();
        continue;
      }
      int32_t row = (*frame.rows)[frame.next++];
      auto parent = frame.parent;
      auto children = parent->Children();
      auto child = AddItem(*children, row);
      progress_.ProcessEvents();
      if (frame.question.empty()) frame.question = LevelQuestion(frame.child_level);
      children->Question(frame.question);
      ItemAccess::SetLevel(*child, frame.child_level);
      ItemAccess::SetLoadedKey(*child, child->PopupKey());
      child->Parent(parent);
      Push(stack, child, row);
    }
  }

  // Starts on the children of the item loaded from `row`. An item whose
  // child pattern is that of an item above it (or of the root) would find
  // itself among its own descendants again and again: its key's own code is
  // blank. The original algorithm descended until the stack ran out.
  void Push(std::vector<Frame>& stack, const std::shared_ptr<PopupItem>& parent, int32_t row) {
    std::string pattern = ChildPattern(parent->PopupKey(), source_.levels);
    for (const std::string& ancestor : path_) {
      if (ancestor == pattern) {
        throw RuntimeError(RuntimeErrorCode::kOutOfStackSpace,
                           "the key '" + groups_.Key(row) + "' in '" + source_.file +
                               "' has a blank own code, so its item would contain itself");
      }
    }
    path_.push_back(pattern);
    int16_t child_level = ToInt16Checked(CompactPath(parent->PopupKey()).size() / 2.0 + 1);
    stack.push_back({parent, groups_.Matching(pattern), 0, child_level, {}});
  }

  std::shared_ptr<PopupItem> AddItem(PopupItems& siblings, int32_t row) {
    std::string key(RTrim(groups_.Key(row)));
    std::shared_ptr<PopupItem> item;
    try {
      item = siblings.Add(key);
    } catch (const RuntimeError& error) {
      if (error.Code() != RuntimeErrorCode::kDuplicateKey) throw;
      throw RuntimeError(RuntimeErrorCode::kDuplicateKey,
                         "the key '" + key + "' appears twice in '" + source_.file + "'");
    }
    progress_.SetValue(++count_);
    auto values = item->PopupValues();
    values->Reserve(columns_ - 1);
    for (int32_t column = 2; column <= columns_; ++column) {
      const Variant& cell = source_.values->At(column, row);
      std::string_view text = cell.IsText() ? std::string_view(cell.Text()) : std::string_view();
      values->Add(Trim(text).empty() ? std::string(" ") : std::string(RTrim(text)));
    }
    return item;
  }

  std::string LevelQuestion(int16_t level) const {
    return source_.questions->Item(level)->Question().ToText();
  }

  const TreeSource& source_;
  Progress& progress_;
  int32_t columns_;
  RowGroups groups_;
  int32_t count_ = 0;
  // The child patterns of the items on the current path, root first.
  std::vector<std::string> path_;
};

}  // namespace

void BuildItemTree(const TreeSource& source, PopupItems& top, Progress& progress) {
  TreeBuilder(source, progress).Build(top);
}

}  // namespace zephyr
