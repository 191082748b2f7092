// The data view's item edits as undoable commands. Each is pushed once its
// edit is made (its first redo does nothing) and undoes and redoes the popup
// and the outline together: values, keys, the order of the rows, their marks,
// the expansion of the rows it touches and the current cell.
#ifndef ZEPHYR_EDITOR_ITEM_COMMANDS_H_
#define ZEPHYR_EDITOR_ITEM_COMMANDS_H_

#include <cstdint>
#include <string>
#include <vector>

#include "data_grid_model.h"
#include "editor_command.h"
#include "zephyr/runtime/popup_class.h"

namespace zephyr::editor {

class DataView;

// The base: the state it works on and the first redo that is skipped.
class ItemCommand : public EditorCommand {
 public:
  int View() const override { return kDataTab; }
  void undo() final;
  void redo() final;

 protected:
  // `done`: the edit was made before the command was pushed, so the first
  // redo does nothing.
  ItemCommand(DataView& view, const QString& text, bool done = true)
      : EditorCommand(text), view_(view), done_(done) {}
  virtual void Undo() = 0;
  virtual void Redo() = 0;
  DataView& view_;

 private:
  // After every undo and redo: unsaved work, and the commands' enabling.
  void Done();
  bool done_;
};

// A value typed into a cell.
class ChangeValueCommand : public ItemCommand {
 public:
  ChangeValueCommand(DataView& view, int32_t identity, int column, std::string before,
                     std::string after);

  void Journal(PopupClass& popup, EditRecord& record, bool forward) const override;

 private:
  void Undo() override;
  void Redo() override;
  void Show(const std::string& text);
  int32_t identity_;
  int column_;
  std::string before_, after_;
};

// A code typed into a key cell, with its branch renumbered.
class ChangeKeyCommand : public ItemCommand {
 public:
  ChangeKeyCommand(DataView& view, int32_t identity, std::string before, std::string after,
                   bool was_marked, SortRecord sorted);

  void Journal(PopupClass& popup, EditRecord& record, bool forward) const override;

 private:
  void Undo() override;
  void Redo() override;
  int32_t identity_;
  std::string before_, after_;
  bool was_marked_;
  SortRecord sorted_;
};

// A new item or a copied branch.
class AddBranchCommand : public ItemCommand {
 public:
  AddBranchCommand(DataView& view, const QString& text, int32_t identity, int32_t current_before,
                   bool parent_was_expanded, SortRecord sorted);

  void Journal(PopupClass& popup, EditRecord& record, bool forward) const override;

 private:
  void Undo() override;
  void Redo() override;
  int32_t identity_;
  int32_t parent_identity_ = 0;
  int32_t current_before_;
  bool parent_was_expanded_;
  SortRecord sorted_;
  // Filled by the undo, for the redo.
  PopupClass::DetachedItem detached_;
  int row_ = 0;
  BranchLayout layout_;
  std::vector<int32_t> expanded_;
};

// An item moved up or down among its siblings: it trades its code, and so
// the codes of its branch, with its neighbour's, and their rows trade places.
// Doing and undoing are the same trade.
class MoveCommand : public ItemCommand {
 public:
  MoveCommand(DataView& view, const QString& text, int32_t moved, int32_t neighbour);

  void Journal(PopupClass& popup, EditRecord& record, bool forward) const override;

 private:
  void Undo() override { Trade(); }
  void Redo() override { Trade(); }
  void Trade();
  int32_t moved_, neighbour_;
};

// An item indented (the last child of its previous sibling) or outdented
// (the next sibling of its parent) with its branch, under a new code.
class ReparentCommand : public ItemCommand {
 public:
  // Makes the move; raises, changing nothing, when the code is taken.
  ReparentCommand(DataView& view, const QString& text, int32_t moved, int32_t new_parent,
                  std::string code);

  void Journal(PopupClass& popup, EditRecord& record, bool forward) const override;

 private:
  void Undo() override;
  void Redo() override;
  int32_t moved_;
  int32_t new_parent_;
  std::string code_;
  PopupClass::BranchKeys keys_;
  PopupClass::DetachedItem detached_;
  int32_t old_parent_ = 0;
  int old_row_ = 0;
  BranchLayout layout_;
  std::vector<int32_t> expanded_;
  SortRecord sorted_;
  // The last move, written down as it was made: where the branch left and
  // where it went (a place read later could have shifted).
  EditRecord move_record_;
};

// A deleted item and its branch.
class DeleteBranchCommand : public ItemCommand {
 public:
  DeleteBranchCommand(DataView& view, const QString& text, PopupClass::DetachedItem detached,
                      int32_t parent_identity, int row, BranchLayout layout,
                      std::vector<int32_t> expanded);

  void Journal(PopupClass& popup, EditRecord& record, bool forward) const override;

 private:
  void Undo() override;
  void Redo() override;
  PopupClass::DetachedItem detached_;
  int32_t identity_;
  int32_t parent_identity_;
  int row_;
  BranchLayout layout_;
  std::vector<int32_t> expanded_;
};

}  // namespace zephyr::editor

#endif  // ZEPHYR_EDITOR_ITEM_COMMANDS_H_
