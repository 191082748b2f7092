// Importing a popup from the active sheet of a workbook.
//
// The sheet's heading row names the question levels and companion fields;
// column 1 holds the keys (two digits per level) of every data row, or of
// none, in which case the user gives the level count and keys are generated.
// Each data row is the path of one leaf: its level columns give the text of
// each item on the path (the item's first value), its companion columns the
// leaf's further values. The sheet is checked against fixed rules, each
// failure told through the message box; nothing of the popup changes unless
// every check passes.
#ifndef ZEPHYR_EXCEL_EXCEL_IMPORT_H_
#define ZEPHYR_EXCEL_EXCEL_IMPORT_H_

#include <functional>
#include <string>

#include "zephyr/excel/workbook.h"

#include "zephyr/runtime/popup_class.h"
#include "zephyr/support/message_box.h"
#include "zephyr/support/progress.h"

namespace zephyr::excel {

// Asks how many question levels a sheet without keys has.
class LevelPrompt {
 public:
  virtual ~LevelPrompt() = default;
  // The level count, or -1 when the user cancelled.
  virtual int PromptForLevels() = 0;
};

// The caption of the level-count dialog and its message for a bad entry.
inline constexpr const char* kLevelPromptCaption = "Input Level Count";
inline constexpr const char* kInvalidLevelCount =
    "Invalid Level Count. Level Count must be a numeric value less than the Column count in the "
    "Excel Sheet.";

struct ImportUi {
  MessageBox& messages;
  Progress& progress;
  LevelPrompt& levels;
  // Told first when the workbook cannot be read at all (missing, unreadable,
  // no workbook, damaged), before the import's own messages.
  std::function<void(const WorkbookError&)> unreadable = nullptr;
};

enum class ImportOutcome {
  kImported,
  kUnreadable,  // the workbook or its active sheet could not be read
  kRuleFailed,  // a sheet rule failed
  kCancelled,   // the user cancelled a question
  kUnexpected,  // an unexpected error, reported as such
};

// Rebuilds the popup's design and items from the active sheet of the
// workbook, leaving the saving to the caller; on any outcome but kImported
// nothing changed.
ImportOutcome RebuildFromWorkbook(PopupClass& popup, const SheetSource& source, ImportUi& ui);
ImportOutcome RebuildFromWorkbook(PopupClass& popup, const std::string& workbook_path,
                                  ImportUi& ui);

// RebuildFromWorkbook as the editor calls it: true when the popup was rebuilt.
bool ExcelImport(PopupClass& popup, const SheetSource& source, ImportUi& ui);
bool ExcelImport(PopupClass& popup, const std::string& workbook_path, ImportUi& ui);

// ExcelImport followed by a normal save of the rebuilt popup, whose folder
// and data source must be set; its template and items, if any, are those the
// import compares with and replaces.
ImportOutcome ImportFromWorkbook(PopupClass& popup, const SheetSource& source, ImportUi& ui);
ImportOutcome ImportFromWorkbook(PopupClass& popup, const std::string& workbook_path, ImportUi& ui);

// The help file the sheet-rule messages refer to: the component's folder
// followed by "/zephyrPOpup2Excel.hlp".
std::string ImportHelpFile();

}  // namespace zephyr::excel

#endif  // ZEPHYR_EXCEL_EXCEL_IMPORT_H_
