// The editor's main window: the editor widget with File and View menus, the
// popup's name and a modified mark in the title, recent files, and window
// geometry and the widget's persisted property kept in the settings.
#ifndef ZEPHYR_APPS_ZPOPUP_EDIT_MAIN_WINDOW_H_
#define ZEPHYR_APPS_ZPOPUP_EDIT_MAIN_WINDOW_H_

#include <QMainWindow>
#include <QStringList>

#include "zephyr/editor/popup_control_edit.h"

class QMenu;

namespace zephyr::apps {

class MainWindow : public QMainWindow {
  Q_OBJECT

 public:
  MainWindow();

  editor::PopupControlEdit* Editor() const { return editor_; }
  // Opens the popup named as on the command line (folder and base name, or
  // a path to either of its files). False, after telling the user, on failure.
  bool OpenNamed(const QString& name);
  // Tells problems on standard error instead of in dialogs, for runs that
  // nobody watches.
  void SetBatch();
  // Offers the unsaved edits that editors which died left behind, the
  // latest first: Recover opens the popup with them, Discard drops them,
  // Not Now keeps them for the next start. True when edits were recovered.
  bool OfferRecovery();
  // Prints the data view to a PDF file through the editor's print path.
  bool PrintPdf(const QString& path);

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  void NewPopup();
  void OpenDialog();
  // Saves through the editor; true when the popup's files were written.
  bool Save(bool save_as);
  void PrintPreview();
  void ExportPdf();
  // Asks to save unsaved changes: true when the caller may go on.
  bool MaySetAside();
  void UpdateTitle();
  // Edit > Undo and Redo, named after the command they undo or redo.
  void AddUndoActions(QMenu* edit);
  // Runs one of the editor's methods, which raise: what they raise is told
  // through the editor, not thrown on through the event loop.
  void RunEditorCommand(void (editor::PopupControlEdit::*command)());
  // A passing note in the status bar.
  void Status(const QString& text);
  void RememberRecent(const QString& path);
  void RebuildRecentMenu();
  void SaveSettings();

  editor::PopupControlEdit* editor_;
  QMenu* recent_menu_;
  QStringList recent_;
  // Another program saved the popup while there was unsaved work here.
  bool changed_on_disk_ = false;
  // What changes the popup, disabled while it is open read-only.
  QList<QAction*> changing_actions_;
  bool batch_ = false;
};

}  // namespace zephyr::apps

#endif  // ZEPHYR_APPS_ZPOPUP_EDIT_MAIN_WINDOW_H_
