// EditJournal: an editor's unsaved edits kept on disk, so that a crash, a
// kill or a power cut loses none of them. Each journal is a folder under the
// user's application data ("journal/"), never beside the popup: a file
// "editor" naming the process (a lock line, see lock_file.h), the popup's
// folder and base name and the size and time of its two files, then one file
// per change of the history ("000001.edit", ...), each an EditRecord written
// whole with QSaveFile.
//
// The journal describes the popup as its files held it when the first edit
// was made; a save that writes them, or undoing back to them, removes it.
#ifndef ZEPHYR_EDITOR_EDIT_JOURNAL_H_
#define ZEPHYR_EDITOR_EDIT_JOURNAL_H_

#include <QString>
#include <string>
#include <vector>

#include "zephyr/editor/popup_control_edit.h"
#include "zephyr/runtime/edit_record.h"

namespace zephyr::editor {

class EditJournal {
 public:
  EditJournal() = default;
  // A journal outlives its editor only when the process dies.
  ~EditJournal() { Discard(); }
  EditJournal(const EditJournal&) = delete;
  EditJournal& operator=(const EditJournal&) = delete;

  // Journals left by editors whose process is gone, the latest edit first.
  static std::vector<UnsavedEdits> Orphaned();
  // Every edit of a journal, in order, as one record.
  static std::string EditsOf(const UnsavedEdits& edits);
  static void Remove(const UnsavedEdits& edits);

  // Appends a change; the first makes the folder for the popup at
  // path/file, noting its files as they are. Raises std::runtime_error when
  // the folder cannot take it.
  void Write(const EditRecord& record, const PopupClass& popup, const std::string& path,
             const std::string& file);
  // Goes on with an orphaned journal: its edits are this editor's now.
  void Adopt(const UnsavedEdits& edits);
  // Removes the journal; the next Write starts a new one.
  void Discard();

 private:
  QString folder_;
  int next_ = 1;
};

}  // namespace zephyr::editor

#endif  // ZEPHYR_EDITOR_EDIT_JOURNAL_H_
