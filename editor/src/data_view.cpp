// The data view: filling and sorting the outline, the current row, the add
// buttons, the item menu and deleting an item.
#include <QAction>
#include <QComboBox>
#include <QFrame>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMenu>
#include <QPushButton>
#include <QTreeView>

#include "editor_state.h"
#include "ole_color.h"
#include "zephyr/support/debug_log.h"

namespace zephyr::editor {

void EditorState::ConnectDataView() {
  connect(DataGrid->selectionModel(), &QItemSelectionModel::currentChanged, this,
          [this]() { DataRowChanged(); });
  connect(DataGrid, &QTreeView::customContextMenuRequested, this,
          [this](const QPoint& position) { ShowItemMenu(position); });
  connect(cmdDelete, &QPushButton::clicked, this, [this]() { DeleteDataItem(); });
  connect(mnuDelete, &QAction::triggered, this, [this]() { DeleteDataItem(); });
  connect(mnuAddChild, &QAction::triggered, this, [this]() {
    AddChild();
    EnableDisable();
  });
  connect(mnuAddSibling, &QAction::triggered, this, [this]() {
    AddSibling();
    EnableDisable();
  });
  DataGrid->installEventFilter(this);
}

void EditorState::LoadDataGrid() {
  DebugLog(kEditModule, "LoadDataGrid", "Start");
  grid->Load(popup);
  SortTree();
  DataGrid->expandAll();
  for (int column = 0; column < grid->columnCount(); ++column) {
    DataGrid->resizeColumnToContents(column);
  }
  DataGrid->setCurrentIndex(grid->TitleIndex());
  RebuildAddButtons();
  EnableDisable();
}

void EditorState::SortTree() {
  DebugLog(kEditModule, "Sort_Tree", "Start");
  grid->SortTree();
}

void EditorState::DataRowChanged() {
  QModelIndex current = DataGrid->currentIndex();
  if (!current.isValid()) return;
  EnableDisable();
  CurrentItem();
  QPalette palette = DataGrid->palette();
  palette.setColor(QPalette::Highlight, ToQColor(EditBackColor, q->palette()));
  palette.setColor(QPalette::HighlightedText, q->palette().color(QPalette::ButtonText));
  DataGrid->setPalette(palette);
  if (!CurrentIsTitle()) cmdDelete->setEnabled(true);
}

void EditorState::RebuildAddButtons() {
  int levels = popup->Levels();
  auto* layout = static_cast<QHBoxLayout*>(fraButtons->layout());
  while (static_cast<int>(cmdAdd.size()) > levels) {
    delete cmdAdd.back();
    cmdAdd.pop_back();
  }
  while (static_cast<int>(cmdAdd.size()) < levels) {
    int index = static_cast<int>(cmdAdd.size()) + 1;
    auto* button = new QPushButton(fraButtons);
    button->setObjectName(QStringLiteral("cmdAdd%1").arg(index));
    connect(button, &QPushButton::clicked, this, [this, index]() { AddButtonClicked(index); });
    // After the label, before the stretch.
    layout->insertWidget(index, button);
    cmdAdd.push_back(button);
  }
  for (int index = 1; index <= levels; ++index) {
    QPushButton* button = cmdAdd[static_cast<size_t>(index - 1)];
    button->setText(ToQString(popup->PopupLevels()->Item(Variant(index))->Question().ToText()));
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
        if (ancestor) popup->SelectedItem(ancestor);
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

void EditorState::DeleteDataItem() {
  DebugLog(kEditModule, "DeleteDataItem", "Start");
  if (Tell("Are you sure you want to delete this entry and its children?", MessageButtons::kYesNo,
           "Confirm Delete", MessageIcon::kExclamation, 2) != MessageAnswer::kYes) {
    return;
  }
  QModelIndex current = DataGrid->currentIndex();
  if (!current.isValid() || CurrentIsTitle()) return;
  QModelIndex above = DataGrid->indexAbove(grid->index(current.row(), 0, current.parent()));
  auto item = CurrentItem();
  grid->RemoveRow(grid->index(current.row(), 0, current.parent()));
  if (item) popup->RemoveItem(item);
  SetDataChanged(true);
  DataGrid->setCurrentIndex(above.isValid() ? above : grid->TitleIndex());
  if (CurrentIsTitle()) cmdDelete->setEnabled(false);
}

}  // namespace zephyr::editor
