// Printing the data view: the document, the dialog, the margins and the
// failure message; the page layout is OutlinePrinter's.
#include <QPainter>
#include <QPrintDialog>
#include <QPrinter>
#include <QTreeView>

#include "editor_state.h"
#include "outline_printer.h"
#include "zephyr/support/debug_log.h"

namespace zephyr::editor {

namespace {

constexpr const char* kPrintFailed =
    "Print Job Failed. Please make sure your printer is online and working.";

// 720 twips: half an inch.
constexpr double kMarginInches = 0.5;

}  // namespace

std::pair<QStringList, std::vector<PrintedRow>> DataView::ShownOutline() const {
  // Expanded rows, found rows only.
  QStringList headings;
  for (int column = 0; column < grid_->columnCount(); ++column) {
    headings << grid_->headerData(column, Qt::Horizontal, Qt::DisplayRole).toString();
  }
  std::vector<PrintedRow> rows;
  for (QModelIndex row = grid_->TitleIndex(); row.isValid(); row = DataGrid_->indexBelow(row)) {
    PrintedRow printed;
    for (QModelIndex up = row.parent(); up.isValid(); up = up.parent()) ++printed.depth;
    for (int column = 0; column < grid_->columnCount(); ++column) {
      printed.cells << row.siblingAtColumn(column).data().toString();
    }
    rows.push_back(std::move(printed));
  }
  return {headings, std::move(rows)};
}

bool DataView::PrintOutline(QPrinter& printer) {
  DebugLog(kEditModule, "PrintPopupData", "Start");
  printer.setDocName(ToQString(session_.Popup()->Title()));
  printer.setPageMargins(QMarginsF(kMarginInches, kMarginInches, kMarginInches, kMarginInches),
                         QPageLayout::Inch);
  // What the outline last held, even when the design view hides it.
  auto [headings, rows] = printed_outline_ ? *printed_outline_ : ShownOutline();
  QPainter painter;
  if (!printer.isValid() || !painter.begin(&printer)) {
    session_.Tell(kPrintFailed);
    return false;
  }
  OutlinePrinter(headings, std::move(rows)).Print(painter, printer);
  if (!painter.end()) {
    session_.Tell(kPrintFailed);
    return false;
  }
  return true;
}

}  // namespace zephyr::editor

namespace zephyr::editor {

void PopupControlEdit::PrintPopupData() {
  QPrinter printer(QPrinter::HighResolution);
  printer.setDocName(ToQString(state_->session.Popup()->Title()));
  QPrintDialog dialog(&printer, this);
  dialog.setObjectName(QStringLiteral("dlgPrint"));
  if (dialog.exec() != QDialog::Accepted) return;
  state_->data->PrintOutline(printer);
}

bool PopupControlEdit::PrintPopupData(QPrinter& printer) {
  return state_->data->PrintOutline(printer);
}

}  // namespace zephyr::editor
