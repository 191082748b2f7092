#include "item_commands.h"

#include <QTreeView>
#include <algorithm>
#include <utility>

#include "editor_state.h"
#include "zephyr/runtime/popup_key.h"

namespace zephyr::editor {

void ItemCommand::undo() {
  Undo();
  Done();
}

void ItemCommand::redo() {
  // The edit itself was made before the command was pushed.
  if (std::exchange(done_, false)) return;
  Redo();
  Done();
}

void ItemCommand::Done() {
  // Unsaved work follows the history's clean state; the component's flag is
  // set by every edit.
  state_.session.SetDataChanged(true);
  // The current row may have kept its place while its neighbours changed.
  state_.EnableDisable();
}

ChangeValueCommand::ChangeValueCommand(EditorState& state, int32_t identity, int column,
                                       std::string before, std::string after)
    : ItemCommand(state,
                  QStringLiteral("Change '%1' to '%2'").arg(ToQString(before), ToQString(after))),
      identity_(identity),
      column_(column),
      before_(std::move(before)),
      after_(std::move(after)) {}

void ChangeValueCommand::Undo() {
  Show(before_);
}

void ChangeValueCommand::Redo() {
  Show(after_);
}

void ChangeValueCommand::Show(const std::string& text) {
  QModelIndex cell = state_.RowOf(identity_).siblingAtColumn(column_);
  state_.grid->SetValue(cell, text);
  state_.WidenColumnFor(cell);
  state_.DataGrid->setCurrentIndex(cell);
}

ChangeKeyCommand::ChangeKeyCommand(EditorState& state, int32_t identity, std::string before,
                                   std::string after, bool was_marked, SortRecord sorted)
    : ItemCommand(state,
                  QStringLiteral("Change Key %1 to %2").arg(ToQString(before), ToQString(after))),
      identity_(identity),
      before_(std::move(before)),
      after_(std::move(after)),
      was_marked_(was_marked),
      sorted_(std::move(sorted)) {}

void ChangeKeyCommand::Undo() {
  QModelIndex row = state_.RowOf(identity_);
  state_.grid->RestoreOrder(sorted_);
  auto item = FindItemByIdentity(identity_);
  state_.session.Popup()->ModifyKey(before_, item, item->Level());
  state_.grid->KeyChanged(row, was_marked_);
  state_.DataGrid->setCurrentIndex(row);
}

void ChangeKeyCommand::Redo() {
  QModelIndex row = state_.RowOf(identity_);
  auto item = FindItemByIdentity(identity_);
  state_.session.Popup()->ModifyKey(after_, item, item->Level());
  state_.grid->KeyChanged(row);
  sorted_ = state_.grid->SortChildren(row);
  state_.DataGrid->setCurrentIndex(row);
}

AddBranchCommand::AddBranchCommand(EditorState& state, const QString& text, int32_t identity,
                                   int32_t current_before, bool parent_was_expanded,
                                   SortRecord sorted)
    : ItemCommand(state, text),
      identity_(identity),
      parent_identity_(state.IdentityOf(state.RowOf(identity).parent())),
      current_before_(current_before),
      parent_was_expanded_(parent_was_expanded),
      sorted_(std::move(sorted)) {}

void AddBranchCommand::Undo() {
  state_.grid->RestoreOrder(sorted_);
  QModelIndex row = state_.RowOf(identity_);
  row_ = row.row();
  layout_ = state_.grid->LayoutOf(row);
  expanded_ = state_.ExpandedIn(layout_);
  state_.grid->RemoveRow(row);
  detached_ = state_.session.Popup()->DetachItem(FindItemByIdentity(identity_));
  if (!parent_was_expanded_) state_.DataGrid->collapse(state_.RowOf(parent_identity_));
  state_.MakeRowCurrent(current_before_);
}

void AddBranchCommand::Redo() {
  state_.session.Popup()->ReattachItem(detached_);
  detached_ = {};
  QModelIndex parent = state_.RowOf(parent_identity_);
  state_.grid->InsertLayout(parent, row_, layout_);
  state_.DataGrid->expand(parent);
  state_.Expand(expanded_);
  sorted_ = state_.grid->SortTree();
  state_.MakeRowCurrent(identity_);
}

MoveCommand::MoveCommand(EditorState& state, const QString& text, int32_t moved, int32_t neighbour)
    : ItemCommand(state, text, false), moved_(moved), neighbour_(neighbour) {}

void MoveCommand::Trade() {
  auto moved = FindItemByIdentity(moved_);
  auto neighbour = FindItemByIdentity(neighbour_);
  std::string moved_code = OwnCode(moved->PopupKey());
  state_.session.Popup()->ModifyKey(OwnCode(neighbour->PopupKey()), moved, moved->Level());
  state_.session.Popup()->ModifyKey(moved_code, neighbour, neighbour->Level());
  int column = std::max(state_.DataGrid->currentIndex().column(), 0);
  state_.grid->SwapRows(state_.RowOf(moved_), state_.RowOf(neighbour_));
  state_.DataGrid->setCurrentIndex(state_.RowOf(moved_).siblingAtColumn(column));
}

ReparentCommand::ReparentCommand(EditorState& state, const QString& text, int32_t moved,
                                 int32_t new_parent, std::string code)
    : ItemCommand(state, text),
      moved_(moved),
      new_parent_(new_parent),
      code_(std::move(code)),
      keys_(state.session.Popup()->KeysOf(FindItemByIdentity(moved))) {
  Redo();
}

void ReparentCommand::Redo() {
  auto item = FindItemByIdentity(moved_);
  auto parent = new_parent_ == 0 ? nullptr : FindItemByIdentity(new_parent_);
  auto siblings = parent ? parent->Children() : state_.session.Popup()->PopupItems();
  if (siblings->Item(Variant(state_.session.Popup()->KeyUnder(parent, code_)))) {
    throw RuntimeError(RuntimeErrorCode::kDuplicateKey,
                       "key '" + state_.session.Popup()->KeyUnder(parent, code_) + "'");
  }
  QModelIndex row = state_.RowOf(moved_);
  old_parent_ = state_.IdentityOf(row.parent());
  old_row_ = row.row();
  layout_ = state_.grid->LayoutOf(row);
  expanded_ = state_.ExpandedIn(layout_);
  state_.grid->RemoveRow(row);
  detached_ = state_.session.Popup()->DetachItem(item);
  state_.session.Popup()->AppendBranch(item, parent, code_);
  QModelIndex parent_row = state_.RowOf(new_parent_);
  state_.grid->InsertLayout(parent_row, state_.grid->rowCount(parent_row), layout_);
  state_.DataGrid->expand(parent_row);
  state_.Expand(expanded_);
  sorted_ = state_.grid->SortTree();
  state_.MakeRowCurrent(moved_);
}

void ReparentCommand::Undo() {
  state_.grid->RestoreOrder(sorted_);
  auto item = FindItemByIdentity(moved_);
  state_.grid->RemoveRow(state_.RowOf(moved_));
  state_.session.Popup()->DetachItem(item);
  state_.session.Popup()->RestoreKeys(keys_);
  state_.session.Popup()->ReattachItem(detached_);
  QModelIndex old_parent = state_.RowOf(old_parent_);
  state_.grid->InsertLayout(old_parent, old_row_, layout_);
  state_.DataGrid->expand(old_parent);
  state_.Expand(expanded_);
  state_.MakeRowCurrent(moved_);
}

DeleteBranchCommand::DeleteBranchCommand(EditorState& state, const QString& text,
                                         PopupClass::DetachedItem detached, int32_t parent_identity,
                                         int row, BranchLayout layout,
                                         std::vector<int32_t> expanded)
    : ItemCommand(state, text),
      detached_(std::move(detached)),
      identity_(detached_.item->Identity()),
      parent_identity_(parent_identity),
      row_(row),
      layout_(std::move(layout)),
      expanded_(std::move(expanded)) {}

void DeleteBranchCommand::Undo() {
  state_.session.Popup()->ReattachItem(detached_);
  detached_ = {};
  QModelIndex parent = state_.RowOf(parent_identity_);
  QModelIndex row = state_.grid->InsertLayout(parent, row_, layout_);
  state_.DataGrid->expand(parent);
  state_.Expand(expanded_);
  state_.DataGrid->setCurrentIndex(row);
}

void DeleteBranchCommand::Redo() {
  QModelIndex row = state_.RowOf(identity_);
  QModelIndex above = state_.DataGrid->indexAbove(row);
  state_.grid->RemoveRow(row);
  detached_ = state_.session.Popup()->DetachItem(FindItemByIdentity(identity_));
  state_.DataGrid->setCurrentIndex(above.isValid() ? above : state_.grid->TitleIndex());
}

}  // namespace zephyr::editor
