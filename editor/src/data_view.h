// DataView: the editor's data view: the add buttons, the key step, the
// delete button, the find box and the outline of the popup's items with its
// menu, and every edit of the items, each recorded in the session's history
// as a command that changes the popup and the outline together.
#ifndef ZEPHYR_EDITOR_DATA_VIEW_H_
#define ZEPHYR_EDITOR_DATA_VIEW_H_

#include <QObject>
#include <QStringList>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "data_grid_model.h"
#include "outline_printer.h"
#include "outline_view.h"
#include "zephyr/editor/popup_control_edit.h"

class QAction;
class QComboBox;
class QFrame;
class QKeyEvent;
class QLabel;
class QLineEdit;
class QMenu;
class QPrinter;
class QPushButton;
class QTimer;

namespace zephyr::editor {

class EditorSession;
class EditorState;

class DataView : public QObject {
  Q_OBJECT

 public:
  DataView(EditorState& shell, EditorSession& session);

  // Builds the view's controls in a frame of `parent` and connects them.
  QFrame* Build(QWidget* parent);
  QFrame* Frame() const { return FraDataMode_; }
  EditorSession& Session() const { return session_; }
  DataGridModel& Grid() const { return *grid_; }
  OutlineView& Outline() const { return *DataGrid_; }

  // --- showing the view ---
  // Fills the outline anew when the popup's items changed under it (an
  // opening, an import, an applied design); otherwise it keeps its rows,
  // order and expansion, which the history's commands refer to.
  void LoadDataGrid();
  // The popup's items changed under the outline: it is filled anew when
  // next shown.
  void SetOutlineStale() { outline_stale_ = true; }
  // The whole outline, or an empty layout when it is to be filled anew.
  BranchLayout OutlineLayout() const;
  // Puts back an outline laid out by OutlineLayout, with those rows
  // expanded; an empty layout leaves the outline to be filled anew.
  void ShowOutline(const BranchLayout& layout, const std::vector<int32_t>& expanded);
  // A step that is none of the list's entries falls back to "10".
  void FallBackStep();
  void MakeTitleCurrent();
  void FocusOutline();
  void FocusFind();
  // The data view's commands enabled as the current row allows.
  void EnableDisable();
  // Shows whether the popup may be changed: read-only, no cell takes an
  // edit or a drop and every command that changes items is disabled.
  void ShowReadOnly();
  void RebuildAddButtons();
  uint32_t EditBackColor() const { return edit_back_color_; }
  void SetEditBackColor(uint32_t color) { edit_back_color_ = color; }
  bool DeleteEnabled() const;

  // --- the outline's rows ---
  SortRecord SortTree();
  std::shared_ptr<PopupItem> CurrentItem();
  int CurrentLevel();
  bool CurrentIsTitle() const;
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
  // Widens a value's column when the cell's text no longer fits.
  void WidenColumnFor(const QModelIndex& cell);

  // --- the edits a host asks for ---
  void AddChild();
  void AddSibling();
  void DeleteDataItem();
  void Paste();
  // Puts the current item's identity on the clipboard; a cut item is moved,
  // not copied, by the next paste.
  void CopyToClipboard(bool cut = false);
  // Moves the current item up or down among its siblings, undoably.
  void MoveItem(int step);
  // Makes the current item the last child of its previous sibling, or the
  // next sibling of its parent, with a code from the key step; undoably.
  void Indent();
  void Outdent();

  // --- printing ---
  bool PrintOutline(QPrinter& printer);
  // The outline's headings and shown rows, as printing lays them out.
  std::pair<QStringList, std::vector<PrintedRow>> ShownOutline() const;
  // The items are about to change under the outline the design view hides:
  // printing keeps showing what it showed.
  void KeepPrintedOutline();

 private:
  bool eventFilter(QObject* watched, QEvent* event) override;
  bool FilterEvent(QObject* watched, QEvent* event);
  void Connect();
  void DataRowChanged();
  void AddButtonClicked(int index);
  void ShowItemMenu(const QPoint& position);
  void SelectItemRow(const std::shared_ptr<PopupItem>& item);
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
  // Find: shows only the rows matching the text, with their ancestors.
  void ApplyFind();
  // The key-step box's check when it loses focus: a step from 1 to 99.
  bool StepRefused();

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
  // The sibling row the current item would trade places with, one up (-1)
  // or down (1) in the outline; invalid when there is none.
  QModelIndex MoveNeighbour(int step) const;
  // The current item dropped above, on or below a row: moved there, or
  // copied with its branch; the code comes from the key step.
  void DropItem(const QModelIndex& target, OutlineView::DropPlace place, bool copy);
  // The two-digit code GetNewKey gives among siblings, or empty when the
  // user cancelled.
  std::string NewCode(const PopupItems& siblings, int16_t step, const std::string& after_code);
  // The item this editor put on the clipboard, when the clipboard still holds
  // it and it may be pasted beside the current row (a copy goes beside items
  // of its own level); null otherwise.
  std::shared_ptr<PopupItem> PasteSource();

  EditorState& shell_;
  EditorSession& session_;
  DataGridModel* grid_;
  bool outline_stale_ = true;
  uint32_t edit_back_color_ = kDefaultEditBackColor;
  // The level and parent the next new item receives.
  int16_t AddLevel_ = 0;
  std::shared_ptr<PopupItem> AddParent_;
  // What the outline showed when the design view took over and the popup's
  // items then changed under it: printing shows the outline as it was.
  std::optional<std::pair<QStringList, std::vector<PrintedRow>>> printed_outline_;

  // Controls, named as the component names them.
  QFrame* FraDataMode_ = nullptr;
  QFrame* fraButtons_ = nullptr;
  QLabel* lblAdd_ = nullptr;
  std::vector<QPushButton*> cmdAdd_;  // cmdAdd_[i - 1] is button i
  QFrame* fraStepDelete_ = nullptr;
  QLabel* lblStep_ = nullptr;
  QComboBox* cboStep_ = nullptr;
  QPushButton* cmdDelete_ = nullptr;
  OutlineView* DataGrid_ = nullptr;
  QLineEdit* txtFind_ = nullptr;
  QTimer* find_timer_ = nullptr;
  QLabel* Label1_ = nullptr;
  QMenu* mnuPopupAction_ = nullptr;
  QAction* mnuAddChild_ = nullptr;
  QAction* mnuAddSibling_ = nullptr;
  QAction* sep0_ = nullptr;
  QMenu* mnucopy_ = nullptr;
  QAction* mnuCopywithout_ = nullptr;
  QAction* mnucopywithchildren_ = nullptr;
  QAction* mnuPaste_ = nullptr;
  QAction* mnuDelete_ = nullptr;
  QAction* mnuMoveUp_ = nullptr;
  QAction* mnuMoveDown_ = nullptr;
  QAction* mnuIndent_ = nullptr;
  QAction* mnuOutdent_ = nullptr;
};

}  // namespace zephyr::editor

#endif  // ZEPHYR_EDITOR_DATA_VIEW_H_
