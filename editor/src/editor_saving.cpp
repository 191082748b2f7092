// From the editor's screens to the popup's files: the save dialog and its
// checks, the save itself, and carrying an edited design into the items,
// undoably.
#include <unistd.h>

#include <QLineEdit>
#include <QTableView>
#include <QTreeView>
#include <QUndoStack>

#include "editor_state.h"
#include "tab_strip.h"
#include "zephyr/runtime/design_rules.h"
#include "zephyr/support/debug_log.h"
#include "zephyr/support/file_utils.h"
#include "zephyr/support/text.h"

namespace zephyr::editor {

namespace {

// The characters a popup's base name may hold (letters in either case).
constexpr std::string_view kFileNameCharacters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789$#%'()-_@^{}! ";

// The part of a path up to and including its last "/".
std::string GetFolder(const std::string& path) {
  size_t slash = path.rfind('/');
  return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

// The file name without its folder and without its last extension.
std::string GetBaseName(const std::string& path) {
  size_t slash = path.rfind('/');
  std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
  size_t dot = name.rfind('.');
  return dot == std::string::npos ? name : name.substr(0, dot);
}

// The save writes work files beside the popup and renames them over it, so
// both the file and its folder must be writable.
bool CannotSaveTo(const std::string& file) {
  if (isFileReadOnly(file)) return true;
  std::string folder = GetFolder(file);
  if (::access(folder.empty() ? "." : folder.c_str(), W_OK) != 0) return true;
  return PathExists(file) && ::access(file.c_str(), W_OK) != 0;
}

}  // namespace

bool EditorState::DosFileNameCheck(const std::string& name) {
  DebugLog(kEditModule, "DosFileNameCheck", "Start");
  for (char character : name) {
    char upper =
        (character >= 'a' && character <= 'z') ? static_cast<char>(character - 32) : character;
    if (kFileNameCharacters.find(upper) == std::string_view::npos) {
      session.Tell("Invalid Filename. Filename contains invalid characters");
      return false;
    }
  }
  return true;
}

bool EditorState::ChooseSaveName() {
  while (true) {
    FileDialogRequest request;
    request.title = "ZephyrPopup - Select or Type a Filename";
    request.filter = "Zephyr Popup File (*.zpt)|*.zpt";
    request.initial_folder = session.Popup()->PopupPath();
    request.file_name = session.Popup()->DataSource();
    request.default_extension = "zpt";
    std::string chosen = request.file_name;
    if (!ShowSave(*session.services().file_dialog, chosen, request)) return false;
    if (!DosFileNameCheck(GetBaseName(chosen))) continue;
    DebugLog(kSaveChangesModule, "SaveChanges", "Return Dialogue =" + chosen);
    DebugLog(kSaveChangesModule, "SaveChanges", "PopupPath=" + GetFolder(chosen));
    session.Popup()->PopupPath(GetFolder(chosen));
    session.Popup()->DataSource(GetBaseName(chosen));
    return true;
  }
}

MessageAnswer EditorState::AskChangedOnDisk() {
  Message message;
  message.title = "Popup Changed on Disk";
  message.prompt = "Another user or program has saved \"" + session.Popup()->DataSource() +
                   "\" since you opened it.\r\n\r\nOverwrite replaces their changes with "
                   "yours; Save As... keeps both under another name; Cancel goes back to "
                   "editing and writes nothing.";
  message.buttons = MessageButtons::kYesNoCancel;
  message.icon = MessageIcon::kExclamation;
  message.default_button = 3;
  message.button_texts = {"Overwrite", "Save As...", "Cancel"};
  return session.services().messages->Show(message);
}

bool EditorState::SaveChanges(bool save_as) {
  DebugLog(kEditModule, "SaveChanges", "Start");
  if (session.ReadOnly() && !save_as) {
    session.Tell(session.ReadOnlyMessage());
    return false;
  }
  while (true) {
    if (session.Popup()->DataSource().empty() || save_as) {
      if (!ChooseSaveName()) return false;
    }
    // Another user or program saved the popup after it was opened here: a
    // save would silently replace their work.
    if (!session.Popup()->ChangedOnDisk()) break;
    MessageAnswer answer = AskChangedOnDisk();
    if (answer == MessageAnswer::kCancel) return false;
    if (answer == MessageAnswer::kYes) break;  // overwrite
    save_as = true;
  }
  std::string file =
      WithTrailingSlash(session.Popup()->PopupPath()) + session.Popup()->DataSource() + ".zpt";
  if (CannotSaveTo(file)) {
    session.Tell(
        "You do not have File Access to the file or folder you are saving to. Please contact you "
        "system Administrator for assistance.");
    return false;
  }
  DebugLog(kSaveChangesModule, "SaveChanges", "Call SaveData");
  bool wrote = SaveData();
  // The component clears its flag whether or not SaveData wrote; the
  // unsaved work is gone only when it did.
  session.SetDataChanged(false);
  if (wrote) {
    session.MarkSaved();
    WatchFiles();  // the save replaced the files
    ReportChangedOnDisk(false);
    if (session.ReadOnly()) {  // a copy of its own, under a new name
      session.SetReadOnly(false);
      ShowReadOnly();
    }
    HoldLock();
  }
  return wrote;
}

bool EditorState::SaveData() {
  DebugLog(kEditModule, "SaveData", "Start");
  if (tbsZephyrPopup->currentIndex() == kDesignTab) {
    if (!design->Validate()) return false;
    SaveDesign();
  }
  session.Popup()->WriteTemplate();
  session.Popup()->SavePopup();
  for (int32_t identity : data->Grid().IdentitiesInGridOrder()) {
    session.Popup()->SetSelectedItem(std::to_string(identity));
    // A row whose item went with a deleted level has nothing to write (the
    // history may keep the item itself alive).
    auto item = session.Popup()->SelectedItem();
    if (item && item->Level() <= session.Popup()->Levels()) session.Popup()->WritePopupRecord(item);
  }
  session.Popup()->SaveClose();
  ResizeControls();
  return true;
}

void EditorState::SaveDesign() {
  DebugLog(kEditModule, "SaveDesign", "Start");
  const bool changes_items = design->ChangesItems();
  // The items are about to change under an outline the design view hides:
  // what it showed stays what it prints.
  if (!DataMode && changes_items) data->KeepPrintedOutline();
  if (!changes_items) {
    design->LoadTemplateData();
    return;
  }
  // What the change replaces, for its undo: the design as edited, the items
  // and the outline that shows them.
  ShownDesign edited = design->CaptureDraft();
  DesignState before = DesignState::Capture(*session.Popup());
  BranchLayout outline = data->OutlineLayout();
  std::vector<int32_t> expanded = data->ExpandedIn(outline);
  design->ApplyToItems();
  design->LoadTemplateData();
  data->SetOutlineStale();
  session.Record(new ApplyDesignCommand(*this, std::move(edited), std::move(before),
                                        DesignState::Capture(*session.Popup()), std::move(outline),
                                        std::move(expanded)));
}

}  // namespace zephyr::editor
