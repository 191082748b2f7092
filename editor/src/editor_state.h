// The state and child controls of a PopupControlEdit, and the procedures
// that work on them. The widget's public members forward here; the view
// pieces (design view, data view, saving) are implemented in their own files.
#ifndef ZEPHYR_EDITOR_EDITOR_STATE_H_
#define ZEPHYR_EDITOR_EDITOR_STATE_H_

#include <QObject>
#include <QTimer>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "data_grid_model.h"
#include "data_view.h"
#include "design_commands.h"
#include "design_list_models.h"
#include "design_view.h"
#include "editor_command.h"
#include "editor_session.h"
#include "outline_printer.h"
#include "outline_view.h"
#include "zephyr/editor/new_key_prompt.h"
#include "zephyr/editor/popup_control_edit.h"
#include "zephyr/excel/workbook.h"
#include "zephyr/support/errors.h"
#include "zephyr/support/lock_file.h"

class QAction;
class QFileSystemWatcher;
class QUndoCommand;
class QUndoStack;
class QComboBox;
class QFrame;
class QGroupBox;
class QLabel;
class QLineEdit;
class QMenu;
class QPushButton;
class QTableView;
class QPrinter;
class QToolButton;
class QTreeView;
class QKeyEvent;

namespace zephyr::editor {

class TabStrip;

// The log modules of the editor. They differ on purpose: each names the
// object the procedure has always logged under.
inline constexpr const char* kEditModule = "PopupEditControl";
inline constexpr const char* kInitializeModule = "PopupControl";
inline constexpr const char* kTemplateDataModule = "POpupControlEdit";
inline constexpr const char* kSaveChangesModule = "popupcontrolEdit";

class EditorState : public QObject {
  Q_OBJECT

 public:
  explicit EditorState(PopupControlEdit* owner);
  ~EditorState() override;

  std::shared_ptr<NewKeyPrompt> DefaultNewKeyPrompt();

  // --- shell ---
  void BuildControls();
  // Opens a popup (see PopupControlEdit::OpenPopup). `prepare`, when given,
  // works on the popup once read, before it replaces the one shown; what it
  // raises leaves the editor as it was. False when the user chose not to
  // open a popup another editor has open.
  bool OpenPopup(const std::string& path, const std::string& file,
                 const std::function<void(PopupClass&)>& prepare = {});
  // What to do about a popup another editor has open, after asking.
  enum class LockChoice { kTake, kReadOnly, kCancel };
  LockChoice AskAboutLock(const std::string& template_path);
  // Holds the lock beside the popup's files as they are named now, and none
  // for a popup without files or one open read-only.
  void HoldLock();
  // Shows in both views (and tells the host) whether the popup may be changed.
  void ShowReadOnly();
  void LoadDesignMode();
  void LoadDataMode();
  bool TabBeforeClick(int target);
  void TabClick(int index);
  void ResizeControls();
  // Undoes (or redoes) the next command of the history, showing its view
  // first; nothing when the view cannot be left.
  void StepHistory(bool undo);
  // Watches the open popup's files anew (a save replaces them).
  void WatchFiles();
  // The watched files changed: without unsaved work the user may reload the
  // popup; with it, the host hears that a save will ask.
  void FilesChanged();
  void ReportChangedOnDisk(bool changed);

  // Shows a popup that replaced the one shown: its design, and its items
  // once the outline is filled anew.
  void PopupReplaced();

  // Everything Qt calls into the editor runs through Guarded: an error is
  // told through the message box and goes no further, so nothing unwinds
  // through the event loop. True when the command ran to its end; nothing
  // runs while the widget is being destroyed.
  template <typename Command>
  bool Guarded(Command&& command);
  void ReportError(const std::exception& error);
  // Connects a signal to a handler that runs guarded.
  template <typename Sender, typename Signal, typename Handler>
  void On(Sender* sender, Signal signal, Handler handler);
  // Runs a handler guarded once control is back in the event loop, unless
  // the context object is gone by then.
  template <typename Handler>
  void Later(QObject* context, Handler handler);

  // --- workbooks ---
  std::optional<std::string> PickWorkbook();
  // Where an import reads: the running spreadsheet program, or a workbook
  // file the user picks; none when the user cancelled.
  std::optional<excel::SheetSource> SheetToImport();
  void ImportFromExcel();
  // The workbook written, or empty.
  std::string ExportToExcel();

  // --- validation and saving ---
  bool DosFileNameCheck(const std::string& name);
  bool SaveChanges(bool save_as);
  // The save dialog until it gives a valid name, which the popup takes;
  // false when the user cancelled.
  bool ChooseSaveName();
  // Asks what to do about a popup another program saved since it was
  // opened: Yes overwrites, No saves under another name, Cancel stops.
  MessageAnswer AskChangedOnDisk();
  bool SaveData();
  // Applies the edited design to the items, undoably.
  void SaveDesign();

  PopupControlEdit* q;
  // The popup, its names, the services, the history and the unsaved work.
  EditorSession session;

  // Control state.
  bool DataMode = false;
  // The widget is being destroyed: its children's signals and events are ignored.
  bool closing = false;
  bool Loading = false;
  bool Opening = false;
  // Import from and export to the running spreadsheet program first.
  bool use_running_spreadsheet = true;

  // The open popup's files, watched for other programs' saves; events come
  // in bursts (a save writes and renames two files), so they wait a moment.
  QFileSystemWatcher* watcher = nullptr;
  QTimer* watch_settle = nullptr;
  bool reported_changed_on_disk = false;
  // Tells other editors who has the popup open.
  LockFile lock;

  // The two views.
  DesignView* design = nullptr;
  DataView* data = nullptr;

  // Child controls, named as the component names them.
  TabStrip* tbsZephyrPopup = nullptr;
};

template <typename Command>
bool EditorState::Guarded(Command&& command) {
  if (closing) return false;
  try {
    command();
    return true;
  } catch (const std::exception& error) {
    ReportError(error);
  } catch (...) {
    ReportError(std::runtime_error("an unknown error"));
  }
  return false;
}

template <typename Sender, typename Signal, typename Handler>
void EditorState::On(Sender* sender, Signal signal, Handler handler) {
  // The return type takes only the arguments the handler takes, so that
  // Qt passes only those of the signal's.
  connect(sender, signal, this,
          [this, handler](const auto&... arguments) -> decltype(handler(arguments...), void()) {
            Guarded([&]() { handler(arguments...); });
          });
}

template <typename Handler>
void EditorState::Later(QObject* context, Handler handler) {
  QTimer::singleShot(0, context, [this, handler]() { Guarded(handler); });
}

}  // namespace zephyr::editor

#endif  // ZEPHYR_EDITOR_EDITOR_STATE_H_
