// The design view: the title box, the level and field grids with their
// buttons and edit checks, and the key-step box.
#include <QApplication>
#include <QComboBox>
#include <QEvent>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QToolButton>
#include <QTreeView>

#include "edit_delegate.h"
#include "editor_state.h"
#include "zephyr/support/debug_log.h"
#include "zephyr/support/text.h"

namespace zephyr::editor {

namespace {

// The 1-based grid row of a view's current cell; 0 when there is none.
int CurrentGridRow(const QTableView* view) {
  QModelIndex current = view->currentIndex();
  return current.isValid() ? current.row() + 1 : 0;
}

// A design action under way: the changes it makes to the working lists are
// recorded once, as one command named `text`, when it ends.
class DesignAction {
 public:
  DesignAction(EditorState& state, QString text)
      : state_(state), text_(std::move(text)), outer_(std::exchange(state.in_design_action, true)) {}
  ~DesignAction() {
    state_.in_design_action = outer_;
    if (!outer_) state_.Guarded([this]() { state_.RecordDraft(text_); });
  }
  DesignAction(const DesignAction&) = delete;
  DesignAction& operator=(const DesignAction&) = delete;

 private:
  EditorState& state_;
  QString text_;
  bool outer_;
};

void MakeCurrent(QTableView* view, int grid_row) {
  QModelIndex cell = view->model()->index(grid_row - 1, 0);
  view->setCurrentIndex(cell);
  view->scrollTo(cell);
}

}  // namespace

void EditorState::ConnectDesignView() {
  On(txtTitle, &QLineEdit::textChanged, [this]() { TitleChanged(); });
  On(cmdAddLevels, &QPushButton::clicked, [this]() { AddLevelRow(); });
  On(cmdDeleteLevels, &QPushButton::clicked, [this]() { DeleteLevelRow(); });
  On(cmdAddField, &QPushButton::clicked, [this]() { AddFieldRow(); });
  On(cmdDeleteField, &QPushButton::clicked, [this]() { DeleteFieldRow(); });
  On(cmdUp, &QToolButton::clicked, [this]() { MoveField(-1); });
  On(cmdDown, &QToolButton::clicked, [this]() { MoveField(1); });

  auto* levels = new EditDelegate(grdLevels);
  levels->SetRefuse([this](const QModelIndex&, QString& text) {
    bool refused = true;
    Guarded([&]() { refused = LevelEditRefused(text); });
    return refused;
  });
  grdLevels->setItemDelegate(levels);
  auto* fields = new EditDelegate(grdFields);
  fields->SetAfterEdit([this](const QModelIndex&) { session.SetDataChanged(true); });
  grdFields->setItemDelegate(fields);

  On(grdLevels->selectionModel(), &QItemSelectionModel::currentChanged,
     [this](const QModelIndex& current) { LevelRowEntered(current.row() + 1); });
  On(grdLevels, &QTableView::clicked,
     [this](const QModelIndex& index) { LevelRowEntered(index.row() + 1); });
  On(grdFields->selectionModel(), &QItemSelectionModel::currentChanged,
     [this](const QModelIndex& current) { FieldRowEntered(current.row() + 1); });
  On(grdFields, &QTableView::clicked,
     [this](const QModelIndex& index) { FieldRowEntered(index.row() + 1); });
  // A model reset (a reload of the design view) leaves no row current.
  On(LevelList, &QAbstractItemModel::modelReset, [this]() { cmdDeleteLevels->setEnabled(false); });
  On(FieldList, &QAbstractItemModel::modelReset, [this]() {
    cmdUp->setEnabled(false);
    cmdDown->setEnabled(false);
  });
  // A cell typed into the working lists is one command; a reload is none.
  On(LevelList, &QAbstractItemModel::dataChanged, [this]() { RecordDraft("Edit Level"); });
  On(FieldList, &QAbstractItemModel::dataChanged, [this]() { RecordDraft("Edit Field"); });

  cboStep->installEventFilter(this);
  if (cboStep->lineEdit()) cboStep->lineEdit()->installEventFilter(this);
}

bool EditorState::eventFilter(QObject* watched, QEvent* event) {
  bool handled = false;
  Guarded([&]() { handled = FilterEvent(watched, event); });
  return handled;
}

bool EditorState::FilterEvent(QObject* watched, QEvent* event) {
  if (watched == grdFields->viewport() && event->type() == QEvent::Resize) SizeFieldColumns();
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

void EditorState::LoadTemplateData() {
  DebugLog(kTemplateDataModule, "LoadTemplateData", "Start");
  LevelListModel::List levels;
  FieldListModel::List fields;
  DebugLog(kTemplateDataModule, "LoadTemplateData", "REdim's complete");
  int16_t position = 0;
  for (const auto& level : *session.Popup()->PopupLevels()) {
    level->IntialIndex(++position);
    levels.push_back(level);
  }
  DebugLog(kTemplateDataModule, "LoadTemplateData", "Levels REset");
  position = 0;
  bool key_field = true;
  for (const auto& field : *session.Popup()->PopupFields()) {
    if (key_field) {
      key_field = false;  // field 1 is the key, never shown
      continue;
    }
    field->InitialIndex(++position);
    fields.push_back(field);
  }
  DebugLog(kTemplateDataModule, "LoadTemplateData", "Fields Reset");
  LevelList->Reset(std::move(levels));
  FieldList->Reset(std::move(fields));
  FieldsChanged = false;
  LevelsChanged = false;
  recorded_design = CaptureDraft();
  DebugLog(kTemplateDataModule, "LoadTemplateData", "End");
}

void EditorState::FillDesignGrids() {
  // The grids are views of the working lists: refreshing them is all the
  // filling they need.
  grdLevels->reset();
  grdFields->reset();
  if (LevelList->rowCount() == 0) {
    cmdDeleteField->setEnabled(false);
    cmdDeleteLevels->setEnabled(false);
  }
  cmdAddLevels->setEnabled(LevelList->rowCount() + 1 < 9);
  if (FieldList->rowCount() == 0) {
    // Both buttons, as for a popup without levels.
    cmdDeleteField->setEnabled(false);
    cmdDeleteLevels->setEnabled(false);
  }
  txtTitle->setText(ToQString(session.Popup()->Title()));
}

void EditorState::TitleChanged() {
  QString text = txtTitle->text();
  if (text.contains(QLatin1Char('"'))) {
    session.Tell("Double Quotes are not Permitted in Title");
    txtTitle->setFocus();
    return;
  }
  if (!Loading) session.SetDataChanged(true);
  session.Popup()->Title(ToUtf8(text));
  RecordDraft("Change Title", true);
}

ShownDesign EditorState::CaptureDraft() const {
  ShownDesign captured;
  captured.title = session.Popup()->Title();
  for (const auto& level : LevelList->Levels()) {
    captured.levels.push_back({level->IntialIndex(), level->Question()});
  }
  int row = 0;
  for (const auto& field : FieldList->Fields()) {
    captured.fields.push_back({field->InitialIndex(), field->Name(), field->FieldLength(),
                               FieldList->LengthText(row++), field->StartCharPos()});
  }
  captured.levels_changed = LevelsChanged;
  captured.fields_changed = FieldsChanged;
  return captured;
}

void EditorState::ShowDraft(const ShownDesign& shown) {
  bool was_loading = std::exchange(Loading, true);
  auto popup_levels = session.Popup()->PopupLevels();
  LevelListModel::List levels;
  for (const ShownDesign::Level& row : shown.levels) {
    bool known = row.initial_index >= 1 && row.initial_index <= popup_levels->Count();
    auto level = known ? popup_levels->Item(int32_t{row.initial_index})
                       : std::make_shared<PopupLevel>();
    level->Question(row.question);
    level->IntialIndex(row.initial_index);
    levels.push_back(std::move(level));
  }
  // The popup's field 1 is the key, which the list never shows.
  auto popup_fields = session.Popup()->PopupFields();
  FieldListModel::List fields;
  std::vector<std::string> lengths;
  for (const ShownDesign::Field& row : shown.fields) {
    bool known = row.initial_index >= 1 && row.initial_index + 1 <= popup_fields->Count();
    auto field = known ? popup_fields->Item(int32_t{row.initial_index + 1})
                       : std::make_shared<PopupField>();
    field->Name(row.name);
    field->FieldLength(row.length);
    field->StartCharPos(row.start_char_pos);
    field->InitialIndex(row.initial_index);
    fields.push_back(std::move(field));
    lengths.push_back(row.length_text);
  }
  LevelList->Reset(std::move(levels));
  FieldList->Reset(std::move(fields), std::move(lengths));
  LevelsChanged = shown.levels_changed;
  FieldsChanged = shown.fields_changed;
  session.Popup()->Title(shown.title);
  FillDesignGrids();
  Loading = was_loading;
  recorded_design = shown;
  SizeFieldColumns();
}

void EditorState::RecordDraft(const QString& text, bool title_typing) {
  if (Loading || in_design_action) return;
  ShownDesign now = CaptureDraft();
  if (now == recorded_design) return;
  ShownDesign before = std::exchange(recorded_design, now);
  session.Record(new DraftCommand(*this, text, std::move(before), std::move(now), title_typing));
}

void EditorState::AddLevelRow() {
  DesignAction action(*this, QStringLiteral("Add Level"));
  LevelList->AppendNew();
  int grid_row = LevelList->rowCount();
  MakeCurrent(grdLevels, grid_row);
  grdLevels->setFocus();
  grdLevels->edit(grdLevels->currentIndex());
  if (LevelList->rowCount() + 1 >= 9) cmdAddLevels->setEnabled(false);
  LevelsChanged = true;
  session.SetDataChanged(true);
}

void EditorState::AddFieldRow() {
  DesignAction action(*this, QStringLiteral("Add Field"));
  FieldList->AppendNew();
  MakeCurrent(grdFields, FieldList->rowCount());
  grdFields->setFocus();
  grdFields->edit(grdFields->currentIndex());
  if (FieldList->rowCount() == 1) cmdDeleteField->setEnabled(true);
  SizeFieldColumns();
  FieldsChanged = true;
  session.SetDataChanged(true);
}

void EditorState::DeleteLevelRow() {
  DesignAction action(*this, QStringLiteral("Delete Level"));
  int grid_row = CurrentGridRow(grdLevels);
  if (grid_row < 1) return;
  std::string question =
      LevelList->Levels()[static_cast<size_t>(grid_row - 1)]->Question().ToText();
  if (session.Tell("Are you Sure you wish to delete this Level along with its Data?",
           MessageButtons::kYesNo, "Delete Level? " + question) != MessageAnswer::kYes) {
    return;
  }
  // Levels are nested: only the deepest can go, whichever row was selected.
  LevelList->RemoveLast();
  grdLevels->setFocus();
  if (LevelList->rowCount() > 0) {
    MakeCurrent(grdLevels, 1);
  } else {
    cmdDeleteLevels->setEnabled(false);
  }
  if (LevelList->rowCount() + 1 < 9) cmdAddLevels->setEnabled(true);
  LevelsChanged = true;
  session.SetDataChanged(true);
}

void EditorState::DeleteFieldRow() {
  DesignAction action(*this, QStringLiteral("Delete Field"));
  int grid_row = CurrentGridRow(grdFields);
  if (grid_row < 1) return;
  std::string name = FieldList->Fields()[static_cast<size_t>(grid_row - 1)]->Name();
  // The field's question reuses the level's title.
  if (session.Tell("Are you Sure you wish to delete this Field along with its Data?",
           MessageButtons::kYesNo, "Delete Level? " + name) != MessageAnswer::kYes) {
    return;
  }
  FieldList->RemoveAt(grid_row - 1);
  FieldsChanged = true;
  session.SetDataChanged(true);
  grdFields->setFocus();
  if (FieldList->rowCount() > 0) {
    MakeCurrent(grdFields, 1);
  } else {
    cmdDeleteField->setEnabled(false);
  }
  SizeFieldColumns();
}

void EditorState::MoveField(int step) {
  DesignAction action(*this, step < 0 ? QStringLiteral("Move Field Up") : QStringLiteral("Move Field Down"));
  int grid_row = CurrentGridRow(grdFields);
  int target = grid_row + step;
  if (grid_row < 1 || target < 1 || target > FieldList->rowCount()) return;
  FieldList->Swap(grid_row - 1, target - 1);
  LoadDesignMode();
  FieldsChanged = true;
  session.SetDataChanged(true);
  grdFields->setFocus();
  MakeCurrent(grdFields, target);
}

void EditorState::LevelRowEntered(int row) {
  // A click enables the button; entering a row then narrows it: only the
  // last level, and never the first, can be deleted.
  int rows = LevelList->rowCount();
  cmdDeleteLevels->setEnabled(rows >= 1 && row == rows && row != 0 && row != 1);
}

void EditorState::FieldRowEntered(int row) {
  int rows = FieldList->rowCount();
  if (rows >= 1) cmdDeleteField->setEnabled(true);
  cmdUp->setEnabled(row > 1 && row <= rows);
  cmdDown->setEnabled(row >= 1 && row < rows);
}

bool EditorState::LevelEditRefused(const QString& text) {
  session.SetDataChanged(true);
  if (!text.contains(QLatin1Char('"'))) return false;
  session.Tell("Double Quotes are not permited in Level Descriptions");
  return true;
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
