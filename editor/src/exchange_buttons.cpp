// The workbook buttons of the design view: filling the popup from the active
// sheet of a workbook the user picks, and writing it to a new workbook, both
// through the same import and export as the command line.
#include <QPushButton>
#include <QSettings>
#include <filesystem>
#include <utility>

#include "editor_state.h"
#include "levels_dialog.h"
#include "zephyr/excel/excel_export.h"
#include "zephyr/excel/excel_import.h"
#ifdef ZEPHYR_WITH_CALC
#include "zephyr/excel/running_calc.h"
#endif
#include "zephyr/support/debug_log.h"
#include "zephyr/support/text.h"

namespace zephyr::editor {

namespace {

// A long list of items that cannot come back is cut in the message.
constexpr size_t kListedItems = 15;

std::string ExportSummary(const excel::ExportReport& report, const std::string& path) {
  std::string summary =
      "Exported " + std::to_string(report.rows_written) + " rows to\r\n" + path + ".";
  if (report.cannot_round_trip.empty()) return summary;
  summary += "\r\n\r\nAn import of this workbook cannot bring back these items as they are:";
  size_t listed = std::min(report.cannot_round_trip.size(), kListedItems);
  for (size_t i = 0; i < listed; ++i) summary += "\r\n" + report.cannot_round_trip[i];
  if (report.cannot_round_trip.size() > listed) {
    summary += "\r\n... and " + std::to_string(report.cannot_round_trip.size() - listed) + " more";
  }
  return summary;
}

// Where the workbook picker opens: the folder of the workbook last imported,
// kept across sessions.
QSettings ImportSettings() {
  return QSettings(QStringLiteral("ZephyrPopup"), QStringLiteral("PopupControlEdit"));
}
constexpr const char* kLastImportFolder = "Import/LastFolder";

// A popup of the same name and design as `popup`, without its items: the
// import compares the sheet with the design and replaces every item.
std::shared_ptr<PopupClass> WithDesignOf(PopupClass& popup) {
  auto copy = std::make_shared<PopupClass>();
  copy->PopupPath(popup.PopupPath());
  copy->DataSource(popup.DataSource());
  copy->Title(popup.Title());
  std::vector<PopupClass::LevelSpec> levels;
  for (const auto& level : *popup.PopupLevels()) {
    levels.push_back({level->Question(), level->IntialIndex()});
  }
  copy->ReplaceLevels(levels);
  std::vector<PopupClass::FieldSpec> fields;
  bool key_field = true;
  for (const auto& field : *popup.PopupFields()) {
    if (std::exchange(key_field, false)) continue;
    fields.push_back(
        {field->Name(), field->FieldLength(), field->StartCharPos(), field->InitialIndex()});
  }
  copy->ReplaceFields(fields);
  copy->Levels(popup.Levels());
  return copy;
}

}  // namespace

std::optional<std::string> EditorState::PickWorkbook() {
  FileDialogRequest request;
  request.title = "Import From Excel";
  request.filter =
      "Workbooks (*.xlsx;*.ods;*.csv)|*.xlsx;*.ods;*.csv|Excel Workbook (*.xlsx)|*.xlsx|"
      "OpenDocument Spreadsheet (*.ods)|*.ods|Comma-Separated Values (*.csv)|*.csv";
  request.initial_folder =
      ToUtf8(ImportSettings()
                 .value(QLatin1String(kLastImportFolder), ToQString(session.Popup()->PopupPath()))
                 .toString());
  std::optional<std::string> path = session.services().file_dialog->ShowOpen(request);
  if (path) {
    ImportSettings().setValue(QLatin1String(kLastImportFolder),
                              ToQString(std::filesystem::path(*path).parent_path().string()));
  }
  return path;
}

void EditorState::ImportFromExcel() {
  DebugLog(kEditModule, "cmdImport_Click", "Start");
  session.RequireWritable();
  if (session.DataChanged() && !DataMode) {
    if (!design->Validate()) return;
    SaveDesign();
  }
  const EditorSession::Services& services = session.services();
  std::optional<excel::SheetSource> source = SheetToImport();
  if (!source) return;
  ProgressUnloader shown(*services.progress);
  services.progress->Show();
  DialogLevelPrompt levels(q, services.messages);
  excel::ImportUi ui{*services.messages, *services.progress, levels};
  // The import fills a stand-in that replaces the popup only once it has
  // succeeded: an import that fails half-way leaves the popup as it was.
  auto imported = WithDesignOf(*session.Popup());
  imported->SetMessageBox(services.messages);
  imported->SetProgress(services.progress);
  // Nothing listening: the user may take a workbook file instead.
  std::optional<excel::WorkbookError::Kind> unreadable;
  ui.unreadable = [&](const excel::WorkbookError& error) { unreadable = error.kind(); };
  bool done = excel::ExcelImport(*imported, *source, ui);
  if (!done && unreadable == excel::WorkbookError::Kind::kNoProgram) {
    services.progress->Unload();
    if (session.Tell("Import from a workbook file instead?", MessageButtons::kYesNo,
                     "Import From Excel") != MessageAnswer::kYes) {
      return;
    }
    std::optional<std::string> workbook = PickWorkbook();
    if (!workbook) return;
    // An import that did not happen left the stand-in as it was.
    services.progress->Show();
    ui.unreadable = nullptr;
    done = excel::ExcelImport(*imported, *workbook, ui);
  }
  if (done) {
    BranchLayout outline = data->OutlineLayout();
    std::vector<int32_t> expanded = data->ExpandedIn(outline);
    std::shared_ptr<PopupClass> replaced = session.Popup();
    session.SetPopup(imported);
    PopupReplaced();
    session.SetDataChanged(true);
    session.Record(new ImportCommand(*this, std::move(replaced), std::move(imported),
                                     std::move(outline), std::move(expanded)));
  }
  design->SizeFieldColumns();
}

std::optional<excel::SheetSource> EditorState::SheetToImport() {
#ifdef ZEPHYR_WITH_CALC
  if (use_running_spreadsheet) return excel::RunningCalc();
#endif
  std::optional<std::string> workbook = PickWorkbook();
  if (!workbook) return std::nullopt;
  return excel::SheetSource::File(*workbook);
}

void EditorState::PopupReplaced() {
  data->SetOutlineStale();
  design->LoadTemplateData();
  if (DataMode) {
    LoadDataMode();  // refills the outline
  } else {
    // The outline is what a save writes, so it is refilled here too.
    data->LoadDataGrid();
    LoadDesignMode();
  }
}

std::string EditorState::ExportToExcel() {
  DebugLog(kEditModule, "cmdExport_Click", "Start");
  // The workbook shows the design as edited, so it is checked and applied first.
  if (!DataMode) {
    if (!design->Validate()) return {};
    SaveDesign();
  }
#ifdef ZEPHYR_WITH_CALC
  // The document open in the running Calc first; a workbook file when there
  // is none.
  if (use_running_spreadsheet) {
    try {
      std::string sheet;
      excel::ExportReport report = excel::ExportToRunningCalc(*session.Popup(), &sheet);
      std::string place = "the sheet '" + sheet + "' in " + excel::kCalcName;
      session.Tell(
          ExportSummary(report, place), MessageButtons::kOk, "Export To Excel",
          report.cannot_round_trip.empty() ? MessageIcon::kInformation : MessageIcon::kExclamation);
      return place;
    } catch (const excel::WorkbookError& error) {
      if (error.kind() != excel::WorkbookError::Kind::kNoProgram &&
          error.kind() != excel::WorkbookError::Kind::kCannotOpen) {
        throw;
      }
    }
  }
#endif
  FileDialogRequest request;
  request.title = "Export To Excel";
  request.filter = "Excel Workbook (*.xlsx)|*.xlsx";
  request.initial_folder = session.Popup()->PopupPath();
  request.file_name = session.Popup()->DataSource().empty()
                          ? std::string()
                          : session.Popup()->DataSource() + ".xlsx";
  request.default_extension = "xlsx";
  std::string path;
  if (!ShowSave(*session.services().file_dialog, path, request)) return {};
  excel::ExportReport report = excel::ExportToWorkbook(*session.Popup(), path);
  session.Tell(
      ExportSummary(report, path), MessageButtons::kOk, "Export To Excel",
      report.cannot_round_trip.empty() ? MessageIcon::kInformation : MessageIcon::kExclamation);
  return path;
}

}  // namespace zephyr::editor
