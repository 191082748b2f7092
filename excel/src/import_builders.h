// Building the import's item tree from the checked sheet: by the keys of a
// keyed sheet, or by the level texts of a sheet without keys, whose items
// then get generated keys.
#ifndef ZEPHYR_EXCEL_IMPORT_BUILDERS_H_
#define ZEPHYR_EXCEL_IMPORT_BUILDERS_H_

#include <cstdint>
#include <optional>
#include <vector>

#include "import_tree.h"
#include "sheet_rules.h"
#include "zephyr/excel/excel_array.h"
#include "zephyr/support/progress.h"

namespace zephyr::excel {

// One item per distinct key prefix under `root`, siblings in key order; a
// leaf takes its row's companion values. A key that is no run of two-digit
// codes stops the build.
std::optional<RuleBreach> ImportWithkey(const ExcelArray& sheet, int levels, ImportNode& root,
                                        Progress& progress);

// The data rows in the order the keyless build takes them: rows under one
// parent gathered where the parent first appears.
std::vector<int32_t> ReorderMatrix(const ExcelArray& sheet, int levels);

// One item per distinct path of level texts, leaves one per row.
void ImportNokey(const ExcelArray& sheet, int levels, const std::vector<int32_t>& rows,
                 ImportNode& root, Progress& progress);

// Numbers every level's siblings step, 2 x step, ... where the step is 99
// over the most siblings any parent has at that level, at most 10.
std::optional<RuleBreach> AutoGenKeys(ImportNode& root, int levels);

}  // namespace zephyr::excel

#endif  // ZEPHYR_EXCEL_IMPORT_BUILDERS_H_
