#include "zephyr/excel/excel_import.h"

#include <algorithm>
#include <filesystem>
#include <variant>

#include "import_builders.h"
#include "import_sheet.h"
#include "popup_redesign.h"
#include "sheet_rules.h"
#include "zephyr/support/debug_log.h"
#include "zephyr/support/errors.h"

namespace zephyr::excel {

namespace {

constexpr const char* kModule = "mExcel";
constexpr const char* kNotConnected =
    "ZephyrPopup Failed to connect to the Active Excel Spreadsheet. Please make sure the Data you "
    "wish to import is open in Microsoft Excel and is the Selected Sheet.";

// One import: reads the sheet, applies the rules, asks its questions, builds
// the tree and only then redesigns the popup and replaces its items.
class ExcelImporter {
 public:
  ExcelImporter(PopupClass& popup, SheetSource source, ImportUi& ui)
      : popup_(popup), source_(std::move(source)), ui_(ui), help_file_(ImportHelpFile()) {}

  ImportOutcome Run();

 private:
  bool ScanExcelData();
  bool AskAboutStructure();
  bool BuildTree();

  // Shows the breach; false, so that a step can return Stopped(breach).
  bool Stopped(const RuleBreach& breach);
  void Progress(const std::string& caption) { ui_.progress.SetMessage(caption); }
  static void Log(const char* procedure, const std::string& message) {
    DebugLog(kModule, procedure, message);
  }
  const ExcelArray& Cells() const { return sheet_.cells; }
  SheetShape Shape() const {
    return {Cells(), levels_, keep_popup_structure_, sheet_.workbook_path};
  }
  int32_t CompanionColumns() const { return Cells().ColumnCount() - 1 - levels_; }
  int PopupCompanionFields() { return std::max(0, popup_.PopupFields()->Count() - 2); }

  PopupClass& popup_;
  SheetSource source_;
  ImportUi& ui_;
  std::string help_file_;
  ImportOutcome outcome_ = ImportOutcome::kImported;

  ImportSheet sheet_;
  bool has_keys_ = false;
  int levels_ = 0;
  bool keep_popup_structure_ = true;
  ImportNode root_;
};

bool ExcelImporter::Stopped(const RuleBreach& breach) {
  outcome_ = breach.outcome;
  Message message;
  message.prompt = breach.prompt;
  message.title = breach.title;
  message.buttons = breach.buttons;
  if (breach.buttons == MessageButtons::kOkHelp) {
    message.help_file = help_file_;
    message.help_context = 1;
  }
  ui_.messages.Show(message);
  return false;
}

ImportOutcome ExcelImporter::Run() {
  Log("ExcelImport", "Start");
  auto read = GetExcelBounds(source_, ui_.progress, ui_.unreadable);
  if (auto* breach = std::get_if<RuleBreach>(&read)) {
    Stopped(*breach);
    Message message;
    message.prompt = kNotConnected;
    ui_.messages.Show(message);
    return outcome_;
  }
  sheet_ = std::move(std::get<ImportSheet>(read));
  if (!ScanExcelData()) return outcome_;
  if (levels_ != popup_.Levels() || CompanionColumns() != PopupCompanionFields()) {
    if (!AskAboutStructure()) return outcome_;
  }
  Progress("Scan for Stop Row");
  Progress("Analyzing Data Structure");
  Progress("Validating Data Integrity");
  auto field_name = [&](int32_t column) { return FieldNameOfColumn(popup_, Shape(), column); };
  std::optional<RuleBreach> breach = ValidateExcel(Cells(), levels_);
  if (!breach) breach = OverlongValue(Cells(), sheet_.sheet_rows, field_name);
  if (breach) {
    Stopped(*breach);
    return outcome_;
  }
  Progress("Copy Array");
  if (!BuildTree()) return outcome_;
  ReFormatZephyrPopup(popup_, Shape());
  Progress("Copying Data to ZephyrPopup");
  CopyItems(popup_, root_);
  Log("ExcelImport", "Success");
  return ImportOutcome::kImported;
}

bool ExcelImporter::ScanExcelData() {
  ui_.progress.SetMessage("Scanning Excel");
  ui_.progress.SetMinimum(1);
  ui_.progress.SetMaximum(std::max(Cells().RowCount(), 1));
  Log("ScanExcelData", "Start");
  auto visit = [&](int32_t row) { ui_.progress.SetValue(row); };
  has_keys_ = !Cells().Trimmed(2, 1).empty();
  if (!has_keys_) {
    if (auto breach = ScanNoKey(Cells(), visit)) return Stopped(*breach);
    levels_ = ui_.levels.PromptForLevels();
    if (levels_ == -1) {
      outcome_ = ImportOutcome::kCancelled;
      return false;
    }
  } else if (auto breach = ScanWithKey(Cells(), &levels_, visit)) {
    return Stopped(*breach);
  }
  if (auto breach = MissingCompanionColumn(Cells(), levels_)) return Stopped(*breach);
  Log("ScanExcelData", "Finish Success Value: True");
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

bool ExcelImporter::BuildTree() {
  if (has_keys_) {
    if (auto breach = ImportWithkey(Cells(), levels_, root_, ui_.progress)) {
      return Stopped(*breach);
    }
    return true;
  }
  ImportNokey(Cells(), levels_, ReorderMatrix(Cells(), levels_), root_, ui_.progress);
  if (auto breach = AutoGenKeys(root_, levels_)) return Stopped(*breach);
  return true;
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

ImportOutcome RebuildFromWorkbook(PopupClass& popup, const SheetSource& source, ImportUi& ui) {
  return Guarded(ui, [&] { return ExcelImporter(popup, source, ui).Run(); });
}

ImportOutcome RebuildFromWorkbook(PopupClass& popup, const std::string& workbook_path,
                                  ImportUi& ui) {
  return RebuildFromWorkbook(popup, SheetSource::File(workbook_path), ui);
}

ImportOutcome ImportFromWorkbook(PopupClass& popup, const SheetSource& source, ImportUi& ui) {
  return Guarded(ui, [&] {
    ImportOutcome outcome = ExcelImporter(popup, source, ui).Run();
    if (outcome == ImportOutcome::kImported) SavePopupInTreeOrder(popup);
    return outcome;
  });
}

ImportOutcome ImportFromWorkbook(PopupClass& popup, const std::string& workbook_path,
                                 ImportUi& ui) {
  return ImportFromWorkbook(popup, SheetSource::File(workbook_path), ui);
}

bool ExcelImport(PopupClass& popup, const SheetSource& source, ImportUi& ui) {
  return RebuildFromWorkbook(popup, source, ui) == ImportOutcome::kImported;
}

bool ExcelImport(PopupClass& popup, const std::string& workbook_path, ImportUi& ui) {
  return ExcelImport(popup, SheetSource::File(workbook_path), ui);
}

}  // namespace zephyr::excel
