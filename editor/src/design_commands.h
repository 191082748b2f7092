// The design view's edits and the changes that replace the popup's items as
// undoable commands: an edit of the title or the working lists, a design
// applied to the items, and an import.
#ifndef ZEPHYR_EDITOR_DESIGN_COMMANDS_H_
#define ZEPHYR_EDITOR_DESIGN_COMMANDS_H_

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "data_grid_model.h"
#include "editor_command.h"
#include "zephyr/runtime/design_state.h"
#include "zephyr/support/variant.h"

namespace zephyr::editor {

class DesignView;
class EditorSession;
class EditorState;

// What the design view shows: the title and the working lists, and whether
// the lists differ from the popup's design. A row with an initial index
// stands for the popup's level or field of that index; one without is new.
struct ShownDesign {
  struct Level {
    int16_t initial_index;
    Variant question;
  };
  struct Field {
    int16_t initial_index;
    std::string name;
    int16_t length;
    std::string length_text;
    int16_t start_char_pos;
  };
  std::string title;
  std::vector<Level> levels;
  std::vector<Field> fields;
  bool levels_changed = false;
  bool fields_changed = false;

  bool operator==(const ShownDesign& other) const;
};

// An edit of the title or the working lists. Typing in the title is one
// command until something else is done.
class DraftCommand : public EditorCommand {
 public:
  DraftCommand(DesignView& view, EditorSession& session, const QString& text, ShownDesign before,
               ShownDesign after, bool title_typing);
  int View() const override { return kDesignTab; }
  int id() const override { return title_typing_ ? 1 : -1; }
  bool mergeWith(const QUndoCommand* other) override;
  void undo() override;
  void redo() override;

 private:
  DesignView& view_;
  EditorSession& session_;
  ShownDesign before_, after_;
  bool title_typing_;
  bool done_ = true;
};

// The edited design applied to the items: levels removed or added, fields
// reordered. Undoing puts the items back with the outline as it was, and
// shows the design view with the edits not yet applied.
class ApplyDesignCommand : public EditorCommand {
 public:
  ApplyDesignCommand(EditorState& state, ShownDesign draft, DesignState before, DesignState after,
                     BranchLayout outline, std::vector<int32_t> expanded);
  int View() const override { return kDesignTab; }
  void undo() override;
  void redo() override;
  void Journal(PopupClass& popup, EditRecord& record, bool forward) const override;

 private:
  EditorState& state_;
  ShownDesign draft_;
  DesignState before_, after_;
  BranchLayout outline_;
  std::vector<int32_t> expanded_;
  bool done_ = true;
};

// An import: the popup it replaced, and the one it made.
class ImportCommand : public EditorCommand {
 public:
  ImportCommand(EditorState& state, std::shared_ptr<PopupClass> before,
                std::shared_ptr<PopupClass> after, BranchLayout outline,
                std::vector<int32_t> expanded);
  int View() const override { return kAnyView; }
  void undo() override;
  void redo() override;
  void Journal(PopupClass& popup, EditRecord& record, bool forward) const override;

 private:
  EditorState& state_;
  std::shared_ptr<PopupClass> before_, after_;
  BranchLayout outline_;
  std::vector<int32_t> expanded_;
  bool done_ = true;
};

}  // namespace zephyr::editor

#endif  // ZEPHYR_EDITOR_DESIGN_COMMANDS_H_
