// PopupControlEdit: the embeddable popup editor. A host places it on a form
// and calls OpenPopup; the user edits the title, question levels and fields
// in the design view (tab 1) and the item tree in the data view (tab 2), and
// the host saves with SaveChanges.
//
// The widget works on one current PopupClass, replaced by every OpenPopup.
// Everything it tells or asks the user goes through the MessageBox,
// FileDialog and Progress interfaces, which a host or a test may replace;
// by default they are the desktop's dialogs and the progress form.
//
// Members keep the component's names: properties read with `Name()` and
// write with `Name(value)`. Child controls carry their component names as
// object names (txtTitle, grdLevels, DataGrid, cmdAdd1, ...).
#ifndef ZEPHYR_EDITOR_POPUP_CONTROL_EDIT_H_
#define ZEPHYR_EDITOR_POPUP_CONTROL_EDIT_H_

#include <QWidget>

class QPrinter;
class QUndoStack;
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "zephyr/editor/new_key_prompt.h"
#include "zephyr/editor/property_bag.h"
#include "zephyr/runtime/popup_class.h"
#include "zephyr/support/clipboard.h"
#include "zephyr/support/file_dialog.h"
#include "zephyr/support/message_box.h"
#include "zephyr/support/progress.h"

namespace zephyr::editor {

// The colour an editor starts with: the system colour of button faces.
inline constexpr uint32_t kDefaultEditBackColor = 0x8000000F;
// The property-bag key of EditBackColor.
inline constexpr const char* kEditBackColorProperty = "EditBackColor";

class EditorState;

// Edits an editor made and never saved, left behind when its process
// stopped without closing it (a crash, a kill, a power cut).
struct UnsavedEdits {
  std::string journal;  // the folder that keeps them
  std::string path;     // the popup's folder and base name (none for a new popup)
  std::string file;
  std::string time;  // of the last edit, "yyyy-MM-dd HH:mm" local time
  // Another program changed the popup's files after the edits began: made
  // again on the files as they are now, the edits may not land where they
  // were made.
  bool changed_on_disk = false;
};

class PopupControlEdit : public QWidget {
  Q_OBJECT
  // A colour in the component's encoding: 0x00BBGGRR, or 0x80000000 plus a
  // system colour index.
  Q_PROPERTY(uint EditBackColor READ EditBackColor WRITE EditBackColor)

 public:
  explicit PopupControlEdit(QWidget* parent = nullptr);
  ~PopupControlEdit() override;

  // The component's flag: set by the user's edits as the component always
  // set it (a successful add leaves it alone, a cancelled one sets it) and
  // cleared by every SaveChanges that gets as far as saving, written or not.
  // A host that asks "is there unsaved work?" asks Modified instead.
  bool DataChanged() const;
  // True while the popup holds work no save has written: set by every change
  // of the title, design, items, keys or values and by an import; cleared by
  // opening a popup, by a save that wrote its files, and by undoing the item
  // edits back to where that save (or the opening) left them.
  bool Modified() const;
  // True while the data view is the current view; writing only stores it.
  bool DataMode() const;
  void DataMode(bool value);
  // The current popup's title.
  std::string PopupTitle() const;
  // The folder and the file name of the popup being edited.
  const std::string& SourcePath() const;
  void SourcePath(std::string value);
  const std::string& SourceFile() const;
  void SourceFile(std::string value);

  // Prints the data view's outline as it stands, after the print dialog;
  // the document is named after the title, with half-inch margins. A print
  // that fails is told to the user; nothing else changes.
  void PrintPopupData();
  // The same without the dialog, on a printer the caller set up (a PDF file,
  // say). False, after telling the user, when the printer could not be used.
  bool PrintPopupData(QPrinter& printer);

  // Fills and shows the design view (raising BeforeDesignMode first).
  void LoadDesignMode();
  // Shows and fills the data view (raising BeforeDataMode first).
  void LoadDataMode();
  // Opens a popup into the editor: path is its folder, file its base name.
  // Empty arguments keep the stored SourcePath / SourceFile; with no file the
  // editor starts a new popup in the design view. Errors of the popup's own
  // OpenPopup propagate, and leave the editor exactly as it was before the
  // call: the same popup, views, flags and names.
  //
  // While a popup is open the editor keeps a lock file beside it. A popup
  // another editor has open asks the user: Open Read-Only (nothing can be
  // changed; Save As keeps a copy), Open Anyway, or Cancel, which leaves
  // the editor as it was and answers false.
  bool OpenPopup(const std::string& path, const std::string& file);
  // True while the popup is open read-only.
  bool ReadOnly() const;

  // Crash recovery. An editor told to keep its unsaved edits writes every
  // change of its history to a journal in the user's application data,
  // removed by a save that writes, by undoing back to the files and when
  // the editor closes; only a process that dies leaves it behind. Off by
  // default: a host that offers recovery at its start turns it on.
  void KeepUnsavedEdits(bool keep);
  // Edits left behind by editors of this application that died, the latest first.
  static std::vector<UnsavedEdits> FindUnsavedEdits();
  static void DiscardUnsavedEdits(const UnsavedEdits& edits);
  // Opens the popup the edits were made on and makes them again; they are
  // unsaved work, kept as this editor's journal. Errors propagate and leave
  // the editor, and the edits, as they were. False when the user cancelled
  // (the popup is open in another editor).
  bool RecoverUnsavedEdits(const UnsavedEdits& edits);
  // Switches to the design view (false) or the data view (true) as a click
  // on its tab would: leaving the design view validates and saves the design
  // first, and a design that fails keeps the design view. True when the
  // requested view is showing afterwards.
  bool ShowView(bool DataView);
  // Orders every node's children in the data view by their two-digit code.
  void Sort_Tree();

  // Saves the popup, asking for a file name when it has none or SaveAs is set.
  // True when the popup's files were written; false when nothing was (the
  // dialog cancelled, the target read-only, the design invalid). Errors of
  // the writers propagate.
  bool SaveChanges(bool SaveAs);
  // Carries the edited levels and fields of the design view into the popup.
  void SaveDesign();
  // Carries the edited field list into the popup and every item's values.
  void ChangeFields();
  // Re-formats the keys of the items and their descendants to the popup's
  // current level count.
  void LevelChangeKeyFormat(const std::shared_ptr<PopupItems>& Popupitems);
  // Writes the popup's template, table and records in data-view order; false,
  // with nothing written, when the design view shows a design that fails
  // Validate.
  bool SaveData();
  // Checks the design (title, levels, fields); the first failing rule is told
  // to the user and its row made current.
  bool Validate();

  uint EditBackColor() const;
  void EditBackColor(uint color);

  // Adds a child / sibling of the current data-view item. An error (a code
  // already used, say) propagates to the caller; the editor's own buttons,
  // keys and menus tell it to the user instead.
  void AddChild();
  void AddSibling();

  // The data view's item edits (values, keys, new items, copies, pastes,
  // deletions), each undoable while the data view shows; leaving the data
  // view and filling the outline anew (opening, importing) empty it.
  QUndoStack* UndoStack() const;

  // Tells the user of an error as the editor's own commands do, through the
  // message box: for a host whose menu calls a method that raises.
  void ReportError(const std::exception& error);

  // The data view's commands, for a host's menus; nothing in the design view.
  // Puts the current item's identity on the clipboard, for Paste.
  void CopyCurrentItem();
  // Puts the current item's identity on the clipboard for Paste to move it.
  void CutCurrentItem();
  // Pastes a copy of the item this editor copied, with its branch, after the
  // current item when that stands at the copied item's level; a cut item is
  // moved there instead, once.
  void PasteItem();
  // Deletes the current item and its branch, after asking; nothing on the
  // title row.
  void DeleteCurrentItem();
  // Moves the current item up or down among its siblings: it trades its code
  // (and its branch's) with its neighbour's. Undoable.
  void MoveItemUp();
  void MoveItemDown();
  // Makes the current item the last child of its previous sibling (indent)
  // or the next sibling of its parent (outdent), with its branch, under a
  // code from the key step. Undoable; an indent below the popup's levels is
  // refused with a message.
  void IndentItem();
  void OutdentItem();
  // Moves the focus to the find box above the outline.
  void FocusFind();

  // The workbook buttons' commands, for a host's menus, in either view: fill
  // the popup from a workbook the user picks, or write it to a new one (the
  // answer is the workbook written, empty when none was). Errors are told.
  void ImportWorkbook();
  std::string ExportWorkbook();

  // The persisted property "EditBackColor".
  void ReadProperties(const PropertyBag& bag);
  void WriteProperties(PropertyBag& bag) const;

  // The popup being edited (never null).
  std::shared_ptr<PopupClass> Popup() const;

  // Replace how the user is told and asked; null restores the default.
  void SetMessageBox(std::shared_ptr<MessageBox> message_box);
  void SetFileDialog(std::shared_ptr<FileDialog> file_dialog);
  void SetProgress(std::shared_ptr<Progress> progress);
  void SetClipboard(std::shared_ptr<Clipboard> clipboard);
  void SetNewKeyPrompt(std::shared_ptr<NewKeyPrompt> prompt);
  // Whether Import and Export go to the running LibreOffice Calc first (the
  // default, where the editor was built with LibreOffice's SDK) or straight
  // to workbook files.
  void UseRunningSpreadsheet(bool use);
  // True when another user or program changed the open popup's files since
  // this editor opened or saved them.
  bool ChangedOnDisk() const;

 signals:
  void BeforeDataMode();
  void BeforeDesignMode();
  // DataChanged became true, or false after a save.
  void DataChangedChanged(bool changed);
  // Modified changed.
  void modifiedChanged(bool modified);
  // Another user or program changed the open popup's files while there was
  // unsaved work here (true), or the editor saved or reopened it (false);
  // a save asks before it overwrites.
  void changedOnDiskChanged(bool changed);
  // The popup opened read-only (true), or writable again after a Save As.
  void readOnlyChanged(bool read_only);
  // Whether there is an edit to undo or redo changed.
  void canUndoChanged(bool can_undo);
  void canRedoChanged(bool can_redo);

 public slots:
  // Undoes / redoes the last item edit in the data view; an error is told,
  // not thrown on.
  void undo();
  void redo();

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  std::unique_ptr<EditorState> state_;
};

}  // namespace zephyr::editor

#endif  // ZEPHYR_EDITOR_POPUP_CONTROL_EDIT_H_
