// The state and child controls of a PopupControlEdit, and the procedures
// that work on them. The widget's public members forward here; the view
// pieces (design view, data view, saving) are implemented in their own files.
#ifndef ZEPHYR_EDITOR_EDITOR_STATE_H_
#define ZEPHYR_EDITOR_EDITOR_STATE_H_

#include <QObject>
#include <QTimer>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "data_grid_model.h"
#include "design_commands.h"
#include "design_list_models.h"
#include "design_view.h"
#include "editor_command.h"
#include "editor_session.h"
#include "outline_printer.h"
#include "outline_view.h"
#include "zephyr/editor/new_key_prompt.h"
#include "zephyr/editor/popup_control_edit.h"
#include "zephyr/support/errors.h"

class QAction;
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
  void OpenPopup(const std::string& path, const std::string& file);
  void LoadDesignMode();
  void LoadDataMode();
  bool TabBeforeClick(int target);
  void TabClick(int index);
  void EnableDisable();
  void ResizeControls();
  // Undoes (or redoes) the next command of the history, showing its view
  // first; nothing when the view cannot be left.
  void StepHistory(bool undo);

  // --- data view ---
  // The key-step box's check when it loses focus: a step from 1 to 99.
  bool StepRefused();
  void ConnectDataView();
  // Fills the outline anew when the popup's items changed under it (an
  // opening, an import, an applied design); otherwise it keeps its rows,
  // order and expansion, which the history's commands refer to.
  void LoadDataGrid();
  // Puts back an outline laid out by WholeLayout, with those rows expanded;
  // an empty layout leaves the outline to be filled anew.
  void ShowOutline(const BranchLayout& layout, const std::vector<int32_t>& expanded);
  // Shows a popup that replaced the one shown: its design, and its items
  // once the outline is filled anew.
  void PopupReplaced();
  SortRecord SortTree();
  void DataRowChanged();
  void CurrentItemSelected();
  std::shared_ptr<PopupItem> CurrentItem();
  int CurrentLevel();
  bool CurrentIsTitle() const;
  void RebuildAddButtons();
  void AddButtonClicked(int index);
  void ShowItemMenu(const QPoint& position);
  void SelectItemRow(const std::shared_ptr<PopupItem>& item);
  void DeleteDataItem();
  // In-place editing of the outline.
  bool BeforeEdit(const QModelIndex& cell);
  void StartEdit();
  int MaxEditLength(const QModelIndex& cell);
  bool DataEditRefused(const QModelIndex& cell, QString& text);
  void DataAfterEdit(const QModelIndex& cell, const QString& text);
  // A key pressed in the outline, or in the in-place editor open on it.
  bool DataGridKey(QKeyEvent* event, QWidget* editor);
  // Left and Right move between cells; + - * open and close the outline;
  // Alt+Shift+Up and Down move the item.
  bool MoveOrFold(const QKeyEvent& event);
  // True for a character typed on the title row, which starts no edit.
  bool TypedOnTitle(const QKeyEvent& event);
  // Down or Enter in the find box moves into the results, Escape clears it.
  bool FindBoxKey(const QKeyEvent& event);
  // Widens a value's column when the cell's text no longer fits.
  void WidenColumnFor(const QModelIndex& cell);
  // Find: shows only the rows matching the text, with their ancestors.
  void ApplyFind();

  // --- rows by identity, for the undoable commands ---
  // The row of an item; the title row for identity 0.
  QModelIndex RowOf(int32_t identity) const;
  // The item identity of a row; 0 for the title row.
  static int32_t IdentityOf(const QModelIndex& row);
  // The rows of a branch that are expanded, and expanding them again.
  std::vector<int32_t> ExpandedIn(const BranchLayout& layout) const;
  void Expand(const std::vector<int32_t>& identities);
  // Makes an item's row (the title row for 0) current as SelectItemRow does.
  void MakeRowCurrent(int32_t identity);
  // How a command names an item: its first value, else its code.
  static QString NameOf(PopupItem& item);

  // --- item operations ---
  void AddChild();
  void AddSibling();
  std::shared_ptr<PopupItem> AddpopupDataItem(const std::shared_ptr<PopupItems>& siblings,
                                              int16_t step, const std::string& parent_key,
                                              const std::string& after_code);
  int16_t GetNewKey(const PopupItems& siblings, int16_t step, const std::string& after_code);
  int16_t AskNewKey(const PopupItems& siblings);
  // The key step: the step box's text as a 16-bit integer (type mismatch
  // when it is no number).
  int16_t KeyStep() const;
  // Adds the new item's row where Sort_Tree puts it, sorts, and records the
  // addition for undo under `text`.
  void AddGridRow(const QModelIndex& parent_row, const std::shared_ptr<PopupItem>& item,
                  const QString& text);
  std::shared_ptr<PopupItem> AddSiblingItem(const std::shared_ptr<PopupItem>& current);
  QModelIndex ParentRowOf(const PopupItem& item);
  void CopyPopupItem();
  void CopyPopupItemW_Children();
  // Shows a newly added branch: its rows where Sort_Tree puts them,
  // expanded and current, and the addition recorded for undo.
  void ShowAddedBranch(const std::shared_ptr<PopupItem>& added, const QString& text);
  // True, after telling the user, when the branch of `item` would reach
  // below the popup's last level at `level`.
  bool TooDeep(const std::shared_ptr<PopupItem>& item, int level, const char* what);
  // Adds a copy of `source` with its whole branch as a new sibling after
  // `beside` (at the end of the top level for a top-level item), recorded
  // for undo under `text`.
  void CopyBranchBeside(const std::shared_ptr<PopupItem>& source,
                        const std::shared_ptr<PopupItem>& beside, const QString& text);
  // One "Start" line for each call Add2GridCopy makes to itself over a copy.
  void LogAdd2GridCopy(PopupItem& item);
  void CloneNewItem(const std::shared_ptr<PopupItem>& target,
                    const std::shared_ptr<PopupItem>& source);
  void Paste();
  // Puts the current item's identity on the clipboard; a cut item is moved,
  // not copied, by the next paste.
  void CopyToClipboard(bool cut = false);
  // The sibling row the current item would trade places with, one up (-1)
  // or down (1) in the outline; invalid when there is none.
  QModelIndex MoveNeighbour(int step) const;
  // Moves the current item up or down among its siblings, undoably.
  void MoveItem(int step);
  // The current item dropped above, on or below a row: moved there, or
  // copied with its branch; the code comes from the key step.
  void DropItem(const QModelIndex& target, OutlineView::DropPlace place, bool copy);
  // Makes the current item the last child of its previous sibling, or the
  // next sibling of its parent, with a code from the key step; undoably.
  void Indent();
  void Outdent();
  // The two-digit code GetNewKey gives among siblings, or empty when the
  // user cancelled.
  std::string NewCode(const PopupItems& siblings, int16_t step, const std::string& after_code);
  // The item this editor put on the clipboard, when the clipboard still holds
  // it and it may be pasted beside the current row (a copy goes beside items
  // of its own level); null otherwise.
  std::shared_ptr<PopupItem> PasteSource();

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
  void ImportFromExcel();
  // The workbook written, or empty.
  std::string ExportToExcel();

  // --- printing ---
  bool PrintOutline(QPrinter& printer);
  // The outline's headings and shown rows, as printing lays them out.
  std::pair<QStringList, std::vector<PrintedRow>> ShownOutline() const;

  // --- validation and saving ---
  bool DosFileNameCheck(const std::string& name);
  bool SaveChanges(bool save_as);
  bool SaveData();
  // Applies the edited design to the items, undoably.
  void SaveDesign();

  bool eventFilter(QObject* watched, QEvent* event) override;
  bool FilterEvent(QObject* watched, QEvent* event);

  PopupControlEdit* q;
  // The popup, its names, the services, the history and the unsaved work.
  EditorSession session;

  // Control state.
  bool DataMode = false;
  // The widget is being destroyed: its children's signals and events are ignored.
  bool closing = false;
  bool Loading = false;
  bool Opening = false;
  // The popup's items changed under the outline: it is filled anew when next shown.
  bool outline_stale = true;
  uint32_t EditBackColor = kDefaultEditBackColor;
  // The level and parent the next new item receives.
  int16_t AddLevel = 0;
  std::shared_ptr<PopupItem> AddParent;
  // What the outline showed when the design view took over and the popup's
  // items then changed under it: printing shows the outline as it was.
  std::optional<std::pair<QStringList, std::vector<PrintedRow>>> printed_outline;

  // The design view, and the data view's outline.
  DesignView* design = nullptr;
  DataGridModel* grid = nullptr;

  // Child controls, named as the component names them.
  TabStrip* tbsZephyrPopup = nullptr;
  QFrame* FraDataMode = nullptr;
  QFrame* fraButtons = nullptr;
  QLabel* lblAdd = nullptr;
  std::vector<QPushButton*> cmdAdd;  // cmdAdd[i - 1] is button i
  QFrame* fraStepDelete = nullptr;
  QLabel* lblStep = nullptr;
  QComboBox* cboStep = nullptr;
  QPushButton* cmdDelete = nullptr;
  OutlineView* DataGrid = nullptr;
  QLineEdit* txtFind = nullptr;
  QTimer* find_timer = nullptr;
  QLabel* Label1 = nullptr;
  QMenu* mnuPopupAction = nullptr;
  QAction* mnuAddChild = nullptr;
  QAction* mnuAddSibling = nullptr;
  QAction* sep0 = nullptr;
  QMenu* mnucopy = nullptr;
  QAction* mnuCopywithout = nullptr;
  QAction* mnucopywithchildren = nullptr;
  QAction* mnuPaste = nullptr;
  QAction* mnuDelete = nullptr;
  QAction* mnuMoveUp = nullptr;
  QAction* mnuMoveDown = nullptr;
  QAction* mnuIndent = nullptr;
  QAction* mnuOutdent = nullptr;
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
