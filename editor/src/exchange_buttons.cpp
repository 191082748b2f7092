// The workbook buttons of the design view: writing the popup to a new
// workbook the user names, through the same export as the command line.
#include <QPushButton>

#include "editor_state.h"
#include "zephyr/excel/excel_export.h"
#include "zephyr/support/debug_log.h"

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

}  // namespace

void EditorState::ExportToExcel() {
  DebugLog(kEditModule, "cmdExport_Click", "Start");
  // The workbook shows the design as edited, so it is checked and applied first.
  if (!DataMode) {
    if (!Validate()) return;
    SaveDesign();
  }
  SaveDialogRequest request;
  request.title = "Export To Excel";
  request.filter = "Excel Workbook (*.xlsx)|*.xlsx";
  request.initial_folder = popup->PopupPath();
  request.file_name = popup->DataSource().empty() ? std::string() : popup->DataSource() + ".xlsx";
  request.default_extension = "xlsx";
  std::string path;
  if (!ShowSave(*file_dialog, path, request)) return;
  excel::ExportReport report = excel::ExportToWorkbook(*popup, path);
  Tell(ExportSummary(report, path), MessageButtons::kOk, "Export To Excel",
       report.cannot_round_trip.empty() ? MessageIcon::kInformation : MessageIcon::kExclamation);
}

}  // namespace zephyr::editor
