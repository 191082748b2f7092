// Structural checks of a popup's data table, read as it is on disk (so they
// work on tables that cannot be loaded): rows that no item would hold, keys
// that appear twice, keys of the wrong width or with codes that are not two
// digits, and keys whose own code is blank.
#ifndef ZEPHYR_RUNTIME_POPUP_CHECK_H_
#define ZEPHYR_RUNTIME_POPUP_CHECK_H_

#include <string>
#include <vector>

#include "zephyr/support/variant.h"

namespace zephyr {

struct CheckFinding {
  int32_t row;  // 1-based, live records in file order
  std::string text;
};

// Checks the key column (column 1, in file order) of a popup of `levels`
// levels. Findings come in row order.
std::vector<CheckFinding> CheckPopupKeys(const VariantArray& values, int levels);

}  // namespace zephyr

#endif  // ZEPHYR_RUNTIME_POPUP_CHECK_H_
