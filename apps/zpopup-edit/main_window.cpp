#include "main_window.h"

#include <QAction>
#include <QCloseEvent>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QSettings>
#include <QStatusBar>
#include <QUndoStack>
#include <cstdio>

#include "popup_name.h"
#include "zephyr/support/errors.h"

namespace zephyr::apps {

// The library's text is UTF-8.
QString ToQString(const std::string& text) {
  return QString::fromStdString(text);
}

namespace {

constexpr int kMaxRecent = 8;
constexpr int kStatusMilliseconds = 5000;

// One entry per popup in the recent list, however it was named: the
// absolute folder and base name, without an extension.
QString RecentEntry(const QString& folder, const QString& base) {
  QDir place(folder.isEmpty() ? QStringLiteral(".") : folder);
  return QDir::cleanPath(place.absoluteFilePath(base));
}

}  // namespace

MainWindow::MainWindow() : editor_(new editor::PopupControlEdit(this)) {
  setObjectName(QStringLiteral("ZephyrPopupEditor"));
  setCentralWidget(editor_);

  QMenu* file = menuBar()->addMenu(tr("&File"));
  file->setObjectName(QStringLiteral("menuFile"));
  file->addAction(tr("&New"), QKeySequence::New, this, [this]() { NewPopup(); });
  file->addAction(tr("&Open..."), QKeySequence::Open, this, [this]() { OpenDialog(); });
  recent_menu_ = file->addMenu(tr("Open &Recent"));
  recent_menu_->setObjectName(QStringLiteral("menuRecent"));
  file->addSeparator();
  changing_actions_ << file->addAction(tr("&Save"), QKeySequence::Save, this,
                                      [this]() { Save(false); });
  file->addAction(tr("Save &As..."), QKeySequence::SaveAs, this, [this]() { Save(true); });
  file->addSeparator();
  changing_actions_ << file->addAction(tr("&Import Workbook..."), this,
                                      [this]() { editor_->ImportWorkbook(); });
  file->addAction(tr("E&xport Workbook..."), this, [this]() {
    std::string written = editor_->ExportWorkbook();
    if (!written.empty()) Status(tr("Exported to %1").arg(ToQString(written)));
  });
  file->addSeparator();
  file->addAction(tr("&Print..."), QKeySequence::Print, this,
                  [this]() { editor_->PrintPopupData(); });
  file->addAction(tr("Print Pre&view..."), this, [this]() { PrintPreview(); });
  file->addAction(tr("&Export PDF..."), this, [this]() { ExportPdf(); });
  file->addSeparator();
  file->addAction(tr("&Quit"), QKeySequence::Quit, this, [this]() { close(); });
  QMenu* edit = menuBar()->addMenu(tr("&Edit"));
  edit->setObjectName(QStringLiteral("menuEdit"));
  AddUndoActions(edit);
  edit->addSeparator();
  changing_actions_ << edit->addAction(
      tr("Add &Child"), QKeySequence(tr("Ctrl+Shift+N")), this,
      [this]() { RunEditorCommand(&editor::PopupControlEdit::AddChild); });
  changing_actions_ << edit->addAction(
      tr("Add &Sibling"), QKeySequence(tr("Ctrl+Shift+B")), this,
      [this]() { RunEditorCommand(&editor::PopupControlEdit::AddSibling); });
  edit->addSeparator();
  // The outline and the editor take these keys themselves, where they mean
  // the item and not the text of a box: the menu shows them without taking them.
  using Command = void (editor::PopupControlEdit::*)();
  struct ItemCommand {
    const char* text;
    const char* keys;
    Command run;
    bool changes = true;  // the popup: none of them while it is open read-only
  };
  const ItemCommand item_commands[] = {
      {QT_TR_NOOP("Cu&t Item"), "Ctrl+X", &editor::PopupControlEdit::CutCurrentItem},
      {QT_TR_NOOP("&Copy Item"), "Ctrl+C", &editor::PopupControlEdit::CopyCurrentItem, false},
      {QT_TR_NOOP("&Paste"), "Ctrl+V", &editor::PopupControlEdit::PasteItem},
      {QT_TR_NOOP("&Delete"), "Del", &editor::PopupControlEdit::DeleteCurrentItem},
      {QT_TR_NOOP("Move &Up"), "Alt+Shift+Up", &editor::PopupControlEdit::MoveItemUp},
      {QT_TR_NOOP("Move Do&wn"), "Alt+Shift+Down", &editor::PopupControlEdit::MoveItemDown},
      {QT_TR_NOOP("&Indent"), "Alt+Shift+Right", &editor::PopupControlEdit::IndentItem},
      {QT_TR_NOOP("&Outdent"), "Alt+Shift+Left", &editor::PopupControlEdit::OutdentItem},
      {nullptr, nullptr, nullptr},
      {QT_TR_NOOP("&Find"), "Ctrl+F", &editor::PopupControlEdit::FocusFind, false},
  };
  for (const ItemCommand& command : item_commands) {
    if (!command.text) {
      edit->addSeparator();
      continue;
    }
    QAction* action =
        edit->addAction(tr(command.text) + QLatin1Char('\t') + QLatin1String(command.keys), this,
                        [this, run = command.run]() { (editor_->*run)(); });
    if (command.changes) changing_actions_ << action;
  }
  QMenu* view = menuBar()->addMenu(tr("&View"));
  view->addAction(tr("&Design"), QKeySequence(tr("Ctrl+1")), this,
                  [this]() { editor_->ShowView(false); });
  view->addAction(tr("D&ata"), QKeySequence(tr("Ctrl+2")), this,
                  [this]() { editor_->ShowView(true); });

  QSettings settings;
  if (!restoreGeometry(settings.value("window/geometry").toByteArray())) resize(960, 640);
  recent_ = settings.value("recentFiles").toStringList();
  editor::PropertyBag bag;
  if (settings.contains(editor::kEditBackColorProperty)) {
    bag.WriteProperty(editor::kEditBackColorProperty,
                      Variant(settings.value(editor::kEditBackColorProperty).toInt()), Variant());
  }
  editor_->ReadProperties(bag);
  RebuildRecentMenu();

  // Edits made here survive a crash; the next start offers them back.
  editor_->KeepUnsavedEdits(true);
  connect(editor_, &editor::PopupControlEdit::modifiedChanged, this, [this]() { UpdateTitle(); });
  connect(editor_, &editor::PopupControlEdit::readOnlyChanged, this, [this](bool read_only) {
    for (QAction* action : changing_actions_) action->setEnabled(!read_only);
    UpdateTitle();
  });
  connect(editor_, &editor::PopupControlEdit::changedOnDiskChanged, this, [this](bool changed) {
    changed_on_disk_ = changed;
    UpdateTitle();
    if (changed) Status(tr("Another user or program saved this popup; saving will ask first"));
  });
  UpdateTitle();
}

bool MainWindow::OpenNamed(const QString& name) {
  cli::PopupName popup = cli::PopupName::Parse(name.toStdString());
  try {
    if (!popup.Exists()) {
      throw RuntimeError(RuntimeErrorCode::kFileNotFound,
                         "no popup '" + popup.Display() + "' (its .ZPT file is missing)");
    }
    std::string shown = editor_->SourceFile();
    editor_->SourceFile("");
    if (!editor_->OpenPopup(popup.folder.empty() ? "./" : popup.folder, popup.base)) {
      editor_->SourceFile(shown);  // the user chose not to open it
      return false;
    }
  } catch (const Error& error) {
    if (batch_) {
      std::fprintf(stderr, "zpopup-edit: %s\n", error.Description().c_str());
    } else {
      QMessageBox::critical(this, tr("Open Popup"), ToQString(error.Description()));
    }
    UpdateTitle();
    return false;
  }
  RememberRecent(RecentEntry(ToQString(popup.folder), ToQString(popup.base)));
  UpdateTitle();
  return true;
}

bool MainWindow::OfferRecovery() {
  for (const editor::UnsavedEdits& edits : editor::PopupControlEdit::FindUnsavedEdits()) {
    QString name = edits.file.empty() ? tr("a new popup") : ToQString(edits.file);
    QString question = tr("Recover unsaved changes to %1 from %2?").arg(name, ToQString(edits.time));
    if (edits.changed_on_disk) {
      question += tr("\n\nSomeone else has saved %1 since these changes were made: recovered, "
                     "they are made on the popup as it is now and may not land where they "
                     "were made. Check them before you save.")
                      .arg(name);
    }
    QMessageBox box(QMessageBox::Question, tr("Recover Unsaved Changes"), question,
                    QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel, this);
    // Buttons named for what they do; the style's yes/no icons would mislead.
    const std::pair<QMessageBox::StandardButton, QString> names[] = {
        {QMessageBox::Yes, tr("Recover")},
        {QMessageBox::No, tr("Discard")},
        {QMessageBox::Cancel, tr("Not Now")}};
    for (const auto& [button, text] : names) {
      box.button(button)->setText(text);
      box.button(button)->setIcon(QIcon());
    }
    box.setDefaultButton(QMessageBox::Yes);
    int answer = box.exec();
    if (answer == QMessageBox::No) {
      editor::PopupControlEdit::DiscardUnsavedEdits(edits);
    } else if (answer == QMessageBox::Yes) {
      try {
        if (!editor_->RecoverUnsavedEdits(edits)) continue;
      } catch (const std::exception& error) {
        editor_->ReportError(error);  // the edits stay for another try
        continue;
      }
      if (!edits.file.empty()) {
        RememberRecent(RecentEntry(ToQString(edits.path), ToQString(edits.file)));
      }
      UpdateTitle();
      Status(tr("Recovered unsaved changes to %1").arg(name));
      return true;
    }
  }
  return false;
}

void MainWindow::SetBatch() {
  batch_ = true;
  editor_->KeepUnsavedEdits(false);
  editor_->SetMessageBox(std::make_shared<StderrMessageBox>());
}

bool MainWindow::PrintPdf(const QString& path) {
  QPrinter printer(QPrinter::HighResolution);
  printer.setOutputFormat(QPrinter::PdfFormat);
  printer.setOutputFileName(path);
  return editor_->PrintPopupData(printer);
}

void MainWindow::AddUndoActions(QMenu* edit) {
  QUndoStack* stack = editor_->UndoStack();
  // "Undo Delete 'Apples (1 kg)'": the command's own text, shown as written.
  auto named = [](const QString& verb, const QString& command) {
    QString text = command;
    return command.isEmpty() ? verb : verb + QLatin1Char(' ') + text.replace('&', "&&");
  };
  QAction* undo = edit->addAction(tr("&Undo"), this, [this]() { editor_->undo(); });
  undo->setShortcuts(QKeySequence::Undo);
  QAction* redo = edit->addAction(tr("&Redo"), this, [this]() { editor_->redo(); });
  redo->setShortcuts({QKeySequence(tr("Ctrl+Shift+Z")), QKeySequence(tr("Ctrl+Y"))});
  auto update = [=]() {
    undo->setText(named(tr("&Undo"), stack->undoText()));
    undo->setEnabled(stack->canUndo());
    redo->setText(named(tr("&Redo"), stack->redoText()));
    redo->setEnabled(stack->canRedo());
  };
  connect(stack, &QUndoStack::indexChanged, this, update);
  connect(stack, &QUndoStack::cleanChanged, this, update);
  connect(stack, &QUndoStack::canUndoChanged, this, update);
  connect(stack, &QUndoStack::canRedoChanged, this, update);
  update();
}

void MainWindow::RunEditorCommand(void (editor::PopupControlEdit::*command)()) {
  try {
    (editor_->*command)();
  } catch (const std::exception& error) {
    editor_->ReportError(error);
  }
}

void MainWindow::Status(const QString& text) {
  statusBar()->showMessage(text, kStatusMilliseconds);
}

void MainWindow::PrintPreview() {
  QPrinter printer(QPrinter::HighResolution);
  QPrintPreviewDialog preview(&printer, this);
  connect(&preview, &QPrintPreviewDialog::paintRequested, this,
          [this](QPrinter* target) { editor_->PrintPopupData(*target); });
  preview.exec();
}

void MainWindow::ExportPdf() {
  QString source = ToQString(editor_->Popup()->DataSource());
  QString path = QFileDialog::getSaveFileName(this, tr("Export PDF"),
                                              source.isEmpty() ? QString() : source + ".pdf",
                                              tr("PDF document (*.pdf)"));
  if (!path.isEmpty() && PrintPdf(path)) Status(tr("Exported to %1").arg(path));
}

void MainWindow::NewPopup() {
  if (!MaySetAside()) return;
  editor_->SourceFile("");
  editor_->OpenPopup("", "");
  UpdateTitle();
}

void MainWindow::OpenDialog() {
  if (!MaySetAside()) return;
  QString start = recent_.isEmpty() ? QString() : QFileInfo(recent_.first()).path();
  QString path = QFileDialog::getOpenFileName(this, tr("Open Popup"), start,
                                              tr("Zephyr Popup File (*.zpt *.ZPT)"));
  if (!path.isEmpty()) OpenNamed(path);
}

bool MainWindow::Save(bool save_as) {
  bool wrote = false;
  try {
    wrote = editor_->SaveChanges(save_as);
  } catch (const std::exception& error) {
    editor_->ReportError(error);
  }
  if (wrote) {
    auto popup = editor_->Popup();
    RememberRecent(RecentEntry(ToQString(popup->PopupPath()), ToQString(popup->DataSource())));
    Status(tr("Saved %1").arg(ToQString(popup->DataSource())));
  }
  UpdateTitle();
  return wrote;
}

bool MainWindow::MaySetAside() {
  if (!editor_->Modified()) return true;
  auto answer = QMessageBox::warning(
      this, tr("Unsaved Changes"), tr("The popup has unsaved changes. Save them first?"),
      QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, QMessageBox::Save);
  if (answer == QMessageBox::Cancel) return false;
  if (answer == QMessageBox::Save) return Save(false);
  return true;
}

void MainWindow::UpdateTitle() {
  std::string source = editor_->Popup()->DataSource();
  QString name = source.empty() ? tr("New Popup") : ToQString(source);
  if (changed_on_disk_) name += tr(" (changed on disk)");
  if (editor_->ReadOnly()) name += tr(" (read-only)");
  setWindowTitle(name + QStringLiteral("[*] - ") + tr("ZephyrPopup Editor"));
  setWindowModified(editor_->Modified());
}

void MainWindow::RememberRecent(const QString& path) {
  recent_.removeAll(path);
  recent_.prepend(path);
  while (recent_.size() > kMaxRecent) recent_.removeLast();
  RebuildRecentMenu();
}

void MainWindow::RebuildRecentMenu() {
  recent_menu_->clear();
  for (const QString& path : recent_) {
    recent_menu_->addAction(path, this, [this, path]() {
      if (MaySetAside()) OpenNamed(path);
    });
  }
  recent_menu_->setEnabled(!recent_.isEmpty());
}

void MainWindow::SaveSettings() {
  QSettings settings;
  settings.setValue("window/geometry", saveGeometry());
  settings.setValue("recentFiles", recent_);
  editor::PropertyBag bag;
  editor_->WriteProperties(bag);
  if (bag.Contains(editor::kEditBackColorProperty)) {
    settings.setValue(editor::kEditBackColorProperty,
                      bag.ReadProperty(editor::kEditBackColorProperty, Variant()).ToInt32());
  } else {
    settings.remove(editor::kEditBackColorProperty);
  }
}

void MainWindow::closeEvent(QCloseEvent* event) {
  if (!MaySetAside()) {
    event->ignore();
    return;
  }
  SaveSettings();
  event->accept();
}

}  // namespace zephyr::apps
