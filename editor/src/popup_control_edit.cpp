// The editor shell: construction, the public interface, opening a popup,
// switching views and stepping through the history.
#include "zephyr/editor/popup_control_edit.h"

#include <QAction>
#include <QComboBox>
#include <QFileInfo>
#include <QFileSystemWatcher>
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

#include "edit_journal.h"
#include "editor_state.h"
#include "named_widget.h"
#include "tab_strip.h"
#include "zephyr/editor/new_key_dialog.h"
#include "zephyr/platform/form_progress.h"
#include "zephyr/platform/qt_clipboard.h"
#include "zephyr/platform/qt_file_dialog.h"
#include "zephyr/platform/qt_message_box.h"
#include "zephyr/support/debug_log.h"
#include "zephyr/support/file_utils.h"

namespace zephyr::editor {

namespace {}  // namespace

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
  data = new DataView(*this, session);
  watcher = new QFileSystemWatcher(this);
  watch_settle = new QTimer(this);
  watch_settle->setSingleShot(true);
  watch_settle->setInterval(300);
  On(watcher, &QFileSystemWatcher::fileChanged, [this]() { watch_settle->start(); });
  On(watch_settle, &QTimer::timeout, [this]() { FilesChanged(); });
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

  outer->addWidget(data->Build(q), 1);

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
  // A check that fails with an error keeps the view, as a failed validation does.
  tbsZephyrPopup->SetBeforeClick([this](int target) {
    bool refused = true;
    Guarded([&]() { refused = TabBeforeClick(target); });
    return refused;
  });
  On(tbsZephyrPopup, &QTabBar::currentChanged, [this](int index) { TabClick(index); });
}

void EditorState::WatchFiles() {
  if (!watcher->files().isEmpty()) watcher->removePaths(watcher->files());
  const PopupClass& popup = *session.Popup();
  std::string folder = WithTrailingSlash(popup.PopupPath());
  for (const std::string& name : {popup.TemplateFileName(), popup.DataFileName()}) {
    QString path = QString::fromStdString(folder + name);
    if (!name.empty() && QFileInfo::exists(path)) watcher->addPath(path);
  }
}

void EditorState::ReportChangedOnDisk(bool changed) {
  if (reported_changed_on_disk == changed) return;
  reported_changed_on_disk = changed;
  emit q->changedOnDiskChanged(changed);
}

void EditorState::FilesChanged() {
  if (!session.Popup()->ChangedOnDisk()) {
    WatchFiles();  // this editor's own save, or a file only touched
    return;
  }
  WatchFiles();
  if (session.IsModified()) {
    ReportChangedOnDisk(true);
    return;
  }
  if (session.Tell(
          "Another user or program has saved \"" + session.Popup()->DataSource() + "\". Reload it?",
          MessageButtons::kYesNo, "Popup Changed on Disk",
          MessageIcon::kQuestion) == MessageAnswer::kYes) {
    OpenPopup(session.Popup()->PopupPath(), session.Popup()->DataSource());
  }
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

bool EditorState::OpenPopup(const std::string& path, const std::string& file,
                            const std::function<void(PopupClass&)>& prepare) {
  // A popup that fails to open leaves the editor as it was: the new popup is
  // read before it replaces the current one, and the names are kept.
  std::string source_path = path.empty() ? session.SourcePath() : path;
  std::string source_file = file.empty() ? session.SourceFile() : file;
  auto opened = std::make_shared<PopupClass>();
  opened->SetMessageBox(session.services().messages);
  opened->SetProgress(session.services().progress);
  opened->PopupPath(source_path);
  opened->DataSource(source_file);
  bool read_only = false;
  if (!source_file.empty()) {
    opened->OpenPopup();
    LockChoice choice =
        AskAboutLock(WithTrailingSlash(opened->PopupPath()) + opened->TemplateFileName());
    if (choice == LockChoice::kCancel) return false;
    read_only = choice == LockChoice::kReadOnly;
  }
  if (prepare) prepare(*opened);

  Opening = true;
  data->SetOutlineStale();
  struct OpeningDone {
    bool& flag;
    ~OpeningDone() { flag = false; }
  } done{Opening};
  session.SetSource(std::move(source_path), std::move(source_file));
  session.SetPopup(std::move(opened));
  session.StartHistory();  // the last popup's history, saved or not, goes with it
  session.SetReadOnly(read_only);
  HoldLock();
  WatchFiles();
  ReportChangedOnDisk(false);
  if (!session.SourceFile().empty()) {
    design->LoadTemplateData();
    LoadDesignMode();
    tbsZephyrPopup->SelectTab(kDataTab);
    LoadDataMode();
    data->LoadDataGrid();
  } else {
    design->LoadTemplateData();
    tbsZephyrPopup->SelectTab(kDesignTab);
    LoadDesignMode();
    design->FocusTitle();  // a new popup starts with its title
  }
  ShowReadOnly();
  return true;
}

EditorState::LockChoice EditorState::AskAboutLock(const std::string& template_path) {
  auto owner = LockFile::Read(template_path);
  if (!owner || owner->IsStale() || lock.IsFor(template_path)) {
    return LockChoice::kTake;
  }
  Message message;
  message.title = "Popup In Use";
  message.prompt = owner->Describe() +
                   ".\r\n\r\nOpen Read-Only shows the popup without letting it be changed; "
                   "Open Anyway lets you both edit it, and the later save asks before it "
                   "overwrites the other.";
  message.buttons = MessageButtons::kYesNoCancel;
  message.icon = MessageIcon::kExclamation;
  message.button_texts = {"Open Read-Only", "Open Anyway", "Cancel"};
  switch (session.services().messages->Show(message)) {
    case MessageAnswer::kYes:
      return LockChoice::kReadOnly;
    case MessageAnswer::kNo:
      return LockChoice::kTake;
    default:
      return LockChoice::kCancel;
  }
}

void EditorState::HoldLock() {
  const auto& popup = *session.Popup();
  if (session.ReadOnly() || popup.DataSource().empty()) {
    lock.Release();
    return;
  }
  std::string template_path = WithTrailingSlash(popup.PopupPath()) + popup.TemplateFileName();
  if (lock.IsFor(template_path)) return;
  try {
    lock = LockFile::Take(template_path);
  } catch (const std::exception&) {
    // A folder that takes no new file takes no save either; other editors
    // are simply not told.
    lock.Release();
  }
}

void EditorState::ShowReadOnly() {
  data->ShowReadOnly();
  design->ShowReadOnly();
  emit q->readOnlyChanged(session.ReadOnly());
}

void EditorState::LoadDesignMode() {
  emit q->BeforeDesignMode();
  Loading = true;
  DataMode = false;
  design->FillDesignGrids();
  // One view at a time: both shown at once would make the window as tall as both.
  data->Frame()->setVisible(false);
  design->Frame()->setVisible(true);
  Loading = false;
  ResizeControls();
  design->SizeFieldColumns();
}

void EditorState::LoadDataMode() {
  emit q->BeforeDataMode();
  Loading = true;
  design->Frame()->setVisible(false);
  data->Frame()->setVisible(true);
  data->FallBackStep();
  ResizeControls();
  data->MakeTitleCurrent();
  data->EnableDisable();
  Loading = false;
  ResizeControls();
  data->LoadDataGrid();
  // The outline takes the keys (F1..F9, Enter) from the start.
  data->FocusOutline();
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
  data->RebuildAddButtons();
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
bool PopupControlEdit::OpenPopup(const std::string& path, const std::string& file) {
  return state_->OpenPopup(path, file);
}

bool PopupControlEdit::ReadOnly() const {
  return state_->session.ReadOnly();
}

void PopupControlEdit::KeepUnsavedEdits(bool keep) {
  state_->session.KeepJournal(keep);
}

std::vector<UnsavedEdits> PopupControlEdit::FindUnsavedEdits() {
  return EditJournal::Orphaned();
}

void PopupControlEdit::DiscardUnsavedEdits(const UnsavedEdits& edits) {
  EditJournal::Remove(edits);
}

bool PopupControlEdit::RecoverUnsavedEdits(const UnsavedEdits& edits) {
  std::string recorded = EditJournal::EditsOf(edits);
  if (!state_->OpenPopup(edits.path, edits.file,
                         [&recorded](PopupClass& popup) { ReplayEdits(popup, recorded); })) {
    return false;
  }
  state_->session.MarkModified();
  state_->session.AdoptJournal(edits);
  return true;
}
bool PopupControlEdit::ShowView(bool DataView) {
  int tab = DataView ? kDataTab : kDesignTab;
  state_->tbsZephyrPopup->SelectTab(tab);
  return state_->tbsZephyrPopup->currentIndex() == tab;
}
void PopupControlEdit::Sort_Tree() {
  state_->data->SortTree();
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
  return state_->data->EditBackColor();
}
void PopupControlEdit::EditBackColor(uint color) {
  state_->data->SetEditBackColor(color);
}

void PopupControlEdit::AddChild() {
  state_->data->AddChild();
  state_->data->EnableDisable();
}

void PopupControlEdit::AddSibling() {
  state_->data->AddSibling();
  state_->data->EnableDisable();
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
  if (state_->DataMode) state_->Guarded([this]() { state_->data->CopyToClipboard(); });
}

void PopupControlEdit::CutCurrentItem() {
  if (state_->DataMode) state_->Guarded([this]() { state_->data->CopyToClipboard(true); });
}

void PopupControlEdit::PasteItem() {
  if (state_->DataMode) state_->Guarded([this]() { state_->data->Paste(); });
}

void PopupControlEdit::DeleteCurrentItem() {
  // As the Delete button: the title row has none.
  if (state_->DataMode && state_->data->DeleteEnabled()) {
    state_->Guarded([this]() { state_->data->DeleteDataItem(); });
  }
}

void PopupControlEdit::MoveItemUp() {
  if (state_->DataMode) state_->Guarded([this]() { state_->data->MoveItem(-1); });
}

void PopupControlEdit::MoveItemDown() {
  if (state_->DataMode) state_->Guarded([this]() { state_->data->MoveItem(1); });
}

void PopupControlEdit::IndentItem() {
  if (state_->DataMode) state_->Guarded([this]() { state_->data->Indent(); });
}

void PopupControlEdit::OutdentItem() {
  if (state_->DataMode) state_->Guarded([this]() { state_->data->Outdent(); });
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
  state_->data->FocusFind();
}

void PopupControlEdit::ReadProperties(const PropertyBag& bag) {
  Variant stored = bag.ReadProperty(kEditBackColorProperty,
                                    Variant(static_cast<int32_t>(kDefaultEditBackColor)));
  state_->data->SetEditBackColor(static_cast<uint32_t>(stored.ToInt32()));
}

void PopupControlEdit::WriteProperties(PropertyBag& bag) const {
  bag.WriteProperty(kEditBackColorProperty,
                    Variant(static_cast<int32_t>(state_->data->EditBackColor())),
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

bool PopupControlEdit::ChangedOnDisk() const {
  return state_->session.Popup()->ChangedOnDisk();
}

void PopupControlEdit::UseRunningSpreadsheet(bool use) {
  state_->use_running_spreadsheet = use;
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
