#include "design_view.h"

#include <QApplication>
#include <QComboBox>
#include <QEvent>
#include <QFrame>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QToolButton>
#include <QTreeView>
#include <QVBoxLayout>

#include "edit_delegate.h"
#include "editor_state.h"
#include "named_widget.h"
#include "zephyr/runtime/design_rules.h"
#include "zephyr/support/debug_log.h"
#include "zephyr/support/text.h"

namespace zephyr::editor {

namespace {

// The 1-based grid row of a view's current cell; 0 when there is none.
int CurrentGridRow(const QTableView* view) {
  QModelIndex current = view->currentIndex();
  return current.isValid() ? current.row() + 1 : 0;
}

// Logs "Start" once for every call a procedure that walks the tree by
// calling itself would make: once for the list, then once for the children
// of each item (of every item, or only of those that have children).
void LogRecursiveCalls(const char* procedure, PopupItems& items, bool every_item) {
  DebugLog(kEditModule, procedure, "Start");
  for (const auto& item : items) {
    if (item->HasChildren()) {
      LogRecursiveCalls(procedure, *item->Children(), every_item);
    } else if (every_item) {
      DebugLog(kEditModule, procedure, "Start");
    }
  }
}

void MakeCurrent(QTableView* view, int grid_row) {
  QModelIndex cell = view->model()->index(grid_row - 1, 0);
  view->setCurrentIndex(cell);
  view->scrollTo(cell);
}

constexpr QAbstractItemView::EditTriggers kEditTriggers =
    QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
    QAbstractItemView::AnyKeyPressed;

}  // namespace

// A design action under way: the changes it makes to the working lists are
// recorded once, as one command named `text`, when it ends.
class DesignView::Action {
 public:
  // Raises, changing nothing, when the popup may not be changed.
  Action(DesignView& view, QString text)
      : view_((view.session_.RequireWritable(), view)),
        text_(std::move(text)),
        outer_(std::exchange(view.in_action_, true)) {}
  ~Action() {
    view_.in_action_ = outer_;
    if (!outer_) view_.shell_.Guarded([this]() { view_.RecordDraft(text_); });
  }
  Action(const Action&) = delete;
  Action& operator=(const Action&) = delete;

 private:
  DesignView& view_;
  QString text_;
  bool outer_;
};

DesignView::DesignView(EditorState& shell, EditorSession& session)
    : QObject(&shell),
      shell_(shell),
      session_(session),
      LevelList_(new LevelListModel(this)),
      FieldList_(new FieldListModel(this)) {}

QFrame* DesignView::Build(QWidget* parent) {
  fraDesignMode_ = Named(new QFrame(parent), "fraDesignMode");
  auto* design = new QVBoxLayout(fraDesignMode_);
  fraPopupTitle_ =
      Named(new QGroupBox(QStringLiteral("Popup Title"), fraDesignMode_), "fraPopupTitle");
  txtTitle_ = Named(new QLineEdit(QStringLiteral("TestText"), fraPopupTitle_), "txtTitle");
  (new QHBoxLayout(fraPopupTitle_))->addWidget(txtTitle_);
  design->addWidget(fraPopupTitle_);

  auto* lists = new QHBoxLayout();
  fraQuestionLevels_ =
      Named(new QGroupBox(QStringLiteral("Order and Questions to ask"), fraDesignMode_),
            "fraQuestionLevels");
  grdLevels_ = Named(new QTableView(fraQuestionLevels_), "grdLevels");
  cmdAddLevels_ = Named(new QPushButton(QStringLiteral("Add"), fraQuestionLevels_), "cmdAddLevels");
  cmdDeleteLevels_ =
      Named(new QPushButton(QStringLiteral("Delete"), fraQuestionLevels_), "cmdDeleteLevels");
  auto* levels_layout = new QVBoxLayout(fraQuestionLevels_);
  levels_layout->addWidget(grdLevels_);
  auto* level_buttons = new QHBoxLayout();
  level_buttons->addWidget(cmdAddLevels_);
  level_buttons->addWidget(cmdDeleteLevels_);
  level_buttons->addStretch();
  levels_layout->addLayout(level_buttons);
  lists->addWidget(fraQuestionLevels_, 1);

  fraPopupFields_ = Named(new QGroupBox(QStringLiteral("Popup Database Fields"), fraDesignMode_),
                          "fraPopupFields");
  grdFields_ = Named(new QTableView(fraPopupFields_), "grdFields");
  cmdAddField_ = Named(new QPushButton(QStringLiteral("Add"), fraPopupFields_), "cmdAddField");
  cmdDeleteField_ =
      Named(new QPushButton(QStringLiteral("Delete"), fraPopupFields_), "cmdDeleteField");
  cmdUp_ = Named(new QToolButton(fraPopupFields_), "cmdUp");
  cmdUp_->setArrowType(Qt::UpArrow);
  cmdUp_->setToolTip(QStringLiteral("Move the field up"));
  cmdDown_ = Named(new QToolButton(fraPopupFields_), "cmdDown");
  cmdDown_->setArrowType(Qt::DownArrow);
  cmdDown_->setToolTip(QStringLiteral("Move the field down"));
  auto* fields_layout = new QVBoxLayout(fraPopupFields_);
  fields_layout->addWidget(grdFields_);
  auto* field_buttons = new QHBoxLayout();
  field_buttons->addWidget(cmdAddField_);
  field_buttons->addWidget(cmdDeleteField_);
  field_buttons->addStretch();
  field_buttons->addWidget(cmdUp_);
  field_buttons->addWidget(cmdDown_);
  fields_layout->addLayout(field_buttons);
  lists->addWidget(fraPopupFields_, 1);
  design->addLayout(lists, 1);

  fraImportExport_ = Named(new QGroupBox(fraDesignMode_), "fraImportExport");
  cmdImport_ =
      Named(new QPushButton(QStringLiteral("Import From Excel"), fraImportExport_), "cmdImport");
  cmdImport_->setToolTip(QStringLiteral("Imports Data from the Currently Active Sheet in Excel"));
  cmdExport_ =
      Named(new QPushButton(QStringLiteral("Export To Excel"), fraImportExport_), "cmdExport");
  cmdExport_->setToolTip(
      QStringLiteral("Exports Data to a new Sheet in the Current Excel Document"));
  auto* exchange = new QHBoxLayout(fraImportExport_);
  exchange->addWidget(cmdImport_);
  exchange->addWidget(cmdExport_);
  exchange->addStretch();
  design->addWidget(fraImportExport_);

  for (QTableView* view : {grdLevels_, grdFields_}) {
    view->setSelectionBehavior(QAbstractItemView::SelectRows);
    view->setSelectionMode(QAbstractItemView::SingleSelection);
    view->setEditTriggers(kEditTriggers);
    view->verticalHeader()->setVisible(false);
    // Tab leaves the grid for its buttons, so the design can be made from
    // the keyboard.
    view->setTabKeyNavigation(false);
    view->horizontalHeader()->setHighlightSections(false);
  }
  grdLevels_->setModel(LevelList_);
  grdLevels_->horizontalHeader()->setStretchLastSection(true);
  grdFields_->setModel(FieldList_);
  grdFields_->horizontalHeader()->setStretchLastSection(true);
  grdFields_->viewport()->installEventFilter(this);
  Connect();
  return fraDesignMode_;
}

void DesignView::Connect() {
  shell_.On(txtTitle_, &QLineEdit::textChanged, [this]() { TitleChanged(); });
  shell_.On(cmdAddLevels_, &QPushButton::clicked, [this]() { AddLevelRow(); });
  shell_.On(cmdDeleteLevels_, &QPushButton::clicked, [this]() { DeleteLevelRow(); });
  shell_.On(cmdAddField_, &QPushButton::clicked, [this]() { AddFieldRow(); });
  shell_.On(cmdDeleteField_, &QPushButton::clicked, [this]() { DeleteFieldRow(); });
  shell_.On(cmdUp_, &QToolButton::clicked, [this]() { MoveField(-1); });
  shell_.On(cmdDown_, &QToolButton::clicked, [this]() { MoveField(1); });

  auto* levels = new EditDelegate(grdLevels_);
  levels->SetRefuse([this](const QModelIndex&, QString& text) {
    bool refused = true;
    shell_.Guarded([&]() { refused = LevelEditRefused(text); });
    return refused;
  });
  grdLevels_->setItemDelegate(levels);
  auto* fields = new EditDelegate(grdFields_);
  fields->SetAfterEdit([this](const QModelIndex&) { session_.SetDataChanged(true); });
  grdFields_->setItemDelegate(fields);

  shell_.On(grdLevels_->selectionModel(), &QItemSelectionModel::currentChanged,
            [this](const QModelIndex& current) { LevelRowEntered(current.row() + 1); });
  shell_.On(grdLevels_, &QTableView::clicked,
            [this](const QModelIndex& index) { LevelRowEntered(index.row() + 1); });
  shell_.On(grdFields_->selectionModel(), &QItemSelectionModel::currentChanged,
            [this](const QModelIndex& current) { FieldRowEntered(current.row() + 1); });
  shell_.On(grdFields_, &QTableView::clicked,
            [this](const QModelIndex& index) { FieldRowEntered(index.row() + 1); });
  // A model reset (a reload of the design view) leaves no row current.
  shell_.On(LevelList_, &QAbstractItemModel::modelReset,
            [this]() { cmdDeleteLevels_->setEnabled(false); });
  shell_.On(FieldList_, &QAbstractItemModel::modelReset, [this]() {
    cmdUp_->setEnabled(false);
    cmdDown_->setEnabled(false);
  });
  // A cell typed into the working lists is one command; a reload is none.
  shell_.On(LevelList_, &QAbstractItemModel::dataChanged, [this]() { RecordDraft("Edit Level"); });
  shell_.On(FieldList_, &QAbstractItemModel::dataChanged, [this]() { RecordDraft("Edit Field"); });
  shell_.On(cmdImport_, &QPushButton::clicked, [this]() { shell_.ImportFromExcel(); });
  shell_.On(cmdExport_, &QPushButton::clicked, [this]() { shell_.ExportToExcel(); });
}

bool DesignView::eventFilter(QObject* watched, QEvent* event) {
  // Guarded: nothing runs while the widget, and so the grid, is being destroyed.
  shell_.Guarded([&]() {
    if (watched == grdFields_->viewport() && event->type() == QEvent::Resize) SizeFieldColumns();
  });
  return QObject::eventFilter(watched, event);
}

void DesignView::LoadTemplateData() {
  DebugLog(kTemplateDataModule, "LoadTemplateData", "Start");
  LevelListModel::List levels;
  FieldListModel::List fields;
  DebugLog(kTemplateDataModule, "LoadTemplateData", "REdim's complete");
  int16_t position = 0;
  for (const auto& level : *session_.Popup()->PopupLevels()) {
    level->IntialIndex(++position);
    levels.push_back(level);
  }
  DebugLog(kTemplateDataModule, "LoadTemplateData", "Levels REset");
  position = 0;
  bool key_field = true;
  for (const auto& field : *session_.Popup()->PopupFields()) {
    if (key_field) {
      key_field = false;  // field 1 is the key, never shown
      continue;
    }
    field->InitialIndex(++position);
    fields.push_back(field);
  }
  DebugLog(kTemplateDataModule, "LoadTemplateData", "Fields Reset");
  LevelList_->Reset(std::move(levels));
  FieldList_->Reset(std::move(fields));
  fields_changed_ = false;
  levels_changed_ = false;
  recorded_ = CaptureDraft();
  DebugLog(kTemplateDataModule, "LoadTemplateData", "End");
}

void DesignView::FillDesignGrids() {
  // The grids are views of the working lists: refreshing them is all the
  // filling they need.
  grdLevels_->reset();
  grdFields_->reset();
  if (LevelList_->rowCount() == 0) {
    cmdDeleteField_->setEnabled(false);
    cmdDeleteLevels_->setEnabled(false);
  }
  cmdAddLevels_->setEnabled(LevelList_->rowCount() + 1 < 9);
  if (FieldList_->rowCount() == 0) {
    // Both buttons, as for a popup without levels.
    cmdDeleteField_->setEnabled(false);
    cmdDeleteLevels_->setEnabled(false);
  }
  txtTitle_->setText(ToQString(session_.Popup()->Title()));
  if (session_.ReadOnly()) ShowReadOnly();
}

void DesignView::SizeFieldColumns() {
  int width = grdFields_->viewport()->width();
  grdFields_->resizeColumnToContents(1);
  // The name takes 85% unless the length column would then not fit.
  int name_width = static_cast<int>(width * 0.85);
  grdFields_->setColumnWidth(0, std::min(name_width, width - grdFields_->columnWidth(1)));
}

void DesignView::FocusTitle() {
  txtTitle_->setFocus();
}

bool DesignView::Validate() {
  DesignDraft draft;
  draft.title = ToUtf8(txtTitle_->text());
  for (const auto& level : LevelList_->Levels()) draft.levels.push_back(level->Question().ToText());
  int row = 0;
  for (const auto& field : FieldList_->Fields()) {
    draft.fields.push_back({field->Name(), FieldList_->LengthText(row++)});
  }
  std::optional<DesignViolation> broken = CheckDesign(draft);
  if (!broken) return true;
  session_.Tell(broken->message);
  if (broken->place == DesignPlace::kLevels) MakeCurrent(grdLevels_, broken->row);
  if (broken->place == DesignPlace::kFields) MakeCurrent(grdFields_, broken->row);
  return false;
}

void DesignView::TitleChanged() {
  QString text = txtTitle_->text();
  if (text.contains(QLatin1Char('"'))) {
    session_.Tell("Double Quotes are not Permitted in Title");
    txtTitle_->setFocus();
    return;
  }
  if (!shell_.Loading) session_.SetDataChanged(true);
  session_.Popup()->Title(ToUtf8(text));
  RecordDraft("Change Title", true);
}

ShownDesign DesignView::CaptureDraft() const {
  ShownDesign captured;
  captured.title = session_.Popup()->Title();
  for (const auto& level : LevelList_->Levels()) {
    captured.levels.push_back({level->IntialIndex(), level->Question()});
  }
  int row = 0;
  for (const auto& field : FieldList_->Fields()) {
    captured.fields.push_back({field->InitialIndex(), field->Name(), field->FieldLength(),
                               FieldList_->LengthText(row++), field->StartCharPos()});
  }
  captured.levels_changed = levels_changed_;
  captured.fields_changed = fields_changed_;
  return captured;
}

void DesignView::ShowDraft(const ShownDesign& shown) {
  bool was_loading = std::exchange(shell_.Loading, true);
  auto popup_levels = session_.Popup()->PopupLevels();
  LevelListModel::List levels;
  for (const ShownDesign::Level& row : shown.levels) {
    bool known = row.initial_index >= 1 && row.initial_index <= popup_levels->Count();
    auto level =
        known ? popup_levels->Item(int32_t{row.initial_index}) : std::make_shared<PopupLevel>();
    level->Question(row.question);
    level->IntialIndex(row.initial_index);
    levels.push_back(std::move(level));
  }
  // The popup's field 1 is the key, which the list never shows.
  auto popup_fields = session_.Popup()->PopupFields();
  FieldListModel::List fields;
  std::vector<std::string> lengths;
  for (const ShownDesign::Field& row : shown.fields) {
    bool known = row.initial_index >= 1 && row.initial_index + 1 <= popup_fields->Count();
    auto field =
        known ? popup_fields->Item(int32_t{row.initial_index + 1}) : std::make_shared<PopupField>();
    field->Name(row.name);
    field->FieldLength(row.length);
    field->StartCharPos(row.start_char_pos);
    field->InitialIndex(row.initial_index);
    fields.push_back(std::move(field));
    lengths.push_back(row.length_text);
  }
  LevelList_->Reset(std::move(levels));
  FieldList_->Reset(std::move(fields), std::move(lengths));
  levels_changed_ = shown.levels_changed;
  fields_changed_ = shown.fields_changed;
  session_.Popup()->Title(shown.title);
  FillDesignGrids();
  shell_.Loading = was_loading;
  recorded_ = shown;
  SizeFieldColumns();
}

void DesignView::RecordDraft(const QString& text, bool title_typing) {
  if (shell_.Loading || in_action_) return;
  ShownDesign now = CaptureDraft();
  if (now == recorded_) return;
  ShownDesign before = std::exchange(recorded_, now);
  session_.Record(
      new DraftCommand(*this, session_, text, std::move(before), std::move(now), title_typing));
}

void DesignView::AddLevelRow() {
  Action action(*this, QStringLiteral("Add Level"));
  LevelList_->AppendNew();
  int grid_row = LevelList_->rowCount();
  MakeCurrent(grdLevels_, grid_row);
  grdLevels_->setFocus();
  grdLevels_->edit(grdLevels_->currentIndex());
  if (LevelList_->rowCount() + 1 >= 9) cmdAddLevels_->setEnabled(false);
  levels_changed_ = true;
  session_.SetDataChanged(true);
}

void DesignView::AddFieldRow() {
  Action action(*this, QStringLiteral("Add Field"));
  FieldList_->AppendNew();
  MakeCurrent(grdFields_, FieldList_->rowCount());
  grdFields_->setFocus();
  grdFields_->edit(grdFields_->currentIndex());
  if (FieldList_->rowCount() == 1) cmdDeleteField_->setEnabled(true);
  SizeFieldColumns();
  fields_changed_ = true;
  session_.SetDataChanged(true);
}

void DesignView::DeleteLevelRow() {
  Action action(*this, QStringLiteral("Delete Level"));
  int grid_row = CurrentGridRow(grdLevels_);
  if (grid_row < 1) return;
  std::string question =
      LevelList_->Levels()[static_cast<size_t>(grid_row - 1)]->Question().ToText();
  if (session_.Tell("Are you Sure you wish to delete this Level along with its Data?",
                    MessageButtons::kYesNo, "Delete Level? " + question) != MessageAnswer::kYes) {
    return;
  }
  // Levels are nested: only the deepest can go, whichever row was selected.
  LevelList_->RemoveLast();
  grdLevels_->setFocus();
  if (LevelList_->rowCount() > 0) {
    MakeCurrent(grdLevels_, 1);
  } else {
    cmdDeleteLevels_->setEnabled(false);
  }
  if (LevelList_->rowCount() + 1 < 9) cmdAddLevels_->setEnabled(true);
  levels_changed_ = true;
  session_.SetDataChanged(true);
}

void DesignView::DeleteFieldRow() {
  Action action(*this, QStringLiteral("Delete Field"));
  int grid_row = CurrentGridRow(grdFields_);
  if (grid_row < 1) return;
  std::string name = FieldList_->Fields()[static_cast<size_t>(grid_row - 1)]->Name();
  // The field's question reuses the level's title.
  if (session_.Tell("Are you Sure you wish to delete this Field along with its Data?",
                    MessageButtons::kYesNo, "Delete Level? " + name) != MessageAnswer::kYes) {
    return;
  }
  FieldList_->RemoveAt(grid_row - 1);
  fields_changed_ = true;
  session_.SetDataChanged(true);
  grdFields_->setFocus();
  if (FieldList_->rowCount() > 0) {
    MakeCurrent(grdFields_, 1);
  } else {
    cmdDeleteField_->setEnabled(false);
  }
  SizeFieldColumns();
}

void DesignView::MoveField(int step) {
  Action action(*this,
                step < 0 ? QStringLiteral("Move Field Up") : QStringLiteral("Move Field Down"));
  int grid_row = CurrentGridRow(grdFields_);
  int target = grid_row + step;
  if (grid_row < 1 || target < 1 || target > FieldList_->rowCount()) return;
  FieldList_->Swap(grid_row - 1, target - 1);
  shell_.LoadDesignMode();
  fields_changed_ = true;
  session_.SetDataChanged(true);
  grdFields_->setFocus();
  MakeCurrent(grdFields_, target);
}

void DesignView::LevelRowEntered(int row) {
  // A click enables the button; entering a row then narrows it: only the
  // last level, and never the first, can be deleted.
  int rows = LevelList_->rowCount();
  cmdDeleteLevels_->setEnabled(!session_.ReadOnly() && rows >= 1 && row == rows && row != 0 &&
                               row != 1);
}

void DesignView::FieldRowEntered(int row) {
  int rows = FieldList_->rowCount();
  bool writable = !session_.ReadOnly();
  if (rows >= 1) cmdDeleteField_->setEnabled(writable);
  cmdUp_->setEnabled(writable && row > 1 && row <= rows);
  cmdDown_->setEnabled(writable && row >= 1 && row < rows);
}

bool DesignView::LevelEditRefused(const QString& text) {
  session_.SetDataChanged(true);
  if (!text.contains(QLatin1Char('"'))) return false;
  session_.Tell("Double Quotes are not permited in Level Descriptions");
  return true;
}

void DesignView::ApplyToItems() {
  if (fields_changed_) ChangeFields();
  if (levels_changed_) ChangeLevels();
}

void DesignView::ChangeLevels() {
  DebugLog(kEditModule, "ChangeLevels", "Start");
  int16_t highest = 0;
  for (const auto& level : LevelList_->Levels()) highest = std::max(highest, level->IntialIndex());
  DebugLog(kEditModule, "ChangeLevels", "Solved Highest Level");
  int16_t old_levels = session_.Popup()->Levels();
  if (highest < old_levels) {
    DebugLog(kEditModule, "ChangeLevels", "HIghest Level < popup levels");
    session_.Popup()->DeleteLevel(static_cast<int16_t>(highest + 1),
                                  session_.Popup()->PopupItems());
    DebugLog(kEditModule, "ChangeLevels", "Level Deleted");
    while (session_.Popup()->PopupLevels()->Count() > highest) {
      session_.Popup()->RemoveLastLevel();
      DebugLog(kEditModule, "ChangeLevels", "Level Deleted");
    }
    LevelChangeKeyFormat(session_.Popup()->PopupItems());
  } else {
    DebugLog(kEditModule, "ChangeLevels", "HIghest Level > popup levels");
    SaveLevelsCol();
    DebugLog(kEditModule, "ChangeLevels", "Levels Saved");
    // Added levels widen every key, so that the saved table can be read back.
    if (session_.Popup()->Levels() != old_levels)
      LevelChangeKeyFormat(session_.Popup()->PopupItems());
  }
  session_.Popup()->Levels(static_cast<int16_t>(session_.Popup()->PopupLevels()->Count()));
  DebugLog(kEditModule, "ChangeLevels", "Reset objpopuplevels");
}

void DesignView::LevelChangeKeyFormat(const std::shared_ptr<PopupItems>& items) {
  if (!items) {
    DebugLog(kEditModule, "LevelChangeKeyFormat", "Start");
    return;
  }
  if (DebugLogEnabled()) LogRecursiveCalls("LevelChangeKeyFormat", *items, false);
  FormatKeysToLevels(*items, session_.Popup()->Levels());
}

void DesignView::SaveLevelsCol() {
  DebugLog(kEditModule, "SaveLevelsCol", "Start");
  std::vector<PopupClass::LevelSpec> levels;
  for (const auto& level : LevelList_->Levels()) {
    levels.push_back({level->Question(), level->IntialIndex()});
  }
  session_.Popup()->ReplaceLevels(levels);
}

void DesignView::ChangeFields() {
  DebugLog(kEditModule, "ChangeFields", "Start");
  std::vector<int16_t> map;
  for (const auto& field : FieldList_->Fields()) map.push_back(field->InitialIndex());
  if (DebugLogEnabled()) LogRecursiveCalls("ReOrderFields", *session_.Popup()->PopupItems(), true);
  ReorderValues(*session_.Popup()->PopupItems(), map);
  SaveFieldsCol();
}

void DesignView::SaveFieldsCol() {
  DebugLog(kEditModule, "SaveFieldsCol", "Start");
  std::vector<PopupClass::FieldSpec> fields;
  for (const auto& field : FieldList_->Fields()) {
    fields.push_back(
        {field->Name(), field->FieldLength(), field->StartCharPos(), field->InitialIndex()});
  }
  session_.Popup()->ReplaceFields(fields);
}

void DesignView::ShowReadOnly() {
  bool read_only = session_.ReadOnly();
  txtTitle_->setReadOnly(read_only);
  for (QTableView* grid : {grdLevels_, grdFields_}) {
    grid->setEditTriggers(read_only ? QAbstractItemView::NoEditTriggers : kEditTriggers);
  }
  for (QAbstractButton* button : std::initializer_list<QAbstractButton*>{
           cmdAddField_, cmdDeleteField_, cmdUp_, cmdDown_, cmdAddLevels_, cmdDeleteLevels_,
           cmdImport_}) {
    // Writable again (after a Save As), the rows entered enable the rest.
    if (read_only || button == cmdAddField_ || button == cmdAddLevels_ || button == cmdImport_) {
      button->setEnabled(!read_only);
    }
  }
}

}  // namespace zephyr::editor
