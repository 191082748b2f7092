#include "zephyr/excel/excel_import.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>

#include "import_tree.h"
#include "zephyr/excel/excel_array.h"
#include "zephyr/excel/sheet_scans.h"
#include "zephyr/excel/workbook.h"
#include "zephyr/runtime/item_access.h"
#include "zephyr/runtime/popup_key.h"
#include "zephyr/support/codepage.h"
#include "zephyr/support/debug_log.h"
#include "zephyr/support/errors.h"
#include "zephyr/support/text.h"
#include "zephyr/support/variant.h"

namespace zephyr::excel {

namespace {

constexpr const char* kModule = "mExcel";
constexpr const char* kRulesHelp = " Please refer to ZephyrPopup Excel Import Rules in Help.";
constexpr int16_t kMaxFieldLength = 254;

constexpr const char* kNoExcel =
    "ZephyrPopup could not detect a loaded copy of Microsoft Excel. Please load Microsoft Excel "
    "before continuing.";
constexpr const char* kNoWorkbook =
    "ZephyrPopup could not detect an open Excel Workbook.  Please load a Workbook before "
    "continuing.";
constexpr const char* kNoWorksheet =
    "ZephyrPopup could not detect an open Excel Worksheet.  Please load a Worksheet before "
    "continuing.";
constexpr const char* kNotConnected =
    "ZephyrPopup Failed to connect to the Active Excel Spreadsheet. Please make sure the Data you "
    "wish to import is open in Microsoft Excel and is the Selected Sheet.";
constexpr const char* kInvalidKey =
    "Invalid Key! Please check that your keys conform to Zephyr 5.0 Popup Key Standards";
constexpr const char* kUnequalKeys =
    "Invalid Key! the Keys found in the excel sheet are not all the same size. Please check that "
    "your keys conform to Zephyr 5.0 Popup Key Standards.";

bool IsNumeric(const std::string& text) {
  double ignored;
  return ParseNumber(text, &ignored);
}

bool IsTwoDigitCode(std::string_view code) {
  return code.size() == 2 && code[0] >= '0' && code[0] <= '9' && code[1] >= '0' && code[1] <= '9' &&
         code != "00";
}

std::string TwoDigits(int number) {
  char code[3];
  std::snprintf(code, sizeof code, "%02d", number);
  return code;
}

class ExcelImporter {
 public:
  ExcelImporter(PopupClass& popup, std::string path, ImportUi& ui)
      : popup_(popup), path_(std::move(path)), ui_(ui), help_file_(ImportHelpFile()) {}

  ImportOutcome Run();

 private:
  bool GetExcelBounds();
  bool ReadActiveSheet(Sheet* sheet);
  void RealUsedRange(const Sheet& sheet);
  bool ScanExcelData();
  bool ScanNoKey();
  bool ScanWithKey();
  bool AskAboutStructure();
  bool ValidateExcel();
  bool CheckValueLengths();
  std::string FieldNameOfColumn(int32_t column);
  bool ImportWithkey();
  std::vector<int32_t> ReorderMatrix() const;
  void ImportNokey(const std::vector<int32_t>& rows);
  bool AutoGenKeys();
  int CountChildren(int level) const;
  void RenumberItems(ImportNode& node, int level, const std::vector<int>& steps);
  void ReFormatZephyrPopup();
  void CopyItems();

  void Fail(ImportOutcome outcome, const std::string& prompt, const std::string& title,
            MessageButtons buttons = MessageButtons::kOkHelp);
  void Progress(const std::string& caption) { ui_.progress.SetMessage(caption); }
  static void Log(const char* procedure, const std::string& message) {
    DebugLog(kModule, procedure, message);
  }

  int32_t Rows() const { return sheet_.RowCount(); }
  // The key rules count data rows: the first row under the headings is 1.
  static int32_t DataRow(int32_t array_row) { return array_row - 1; }
  int32_t CompanionColumns() const { return sheet_.ColumnCount() - 1 - levels_; }
  int PopupCompanionFields() { return std::max(0, popup_.PopupFields()->Count() - 2); }

  PopupClass& popup_;
  std::string path_;
  ImportUi& ui_;
  std::string help_file_;
  ImportOutcome outcome_ = ImportOutcome::kImported;

  // The used range of the active sheet, in sheet rows and columns.
  int32_t first_row_ = 0, last_row_ = 0, first_column_ = 0, last_column_ = 0;
  ExcelArray sheet_;
  bool has_keys_ = false;
  int levels_ = 0;
  bool keep_popup_structure_ = true;
  ImportNode root_;
  // The sheet row each row of sheet_ came from (hidden rows are left out).
  std::vector<int32_t> sheet_rows_;
};

void ExcelImporter::Fail(ImportOutcome outcome, const std::string& prompt, const std::string& title,
                         MessageButtons buttons) {
  outcome_ = outcome;
  Message message;
  message.prompt = prompt;
  message.title = title;
  message.buttons = buttons;
  if (buttons == MessageButtons::kOkHelp) {
    message.help_file = help_file_;
    message.help_context = 1;
  }
  ui_.messages.Show(message);
}

ImportOutcome ExcelImporter::Run() {
  Log("ExcelImport", "Start");
  if (!GetExcelBounds()) {
    Message message;
    message.prompt = kNotConnected;
    ui_.messages.Show(message);
    return outcome_;
  }
  if (!ScanExcelData()) return outcome_;
  if (levels_ != popup_.Levels() || CompanionColumns() != PopupCompanionFields()) {
    if (!AskAboutStructure()) return outcome_;
  }
  Progress("Scan for Stop Row");
  Progress("Analyzing Data Structure");
  if (!ValidateExcel()) return outcome_;
  if (!CheckValueLengths()) return outcome_;
  Progress("Copy Array");
  if (has_keys_) {
    if (!ImportWithkey()) return outcome_;
  } else {
    ImportNokey(ReorderMatrix());
    if (!AutoGenKeys()) return outcome_;
  }
  ReFormatZephyrPopup();
  Progress("Copying Data to ZephyrPopup");
  CopyItems();
  Log("ExcelImport", "Success");
  return ImportOutcome::kImported;
}

bool ExcelImporter::GetExcelBounds() {
  Log("GetExcelBounds", "Start");
  Progress("Connection to Microsoft Excel");
  Sheet sheet;
  if (!ReadActiveSheet(&sheet)) return false;

  Progress("Scanning Excel Data");
  RealUsedRange(sheet);
  if (last_row_ < 2) {
    Fail(ImportOutcome::kRuleFailed,
         "ZephyrPopup requires an Excel Worksheet with at least 2 rows of data.", "");
    return false;
  }

  ui_.progress.SetMessage("Testing Excel Data");
  ui_.progress.SetMinimum(0);
  ui_.progress.SetMaximum(last_row_);
  int32_t columns = last_column_ - first_column_ + 1;
  auto cell_text = [&](const SheetRow& row, int32_t column) -> std::string {
    size_t index = static_cast<size_t>(first_column_ + column - 2);
    if (index >= row.cells.size()) return {};
    const Cell& cell = row.cells[index];
    return cell.kind == CellKind::kError ? std::string() : cell.text;  // errors read as empty
  };
  sheet_ = ExcelArray(columns);
  for (int32_t r = first_row_; r <= last_row_; ++r) {
    ui_.progress.SetValue(r);
    ui_.progress.ProcessEvents();
    static const SheetRow kEmptyRow;
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
    sheet_.AddRow(std::move(cells));
    sheet_rows_.push_back(r);
  }
  return true;
}

bool ExcelImporter::ReadActiveSheet(Sheet* sheet) {
  try {
    std::unique_ptr<Workbook> book = OpenWorkbook(path_);
    const auto& sheets = book->Sheets();
    if (sheets.empty()) {
      Fail(ImportOutcome::kUnreadable,
           std::string(kNoWorkbook) + "\r\n'" + path_ + "': it has no sheets", "",
           MessageButtons::kOk);
      return false;
    }
    const SheetInfo& active = sheets[book->ActiveSheet()];
    if (!active.is_worksheet) {
      Fail(ImportOutcome::kUnreadable,
           std::string(kNoWorksheet) + "\r\n'" + path_ + "': the active sheet '" + active.name +
               "' is not a worksheet",
           "", MessageButtons::kOk);
      return false;
    }
    *sheet = book->ReadSheet(book->ActiveSheet());
    return true;
  } catch (const WorkbookError& error) {
    if (ui_.unreadable) ui_.unreadable(error);
    const char* text = error.kind() == WorkbookError::Kind::kUnsupportedFormat ? kNoExcel
                       : error.kind() == WorkbookError::Kind::kNotWorksheet    ? kNoWorksheet
                                                                               : kNoWorkbook;
    Fail(ImportOutcome::kUnreadable, std::string(text) + "\r\n" + error.what(), "",
         MessageButtons::kOk);
    return false;
  }
}

// The used range from A1 (row 1 holds the headings, column 1 the keys) to
// the last row and the last column in which anything is counted: trailing
// empty rows and columns are dropped.
void ExcelImporter::RealUsedRange(const Sheet& sheet) {
  first_row_ = first_column_ = 1;
  last_row_ = last_column_ = 0;
  for (size_t r = 0; r < sheet.rows.size(); ++r) {
    const auto& cells = sheet.rows[r].cells;
    for (size_t c = cells.size(); c > 0; --c) {
      if (cells[c - 1].kind == CellKind::kEmpty) continue;
      last_row_ = static_cast<int32_t>(r + 1);
      last_column_ = std::max(last_column_, static_cast<int32_t>(c));
      break;
    }
  }
}

bool ExcelImporter::ScanExcelData() {
  ui_.progress.SetMessage("Scanning Excel");
  ui_.progress.SetMinimum(1);
  ui_.progress.SetMaximum(std::max(Rows(), 1));
  Log("ScanExcelData", "Start");
  if (sheet_.Trimmed(2, 1).empty()) {
    has_keys_ = false;
    if (!ScanNoKey()) return false;
    levels_ = ui_.levels.PromptForLevels();
    if (levels_ == -1) {
      outcome_ = ImportOutcome::kCancelled;
      return false;
    }
  } else {
    has_keys_ = true;
    if (!ScanWithKey()) return false;
  }
  if (levels_ < 1 || CompanionColumns() < 1) {
    Fail(ImportOutcome::kRuleFailed,
         std::string("Missing Companion Data Column. ZephyrPopup needs at least 1 companion Data "
                     "Column after the Level Columns.  Please refer to ZephyrPopup Excel Import "
                     "Rules in Help.  "),
         "Missing Data Column");
    return false;
  }
  Log("ScanExcelData", "Finish Success Value: True");
  return true;
}

bool ExcelImporter::ScanNoKey() {
  Log("ScanNoKey", "Started");
  for (int32_t row = 2; row <= Rows(); ++row) {
    Log("ScanNoKey", "scanning Row: " + std::to_string(DataRow(row)));
    ui_.progress.SetValue(row);
    if (!sheet_.Trimmed(row, 1).empty()) {
      Fail(ImportOutcome::kRuleFailed,
           std::string(
               "Inconsistent Key Values. Keys must either all be numeric, of the same length "
               "or all blank.") +
               kRulesHelp,
           "Invalid Key Data");
      return false;
    }
  }
  if (Rows() < 2) {
    Fail(ImportOutcome::kRuleFailed,
         std::string("Excel Source must contain at least 2 rows of data.") + kRulesHelp,
         "Invalid Excel Data");
    return false;
  }
  Log("ScanNoKey", "Passed Validation");
  return true;
}

bool ExcelImporter::ScanWithKey() {
  auto fail = [&](const std::string& prompt, const char* title) {
    Log("ScanWithKey", "failed Validation");
    Fail(ImportOutcome::kRuleFailed, prompt + kRulesHelp, title);
    return false;
  };
  std::string first = sheet_.Trimmed(2, 1);
  if (!IsNumeric(first)) {
    return fail("First Key not numeric. A non numerical character was found in the first key cell.",
                "Key Not Numeric");
  }
  if (first.size() % 2 != 0) {
    return fail(
        "The First Key does not conform to ZephyrPopup Key Standards. The Keys must be an "
        "even number lenght and numeric.",
        "Invalid Key Length");
  }
  levels_ = static_cast<int>(first.size() / 2);
  for (int32_t row = 2; row <= Rows(); ++row) {
    Log("ScanWithKey", "Scanning Row: " + std::to_string(DataRow(row)));
    ui_.progress.SetValue(row);
    std::string key = sheet_.Trimmed(row, 1);
    if (!IsNumeric(key)) {
      return fail("Key Not Numeric. A non numerical character was found in the key on row " +
                      std::to_string(DataRow(row)) + ".",
                  "Key Not Numeric");
    }
    if (key.size() != first.size()) {
      return fail("Invalid Key Length found. The Key in Row " + std::to_string(DataRow(row)) +
                      " is not the same lenght as your first key. Please ensure the keys are all "
                      "the same length.",
                  "Invalid Key Length");
    }
    for (int32_t column = 2; column <= levels_ + 1; ++column) {
      if (sheet_.Trimmed(row, column).empty()) {
        return fail("Blank Level Data Found. PLease make sure that all Level columns contain data.",
                    "Invalid Key Length");
      }
    }
  }
  if (auto repeated = FirstRepeatedKeyRow(sheet_)) {
    return fail("The Excel Row: " + std::to_string(DataRow(*repeated)) +
                    " contains a Key that is already assigned. Please ensure that the keys are "
                    "unique.",
                "Duplicate Key found");
  }
  return true;
}

bool ExcelImporter::AskAboutStructure() {
  Message question;
  question.prompt =
      "The Data structure found in ZephyrPopup is different from the Data structure in the active "
      "Excel Sheet.\r\n\r\n*****LEVEL DETAIL*****\r\nZephyrPopup Levels: " +
      std::to_string(popup_.Levels()) + "\r\nExcel Levels:   " + std::to_string(levels_) +
      "\r\n\r\n*****COMPANION DATA DETAIL*****\r\nZephyrPopup Companion Data Fields: " +
      std::to_string(PopupCompanionFields()) +
      "\r\nExcel Companion Data Fields:   " + std::to_string(CompanionColumns()) +
      "\r\n\r\nDo you wish ZephyrPopup to use its structure and override the Excel structure?\r\n"
      "Answering NO will force ZephyrPoup to recreate it's structure using the Excel structure";
  question.title = "Data Structure Differences Detected";
  question.buttons = MessageButtons::kYesNoCancel;
  switch (ui_.messages.Show(question)) {
    case MessageAnswer::kYes:
      keep_popup_structure_ = true;
      return true;
    case MessageAnswer::kNo:
      keep_popup_structure_ = false;
      return true;
    default:
      outcome_ = ImportOutcome::kCancelled;
      return false;
  }
}

bool ExcelImporter::ValidateExcel() {
  Log("ValidateExcel", "Start");
  Progress("Validating Data Integrity");
  if (auto identical = FirstIdenticalRows(sheet_)) {
    Fail(ImportOutcome::kRuleFailed,
         "The Excel Rows: " + std::to_string(identical->first + 1) + " and " +
             std::to_string(identical->second + 1) +
             " contain identical data.  Please ensure each record contains unique data.",
         "Identical Data Found", MessageButtons::kOk);
    return false;
  }
  for (int32_t row = 2; row <= Rows(); ++row) {
    for (int32_t column = 2; column <= levels_ + 1; ++column) {
      if (!sheet_.Trimmed(row, column).empty()) continue;
      Fail(ImportOutcome::kRuleFailed,
           "The Excel Row: " + std::to_string(row + 1) + " Col: " + std::to_string(column) +
               " contains blank Level Data . Please ensure that all level columns contain data." +
               kRulesHelp,
           "Invalid Key Length");
      return false;
    }
  }
  return true;
}

// The name of the field that a level or companion column fills, as the popup
// will have it after the import.
std::string ExcelImporter::FieldNameOfColumn(int32_t column) {
  auto fields = popup_.PopupFields();
  if (column <= levels_ + 1) return fields->Count() >= 2 ? fields->Item(2)->Name() : "Description";
  int32_t field = column - levels_ + 1;  // the first companion column fills field 3
  if (keep_popup_structure_ && field <= fields->Count()) return fields->Item(field)->Name();
  std::string heading = sheet_.Trimmed(1, column);
  return heading.empty() ? "Field " + std::to_string(field) : heading;
}

// Fields widen to the longest value they receive, up to the table's limit; a
// longer value stops the import rather than being cut.
bool ExcelImporter::CheckValueLengths() {
  for (int32_t row = 2; row <= Rows(); ++row) {
    for (int32_t column = 2; column <= sheet_.ColumnCount(); ++column) {
      size_t length = ActiveCodePage().CharacterCount(RTrim(sheet_.Cell(row, column)));
      if (length <= static_cast<size_t>(kMaxFieldLength)) continue;
      Fail(ImportOutcome::kRuleFailed,
           "The Excel Row: " + std::to_string(sheet_rows_[static_cast<size_t>(row - 1)]) +
               " Col: " + std::to_string(column) + " holds " + std::to_string(length) +
               " characters for the field '" + FieldNameOfColumn(column) +
               "'. A field holds at most " + std::to_string(kMaxFieldLength) + " characters.",
           "Value Too Long", MessageButtons::kOk);
      return false;
    }
  }
  return true;
}

bool ExcelImporter::ImportWithkey() {
  Progress("Copying Data to Memory");
  size_t width = static_cast<size_t>(2 * levels_);
  for (int32_t row = 2; row <= Rows(); ++row) {
    Progress("Importing Popup Item at row " + std::to_string(row));
    std::string key = sheet_.Trimmed(row, 1);
    const char* problem = key.size() != width ? kUnequalKeys : nullptr;
    for (size_t at = 0; !problem && at < width; at += 2) {
      if (!IsTwoDigitCode(std::string_view(key).substr(at, 2))) problem = kInvalidKey;
    }
    if (problem) {
      Log("ImportWithkey", "Validation Failed");
      Fail(ImportOutcome::kRuleFailed, problem, "", MessageButtons::kOk);
      return false;
    }
    ImportNode* node = &root_;
    for (int level = 1; level <= levels_; ++level) {
      std::string code = key.substr(static_cast<size_t>(2 * level - 2), 2);
      ImportNode* child = node->ChildWithCode(code);
      if (!child) child = &node->AddChild(code, sheet_.Trimmed(row, level + 1));
      node = child;
    }
    for (int32_t column = levels_ + 2; column <= sheet_.ColumnCount(); ++column) {
      node->companions.push_back(std::string(RTrim(sheet_.Cell(row, column))));
    }
  }
  // Siblings stand in key order whatever the order of the rows.
  std::function<void(ImportNode&)> sort = [&](ImportNode& node) {
    auto& children = node.Children();
    std::stable_sort(children.begin(), children.end(),
                     [](const auto& a, const auto& b) { return a->code < b->code; });
    for (auto& child : children) sort(*child);
  };
  sort(root_);
  Log("ImportWithkey", "Import Succeeded");
  return true;
}

// Orders the data rows so that rows under one parent stand together, each
// group where its first row stood, so that items keep the order in which the
// sheet first names them.
std::vector<int32_t> ExcelImporter::ReorderMatrix() const {
  std::map<std::vector<std::string>, size_t> first_seen;
  std::vector<std::pair<std::vector<size_t>, int32_t>> ordered;
  for (int32_t row = 2; row <= Rows(); ++row) {
    std::vector<std::string> path;
    std::vector<size_t> rank;
    for (int level = 1; level < levels_; ++level) {
      path.push_back(sheet_.Trimmed(row, level + 1));
      rank.push_back(first_seen.emplace(path, first_seen.size()).first->second);
    }
    ordered.emplace_back(std::move(rank), row);
  }
  std::stable_sort(ordered.begin(), ordered.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<int32_t> rows;
  for (const auto& entry : ordered) rows.push_back(entry.second);
  return rows;
}

void ExcelImporter::ImportNokey(const std::vector<int32_t>& rows) {
  Progress("Copying Data to Memory");
  for (int32_t row : rows) {
    Progress("Importing Popup Item at row: " + std::to_string(row));
    ImportNode* node = &root_;
    for (int level = 1; level <= levels_; ++level) {
      std::string text = sheet_.Trimmed(row, level + 1);
      ImportNode* child = level < levels_ ? node->ChildWithText(text) : nullptr;
      node = child ? child : &node->AddChild("", text);
    }
    for (int32_t column = levels_ + 2; column <= sheet_.ColumnCount(); ++column) {
      node->companions.push_back(std::string(RTrim(sheet_.Cell(row, column))));
    }
  }
  Log("ImportNokey", "Import Succeeded");
}

// The largest number of children any one item of the level above has.
int ExcelImporter::CountChildren(int level) const {
  int most = 0;
  std::function<void(const ImportNode&, int)> visit = [&](const ImportNode& node, int depth) {
    if (depth == level - 1) {
      most = std::max(most, static_cast<int>(node.Children().size()));
      return;
    }
    for (const auto& child : node.Children()) visit(*child, depth + 1);
  };
  visit(root_, 0);
  return most;
}

void ExcelImporter::RenumberItems(ImportNode& node, int level, const std::vector<int>& steps) {
  int step = steps[static_cast<size_t>(level - 1)];
  int position = 0;
  for (auto& child : node.Children()) {
    child->code = TwoDigits(++position * step);
    if (level < levels_) RenumberItems(*child, level + 1, steps);
  }
}

bool ExcelImporter::AutoGenKeys() {
  std::vector<int> steps;
  for (int level = 1; level <= levels_; ++level) {
    int most = std::max(1, CountChildren(level));
    int step = std::min(10, 99 / most);
    if (step < 1) {  // more than 99 siblings cannot have two-digit codes
      Fail(ImportOutcome::kRuleFailed, kInvalidKey, "", MessageButtons::kOk);
      return false;
    }
    steps.push_back(step);
  }
  RenumberItems(root_, 1, steps);
  return true;
}

// Sets the popup's levels and fields: its own design where the user kept it,
// else the sheet's headings, with column widths that fit the sheet's texts.
void ExcelImporter::ReFormatZephyrPopup() {
  auto width_of_column = [&](int32_t column) {
    size_t widest = 1;
    for (int32_t row = 2; row <= Rows(); ++row) {
      widest = std::max(widest, ActiveCodePage().CharacterCount(RTrim(sheet_.Cell(row, column))));
    }
    return static_cast<int16_t>(std::min<size_t>(widest, kMaxFieldLength));
  };
  auto heading = [&](int32_t column, const std::string& fallback) {
    std::string text = sheet_.Trimmed(1, column);
    return text.empty() ? fallback : text;
  };

  auto old_levels = popup_.PopupLevels();
  auto old_fields = popup_.PopupFields();
  // Keeping the popup's structure keeps every one of its questions and
  // fields; sheet columns beyond them add levels and fields named by their
  // headings.
  int popup_levels =
      keep_popup_structure_ ? std::max<int>(levels_, old_levels->Count()) : levels_;
  auto levels = std::make_shared<PopupLevels>();
  for (int level = 1; level <= popup_levels; ++level) {
    bool keep = keep_popup_structure_ && level <= old_levels->Count();
    Variant question = keep ? old_levels->Item(level)->Question()
                            : Variant(heading(level + 1, "Level " + std::to_string(level)));
    levels->Add(question, level);
  }

  int16_t text_width = 1;
  for (int level = 1; level <= levels_; ++level) {
    text_width = std::max(text_width, width_of_column(level + 1));
  }
  auto fields = std::make_shared<PopupFields>();
  fields->Add("Popup Code", static_cast<int16_t>(2 * popup_levels), 0, 0);
  if (old_fields->Count() >= 2) {
    auto text_field = old_fields->Item(2);
    fields->Add(text_field->Name(), std::max(text_field->FieldLength(), text_width), 1, 0);
  } else {
    fields->Add("Description", text_width, 1, 0);
  }
  int32_t kept_fields = keep_popup_structure_ ? old_fields->Count() : 2;
  for (int32_t i = 3; i <= kept_fields; ++i) {
    auto field = old_fields->Item(i);
    int32_t column = levels_ + i - 1;  // the companion column that fills field i
    int16_t length = field->FieldLength();
    if (column <= sheet_.ColumnCount()) length = std::max(length, width_of_column(column));
    fields->Add(field->Name(), length, static_cast<int16_t>(i - 1), 0);
  }
  for (int32_t k = std::max(1, kept_fields - 1); k <= CompanionColumns(); ++k) {
    int32_t column = levels_ + 1 + k;
    fields->Add(heading(column, "Field " + std::to_string(k + 2)), width_of_column(column),
                static_cast<int16_t>(k + 1), 0);
  }
  popup_.PopupLevels(levels);
  popup_.PopupFields(fields);
  popup_.Levels(static_cast<int16_t>(popup_levels));
  if (popup_.Title().empty()) {
    popup_.Title(std::filesystem::path(path_).stem().string());
  }
}

// Replaces the popup's items by the built tree: keys from the codes on each
// path, the level text as the first value, companion values mapped onto the
// popup's further fields in order (parents leave them empty).
void ExcelImporter::CopyItems() {
  int32_t value_count = popup_.PopupFields()->Count() - 1;
  auto levels = popup_.PopupLevels();
  auto top = std::make_shared<PopupItems>();
  top->Question(levels->Item(1)->Question().ToText());
  std::function<void(const ImportNode&, PopupItems&, const std::shared_ptr<PopupItem>&,
                     const std::string&, int)>
      copy = [&](const ImportNode& node, PopupItems& siblings,
                 const std::shared_ptr<PopupItem>& parent, const std::string& path, int level) {
        std::string compact = path + node.code;
        auto item = siblings.Add(FormatStoredKey(compact, popup_.Levels()));
        ItemAccess::SetLevel(*item, static_cast<int16_t>(level));
        item->Parent(parent);
        auto values = item->PopupValues();
        values->Add(node.text);
        for (int32_t i = 1; i < value_count; ++i) {
          size_t companion = static_cast<size_t>(i - 1);
          values->Add(companion < node.companions.size() ? node.companions[companion] : "");
        }
        if (node.Children().empty()) return;
        auto children = item->Children();
        children->Question(levels->Item(level + 1)->Question().ToText());
        for (const auto& child : node.Children()) copy(*child, *children, item, compact, level + 1);
      };
  for (const auto& node : root_.Children()) copy(*node, *top, nullptr, "", 1);
  popup_.PopupItems()->Clear();
  popup_.PopupItems(top);
}

}  // namespace

std::string ImportHelpFile() {
  std::error_code error;
  std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
  return (error ? std::string(".") : program.parent_path().string()) + "/zephyrPOpup2Excel.hlp";
}

namespace {

// Runs an import step; an error it raises is told as the unexpected error.
template <typename Step>
ImportOutcome Guarded(ImportUi& ui, Step&& step) {
  try {
    return step();
  } catch (const std::exception& error) {
    const auto* known = dynamic_cast<const Error*>(&error);
    Message message;
    message.prompt = "An Unexpected error occured while trying to import the excel Data. \r\n" +
                     std::to_string(known ? known->Number() : 0) + " " +
                     (known ? known->Description() : std::string(error.what()));
    message.title = "Error";
    ui.messages.Show(message);
    return ImportOutcome::kUnexpected;
  }
}

}  // namespace

ImportOutcome RebuildFromWorkbook(PopupClass& popup, const std::string& workbook_path,
                                  ImportUi& ui) {
  return Guarded(ui, [&] { return ExcelImporter(popup, workbook_path, ui).Run(); });
}

ImportOutcome ImportFromWorkbook(PopupClass& popup, const std::string& workbook_path,
                                 ImportUi& ui) {
  return Guarded(ui, [&] {
    ImportOutcome outcome = ExcelImporter(popup, workbook_path, ui).Run();
    if (outcome == ImportOutcome::kImported) SavePopupInTreeOrder(popup);
    return outcome;
  });
}

bool ExcelImport(PopupClass& popup, const std::string& workbook_path, ImportUi& ui) {
  return RebuildFromWorkbook(popup, workbook_path, ui) == ImportOutcome::kImported;
}

}  // namespace zephyr::excel
