#include "tree_loader.h"

#include <string_view>
#include <unordered_map>
#include <vector>

#include "item_arena.h"
#include "item_access.h"
#include "zephyr/runtime/popup_key.h"
#include "zephyr/support/errors.h"
#include "zephyr/support/text.h"
#include "zephyr/table/table_records.h"

namespace zephyr {

namespace {

// The key (column 1) of every row as UTF-8 text: the bytes in the records
// where they read as themselves, as they nearly always do, else converted.
class KeyTexts {
 public:
  explicit KeyTexts(const TableRecords& records) : records_(records) {
    bool plain = true;
    for (int32_t row = 1; plain && row <= records.RowCount(); ++row) {
      plain = records.ReadsAsItself(records.Bytes(1, row));
    }
    if (plain) return;
    converted_.reserve(static_cast<size_t>(records.RowCount()));
    for (int32_t row = 1; row <= records.RowCount(); ++row) {
      std::string scratch;
      converted_.emplace_back(records.Text(1, row, &scratch));
    }
  }

  std::string_view Key(int32_t row) const {
    return converted_.empty() ? records_.Bytes(1, row) : converted_[static_cast<size_t>(row - 1)];
  }

 private:
  const TableRecords& records_;
  std::vector<std::string> converted_;
};

// Rows that follow one another in the table, first to last.
struct Run {
  int32_t first;
  int32_t last;
};
// The rows of one group in table order. Sorted keys keep a group together,
// so it is nearly always a single run.
using Group = std::vector<Run>;

// Rows grouped by the first (pattern length - 1) characters of their key:
// the part a child pattern compares.
class RowGroups {
 public:
  RowGroups(const KeyTexts& keys, int32_t rows, size_t compared) {
    Group* last = nullptr;
    std::string_view last_head;
    for (int32_t row = 1; row <= rows; ++row) {
      std::string_view key = keys.Key(row);
      if (key.size() < compared) continue;  // too short to match any pattern
      std::string_view head = key.substr(0, compared);
      if (!last || head != last_head) {
        last = &groups_[head];
        last_head = head;
      }
      if (!last->empty() && last->back().last == row - 1) {
        last->back().last = row;
      } else {
        last->push_back({row, row});
      }
    }
  }

  // The rows whose key matches the pattern.
  const Group* Matching(std::string_view pattern) const {
    if (pattern.empty() || pattern.back() != '*') return nullptr;
    auto found = groups_.find(pattern.substr(0, pattern.size() - 1));
    return found == groups_.end() ? nullptr : &found->second;
  }

  static int32_t Size(const Group& group) {
    int32_t size = 0;
    for (const Run& run : group) size += run.last - run.first + 1;
    return size;
  }

 private:
  std::unordered_map<std::string_view, Group> groups_;
};

class TreeBuilder {
 public:
  TreeBuilder(const TreeSource& source, Progress& progress)
      : source_(source),
        records_(source.table->Records()),
        progress_(progress),
        keys_(records_),
        groups_(keys_, records_.RowCount(), static_cast<size_t>(2 * source.levels - 2)) {}

  void Build(PopupItems& top) {
    std::string root = ChildPattern("", source_.levels);
    const Group* rows = groups_.Matching(root);
    if (!rows) return;
    ItemAccess::Reserve(top, RowGroups::Size(*rows));
    for (const Run& run : *rows) {
      for (int32_t row = run.first; row <= run.last; ++row) {
        auto item = AddItem(top, row);
        ItemAccess::SetLoadedKey(*item, item->PopupKey());
        ItemAccess::SetLevel(*item, 1);
        path_.assign(1, root);
        LoadChildren(item, row);
      }
    }
  }

 private:
  // One item whose children are still being added.
  struct Frame {
    std::shared_ptr<PopupItem> parent;
    const Group* rows;
    size_t run;
    int32_t next;  // the next row of that run
    int16_t child_level;
    PopupItems* children;  // made with the first child
  };

  // Depth first, with an explicit stack, so deep or malformed trees never
  // exhaust the call stack.
  void LoadChildren(const std::shared_ptr<PopupItem>& first, int32_t row) {
    std::vector<Frame> stack;
    Push(stack, first, row);
    while (!stack.empty()) {
      Frame& frame = stack.back();
      if (frame.next > (*frame.rows)[frame.run].last && ++frame.run < frame.rows->size()) {
        frame.next = (*frame.rows)[frame.run].first;
      }
      if (frame.run == frame.rows->size()) {
        stack.pop_back();
        path_.pop_back();
        continue;
      }
      int32_t row = frame.next++;
      bool first_child = !frame.children;
      if (first_child) {
        frame.children = frame.parent->Children().get();
        ItemAccess::Reserve(*frame.children, RowGroups::Size(*frame.rows));
      }
      auto child = AddItem(*frame.children, row);
      progress_.ProcessEvents();
      if (first_child) frame.children->Question(LevelQuestion(frame.child_level));
      ItemAccess::SetLevel(*child, frame.child_level);
      ItemAccess::SetLoadedKey(*child, child->PopupKey());
      child->Parent(frame.parent);
      Push(stack, child, row);
    }
  }

  // Starts on the children of the item loaded from `row`, if it has any. An
  // item whose child pattern is that of an item above it (or of the root)
  // would find itself among its own descendants again and again: its key's
  // own code is blank. The original algorithm descended until the stack ran
  // out.
  void Push(std::vector<Frame>& stack, const std::shared_ptr<PopupItem>& parent, int32_t row) {
    std::string pattern = ChildPattern(parent->PopupKey(), source_.levels);
    for (const std::string& ancestor : path_) {
      if (ancestor == pattern) {
        throw RuntimeError(RuntimeErrorCode::kOutOfStackSpace,
                           "the key '" + std::string(keys_.Key(row)) + "' in '" + source_.file +
                               "' has a blank own code, so its item would contain itself");
      }
    }
    const Group* rows = groups_.Matching(pattern);
    if (!rows) return;  // a leaf
    path_.push_back(std::move(pattern));
    int16_t child_level = ToInt16Checked(CompactPath(parent->PopupKey()).size() / 2.0 + 1);
    stack.push_back({parent, rows, 0, rows->front().first, child_level, nullptr});
  }

  std::shared_ptr<PopupItem> AddItem(PopupItems& siblings, int32_t row) {
    std::string key(RTrim(keys_.Key(row)));
    std::shared_ptr<PopupItem> item;
    try {
      item = siblings.Add(key);
    } catch (const RuntimeError& error) {
      if (error.Code() != RuntimeErrorCode::kDuplicateKey) throw;
      throw RuntimeError(RuntimeErrorCode::kDuplicateKey,
                         "the key '" + key + "' appears twice in '" + source_.file + "'");
    }
    progress_.SetValue(++count_);
    ItemAccess::SetLoadedRow(*item, *source_.table, row);
    return item;
  }

  std::string LevelQuestion(int16_t level) const {
    return source_.questions->Item(level)->Question().ToText();
  }

  const TreeSource& source_;
  const TableRecords& records_;
  Progress& progress_;
  KeyTexts keys_;
  RowGroups groups_;
  int32_t count_ = 0;
  // The child patterns of the items on the current path, root first.
  std::vector<std::string> path_;
};

}  // namespace

void BuildItemTree(const TreeSource& source, PopupItems& top, Progress& progress) {
  ItemArena arena;
  TreeBuilder(source, progress).Build(top);
}

}  // namespace zephyr
