#include "item_commands.h"

#include <QTreeView>
#include <algorithm>
#include <utility>

#include "data_view.h"
#include "design_list_models.h"
#include "editor_session.h"
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
  view_.Session().SetDataChanged(true);
  // The current row may have kept its place while its neighbours changed.
  view_.EnableDisable();
}

ChangeValueCommand::ChangeValueCommand(DataView& view, int32_t identity, int column,
                                       std::string before, std::string after)
    : ItemCommand(view,
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
  QModelIndex cell = view_.RowOf(identity_).siblingAtColumn(column_);
  view_.Grid().SetValue(cell, text);
  view_.WidenColumnFor(cell);
  view_.Outline().setCurrentIndex(cell);
}

ChangeKeyCommand::ChangeKeyCommand(DataView& view, int32_t identity, std::string before,
                                   std::string after, bool was_marked, SortRecord sorted)
    : ItemCommand(view,
                  QStringLiteral("Change Key %1 to %2").arg(ToQString(before), ToQString(after))),
      identity_(identity),
      before_(std::move(before)),
      after_(std::move(after)),
      was_marked_(was_marked),
      sorted_(std::move(sorted)) {}

void ChangeKeyCommand::Undo() {
  QModelIndex row = view_.RowOf(identity_);
  view_.Grid().RestoreOrder(sorted_);
  auto item = FindItemByIdentity(identity_);
  view_.Session().Popup()->ModifyKey(before_, item, item->Level());
  view_.Grid().KeyChanged(row, was_marked_);
  view_.Outline().setCurrentIndex(row);
}

void ChangeKeyCommand::Redo() {
  QModelIndex row = view_.RowOf(identity_);
  auto item = FindItemByIdentity(identity_);
  view_.Session().Popup()->ModifyKey(after_, item, item->Level());
  view_.Grid().KeyChanged(row);
  sorted_ = view_.Grid().SortChildren(row);
  view_.Outline().setCurrentIndex(row);
}

AddBranchCommand::AddBranchCommand(DataView& view, const QString& text, int32_t identity,
                                   int32_t current_before, bool parent_was_expanded,
                                   SortRecord sorted)
    : ItemCommand(view, text),
      identity_(identity),
      parent_identity_(view.IdentityOf(view.RowOf(identity).parent())),
      current_before_(current_before),
      parent_was_expanded_(parent_was_expanded),
      sorted_(std::move(sorted)) {}

void AddBranchCommand::Undo() {
  view_.Grid().RestoreOrder(sorted_);
  QModelIndex row = view_.RowOf(identity_);
  row_ = row.row();
  layout_ = view_.Grid().LayoutOf(row);
  expanded_ = view_.ExpandedIn(layout_);
  view_.Grid().RemoveRow(row);
  detached_ = view_.Session().Popup()->DetachItem(FindItemByIdentity(identity_));
  if (!parent_was_expanded_) view_.Outline().collapse(view_.RowOf(parent_identity_));
  view_.MakeRowCurrent(current_before_);
}

void AddBranchCommand::Redo() {
  view_.Session().Popup()->ReattachItem(detached_);
  detached_ = {};
  QModelIndex parent = view_.RowOf(parent_identity_);
  view_.Grid().InsertLayout(parent, row_, layout_);
  view_.Outline().expand(parent);
  view_.Expand(expanded_);
  sorted_ = view_.Grid().SortTree();
  view_.MakeRowCurrent(identity_);
}

MoveCommand::MoveCommand(DataView& view, const QString& text, int32_t moved, int32_t neighbour)
    : ItemCommand(view, text, false), moved_(moved), neighbour_(neighbour) {}

void MoveCommand::Trade() {
  auto moved = FindItemByIdentity(moved_);
  auto neighbour = FindItemByIdentity(neighbour_);
  std::string moved_code = OwnCode(moved->PopupKey());
  view_.Session().Popup()->ModifyKey(OwnCode(neighbour->PopupKey()), moved, moved->Level());
  view_.Session().Popup()->ModifyKey(moved_code, neighbour, neighbour->Level());
  int column = std::max(view_.Outline().currentIndex().column(), 0);
  view_.Grid().SwapRows(view_.RowOf(moved_), view_.RowOf(neighbour_));
  view_.Outline().setCurrentIndex(view_.RowOf(moved_).siblingAtColumn(column));
}

ReparentCommand::ReparentCommand(DataView& view, const QString& text, int32_t moved,
                                 int32_t new_parent, std::string code)
    : ItemCommand(view, text),
      moved_(moved),
      new_parent_(new_parent),
      code_(std::move(code)),
      keys_(view.Session().Popup()->KeysOf(FindItemByIdentity(moved))) {
  Redo();
}

void ReparentCommand::Redo() {
  auto item = FindItemByIdentity(moved_);
  auto parent = new_parent_ == 0 ? nullptr : FindItemByIdentity(new_parent_);
  auto siblings = parent ? parent->Children() : view_.Session().Popup()->PopupItems();
  if (siblings->Item(Variant(view_.Session().Popup()->KeyUnder(parent, code_)))) {
    throw RuntimeError(RuntimeErrorCode::kDuplicateKey,
                       "key '" + view_.Session().Popup()->KeyUnder(parent, code_) + "'");
  }
  QModelIndex row = view_.RowOf(moved_);
  old_parent_ = view_.IdentityOf(row.parent());
  old_row_ = row.row();
  layout_ = view_.Grid().LayoutOf(row);
  expanded_ = view_.ExpandedIn(layout_);
  view_.Grid().RemoveRow(row);
  detached_ = view_.Session().Popup()->DetachItem(item);
  move_record_ = {};
  move_record_.Removed(*view_.Session().Popup(), detached_);
  view_.Session().Popup()->AppendBranch(item, parent, code_);
  move_record_.Inserted(*view_.Session().Popup(), item);
  QModelIndex parent_row = view_.RowOf(new_parent_);
  view_.Grid().InsertLayout(parent_row, view_.Grid().rowCount(parent_row), layout_);
  view_.Outline().expand(parent_row);
  view_.Expand(expanded_);
  sorted_ = view_.Grid().SortTree();
  view_.MakeRowCurrent(moved_);
}

void ReparentCommand::Undo() {
  view_.Grid().RestoreOrder(sorted_);
  auto item = FindItemByIdentity(moved_);
  view_.Grid().RemoveRow(view_.RowOf(moved_));
  move_record_ = {};
  move_record_.Removed(*view_.Session().Popup(), view_.Session().Popup()->DetachItem(item));
  view_.Session().Popup()->RestoreKeys(keys_);
  view_.Session().Popup()->ReattachItem(detached_);
  move_record_.Inserted(*view_.Session().Popup(), item);
  QModelIndex old_parent = view_.RowOf(old_parent_);
  view_.Grid().InsertLayout(old_parent, old_row_, layout_);
  view_.Outline().expand(old_parent);
  view_.Expand(expanded_);
  view_.MakeRowCurrent(moved_);
}

DeleteBranchCommand::DeleteBranchCommand(DataView& view, const QString& text,
                                         PopupClass::DetachedItem detached, int32_t parent_identity,
                                         int row, BranchLayout layout,
                                         std::vector<int32_t> expanded)
    : ItemCommand(view, text),
      detached_(std::move(detached)),
      identity_(detached_.item->Identity()),
      parent_identity_(parent_identity),
      row_(row),
      layout_(std::move(layout)),
      expanded_(std::move(expanded)) {}

void DeleteBranchCommand::Undo() {
  view_.Session().Popup()->ReattachItem(detached_);
  detached_ = {};
  QModelIndex parent = view_.RowOf(parent_identity_);
  QModelIndex row = view_.Grid().InsertLayout(parent, row_, layout_);
  view_.Outline().expand(parent);
  view_.Expand(expanded_);
  view_.Outline().setCurrentIndex(row);
}

void DeleteBranchCommand::Redo() {
  QModelIndex row = view_.RowOf(identity_);
  QModelIndex above = view_.Outline().indexAbove(row);
  view_.Grid().RemoveRow(row);
  detached_ = view_.Session().Popup()->DetachItem(FindItemByIdentity(identity_));
  view_.Outline().setCurrentIndex(above.isValid() ? above : view_.Grid().TitleIndex());
}

void ChangeValueCommand::Journal(PopupClass& popup, EditRecord& record, bool) const {
  record.Value(popup, *FindItemByIdentity(identity_), column_);
}

void ChangeKeyCommand::Journal(PopupClass& popup, EditRecord& record, bool) const {
  record.Code(popup, *FindItemByIdentity(identity_));
}

void AddBranchCommand::Journal(PopupClass& popup, EditRecord& record, bool forward) const {
  if (forward) {
    record.Inserted(popup, FindItemByIdentity(identity_));
  } else {
    record.Removed(popup, detached_);
  }
}

void MoveCommand::Journal(PopupClass& popup, EditRecord& record, bool) const {
  record.Code(popup, *FindItemByIdentity(moved_));
  record.Code(popup, *FindItemByIdentity(neighbour_));
}

void ReparentCommand::Journal(PopupClass&, EditRecord& record, bool) const {
  record.Append(move_record_);
}

void DeleteBranchCommand::Journal(PopupClass& popup, EditRecord& record, bool forward) const {
  if (forward) {
    record.Removed(popup, detached_);
  } else {
    record.Inserted(popup, FindItemByIdentity(identity_));
  }
}

}  // namespace zephyr::editor
