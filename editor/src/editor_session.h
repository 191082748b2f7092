// EditorSession: what an editor holds apart from its widgets: the popup and
// the names it is opened under, the services that reach the user, the
// history of edits and the two kinds of change: the component's DataChanged
// flag and the unsaved work a host asks about.
#ifndef ZEPHYR_EDITOR_EDITOR_SESSION_H_
#define ZEPHYR_EDITOR_EDITOR_SESSION_H_

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "edit_journal.h"
#include "zephyr/editor/new_key_prompt.h"
#include "zephyr/runtime/popup_class.h"
#include "zephyr/support/clipboard.h"
#include "zephyr/support/file_dialog.h"
#include "zephyr/support/message_box.h"
#include "zephyr/support/progress.h"

class QObject;
class QUndoCommand;
class QUndoStack;

namespace zephyr::editor {

class EditorSession {
 public:
  struct Services {
    std::shared_ptr<MessageBox> messages;
    std::shared_ptr<FileDialog> file_dialog;
    std::shared_ptr<Progress> progress;
    std::shared_ptr<Clipboard> clipboard;
    std::shared_ptr<NewKeyPrompt> new_key_prompt;
  };
  // Told when DataChanged, or whether there is unsaved work, changes.
  struct Observer {
    std::function<void(bool)> data_changed;
    std::function<void(bool)> modified;
  };

  // The history is a child of `owner`.
  EditorSession(QObject* owner, Services services, Observer observer);
  ~EditorSession();
  EditorSession(const EditorSession&) = delete;
  EditorSession& operator=(const EditorSession&) = delete;

  // The popup being edited, with the services attached.
  const std::shared_ptr<PopupClass>& Popup() const { return popup_; }
  // Edits another popup: what this editor put on the clipboard no longer
  // names one of its items.
  void SetPopup(std::shared_ptr<PopupClass> popup);

  // The folder and base name OpenPopup uses when it is given none.
  const std::string& SourcePath() const { return source_path_; }
  const std::string& SourceFile() const { return source_file_; }
  void SetSource(std::string path, std::string file);

  const Services& services() const { return services_; }
  // Replaces the services (the popup's message box and progress with them).
  void SetServices(Services services);
  MessageAnswer Tell(const std::string& prompt, MessageButtons buttons = MessageButtons::kOk,
                     const std::string& title = {}, MessageIcon icon = MessageIcon::kNone,
                     int default_button = 1);

  // The component's flag: set by edits, cleared by a save (even a refused one).
  bool DataChanged() const { return data_changed_; }
  void SetDataChanged(bool changed);

  // Unsaved work: a change the history does not hold, or a history that does
  // not stand where the last save or the opening left it.
  bool IsModified() const;
  // A change outside the history.
  void MarkModified();
  // A save that wrote: the history's present is what the files hold.
  void MarkSaved();
  // A popup just opened: no history and no unsaved work.
  void StartHistory();

  // Whether every change of the history is kept in a journal of unsaved
  // edits (off by default).
  void KeepJournal(bool keep);
  // Goes on with an orphaned journal whose edits the popup now holds.
  void AdoptJournal(const UnsavedEdits& edits);

  // Whether the popup may not be changed (another editor has it open).
  bool ReadOnly() const { return read_only_; }
  void SetReadOnly(bool read_only) { read_only_ = read_only; }
  // Raises, telling why, when the popup may not be changed.
  void RequireWritable() const;
  std::string ReadOnlyMessage() const;

  QUndoStack& History() const { return *history_; }
  // Pushes a command for an edit already made.
  void Record(QUndoCommand* command);
  // Empties the history; what it held stays unsaved work.
  void ClearHistory();

  // What this editor last put on the clipboard: an item's identity, and
  // whether it was cut (the next paste moves it).
  int32_t CopiedIdentity() const { return copied_identity_; }
  bool CopiedWasCut() const { return copied_was_cut_; }
  void SetCopied(int32_t identity, bool cut);

 private:
  // Tells the observer when IsModified changed.
  void ReportModified();
  // The history stands at `index`: the journal gets what the commands undone
  // or redone since it last wrote made of the popup.
  void JournalHistory(int index);

  std::shared_ptr<PopupClass> popup_;
  std::string source_path_;
  std::string source_file_;
  Services services_;
  Observer observer_;
  QUndoStack* history_;
  bool data_changed_ = false;
  bool modified_ = false;
  bool reported_modified_ = false;
  int32_t copied_identity_ = 0;
  bool copied_was_cut_ = false;
  bool read_only_ = false;
  bool keep_journal_ = false;
  EditJournal journal_;
  int journaled_index_ = 0;
  bool journal_failed_ = false;
};

}  // namespace zephyr::editor

#endif  // ZEPHYR_EDITOR_EDITOR_SESSION_H_
