// The data view: its controls, filling and sorting the outline, the current
// row, the add buttons, the item menu, keys, finding and deleting an item.
#include "data_view.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QCursor>
#include <QFrame>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTimer>
#include <QTreeView>
#include <QUndoStack>

#include "edit_delegate.h"
#include "editor_state.h"
#include "item_commands.h"
#include "named_widget.h"
#include "ole_color.h"
#include "zephyr/runtime/popup_key.h"
#include "zephyr/support/debug_log.h"
#include "zephyr/support/text.h"

namespace zephyr::editor {

DataView::DataView(EditorState& shell, EditorSession& session)
    : QObject(&shell), shell_(shell), session_(session), grid_(new DataGridModel(this)) {}

QFrame* DataView::Build(QWidget* parent) {
  FraDataMode_ = Named(new QFrame(parent), "FraDataMode");
  auto* data = new QVBoxLayout(FraDataMode_);
  auto* commands = new QHBoxLayout();
  fraButtons_ = Named(new QFrame(FraDataMode_), "fraButtons");
  auto* buttons = new QHBoxLayout(fraButtons_);
  buttons->setContentsMargins(0, 0, 0, 0);
  lblAdd_ = Named(new QLabel(QStringLiteral("Add:"), fraButtons_), "lblAdd");
  buttons->addWidget(lblAdd_);
  buttons->addStretch();
  commands->addWidget(fraButtons_, 1);
  fraStepDelete_ = Named(new QFrame(FraDataMode_), "fraStepDelete");
  auto* step = new QHBoxLayout(fraStepDelete_);
  step->setContentsMargins(0, 0, 0, 0);
  lblStep_ = Named(new QLabel(QStringLiteral("Step:"), fraStepDelete_), "lblStep");
  cboStep_ = Named(new QComboBox(fraStepDelete_), "cboStep");
  cboStep_->setEditable(true);
  cboStep_->setInsertPolicy(QComboBox::NoInsert);
  cboStep_->addItems({"01", "02", "03", "04", "05", "10", "20", "30", "40", "50"});
  cboStep_->setCurrentIndex(-1);
  cmdDelete_ = Named(new QPushButton(QStringLiteral("Delete"), fraStepDelete_), "cmdDelete");
  step->addWidget(lblStep_);
  step->addWidget(cboStep_);
  step->addWidget(cmdDelete_);
  commands->addWidget(fraStepDelete_);
  data->addLayout(commands);
  txtFind_ = Named(new QLineEdit(FraDataMode_), "txtFind");
  txtFind_->setPlaceholderText(
      QStringLiteral("Find (Ctrl+F): show the items whose key or values hold this text"));
  txtFind_->setClearButtonEnabled(true);
  data->addWidget(txtFind_);
  find_timer_ = new QTimer(this);
  find_timer_->setSingleShot(true);
  find_timer_->setInterval(150);
  DataGrid_ = Named(new OutlineView(FraDataMode_), "DataGrid");
  DataGrid_->setModel(grid_);
  DataGrid_->setSelectionBehavior(QAbstractItemView::SelectItems);
  DataGrid_->setSelectionMode(QAbstractItemView::SingleSelection);
  // Typing a character starts an edit; Enter, Space and a double click are handled apart.
  DataGrid_->setEditTriggers(QAbstractItemView::AnyKeyPressed);
  // The whole current row is marked, and repainted when it moves.
  DataGrid_->setAllColumnsShowFocus(true);
  DataGrid_->setUniformRowHeights(true);
  DataGrid_->setContextMenuPolicy(Qt::CustomContextMenu);
  DataGrid_->setExpandsOnDoubleClick(false);
  DataGrid_->header()->setStretchLastSection(false);
  data->addWidget(DataGrid_, 1);
  Label1_ = Named(new QLabel(FraDataMode_), "Label1");
  data->addWidget(Label1_);
  FraDataMode_->setVisible(false);

  mnuPopupAction_ = Named(new QMenu(parent), "mnuPopupAction");
  mnuAddChild_ = NamedAction(mnuPopupAction_, "mnuAddChild", "New Child");
  mnuAddSibling_ = NamedAction(mnuPopupAction_, "mnuAddSibling", "New Sibling");
  sep0_ = mnuPopupAction_->addSeparator();
  sep0_->setObjectName(QStringLiteral("sep0"));
  mnucopy_ = Named(mnuPopupAction_->addMenu(QStringLiteral("Copy")), "mnucopy");
  mnucopy_->menuAction()->setObjectName(QStringLiteral("mnucopy"));
  mnuCopywithout_ = NamedAction(mnucopy_, "mnuCopywithout", "Add a Copy of This Popup Data Item");
  mnucopywithchildren_ = NamedAction(mnucopy_, "mnucopywithchildren",
                                     "Add a Copy of this Popup Data Item with Children");
  mnuPaste_ = NamedAction(mnuPopupAction_, "mnuPaste", "Paste");
  mnuDelete_ = NamedAction(mnuPopupAction_, "mnuDelete", "Delete");
  mnuPopupAction_->addSeparator();
  mnuMoveUp_ = NamedAction(mnuPopupAction_, "mnuMoveUp", "Move Up\tAlt+Shift+Up");
  mnuMoveDown_ = NamedAction(mnuPopupAction_, "mnuMoveDown", "Move Down\tAlt+Shift+Down");
  mnuIndent_ = NamedAction(mnuPopupAction_, "mnuIndent", "Indent\tAlt+Shift+Right");
  mnuOutdent_ = NamedAction(mnuPopupAction_, "mnuOutdent", "Outdent\tAlt+Shift+Left");

  Connect();
  return FraDataMode_;
}

void DataView::Connect() {
  shell_.On(DataGrid_->selectionModel(), &QItemSelectionModel::currentChanged,
            [this]() { DataRowChanged(); });
  shell_.On(DataGrid_, &QTreeView::customContextMenuRequested,
            [this](const QPoint& position) { ShowItemMenu(position); });
  shell_.On(DataGrid_, &QTreeView::doubleClicked, [this]() { StartEdit(); });
  shell_.On(cmdDelete_, &QPushButton::clicked, [this]() { DeleteDataItem(); });
  shell_.On(mnuDelete_, &QAction::triggered, [this]() { DeleteDataItem(); });
  // The menu's add handlers run Enable_Disable whatever became of the add.
  shell_.On(mnuAddChild_, &QAction::triggered, [this]() {
    shell_.Guarded([this]() { AddChild(); });
    EnableDisable();
  });
  shell_.On(mnuAddSibling_, &QAction::triggered, [this]() {
    shell_.Guarded([this]() { AddSibling(); });
    EnableDisable();
  });
  shell_.On(mnuCopywithout_, &QAction::triggered, [this]() { CopyPopupItem(); });
  shell_.On(mnucopywithchildren_, &QAction::triggered, [this]() { CopyPopupItemW_Children(); });
  shell_.On(mnuPaste_, &QAction::triggered, [this]() { Paste(); });
  shell_.On(mnuMoveUp_, &QAction::triggered, [this]() { MoveItem(-1); });
  shell_.On(mnuMoveDown_, &QAction::triggered, [this]() { MoveItem(1); });
  shell_.On(mnuIndent_, &QAction::triggered, [this]() { Indent(); });
  shell_.On(DataGrid_, &OutlineView::Dropped,
            [this](const QModelIndex& target, OutlineView::DropPlace place, bool copy) {
              DropItem(target, place, copy);
            });
  shell_.On(mnuOutdent_, &QAction::triggered, [this]() { Outdent(); });
  shell_.On(txtFind_, &QLineEdit::textChanged, [this]() { find_timer_->start(); });
  shell_.On(find_timer_, &QTimer::timeout, [this]() { ApplyFind(); });

  auto* delegate = new EditDelegate(DataGrid_);
  delegate->SetMaxLength([this](const QModelIndex& cell) {
    int length = 0;
    shell_.Guarded([&]() { length = MaxEditLength(cell); });
    return length;
  });
  delegate->SetRefuse([this](const QModelIndex& cell, QString& text) {
    bool refused = true;
    shell_.Guarded([&]() { refused = DataEditRefused(cell, text); });
    return refused;
  });
  delegate->SetCommit([this](const QModelIndex& cell, const QString& text) {
    shell_.Guarded([&]() { DataAfterEdit(cell, text); });
  });
  delegate->SetKeyFilter(this);
  delegate->SetMarkCurrentRow(true);
  delegate->SetMarked(
      [](const QModelIndex& cell) { return cell.data(DataGridModel::kKeyChangedRole).toBool(); });
  DataGrid_->setItemDelegate(delegate);
  DataGrid_->installEventFilter(this);
  txtFind_->installEventFilter(this);
  // The step is checked when the focus leaves the box.
  cboStep_->installEventFilter(this);
  cboStep_->lineEdit()->installEventFilter(this);
}

void DataView::LoadDataGrid() {
  DebugLog(kEditModule, "LoadDataGrid", "Start");
  if (outline_stale_) {
    printed_outline_.reset();
    grid_->Load(session_.Popup());
    SortTree();
    // Expanding the parents one by one keeps the view's bookkeeping to the
    // parents; expandAll would remember every row.
    for (const QModelIndex& parent : grid_->ParentRows()) DataGrid_->expand(parent);
    for (int column = 0; column < grid_->columnCount(); ++column) {
      DataGrid_->resizeColumnToContents(column);
    }
    outline_stale_ = false;
  }
  DataGrid_->setCurrentIndex(grid_->TitleIndex());
  RebuildAddButtons();
  EnableDisable();
}

void DataView::ShowOutline(const BranchLayout& layout, const std::vector<int32_t>& expanded) {
  if (layout.rows.empty()) {
    outline_stale_ = true;
    if (shell_.DataMode) LoadDataGrid();
    return;
  }
  printed_outline_.reset();
  grid_->LoadLayout(session_.Popup(), layout);
  outline_stale_ = false;
  Expand(expanded);
  if (shell_.DataMode) {
    DataGrid_->setCurrentIndex(grid_->TitleIndex());
    RebuildAddButtons();
    EnableDisable();
  }
}

SortRecord DataView::SortTree() {
  DebugLog(kEditModule, "Sort_Tree", "Start");
  return grid_->SortTree();
}

QModelIndex DataView::RowOf(int32_t identity) const {
  return identity == 0 ? grid_->TitleIndex() : grid_->IndexOfIdentity(identity);
}

int32_t DataView::IdentityOf(const QModelIndex& row) {
  return row.siblingAtColumn(0).data(Qt::UserRole).toInt();
}

std::vector<int32_t> DataView::ExpandedIn(const BranchLayout& layout) const {
  std::vector<int32_t> expanded;
  for (const BranchLayout::Row& row : layout.rows) {
    if (DataGrid_->isExpanded(RowOf(row.identity))) expanded.push_back(row.identity);
  }
  return expanded;
}

void DataView::Expand(const std::vector<int32_t>& identities) {
  for (int32_t identity : identities) DataGrid_->expand(RowOf(identity));
}

void DataView::MakeRowCurrent(int32_t identity) {
  if (identity == 0) {
    DataGrid_->setCurrentIndex(grid_->TitleIndex());
  } else {
    SelectItemRow(FindItemByIdentity(identity));
  }
}

QString DataView::NameOf(PopupItem& item) {
  auto values = item.PopupValues();
  return ToQString(values->Count() > 0 ? values->Item(Variant(1))->Value()
                                       : OwnCode(item.PopupKey()));
}

void DataView::DataRowChanged() {
  QModelIndex current = DataGrid_->currentIndex();
  if (!current.isValid()) return;
  EnableDisable();
  CurrentItem();
  // A palette change repolishes the whole view: only when the colour moved.
  QColor selection = ToQColor(edit_back_color_, shell_.q->palette());
  if (DataGrid_->palette().color(QPalette::Highlight) != selection) {
    QPalette palette = DataGrid_->palette();
    palette.setColor(QPalette::Highlight, selection);
    palette.setColor(QPalette::HighlightedText, shell_.q->palette().color(QPalette::ButtonText));
    DataGrid_->setPalette(palette);
  }
  if (!CurrentIsTitle()) cmdDelete_->setEnabled(!session_.ReadOnly());
}

void DataView::RebuildAddButtons() {
  int levels = session_.Popup()->Levels();
  auto* layout = static_cast<QHBoxLayout*>(fraButtons_->layout());
  while (static_cast<int>(cmdAdd_.size()) > levels) {
    delete cmdAdd_.back();
    cmdAdd_.pop_back();
  }
  while (static_cast<int>(cmdAdd_.size()) < levels) {
    int index = static_cast<int>(cmdAdd_.size()) + 1;
    auto* button = new QPushButton(fraButtons_);
    button->setObjectName(QStringLiteral("cmdAdd%1").arg(index));
    shell_.On(button, &QPushButton::clicked, [this, index]() { AddButtonClicked(index); });
    // After the label, before the stretch.
    layout->insertWidget(index, button);
    cmdAdd_.push_back(button);
  }
  for (int index = 1; index <= levels; ++index) {
    QPushButton* button = cmdAdd_[static_cast<size_t>(index - 1)];
    button->setText(
        ToQString(session_.Popup()->PopupLevels()->Item(Variant(index))->Question().ToText()));
    if (index <= 9) button->setToolTip(QStringLiteral("F%1").arg(index));
  }
}

void DataView::AddButtonClicked(int index) {
  if (index < 1 || index > static_cast<int>(cmdAdd_.size())) return;
  if (!cmdAdd_[static_cast<size_t>(index - 1)]->isEnabled()) return;
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
        if (ancestor) session_.Popup()->SelectedItem(ancestor);
      }
      if (ancestor) {
        SelectItemRow(ancestor);
        AddSibling();
      }
    }
  }
  EnableDisable();
}

void DataView::ShowItemMenu(const QPoint& position) {
  QModelIndex cell = DataGrid_->indexAt(position);
  if (!cell.isValid()) return;
  bool title = !cell.parent().isValid();
  if (!title) cmdDelete_->setEnabled(!session_.ReadOnly());
  DataGrid_->setCurrentIndex(cell);
  mnuPopupAction_->popup(DataGrid_->viewport()->mapToGlobal(position));
}

void DataView::SelectItemRow(const std::shared_ptr<PopupItem>& item) {
  if (!item) return;
  QModelIndex row = grid_->IndexOfIdentity(item->Identity());
  if (!row.isValid()) return;
  QModelIndex cell = grid_->index(row.row(), std::min(1, grid_->columnCount() - 1), row.parent());
  DataGrid_->setCurrentIndex(cell);
  DataGrid_->scrollTo(cell);
}

bool DataView::BeforeEdit(const QModelIndex& cell) {
  if (!cell.isValid() || !cell.parent().isValid()) return false;  // the title row
  // Nor when the pointer rests on the title row.
  QModelIndex pointed = DataGrid_->indexAt(DataGrid_->viewport()->mapFromGlobal(QCursor::pos()));
  return !(pointed.isValid() && !pointed.parent().isValid());
}

void DataView::StartEdit() {
  QModelIndex cell = DataGrid_->currentIndex();
  if (BeforeEdit(cell)) DataGrid_->edit(cell);
}

int DataView::MaxEditLength(const QModelIndex& cell) {
  if (cell.column() == 0) return 2;
  auto fields = session_.Popup()->PopupFields();
  int32_t field = cell.column() + 1;
  return field <= fields->Count() ? fields->Item(Variant(field))->FieldLength() : 0;
}

bool DataView::DataEditRefused(const QModelIndex& cell, QString& text) {
  std::string typed = std::string(Trim(ToUtf8(text)));
  if (cell.column() >= 1) {
    if (typed.find('"') == std::string::npos) return false;
    session_.Tell("Data Entries cannot contain Double Quotes");
    return true;
  }
  double number = 0;
  if (!ParseNumber(typed, &number)) {
    session_.Tell("Popup Record Key must be numeric");
    return true;
  }
  if (typed.size() < 2) typed = "0" + typed;
  text = ToQString(typed);
  return false;
}

void DataView::DataAfterEdit(const QModelIndex& cell, const QString& text) {
  DebugLog(kEditModule, "Datagrid_AfterEdit", "Start");
  session_.RequireWritable();
  if (!cell.parent().isValid()) return;  // the title row
  auto item = CurrentItem();
  if (!item) return;
  QModelIndex row = grid_->index(cell.row(), 0, cell.parent());
  if (cell.column() >= 1) {
    QModelIndex value = grid_->index(cell.row(), cell.column(), cell.parent());
    std::string before = ToUtf8(value.data().toString());
    grid_->SetValue(value, ToUtf8(text));
    session_.SetDataChanged(true);
    WidenColumnFor(value);
    session_.Record(new ChangeValueCommand(*this, item->Identity(), cell.column(),
                                           std::move(before), ToUtf8(value.data().toString())));
    return;
  }
  std::string code(Trim(ToUtf8(text)));
  if (code == OwnCode(item->PopupKey())) return;
  for (const auto& sibling : *session_.Popup()->SiblingsOf(*item)) {
    if (sibling->PopupKey().size() >= 2 && OwnCode(sibling->PopupKey()) == code) {
      session_.Tell("Key already Exists. Please enter a unique key.");
      DataGrid_->setFocus();
      return;  // the cell shows the item's key, which did not change
    }
  }
  std::string before = OwnCode(item->PopupKey());
  bool was_marked = grid_->IsKeyChanged(row);
  session_.Popup()->ModifyKey(code, item, item->Level());
  grid_->KeyChanged(row);
  // The row's own children are ordered; the row itself keeps its place
  // among its siblings until the next Sort_Tree.
  SortRecord sorted = grid_->SortChildren(row);
  session_.SetDataChanged(true);
  session_.Record(new ChangeKeyCommand(*this, item->Identity(), std::move(before), code, was_marked,
                                       std::move(sorted)));
  // Key entry flows on into the first value, once this editor has closed.
  QModelIndex next = grid_->index(row.row(), cell.column() + 1, row.parent());
  if (next.isValid()) {
    shell_.Later(DataGrid_, [this, cell = QPersistentModelIndex(next)]() {
      if (!cell.isValid() || HasOpenEditor(*DataGrid_)) return;
      DataGrid_->setCurrentIndex(cell);
      DataGrid_->edit(cell);
    });
  }
}

void DataView::WidenColumnFor(const QModelIndex& cell) {
  QStyleOptionViewItem option;
  option.initFrom(DataGrid_);
  option.font = DataGrid_->font();
  int wanted = DataGrid_->itemDelegate()->sizeHint(option, cell).width();
  if (wanted > DataGrid_->columnWidth(cell.column())) {
    DataGrid_->setColumnWidth(cell.column(), wanted);
  }
}

bool DataView::DataGridKey(QKeyEvent* event, QWidget* editor) {
  int key = event->key();
  if (key >= Qt::Key_F1 && key <= Qt::Key_F9) {
    int index = key - Qt::Key_F1 + 1;
    if (editor) {
      // The typed text is kept before the add moves the current row.
      auto* delegate = DataGrid_->itemDelegate();
      emit delegate->commitData(editor);
      emit delegate->closeEditor(editor);
    }
    if (index <= static_cast<int>(cmdAdd_.size())) AddButtonClicked(index);
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
  if (key == Qt::Key_Delete && cmdDelete_->isEnabled()) {
    DeleteDataItem();
    return true;
  }
  return MoveOrFold(*event) || TypedOnTitle(*event);
}

bool DataView::MoveOrFold(const QKeyEvent& event) {
  const int key = event.key();
  QModelIndex current = DataGrid_->currentIndex();
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
      if (column >= 0 && column < grid_->columnCount()) {
        DataGrid_->setCurrentIndex(current.siblingAtColumn(column));
      }
      return true;
    }
    case Qt::Key_Plus:
      DataGrid_->expand(row);
      return true;
    case Qt::Key_Minus:
      DataGrid_->collapse(row);
      return true;
    case Qt::Key_Asterisk:
      DataGrid_->expandRecursively(row);
      return true;
    default:
      return false;
  }
}

bool DataView::TypedOnTitle(const QKeyEvent& event) {
  // A character typed on an item's cell starts editing it with that
  // character (the outline's own trigger); the title row takes none.
  const QString typed = event.text();
  const auto commands = Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
  bool printable = !typed.isEmpty() && typed.at(0).isPrint() && !(event.modifiers() & commands);
  return printable && !BeforeEdit(DataGrid_->currentIndex());
}

bool DataView::FindBoxKey(const QKeyEvent& event) {
  int key = event.key();
  if (key == Qt::Key_Escape) {
    txtFind_->clear();
    return true;
  }
  if (key != Qt::Key_Down && key != Qt::Key_Return && key != Qt::Key_Enter) return false;
  // Into the results: the first row found, at once.
  find_timer_->stop();
  ApplyFind();
  QModelIndex first = DataGrid_->indexBelow(grid_->TitleIndex());
  DataGrid_->setFocus();
  if (first.isValid()) DataGrid_->setCurrentIndex(first);
  return true;
}

void DataView::ApplyFind() {
  QString text = txtFind_->text().trimmed();
  for (const auto& [row, visible] : grid_->RowVisibility(text)) {
    DataGrid_->setRowHidden(row.row(), row.parent(), !visible);
  }
  if (text.isEmpty()) DataGrid_->expandAll();
}

void DataView::DeleteDataItem() {
  DebugLog(kEditModule, "DeleteDataItem", "Start");
  session_.RequireWritable();
  if (session_.Tell("Are you sure you want to delete this entry and its children?",
                    MessageButtons::kYesNo, "Confirm Delete", MessageIcon::kExclamation,
                    2) != MessageAnswer::kYes) {
    return;
  }
  QModelIndex current = DataGrid_->currentIndex();
  if (!current.isValid() || CurrentIsTitle()) return;
  QModelIndex row = grid_->index(current.row(), 0, current.parent());
  QModelIndex above = DataGrid_->indexAbove(row);
  auto item = CurrentItem();
  BranchLayout layout = grid_->LayoutOf(row);
  std::vector<int32_t> expanded = ExpandedIn(layout);
  int32_t parent_identity = IdentityOf(row.parent());
  int position = row.row();
  grid_->RemoveRow(row);
  session_.SetDataChanged(true);
  PopupClass::DetachedItem detached;
  if (item) detached = session_.Popup()->DetachItem(item);
  if (detached.item) {
    session_.Record(new DeleteBranchCommand(*this, QStringLiteral("Delete '%1'").arg(NameOf(*item)),
                                            std::move(detached), parent_identity, position,
                                            std::move(layout), std::move(expanded)));
  } else {
    session_.MarkModified();  // a row without an item of the outline: nothing to undo
  }
  DataGrid_->setCurrentIndex(above.isValid() ? above : grid_->TitleIndex());
  if (CurrentIsTitle()) cmdDelete_->setEnabled(false);
  // The view moved its current row while the deleted rows were still there.
  EnableDisable();
}

bool DataView::eventFilter(QObject* watched, QEvent* event) {
  bool handled = false;
  shell_.Guarded([&]() { handled = FilterEvent(watched, event); });
  return handled;
}

bool DataView::FilterEvent(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::KeyPress) {
    auto* key = static_cast<QKeyEvent*>(event);
    if (watched == static_cast<QObject*>(DataGrid_)) {
      // A key an open editor passed on (Enter ends an edit) reaches the
      // outline too: it is the editor's, not the outline's.
      QWidget* focus = QApplication::focusWidget();
      if (focus && focus != DataGrid_ && DataGrid_->isAncestorOf(focus)) return false;
      return DataGridKey(key, nullptr);
    }
    // The in-place editors of the outline sit in its viewport.
    auto* widget = qobject_cast<QWidget*>(watched);
    if (widget && widget->parentWidget() == DataGrid_->viewport()) return DataGridKey(key, widget);
    if (watched == static_cast<QObject*>(txtFind_)) return FindBoxKey(*key);
  }
  bool step_box = watched == cboStep_ || (cboStep_ && watched == cboStep_->lineEdit());
  if (step_box && event->type() == QEvent::FocusOut && !shell_.Loading) {
    auto reason = static_cast<QFocusEvent*>(event)->reason();
    // Focus lost to a pop-up (the drop-down list itself) is no leaving.
    if (reason != Qt::PopupFocusReason && reason != Qt::ActiveWindowFocusReason && StepRefused()) {
      cboStep_->setFocus();
    }
  }
  return QObject::eventFilter(watched, event);
}

bool DataView::StepRefused() {
  std::string text = ToUtf8(cboStep_->currentText());
  const char* message = "Invalid Key Step. Must be Numeric value between 1 and 99";
  const char* title = "Invalid Key Step";
  double value = 0;
  bool refused = false;
  if (!ParseNumber(text, &value)) {
    session_.Tell(message, MessageButtons::kOk, title);
    refused = true;
    value = 0;  // and so also below 1
  }
  if (value > 99) {
    session_.Tell(message, MessageButtons::kOk, title);
    refused = true;
  }
  if (value < 1) {
    session_.Tell(message, MessageButtons::kOk, title);
    refused = true;
  }
  return refused;
}

bool DataView::CurrentIsTitle() const {
  QModelIndex current = DataGrid_->currentIndex();
  return current.isValid() && !current.parent().isValid();
}

std::shared_ptr<PopupItem> DataView::CurrentItem() {
  QModelIndex current = DataGrid_->currentIndex();
  int32_t identity =
      current.isValid()
          ? grid_->index(current.row(), 0, current.parent()).data(Qt::UserRole).toInt()
          : 0;
  session_.Popup()->SetSelectedItem(std::to_string(identity));
  return session_.Popup()->SelectedItem();
}

int DataView::CurrentLevel() {
  auto item = CurrentItem();
  return item ? item->Level() : 0;
}

void DataView::EnableDisable() {
  DebugLog(kEditModule, "Enable_Disable", "Start");
  QModelIndex current = DataGrid_->currentIndex();
  if (!current.isValid()) return;
  int levels = session_.Popup()->Levels();
  auto question = [this](int level) {
    return QStringLiteral("Add ") +
           ToQString(session_.Popup()->PopupLevels()->Item(Variant(level))->Question().ToText());
  };
  auto enable_buttons = [this](int up_to) {
    for (size_t i = 0; i < cmdAdd_.size(); ++i) cmdAdd_[i]->setEnabled(static_cast<int>(i) < up_to);
  };
  int current_level = 0;
  if (CurrentIsTitle()) {
    cmdDelete_->setEnabled(false);
    mnuDelete_->setEnabled(false);
    mnuAddSibling_->setEnabled(false);
    mnuAddSibling_->setVisible(false);
    enable_buttons(1);
    mnuAddChild_->setEnabled(true);
    mnuAddChild_->setVisible(true);
    if (levels >= 1) mnuAddChild_->setText(question(1));
    mnucopy_->menuAction()->setEnabled(false);
  } else {
    auto item = CurrentItem();
    current_level = item ? item->Level() : 0;
    mnucopy_->menuAction()->setEnabled(true);
    mnuDelete_->setEnabled(true);
    mnuAddSibling_->setEnabled(true);
    mnuAddSibling_->setVisible(true);
    if (current_level >= 1 && current_level <= levels)
      mnuAddSibling_->setText(question(current_level));
    if (current_level < levels) {
      enable_buttons(current_level + 1);
      mnuAddChild_->setEnabled(true);
      mnuAddChild_->setVisible(true);
      mnuAddChild_->setText(question(current_level + 1));
      mnucopywithchildren_->setEnabled(true);
    } else {
      enable_buttons(current_level);
      mnuAddChild_->setEnabled(false);
      mnuAddChild_->setVisible(false);
      mnucopywithchildren_->setEnabled(false);
    }
  }
  mnuPaste_->setEnabled(PasteSource() != nullptr);
  mnuMoveUp_->setEnabled(MoveNeighbour(-1).isValid());
  mnuMoveDown_->setEnabled(MoveNeighbour(1).isValid());
  mnuIndent_->setEnabled(MoveNeighbour(-1).isValid());
  mnuOutdent_->setEnabled(current_level >= 2);
  if (session_.ReadOnly()) {
    for (QWidget* button : cmdAdd_) button->setEnabled(false);
    cmdDelete_->setEnabled(false);
    for (QAction* action : {mnuDelete_, mnuAddChild_, mnuAddSibling_, mnuPaste_, mnuMoveUp_,
                            mnuMoveDown_, mnuIndent_, mnuOutdent_}) {
      action->setEnabled(false);
    }
  }
}

void DataView::ShowReadOnly() {
  grid_->SetReadOnly(session_.ReadOnly());
  EnableDisable();
}

std::shared_ptr<PopupItem> DataView::PasteSource() {
  const int32_t copied_identity = session_.CopiedIdentity();
  if (copied_identity == 0 || CurrentIsTitle()) return nullptr;
  // Only what this editor copied: a number from anywhere else is no item of ours.
  if (session_.services().clipboard->Text() != std::to_string(copied_identity)) return nullptr;
  // Only an item of the outline: a deleted one lives on in its undo command.
  if (!grid_->IndexOfIdentity(copied_identity).isValid()) return nullptr;
  auto copied = FindItemByIdentity(copied_identity);
  if (!copied) return nullptr;
  QModelIndex current = DataGrid_->currentIndex();
  auto item = grid_->ItemAt(current.siblingAtColumn(0));
  return item && copied->Level() == item->Level() ? copied : nullptr;
}

BranchLayout DataView::OutlineLayout() const {
  return outline_stale_ ? BranchLayout{} : grid_->WholeLayout();
}

void DataView::FallBackStep() {
  if (cboStep_->findText(cboStep_->currentText()) < 0) cboStep_->setCurrentIndex(5);
}

void DataView::MakeTitleCurrent() {
  DataGrid_->setCurrentIndex(grid_->TitleIndex());
}

void DataView::FocusOutline() {
  DataGrid_->setFocus();
}

void DataView::FocusFind() {
  txtFind_->setFocus();
  txtFind_->selectAll();
}

bool DataView::DeleteEnabled() const {
  return cmdDelete_->isEnabled();
}

void DataView::KeepPrintedOutline() {
  if (!printed_outline_) printed_outline_ = ShownOutline();
}

}  // namespace zephyr::editor
