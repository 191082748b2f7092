// Builds a popup's item tree from its table values (sorted by key) in one
// pass over the rows plus one visit per item.
//
// The result is exactly that of matching every row against every item's
// child pattern: same items, same sibling order, same order of additions (so
// a duplicate key fails after the same items were added), same values,
// questions, levels and progress count. Rows are grouped once by the part of
// the key a child pattern compares, so an item's children are found by one
// lookup instead of a scan of the whole table.
#ifndef ZEPHYR_RUNTIME_TREE_LOADER_H_
#define ZEPHYR_RUNTIME_TREE_LOADER_H_

#include <string>

#include "loaded_table.h"
#include "zephyr/runtime/popup_items.h"
#include "zephyr/runtime/popup_levels.h"
#include "zephyr/support/progress.h"

namespace zephyr {

struct TreeSource {
  const LoadedTable* table;  // rows sorted by column 1; items keep their row
  int levels;                // the popup's level count
  const PopupLevels* questions;
  std::string file;  // named in errors
};

// Adds the top-level items (and below them all descendants) to `top`.
// Raises the collection's duplicate-key error, subscript out of range for a
// level beyond the template's, and "Out of stack space" (28) for keys whose
// blank own code makes an item its own descendant.
void BuildItemTree(const TreeSource& source, PopupItems& top, Progress& progress);

}  // namespace zephyr

#endif  // ZEPHYR_RUNTIME_TREE_LOADER_H_
