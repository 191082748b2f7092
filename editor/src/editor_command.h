// EditorCommand: a command of the editor's history. Each knows the view its
// change is seen in; undoing or redoing it shows that view first.
#ifndef ZEPHYR_EDITOR_EDITOR_COMMAND_H_
#define ZEPHYR_EDITOR_EDITOR_COMMAND_H_

#include <QUndoCommand>

#include "zephyr/runtime/edit_record.h"

namespace zephyr::editor {

// Tab indices of the tab strip (0-based; the component calls them 1 and 2),
// and a change that both views show.
inline constexpr int kDesignTab = 0;
inline constexpr int kDataTab = 1;
inline constexpr int kAnyView = -1;

class EditorCommand : public QUndoCommand {
 public:
  virtual int View() const = 0;
  // Writes down what the command's last redo (forward) or undo made of the
  // popup, for the journal of unsaved edits; nothing for an edit the popup
  // does not hold yet.
  virtual void Journal(PopupClass& popup, EditRecord& record, bool forward) const {
    (void)popup, (void)record, (void)forward;
  }

 protected:
  explicit EditorCommand(const QString& text) : QUndoCommand(text) {}
};

}  // namespace zephyr::editor

#endif  // ZEPHYR_EDITOR_EDITOR_COMMAND_H_
