// Carrying an import into the popup: its new design (levels and fields) and
// its new items, which replace the old ones only at the very end.
#ifndef ZEPHYR_EXCEL_POPUP_REDESIGN_H_
#define ZEPHYR_EXCEL_POPUP_REDESIGN_H_

#include <cstdint>
#include <string>

#include "import_tree.h"
#include "zephyr/excel/excel_array.h"
#include "zephyr/runtime/popup_class.h"

namespace zephyr::excel {

// What the import found in the sheet and what the user chose.
struct SheetShape {
  const ExcelArray& sheet;
  int levels;
  bool keep_popup_structure;
  std::string workbook_path;

  int32_t CompanionColumns() const { return sheet.ColumnCount() - 1 - levels; }
};

// Sets the popup's levels and fields: kept, all of them, when the user kept
// the popup's structure (sheet columns beyond them add levels and fields
// named by their headings), else made from the sheet's headings. Every field
// is at least as wide as the longest value it receives. A popup without a
// title takes the workbook's file name.
void ReFormatZephyrPopup(PopupClass& popup, const SheetShape& shape);

// The name of the field that a level or companion column fills, as the popup
// will have it after ReFormatZephyrPopup.
std::string FieldNameOfColumn(PopupClass& popup, const SheetShape& shape, int32_t column);

// Replaces the popup's items by the built tree: keys from the codes on each
// path, the level text as the first value, companion values mapped onto the
// popup's further fields in order (parents leave them empty).
void CopyItems(PopupClass& popup, const ImportNode& root);

}  // namespace zephyr::excel

#endif  // ZEPHYR_EXCEL_POPUP_REDESIGN_H_
