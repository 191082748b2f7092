// The editor shell: construction, the public interface, opening a popup,
// switching views and enabling the data view's commands.
#include "zephyr/editor/popup_control_edit.h"

#include <QAction>
#include <QComboBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QShortcut>
#include <QTableView>
#include <QTimer>
#include <QToolButton>
#include <QTreeView>
#include <QUndoStack>
#include <QVBoxLayout>
#include <algorithm>

#include "editor_state.h"
#include "named_widget.h"
#include "tab_strip.h"
#include "zephyr/editor/new_key_dialog.h"
#include "zephyr/platform/form_progress.h"
#include "zephyr/platform/qt_clipboard.h"
#include "zephyr/platform/qt_file_dialog.h"
#include "zephyr/platform/qt_message_box.h"
#include "zephyr/support/debug_log.h"

namespace zephyr::editor {

namespace {

QAction* NamedAction(QMenu* menu, const char* name, const char* caption) {
  QAction* action = menu->addAction(QString::fromLatin1(caption));
  action->setObjectName(QString::fromLatin1(name));
  return action;
}

}  // namespace

EditorState::EditorState(PopupControlEdit* owner)
    : QObject(owner),
      q(owner),
      session(this,
              {std::make_shared<platform::QtMessageBox>(owner),
               std::make_shared<platform::QtFileDialog>(owner),
               std::make_shared<platform::FormProgress>(owner),
               std::make_shared<platform::QtClipboard>(), DefaultNewKeyPrompt()},
              {[this](bool changed) { emit q->DataChangedChanged(changed); },
               [this](bool modified) { emit q->modifiedChanged(modified); }}) {}

std::shared_ptr<NewKeyPrompt> EditorState::DefaultNewKeyPrompt() {
  return std::make_shared<DialogNewKeyPrompt>(q, [this]() { return session.services().messages; });
}

EditorState::~EditorState() = default;

void EditorState::BuildControls() {
  design = new DesignView(*this, session);
  grid = new DataGridModel(this);
  QUndoStack* history = &session.History();
  connect(history, &QUndoStack::canUndoChanged, q, &PopupControlEdit::canUndoChanged);
  connect(history, &QUndoStack::canRedoChanged, q, &PopupControlEdit::canRedoChanged);

  auto* outer = new QVBoxLayout(q);
  outer->setContentsMargins(4, 4, 4, 4);
  tbsZephyrPopup = Named(new TabStrip(q), "tbsZephyrPopup");
  tbsZephyrPopup->addTab(QStringLiteral("Popup Design View"));
  tbsZephyrPopup->addTab(QStringLiteral("Popup Data View"));
  outer->addWidget(tbsZephyrPopup);

  outer->addWidget(design->Build(q), 1);

  // Data view.
  FraDataMode = Named(new QFrame(q), "FraDataMode");
  auto* data = new QVBoxLayout(FraDataMode);
  auto* commands = new QHBoxLayout();
  fraButtons = Named(new QFrame(FraDataMode), "fraButtons");
  auto* buttons = new QHBoxLayout(fraButtons);
  buttons->setContentsMargins(0, 0, 0, 0);
  lblAdd = Named(new QLabel(QStringLiteral("Add:"), fraButtons), "lblAdd");
  buttons->addWidget(lblAdd);
  buttons->addStretch();
  commands->addWidget(fraButtons, 1);
  fraStepDelete = Named(new QFrame(FraDataMode), "fraStepDelete");
  auto* step = new QHBoxLayout(fraStepDelete);
  step->setContentsMargins(0, 0, 0, 0);
  lblStep = Named(new QLabel(QStringLiteral("Step:"), fraStepDelete), "lblStep");
  cboStep = Named(new QComboBox(fraStepDelete), "cboStep");
  cboStep->setEditable(true);
  cboStep->setInsertPolicy(QComboBox::NoInsert);
  cboStep->addItems({"01", "02", "03", "04", "05", "10", "20", "30", "40", "50"});
  cboStep->setCurrentIndex(-1);
  cmdDelete = Named(new QPushButton(QStringLiteral("Delete"), fraStepDelete), "cmdDelete");
  step->addWidget(lblStep);
  step->addWidget(cboStep);
  step->addWidget(cmdDelete);
  commands->addWidget(fraStepDelete);
  data->addLayout(commands);
  txtFind = Named(new QLineEdit(FraDataMode), "txtFind");
  txtFind->setPlaceholderText(
      QStringLiteral("Find (Ctrl+F): show the items whose key or values hold this text"));
  txtFind->setClearButtonEnabled(true);
  data->addWidget(txtFind);
  find_timer = new QTimer(this);
  find_timer->setSingleShot(true);
  find_timer->setInterval(150);
  // Ctrl+PgUp / Ctrl+PgDown switch views as a click on the tabs does.
  auto* previous = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_PageUp), q);
  previous->setContext(Qt::WidgetWithChildrenShortcut);
  On(previous, &QShortcut::activated, [this]() { q->ShowView(false); });
  auto* next = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_PageDown), q);
  next->setContext(Qt::WidgetWithChildrenShortcut);
  On(next, &QShortcut::activated, [this]() { q->ShowView(true); });
  auto* find = new QShortcut(QKeySequence::Find, q);
  find->setContext(Qt::WidgetWithChildrenShortcut);
  On(find, &QShortcut::activated, [this]() { q->FocusFind(); });
  DataGrid = Named(new OutlineView(FraDataMode), "DataGrid");
  DataGrid->setModel(grid);
  DataGrid->setSelectionBehavior(QAbstractItemView::SelectItems);
  DataGrid->setSelectionMode(QAbstractItemView::SingleSelection);
  // Typing a character starts an edit; Enter, Space and a double click are handled apart.
  DataGrid->setEditTriggers(QAbstractItemView::AnyKeyPressed);
  // The whole current row is marked, and repainted when it moves.
  DataGrid->setAllColumnsShowFocus(true);
  DataGrid->setUniformRowHeights(true);
  DataGrid->setContextMenuPolicy(Qt::CustomContextMenu);
  DataGrid->setExpandsOnDoubleClick(false);
  DataGrid->header()->setStretchLastSection(false);
  data->addWidget(DataGrid, 1);
  Label1 = Named(new QLabel(FraDataMode), "Label1");
  data->addWidget(Label1);
  outer->addWidget(FraDataMode, 1);
  FraDataMode->setVisible(false);

  mnuPopupAction = Named(new QMenu(q), "mnuPopupAction");
  mnuAddChild = NamedAction(mnuPopupAction, "mnuAddChild", "New Child");
  mnuAddSibling = NamedAction(mnuPopupAction, "mnuAddSibling", "New Sibling");
  sep0 = mnuPopupAction->addSeparator();
  sep0->setObjectName(QStringLiteral("sep0"));
  mnucopy = Named(mnuPopupAction->addMenu(QStringLiteral("Copy")), "mnucopy");
  mnucopy->menuAction()->setObjectName(QStringLiteral("mnucopy"));
  mnuCopywithout = NamedAction(mnucopy, "mnuCopywithout", "Add a Copy of This Popup Data Item");
  mnucopywithchildren = NamedAction(mnucopy, "mnucopywithchildren",
                                    "Add a Copy of this Popup Data Item with Children");
  mnuPaste = NamedAction(mnuPopupAction, "mnuPaste", "Paste");
  mnuDelete = NamedAction(mnuPopupAction, "mnuDelete", "Delete");
  mnuPopupAction->addSeparator();
  mnuMoveUp = NamedAction(mnuPopupAction, "mnuMoveUp", "Move Up\tAlt+Shift+Up");
  mnuMoveDown = NamedAction(mnuPopupAction, "mnuMoveDown", "Move Down\tAlt+Shift+Down");
  mnuIndent = NamedAction(mnuPopupAction, "mnuIndent", "Indent\tAlt+Shift+Right");
  mnuOutdent = NamedAction(mnuPopupAction, "mnuOutdent", "Outdent\tAlt+Shift+Left");

  ConnectDataView();
  // A check that fails with an error keeps the view, as a failed validation does.
  tbsZephyrPopup->SetBeforeClick([this](int target) {
    bool refused = true;
    Guarded([&]() { refused = TabBeforeClick(target); });
    return refused;
  });
  On(tbsZephyrPopup, &QTabBar::currentChanged, [this](int index) { TabClick(index); });
}

void EditorState::StepHistory(bool undo) {
  const int index = session.History().index();
  const int count = session.History().count();
  const auto* next =
      static_cast<const EditorCommand*>(session.History().command(undo ? index - 1 : index));
  if (!next) return;
  int view = next->View();
  if (view != kAnyView && view != tbsZephyrPopup->currentIndex()) {
    tbsZephyrPopup->SelectTab(view);
    // A refused switch changes nothing; one that applied the design made a
    // new command, which the user sees before anything is undone.
    if (tbsZephyrPopup->currentIndex() != view || session.History().index() != index ||
        session.History().count() != count) {
      return;
    }
  }
  if (undo) {
    session.History().undo();
  } else {
    session.History().redo();
  }
}

void EditorState::ReportError(const std::exception& error) {
  std::string text;
  if (const auto* known = dynamic_cast<const Error*>(&error)) {
    text =
        "Run-time error '" + std::to_string(known->Number()) + "':\r\n\r\n" + known->Description();
  } else {
    text = std::string("Unexpected error: ") + error.what();
  }
  // Telling must not fail in turn: this runs where nothing may be thrown.
  try {
    session.Tell(text, MessageButtons::kOk, {}, MessageIcon::kCritical);
  } catch (...) {
    qCritical("%s", text.c_str());
  }
}

void EditorState::OpenPopup(const std::string& path, const std::string& file) {
  // A popup that fails to open leaves the editor as it was: the new popup is
  // read before it replaces the current one, and the names are kept.
  std::string source_path = path.empty() ? session.SourcePath() : path;
  std::string source_file = file.empty() ? session.SourceFile() : file;
  auto opened = std::make_shared<PopupClass>();
  opened->SetMessageBox(session.services().messages);
  opened->SetProgress(session.services().progress);
  opened->PopupPath(source_path);
  opened->DataSource(source_file);
  if (!source_file.empty()) opened->OpenPopup();

  Opening = true;
  outline_stale = true;
  struct OpeningDone {
    bool& flag;
    ~OpeningDone() { flag = false; }
  } done{Opening};
  session.SetSource(std::move(source_path), std::move(source_file));
  session.SetPopup(std::move(opened));
  session.StartHistory();  // the last popup's history, saved or not, goes with it
  if (!session.SourceFile().empty()) {
    design->LoadTemplateData();
    LoadDesignMode();
    tbsZephyrPopup->SelectTab(kDataTab);
    LoadDataMode();
    LoadDataGrid();
  } else {
    design->LoadTemplateData();
    tbsZephyrPopup->SelectTab(kDesignTab);
    LoadDesignMode();
    design->FocusTitle();  // a new popup starts with its title
  }
}

void EditorState::LoadDesignMode() {
  emit q->BeforeDesignMode();
  Loading = true;
  DataMode = false;
  design->FillDesignGrids();
  // One view at a time: both shown at once would make the window as tall as both.
  FraDataMode->setVisible(false);
  design->Frame()->setVisible(true);
  Loading = false;
  ResizeControls();
  design->SizeFieldColumns();
}

void EditorState::LoadDataMode() {
  emit q->BeforeDataMode();
  Loading = true;
  design->Frame()->setVisible(false);
  FraDataMode->setVisible(true);
  // A step that is none of the list's entries falls back to "10".
  if (cboStep->findText(cboStep->currentText()) < 0) cboStep->setCurrentIndex(5);
  ResizeControls();
  DataGrid->setCurrentIndex(grid->TitleIndex());
  EnableDisable();
  Loading = false;
  ResizeControls();
  LoadDataGrid();
  // The outline takes the keys (F1..F9, Enter) from the start.
  DataGrid->setFocus();
}

bool EditorState::TabBeforeClick(int target) {
  (void)target;
  if (Opening || tbsZephyrPopup->currentIndex() != kDesignTab) return false;
  if (!design->Validate()) return true;
  SaveDesign();
  return false;
}

void EditorState::TabClick(int index) {
  if (!Loading) {
    if (index == kDesignTab) {
      DataMode = false;
      LoadDesignMode();
    } else {
      DataMode = true;
      LoadDataMode();
    }
  }
  design->SizeFieldColumns();
}

void EditorState::ResizeControls() {
  RebuildAddButtons();
}

bool EditorState::CurrentIsTitle() const {
  QModelIndex current = DataGrid->currentIndex();
  return current.isValid() && !current.parent().isValid();
}

std::shared_ptr<PopupItem> EditorState::CurrentItem() {
  QModelIndex current = DataGrid->currentIndex();
  int32_t identity =
      current.isValid() ? grid->index(current.row(), 0, current.parent()).data(Qt::UserRole).toInt()
                        : 0;
  session.Popup()->SetSelectedItem(std::to_string(identity));
  return session.Popup()->SelectedItem();
}

int EditorState::CurrentLevel() {
  auto item = CurrentItem();
  return item ? item->Level() : 0;
}

void EditorState::EnableDisable() {
  DebugLog(kEditModule, "Enable_Disable", "Start");
  QModelIndex current = DataGrid->currentIndex();
  if (!current.isValid()) return;
  int levels = session.Popup()->Levels();
  auto question = [this](int level) {
    return QStringLiteral("Add ") +
           ToQString(session.Popup()->PopupLevels()->Item(Variant(level))->Question().ToText());
  };
  auto enable_buttons = [this](int up_to) {
    for (size_t i = 0; i < cmdAdd.size(); ++i) cmdAdd[i]->setEnabled(static_cast<int>(i) < up_to);
  };
  int current_level = 0;
  if (CurrentIsTitle()) {
    cmdDelete->setEnabled(false);
    mnuDelete->setEnabled(false);
    mnuAddSibling->setEnabled(false);
    mnuAddSibling->setVisible(false);
    enable_buttons(1);
    mnuAddChild->setEnabled(true);
    mnuAddChild->setVisible(true);
    if (levels >= 1) mnuAddChild->setText(question(1));
    mnucopy->menuAction()->setEnabled(false);
  } else {
    auto item = CurrentItem();
    current_level = item ? item->Level() : 0;
    mnucopy->menuAction()->setEnabled(true);
    mnuDelete->setEnabled(true);
    mnuAddSibling->setEnabled(true);
    mnuAddSibling->setVisible(true);
    if (current_level >= 1 && current_level <= levels)
      mnuAddSibling->setText(question(current_level));
    if (current_level < levels) {
      enable_buttons(current_level + 1);
      mnuAddChild->setEnabled(true);
      mnuAddChild->setVisible(true);
      mnuAddChild->setText(question(current_level + 1));
      mnucopywithchildren->setEnabled(true);
    } else {
      enable_buttons(current_level);
      mnuAddChild->setEnabled(false);
      mnuAddChild->setVisible(false);
      mnucopywithchildren->setEnabled(false);
    }
  }
  mnuPaste->setEnabled(PasteSource() != nullptr);
  mnuMoveUp->setEnabled(MoveNeighbour(-1).isValid());
  mnuMoveDown->setEnabled(MoveNeighbour(1).isValid());
  mnuIndent->setEnabled(MoveNeighbour(-1).isValid());
  mnuOutdent->setEnabled(current_level >= 2);
}

std::shared_ptr<PopupItem> EditorState::PasteSource() {
  const int32_t copied_identity = session.CopiedIdentity();
  if (copied_identity == 0 || CurrentIsTitle()) return nullptr;
  // Only what this editor copied: a number from anywhere else is no item of ours.
  if (session.services().clipboard->Text() != std::to_string(copied_identity)) return nullptr;
  // Only an item of the outline: a deleted one lives on in its undo command.
  if (!grid->IndexOfIdentity(copied_identity).isValid()) return nullptr;
  auto copied = FindItemByIdentity(copied_identity);
  if (!copied) return nullptr;
  QModelIndex current = DataGrid->currentIndex();
  auto item = grid->ItemAt(current.siblingAtColumn(0));
  return item && copied->Level() == item->Level() ? copied : nullptr;
}

}  // namespace zephyr::editor

namespace zephyr::editor {

PopupControlEdit::PopupControlEdit(QWidget* parent)
    : QWidget(parent), state_(std::make_unique<EditorState>(this)) {
  // Loading until the first view is loaded (by OpenPopup).
  state_->Loading = true;
  DebugLog(kInitializeModule, "UserControl_Initialize",
           "V" + std::to_string(ZEPHYR_VERSION_MAJOR) + "." + std::to_string(ZEPHYR_VERSION_MINOR) +
               "." + std::to_string(ZEPHYR_VERSION_PATCH));
  setObjectName(QStringLiteral("PopupControlEdit"));
  state_->BuildControls();
}

PopupControlEdit::~PopupControlEdit() {
  // The views go before the models they show, which the state owns: an
  // editor still open would otherwise be committed into a model already gone.
  // What the children send on their way out is no user's doing.
  state_->closing = true;
  qDeleteAll(findChildren<QWidget*>(Qt::FindDirectChildrenOnly));
}

bool PopupControlEdit::DataChanged() const {
  return state_->session.DataChanged();
}
bool PopupControlEdit::Modified() const {
  return state_->session.IsModified();
}
bool PopupControlEdit::DataMode() const {
  return state_->DataMode;
}
void PopupControlEdit::DataMode(bool value) {
  state_->DataMode = value;
}
std::string PopupControlEdit::PopupTitle() const {
  return state_->session.Popup()->Title();
}
const std::string& PopupControlEdit::SourcePath() const {
  return state_->session.SourcePath();
}
void PopupControlEdit::SourcePath(std::string value) {
  state_->session.SetSource(std::move(value), state_->session.SourceFile());
}
const std::string& PopupControlEdit::SourceFile() const {
  return state_->session.SourceFile();
}
void PopupControlEdit::SourceFile(std::string value) {
  state_->session.SetSource(state_->session.SourcePath(), std::move(value));
}

void PopupControlEdit::LoadDesignMode() {
  state_->LoadDesignMode();
}
void PopupControlEdit::LoadDataMode() {
  state_->LoadDataMode();
}
void PopupControlEdit::OpenPopup(const std::string& path, const std::string& file) {
  state_->OpenPopup(path, file);
}
bool PopupControlEdit::ShowView(bool DataView) {
  int tab = DataView ? kDataTab : kDesignTab;
  state_->tbsZephyrPopup->SelectTab(tab);
  return state_->tbsZephyrPopup->currentIndex() == tab;
}
void PopupControlEdit::Sort_Tree() {
  state_->SortTree();
}
bool PopupControlEdit::SaveChanges(bool SaveAs) {
  return state_->SaveChanges(SaveAs);
}
void PopupControlEdit::SaveDesign() {
  state_->SaveDesign();
}
void PopupControlEdit::ChangeFields() {
  state_->design->ChangeFields();
}
void PopupControlEdit::LevelChangeKeyFormat(const std::shared_ptr<PopupItems>& Popupitems) {
  state_->design->LevelChangeKeyFormat(Popupitems);
}
bool PopupControlEdit::SaveData() {
  return state_->SaveData();
}
bool PopupControlEdit::Validate() {
  return state_->design->Validate();
}

uint PopupControlEdit::EditBackColor() const {
  return state_->EditBackColor;
}
void PopupControlEdit::EditBackColor(uint color) {
  state_->EditBackColor = color;
}

void PopupControlEdit::AddChild() {
  state_->AddChild();
  state_->EnableDisable();
}

void PopupControlEdit::AddSibling() {
  state_->AddSibling();
  state_->EnableDisable();
}

QUndoStack* PopupControlEdit::UndoStack() const {
  return &state_->session.History();
}

void PopupControlEdit::undo() {
  // An edit that cannot be undone ends the history: what it would restore is
  // no longer known.
  if (!state_->Guarded([this]() { state_->StepHistory(true); })) state_->session.ClearHistory();
}

void PopupControlEdit::redo() {
  if (!state_->Guarded([this]() { state_->StepHistory(false); })) state_->session.ClearHistory();
}

void PopupControlEdit::ReportError(const std::exception& error) {
  state_->ReportError(error);
}

void PopupControlEdit::CopyCurrentItem() {
  if (state_->DataMode) state_->Guarded([this]() { state_->CopyToClipboard(); });
}

void PopupControlEdit::CutCurrentItem() {
  if (state_->DataMode) state_->Guarded([this]() { state_->CopyToClipboard(true); });
}

void PopupControlEdit::PasteItem() {
  if (state_->DataMode) state_->Guarded([this]() { state_->Paste(); });
}

void PopupControlEdit::DeleteCurrentItem() {
  // As the Delete button: the title row has none.
  if (state_->DataMode && state_->cmdDelete->isEnabled()) {
    state_->Guarded([this]() { state_->DeleteDataItem(); });
  }
}

void PopupControlEdit::MoveItemUp() {
  if (state_->DataMode) state_->Guarded([this]() { state_->MoveItem(-1); });
}

void PopupControlEdit::MoveItemDown() {
  if (state_->DataMode) state_->Guarded([this]() { state_->MoveItem(1); });
}

void PopupControlEdit::IndentItem() {
  if (state_->DataMode) state_->Guarded([this]() { state_->Indent(); });
}

void PopupControlEdit::OutdentItem() {
  if (state_->DataMode) state_->Guarded([this]() { state_->Outdent(); });
}

void PopupControlEdit::ImportWorkbook() {
  state_->Guarded([this]() { state_->ImportFromExcel(); });
}

std::string PopupControlEdit::ExportWorkbook() {
  std::string written;
  state_->Guarded([&]() { written = state_->ExportToExcel(); });
  return written;
}

void PopupControlEdit::FocusFind() {
  if (!state_->DataMode) return;
  state_->txtFind->setFocus();
  state_->txtFind->selectAll();
}

void PopupControlEdit::ReadProperties(const PropertyBag& bag) {
  Variant stored = bag.ReadProperty(kEditBackColorProperty,
                                    Variant(static_cast<int32_t>(kDefaultEditBackColor)));
  state_->EditBackColor = static_cast<uint32_t>(stored.ToInt32());
}

void PopupControlEdit::WriteProperties(PropertyBag& bag) const {
  bag.WriteProperty(kEditBackColorProperty, Variant(static_cast<int32_t>(state_->EditBackColor)),
                    Variant(static_cast<int32_t>(kDefaultEditBackColor)));
}

std::shared_ptr<PopupClass> PopupControlEdit::Popup() const {
  return state_->session.Popup();
}

void PopupControlEdit::SetMessageBox(std::shared_ptr<MessageBox> message_box) {
  auto services = state_->session.services();
  services.messages =
      message_box ? std::move(message_box) : std::make_shared<platform::QtMessageBox>(this);
  state_->session.SetServices(std::move(services));
}

void PopupControlEdit::SetFileDialog(std::shared_ptr<FileDialog> file_dialog) {
  auto services = state_->session.services();
  services.file_dialog =
      file_dialog ? std::move(file_dialog) : std::make_shared<platform::QtFileDialog>(this);
  state_->session.SetServices(std::move(services));
}

void PopupControlEdit::SetProgress(std::shared_ptr<Progress> progress) {
  auto services = state_->session.services();
  services.progress =
      progress ? std::move(progress) : std::make_shared<platform::FormProgress>(this);
  state_->session.SetServices(std::move(services));
}

void PopupControlEdit::SetClipboard(std::shared_ptr<Clipboard> clipboard) {
  auto services = state_->session.services();
  services.clipboard = clipboard ? std::move(clipboard) : std::make_shared<platform::QtClipboard>();
  state_->session.SetServices(std::move(services));
}

void PopupControlEdit::SetNewKeyPrompt(std::shared_ptr<NewKeyPrompt> prompt) {
  auto services = state_->session.services();
  services.new_key_prompt = prompt ? std::move(prompt) : state_->DefaultNewKeyPrompt();
  state_->session.SetServices(std::move(services));
}

void PopupControlEdit::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  if (!state_->Loading) state_->Guarded([this]() { state_->ResizeControls(); });
}

}  // namespace zephyr::editor
