#include "import_sheet.h"

#include <algorithm>
#include <memory>
#include <optional>

#include "zephyr/support/debug_log.h"

namespace zephyr::excel {

namespace {

constexpr const char* kNoExcel =
    "ZephyrPopup could not detect a loaded copy of Microsoft Excel. Please load Microsoft Excel "
    "before continuing.";
constexpr const char* kNoWorkbook =
    "ZephyrPopup could not detect an open Excel Workbook.  Please load a Workbook before "
    "continuing.";
constexpr const char* kNoWorksheet =
    "ZephyrPopup could not detect an open Excel Worksheet.  Please load a Worksheet before "
    "continuing.";

RuleBreach Unreadable(std::string prompt) {
  return {std::move(prompt), "", MessageButtons::kOk, ImportOutcome::kUnreadable};
}

// The used range from A1 (row 1 holds the headings, column 1 the keys) to
// the last row and the last column in which anything is counted: trailing
// empty rows and columns are dropped.
struct UsedRange {
  int32_t last_row = 0;
  int32_t last_column = 0;
};

UsedRange RealUsedRange(const Sheet& sheet) {
  UsedRange range;
  for (size_t r = 0; r < sheet.rows.size(); ++r) {
    const auto& cells = sheet.rows[r].cells;
    for (size_t c = cells.size(); c > 0; --c) {
      if (cells[c - 1].kind == CellKind::kEmpty) continue;
      range.last_row = static_cast<int32_t>(r + 1);
      range.last_column = std::max(range.last_column, static_cast<int32_t>(c));
      break;
    }
  }
  return range;
}

std::variant<Sheet, RuleBreach> ReadActiveSheet(
    const SheetSource& source, const std::function<void(const WorkbookError&)>& unreadable,
    std::string& workbook_path) {
  const std::string& path = source.name;
  try {
    std::unique_ptr<Workbook> book = source.open();
    if (!book->DocumentPath().empty()) workbook_path = book->DocumentPath();
    const auto& sheets = book->Sheets();
    if (sheets.empty() || book->ActiveSheet() >= sheets.size()) {
      return Unreadable(std::string(kNoWorkbook) + "\r\n'" + path + "': it has no sheets");
    }
    const SheetInfo& active = sheets[book->ActiveSheet()];
    if (!active.is_worksheet) {
      return Unreadable(std::string(kNoWorksheet) + "\r\n'" + path + "': the active sheet '" +
                        active.name + "' is not a worksheet");
    }
    return book->ReadSheet(book->ActiveSheet());
  } catch (const WorkbookError& error) {
    if (unreadable) unreadable(error);
    using Kind = WorkbookError::Kind;
    const char* text = error.kind() == Kind::kUnsupportedFormat || error.kind() == Kind::kNoProgram
                           ? kNoExcel
                       : error.kind() == Kind::kNotWorksheet ? kNoWorksheet
                                                             : kNoWorkbook;
    return Unreadable(std::string(text) + "\r\n" + error.what());
  }
}

}  // namespace

std::variant<ImportSheet, RuleBreach> GetExcelBounds(
    const SheetSource& source, Progress& progress,
    const std::function<void(const WorkbookError&)>& unreadable) {
  DebugLog("mExcel", "GetExcelBounds", "Start");
  progress.SetMessage("Connection to Microsoft Excel");
  std::string workbook_path = source.name;
  std::variant<Sheet, RuleBreach> read = ReadActiveSheet(source, unreadable, workbook_path);
  if (auto* breach = std::get_if<RuleBreach>(&read)) return *breach;
  const Sheet& sheet = std::get<Sheet>(read);

  progress.SetMessage("Scanning Excel Data");
  UsedRange range = RealUsedRange(sheet);
  if (range.last_row < 2) {
    return RuleBreach{"ZephyrPopup requires an Excel Worksheet with at least 2 rows of data.", "",
                      MessageButtons::kOkHelp, ImportOutcome::kRuleFailed};
  }

  progress.SetMessage("Testing Excel Data");
  progress.SetMinimum(0);
  progress.SetMaximum(range.last_row);
  const int32_t columns = range.last_column;
  auto cell_text = [&](const SheetRow& row, int32_t column) -> std::string {
    size_t index = static_cast<size_t>(column - 1);
    if (index >= row.cells.size()) return {};
    const Cell& cell = row.cells[index];
    return cell.kind == CellKind::kError ? std::string() : cell.text;  // errors read as empty
  };
  ImportSheet imported{ExcelArray(columns), {}, workbook_path};
  static const SheetRow kEmptyRow;
  for (int32_t r = 1; r <= range.last_row; ++r) {
    progress.SetValue(r);
    progress.ProcessEvents();
    const SheetRow& row = static_cast<size_t>(r) <= sheet.rows.size()
                              ? sheet.rows[static_cast<size_t>(r - 1)]
                              : kEmptyRow;
    std::string key = cell_text(row, 1);
    std::string first_level = columns >= 2 ? cell_text(row, 2) : std::string();
    if (key.empty() && first_level.empty()) break;  // the stop row ends the data
    if (row.hidden) continue;
    std::vector<std::string> cells;
    cells.reserve(static_cast<size_t>(columns));
    for (int32_t column = 1; column <= columns; ++column) cells.push_back(cell_text(row, column));
    imported.cells.AddRow(std::move(cells));
    imported.sheet_rows.push_back(r);
  }
  return imported;
}

}  // namespace zephyr::excel
