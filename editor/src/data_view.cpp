// The data view: filling and sorting the outline, the current row, the add
// buttons, the item menu and deleting an item.
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QCursor>
#include <QFrame>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTimer>
#include <QTreeView>
#include <QUndoStack>

#include "edit_delegate.h"
#include "editor_state.h"
#include "item_commands.h"
#include "ole_color.h"
#include "zephyr/runtime/popup_key.h"
#include "zephyr/support/debug_log.h"
#include "zephyr/support/text.h"

namespace zephyr::editor {

void EditorState::ConnectDataView() {
  On(DataGrid->selectionModel(), &QItemSelectionModel::currentChanged,
     [this]() { DataRowChanged(); });
  On(DataGrid, &QTreeView::customContextMenuRequested,
     [this](const QPoint& position) { ShowItemMenu(position); });
  On(DataGrid, &QTreeView::doubleClicked, [this]() { StartEdit(); });
  On(cmdDelete, &QPushButton::clicked, [this]() { DeleteDataItem(); });
  On(mnuDelete, &QAction::triggered, [this]() { DeleteDataItem(); });
  // The menu's add handlers run Enable_Disable whatever became of the add.
  On(mnuAddChild, &QAction::triggered, [this]() {
    Guarded([this]() { AddChild(); });
    EnableDisable();
  });
  On(mnuAddSibling, &QAction::triggered, [this]() {
    Guarded([this]() { AddSibling(); });
    EnableDisable();
  });
  On(mnuCopywithout, &QAction::triggered, [this]() { CopyPopupItem(); });
  On(mnucopywithchildren, &QAction::triggered, [this]() { CopyPopupItemW_Children(); });
  On(mnuPaste, &QAction::triggered, [this]() { Paste(); });
  On(mnuMoveUp, &QAction::triggered, [this]() { MoveItem(-1); });
  On(mnuMoveDown, &QAction::triggered, [this]() { MoveItem(1); });
  On(mnuIndent, &QAction::triggered, [this]() { Indent(); });
  On(DataGrid, &OutlineView::Dropped,
     [this](const QModelIndex& target, OutlineView::DropPlace place, bool copy) {
       DropItem(target, place, copy);
     });
  On(mnuOutdent, &QAction::triggered, [this]() { Outdent(); });
  On(txtFind, &QLineEdit::textChanged, [this]() { find_timer->start(); });
  On(find_timer, &QTimer::timeout, [this]() { ApplyFind(); });

  auto* delegate = new EditDelegate(DataGrid);
  delegate->SetMaxLength([this](const QModelIndex& cell) {
    int length = 0;
    Guarded([&]() { length = MaxEditLength(cell); });
    return length;
  });
  delegate->SetRefuse([this](const QModelIndex& cell, QString& text) {
    bool refused = true;
    Guarded([&]() { refused = DataEditRefused(cell, text); });
    return refused;
  });
  delegate->SetCommit([this](const QModelIndex& cell, const QString& text) {
    Guarded([&]() { DataAfterEdit(cell, text); });
  });
  delegate->SetKeyFilter(this);
  delegate->SetMarkCurrentRow(true);
  delegate->SetMarked(
      [](const QModelIndex& cell) { return cell.data(DataGridModel::kKeyChangedRole).toBool(); });
  DataGrid->setItemDelegate(delegate);
  DataGrid->installEventFilter(this);
  txtFind->installEventFilter(this);
}

void EditorState::LoadDataGrid() {
  DebugLog(kEditModule, "LoadDataGrid", "Start");
  if (outline_stale) {
    printed_outline.reset();
    grid->Load(session.Popup());
    SortTree();
    // Expanding the parents one by one keeps the view's bookkeeping to the
    // parents; expandAll would remember every row.
    for (const QModelIndex& parent : grid->ParentRows()) DataGrid->expand(parent);
    for (int column = 0; column < grid->columnCount(); ++column) {
      DataGrid->resizeColumnToContents(column);
    }
    outline_stale = false;
  }
  DataGrid->setCurrentIndex(grid->TitleIndex());
  RebuildAddButtons();
  EnableDisable();
}

void EditorState::ShowOutline(const BranchLayout& layout, const std::vector<int32_t>& expanded) {
  if (layout.rows.empty()) {
    outline_stale = true;
    if (DataMode) LoadDataGrid();
    return;
  }
  printed_outline.reset();
  grid->LoadLayout(session.Popup(), layout);
  outline_stale = false;
  Expand(expanded);
  if (DataMode) {
    DataGrid->setCurrentIndex(grid->TitleIndex());
    RebuildAddButtons();
    EnableDisable();
  }
}

SortRecord EditorState::SortTree() {
  DebugLog(kEditModule, "Sort_Tree", "Start");
  return grid->SortTree();
}

QModelIndex EditorState::RowOf(int32_t identity) const {
  return identity == 0 ? grid->TitleIndex() : grid->IndexOfIdentity(identity);
}

int32_t EditorState::IdentityOf(const QModelIndex& row) {
  return row.siblingAtColumn(0).data(Qt::UserRole).toInt();
}

std::vector<int32_t> EditorState::ExpandedIn(const BranchLayout& layout) const {
  std::vector<int32_t> expanded;
  for (const BranchLayout::Row& row : layout.rows) {
    if (DataGrid->isExpanded(RowOf(row.identity))) expanded.push_back(row.identity);
  }
  return expanded;
}

void EditorState::Expand(const std::vector<int32_t>& identities) {
  for (int32_t identity : identities) DataGrid->expand(RowOf(identity));
}

void EditorState::MakeRowCurrent(int32_t identity) {
  if (identity == 0) {
    DataGrid->setCurrentIndex(grid->TitleIndex());
  } else {
    SelectItemRow(FindItemByIdentity(identity));
  }
}

QString EditorState::NameOf(PopupItem& item) {
  auto values = item.PopupValues();
  return ToQString(values->Count() > 0 ? values->Item(Variant(1))->Value()
                                       : OwnCode(item.PopupKey()));
}

void EditorState::DataRowChanged() {
  QModelIndex current = DataGrid->currentIndex();
  if (!current.isValid()) return;
  EnableDisable();
  CurrentItem();
  // A palette change repolishes the whole view: only when the colour moved.
  QColor selection = ToQColor(EditBackColor, q->palette());
  if (DataGrid->palette().color(QPalette::Highlight) != selection) {
    QPalette palette = DataGrid->palette();
    palette.setColor(QPalette::Highlight, selection);
    palette.setColor(QPalette::HighlightedText, q->palette().color(QPalette::ButtonText));
    DataGrid->setPalette(palette);
  }
  if (!CurrentIsTitle()) cmdDelete->setEnabled(true);
}

void EditorState::RebuildAddButtons() {
  int levels = session.Popup()->Levels();
  auto* layout = static_cast<QHBoxLayout*>(fraButtons->layout());
  while (static_cast<int>(cmdAdd.size()) > levels) {
    delete cmdAdd.back();
    cmdAdd.pop_back();
  }
  while (static_cast<int>(cmdAdd.size()) < levels) {
    int index = static_cast<int>(cmdAdd.size()) + 1;
    auto* button = new QPushButton(fraButtons);
    button->setObjectName(QStringLiteral("cmdAdd%1").arg(index));
    On(button, &QPushButton::clicked, [this, index]() { AddButtonClicked(index); });
    // After the label, before the stretch.
    layout->insertWidget(index, button);
    cmdAdd.push_back(button);
  }
  for (int index = 1; index <= levels; ++index) {
    QPushButton* button = cmdAdd[static_cast<size_t>(index - 1)];
    button->setText(
        ToQString(session.Popup()->PopupLevels()->Item(Variant(index))->Question().ToText()));
    if (index <= 9) button->setToolTip(QStringLiteral("F%1").arg(index));
  }
}

void EditorState::AddButtonClicked(int index) {
  if (index < 1 || index > static_cast<int>(cmdAdd.size())) return;
  if (!cmdAdd[static_cast<size_t>(index - 1)]->isEnabled()) return;
  if (CurrentIsTitle()) {
    AddChild();
  } else if (auto item = CurrentItem()) {
    int level = item->Level();
    if (index == level) {
      AddSibling();
    } else if (index == level + 1) {
      AddChild();
    } else if (index < level) {
      // Walk up to the ancestor at the button's level and add beside it.
      auto ancestor = item;
      while (ancestor && ancestor->Level() > index) {
        ancestor = ancestor->Parent();
        if (ancestor) session.Popup()->SelectedItem(ancestor);
      }
      if (ancestor) {
        SelectItemRow(ancestor);
        AddSibling();
      }
    }
  }
  EnableDisable();
}

void EditorState::ShowItemMenu(const QPoint& position) {
  QModelIndex cell = DataGrid->indexAt(position);
  if (!cell.isValid()) return;
  bool title = !cell.parent().isValid();
  if (!title) cmdDelete->setEnabled(true);
  DataGrid->setCurrentIndex(cell);
  mnuPopupAction->popup(DataGrid->viewport()->mapToGlobal(position));
}

void EditorState::SelectItemRow(const std::shared_ptr<PopupItem>& item) {
  if (!item) return;
  QModelIndex row = grid->IndexOfIdentity(item->Identity());
  if (!row.isValid()) return;
  QModelIndex cell = grid->index(row.row(), std::min(1, grid->columnCount() - 1), row.parent());
  DataGrid->setCurrentIndex(cell);
  DataGrid->scrollTo(cell);
}

bool EditorState::BeforeEdit(const QModelIndex& cell) {
  if (!cell.isValid() || !cell.parent().isValid()) return false;  // the title row
  // Nor when the pointer rests on the title row.
  QModelIndex pointed = DataGrid->indexAt(DataGrid->viewport()->mapFromGlobal(QCursor::pos()));
  return !(pointed.isValid() && !pointed.parent().isValid());
}

void EditorState::StartEdit() {
  QModelIndex cell = DataGrid->currentIndex();
  if (BeforeEdit(cell)) DataGrid->edit(cell);
}

int EditorState::MaxEditLength(const QModelIndex& cell) {
  if (cell.column() == 0) return 2;
  auto fields = session.Popup()->PopupFields();
  int32_t field = cell.column() + 1;
  return field <= fields->Count() ? fields->Item(Variant(field))->FieldLength() : 0;
}

bool EditorState::DataEditRefused(const QModelIndex& cell, QString& text) {
  std::string typed = std::string(Trim(ToUtf8(text)));
  if (cell.column() >= 1) {
    if (typed.find('"') == std::string::npos) return false;
    session.Tell("Data Entries cannot contain Double Quotes");
    return true;
  }
  double number = 0;
  if (!ParseNumber(typed, &number)) {
    session.Tell("Popup Record Key must be numeric");
    return true;
  }
  if (typed.size() < 2) typed = "0" + typed;
  text = ToQString(typed);
  return false;
}

void EditorState::DataAfterEdit(const QModelIndex& cell, const QString& text) {
  DebugLog(kEditModule, "Datagrid_AfterEdit", "Start");
  if (!cell.parent().isValid()) return;  // the title row
  auto item = CurrentItem();
  if (!item) return;
  QModelIndex row = grid->index(cell.row(), 0, cell.parent());
  if (cell.column() >= 1) {
    QModelIndex value = grid->index(cell.row(), cell.column(), cell.parent());
    std::string before = ToUtf8(value.data().toString());
    grid->SetValue(value, ToUtf8(text));
    session.SetDataChanged(true);
    WidenColumnFor(value);
    session.Record(new ChangeValueCommand(*this, item->Identity(), cell.column(), std::move(before),
                                          ToUtf8(value.data().toString())));
    return;
  }
  std::string code(Trim(ToUtf8(text)));
  if (code == OwnCode(item->PopupKey())) return;
  for (const auto& sibling : *session.Popup()->SiblingsOf(*item)) {
    if (sibling->PopupKey().size() >= 2 && OwnCode(sibling->PopupKey()) == code) {
      session.Tell("Key already Exists. Please enter a unique key.");
      DataGrid->setFocus();
      return;  // the cell shows the item's key, which did not change
    }
  }
  std::string before = OwnCode(item->PopupKey());
  bool was_marked = grid->IsKeyChanged(row);
  session.Popup()->ModifyKey(code, item, item->Level());
  grid->KeyChanged(row);
  // The row's own children are ordered; the row itself keeps its place
  // among its siblings until the next Sort_Tree.
  SortRecord sorted = grid->SortChildren(row);
  session.SetDataChanged(true);
  session.Record(new ChangeKeyCommand(*this, item->Identity(), std::move(before), code, was_marked,
                                      std::move(sorted)));
  // Key entry flows on into the first value, once this editor has closed.
  QModelIndex next = grid->index(row.row(), cell.column() + 1, row.parent());
  if (next.isValid()) {
    Later(DataGrid, [this, cell = QPersistentModelIndex(next)]() {
      if (!cell.isValid() || HasOpenEditor(*DataGrid)) return;
      DataGrid->setCurrentIndex(cell);
      DataGrid->edit(cell);
    });
  }
}

void EditorState::WidenColumnFor(const QModelIndex& cell) {
  QStyleOptionViewItem option;
  option.initFrom(DataGrid);
  option.font = DataGrid->font();
  int wanted = DataGrid->itemDelegate()->sizeHint(option, cell).width();
  if (wanted > DataGrid->columnWidth(cell.column())) {
    DataGrid->setColumnWidth(cell.column(), wanted);
  }
}

bool EditorState::DataGridKey(QKeyEvent* event, QWidget* editor) {
  int key = event->key();
  if (key >= Qt::Key_F1 && key <= Qt::Key_F9) {
    int index = key - Qt::Key_F1 + 1;
    if (editor) {
      // The typed text is kept before the add moves the current row.
      auto* delegate = DataGrid->itemDelegate();
      emit delegate->commitData(editor);
      emit delegate->closeEditor(editor);
    }
    if (index <= static_cast<int>(cmdAdd.size())) AddButtonClicked(index);
    return true;
  }
  if (editor) return false;
  if (key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Space) {
    StartEdit();
    return true;
  }
  if (event->matches(QKeySequence::Copy) || event->matches(QKeySequence::Cut)) {
    CopyToClipboard(event->matches(QKeySequence::Cut));
    return true;
  }
  if (event->matches(QKeySequence::Paste)) {
    Paste();
    return true;
  }
  // The Delete key is the Delete button: it asks first, and the title row has none.
  if (key == Qt::Key_Delete && cmdDelete->isEnabled()) {
    DeleteDataItem();
    return true;
  }
  return MoveOrFold(*event) || TypedOnTitle(*event);
}

bool EditorState::MoveOrFold(const QKeyEvent& event) {
  const int key = event.key();
  QModelIndex current = DataGrid->currentIndex();
  if (!current.isValid()) return false;
  // Alt+Shift+arrows move the item, as outliners do: up and down among its
  // siblings, right (indent) and left (outdent) a level.
  if (event.modifiers() == (Qt::AltModifier | Qt::ShiftModifier)) {
    switch (key) {
      case Qt::Key_Up:
      case Qt::Key_Down:
        MoveItem(key == Qt::Key_Up ? -1 : 1);
        return true;
      case Qt::Key_Right:
        Indent();
        return true;
      case Qt::Key_Left:
        Outdent();
        return true;
      default:
        break;
    }
  }
  QModelIndex row = current.siblingAtColumn(0);
  switch (key) {
    case Qt::Key_Left:
    case Qt::Key_Right: {
      // Between the cells of the row, as in a sheet; the node buttons and
      // + - * open and close the outline.
      int column = current.column() + (key == Qt::Key_Left ? -1 : 1);
      if (column >= 0 && column < grid->columnCount()) {
        DataGrid->setCurrentIndex(current.siblingAtColumn(column));
      }
      return true;
    }
    case Qt::Key_Plus:
      DataGrid->expand(row);
      return true;
    case Qt::Key_Minus:
      DataGrid->collapse(row);
      return true;
    case Qt::Key_Asterisk:
      DataGrid->expandRecursively(row);
      return true;
    default:
      return false;
  }
}

bool EditorState::TypedOnTitle(const QKeyEvent& event) {
  // A character typed on an item's cell starts editing it with that
  // character (the outline's own trigger); the title row takes none.
  const QString typed = event.text();
  const auto commands = Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
  bool printable = !typed.isEmpty() && typed.at(0).isPrint() && !(event.modifiers() & commands);
  return printable && !BeforeEdit(DataGrid->currentIndex());
}

bool EditorState::FindBoxKey(const QKeyEvent& event) {
  int key = event.key();
  if (key == Qt::Key_Escape) {
    txtFind->clear();
    return true;
  }
  if (key != Qt::Key_Down && key != Qt::Key_Return && key != Qt::Key_Enter) return false;
  // Into the results: the first row found, at once.
  find_timer->stop();
  ApplyFind();
  QModelIndex first = DataGrid->indexBelow(grid->TitleIndex());
  DataGrid->setFocus();
  if (first.isValid()) DataGrid->setCurrentIndex(first);
  return true;
}

void EditorState::ApplyFind() {
  QString text = txtFind->text().trimmed();
  for (const auto& [row, visible] : grid->RowVisibility(text)) {
    DataGrid->setRowHidden(row.row(), row.parent(), !visible);
  }
  if (text.isEmpty()) DataGrid->expandAll();
}

void EditorState::DeleteDataItem() {
  DebugLog(kEditModule, "DeleteDataItem", "Start");
  if (session.Tell("Are you sure you want to delete this entry and its children?",
                   MessageButtons::kYesNo, "Confirm Delete", MessageIcon::kExclamation,
                   2) != MessageAnswer::kYes) {
    return;
  }
  QModelIndex current = DataGrid->currentIndex();
  if (!current.isValid() || CurrentIsTitle()) return;
  QModelIndex row = grid->index(current.row(), 0, current.parent());
  QModelIndex above = DataGrid->indexAbove(row);
  auto item = CurrentItem();
  BranchLayout layout = grid->LayoutOf(row);
  std::vector<int32_t> expanded = ExpandedIn(layout);
  int32_t parent_identity = IdentityOf(row.parent());
  int position = row.row();
  grid->RemoveRow(row);
  session.SetDataChanged(true);
  PopupClass::DetachedItem detached;
  if (item) detached = session.Popup()->DetachItem(item);
  if (detached.item) {
    session.Record(new DeleteBranchCommand(*this, QStringLiteral("Delete '%1'").arg(NameOf(*item)),
                                           std::move(detached), parent_identity, position,
                                           std::move(layout), std::move(expanded)));
  } else {
    session.MarkModified();  // a row without an item of the outline: nothing to undo
  }
  DataGrid->setCurrentIndex(above.isValid() ? above : grid->TitleIndex());
  if (CurrentIsTitle()) cmdDelete->setEnabled(false);
  // The view moved its current row while the deleted rows were still there.
  EnableDisable();
}

bool EditorState::eventFilter(QObject* watched, QEvent* event) {
  bool handled = false;
  Guarded([&]() { handled = FilterEvent(watched, event); });
  return handled;
}

bool EditorState::FilterEvent(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::KeyPress) {
    auto* key = static_cast<QKeyEvent*>(event);
    if (watched == static_cast<QObject*>(DataGrid)) {
      // A key an open editor passed on (Enter ends an edit) reaches the
      // outline too: it is the editor's, not the outline's.
      QWidget* focus = QApplication::focusWidget();
      if (focus && focus != DataGrid && DataGrid->isAncestorOf(focus)) return false;
      return DataGridKey(key, nullptr);
    }
    // The in-place editors of the outline sit in its viewport.
    auto* widget = qobject_cast<QWidget*>(watched);
    if (widget && widget->parentWidget() == DataGrid->viewport()) return DataGridKey(key, widget);
    if (watched == static_cast<QObject*>(txtFind)) return FindBoxKey(*key);
  }
  bool step_box = watched == cboStep || (cboStep && watched == cboStep->lineEdit());
  if (step_box && event->type() == QEvent::FocusOut && !Loading) {
    auto reason = static_cast<QFocusEvent*>(event)->reason();
    // Focus lost to a pop-up (the drop-down list itself) is no leaving.
    if (reason != Qt::PopupFocusReason && reason != Qt::ActiveWindowFocusReason && StepRefused()) {
      cboStep->setFocus();
    }
  }
  return QObject::eventFilter(watched, event);
}

bool EditorState::StepRefused() {
  std::string text = ToUtf8(cboStep->currentText());
  const char* message = "Invalid Key Step. Must be Numeric value between 1 and 99";
  const char* title = "Invalid Key Step";
  double value = 0;
  bool refused = false;
  if (!ParseNumber(text, &value)) {
    session.Tell(message, MessageButtons::kOk, title);
    refused = true;
    value = 0;  // and so also below 1
  }
  if (value > 99) {
    session.Tell(message, MessageButtons::kOk, title);
    refused = true;
  }
  if (value < 1) {
    session.Tell(message, MessageButtons::kOk, title);
    refused = true;
  }
  return refused;
}

}  // namespace zephyr::editor
