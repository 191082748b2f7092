#include "editor_session.h"

#include <QUndoStack>
#include <stdexcept>
#include <utility>

#include "editor_command.h"

namespace zephyr::editor {

EditorSession::EditorSession(QObject* owner, Services services, Observer observer)
    : popup_(std::make_shared<PopupClass>()),
      services_(std::move(services)),
      observer_(std::move(observer)),
      history_(new QUndoStack(owner)) {
  QObject::connect(history_, &QUndoStack::cleanChanged, history_, [this]() { ReportModified(); });
  QObject::connect(history_, &QUndoStack::indexChanged, history_,
                   [this](int index) { JournalHistory(index); });
  SetServices(services_);
}

EditorSession::~EditorSession() {
  // The history goes with the session and tells no one: whoever listens is
  // being destroyed too.
  QObject::disconnect(history_, nullptr, nullptr, nullptr);
  delete history_;
}

void EditorSession::SetPopup(std::shared_ptr<PopupClass> popup) {
  popup_ = std::move(popup);
  popup_->SetMessageBox(services_.messages);
  popup_->SetProgress(services_.progress);
  copied_identity_ = 0;
}

void EditorSession::SetSource(std::string path, std::string file) {
  source_path_ = std::move(path);
  source_file_ = std::move(file);
}

void EditorSession::SetServices(Services services) {
  services_ = std::move(services);
  popup_->SetMessageBox(services_.messages);
  popup_->SetProgress(services_.progress);
}

MessageAnswer EditorSession::Tell(const std::string& prompt, MessageButtons buttons,
                                  const std::string& title, MessageIcon icon, int default_button) {
  Message message;
  message.prompt = prompt;
  message.buttons = buttons;
  message.title = title;
  message.icon = icon;
  message.default_button = default_button;
  return services_.messages->Show(message);
}

void EditorSession::SetDataChanged(bool changed) {
  if (data_changed_ == changed) return;
  data_changed_ = changed;
  if (observer_.data_changed) observer_.data_changed(changed);
}

bool EditorSession::IsModified() const {
  return modified_ || !history_->isClean();
}

void EditorSession::MarkModified() {
  modified_ = true;
  ReportModified();
}

void EditorSession::MarkSaved() {
  history_->setClean();
  modified_ = false;
  journal_.Discard();  // the files hold it all now
  ReportModified();
}

void EditorSession::StartHistory() {
  journal_.Discard();
  journaled_index_ = 0;
  history_->clear();
  modified_ = false;
  ReportModified();
}

void EditorSession::Record(QUndoCommand* command) {
  history_->push(command);
}

void EditorSession::KeepJournal(bool keep) {
  keep_journal_ = keep;
  if (!keep) journal_.Discard();
}

void EditorSession::AdoptJournal(const UnsavedEdits& edits) {
  journal_.Adopt(edits);
  journaled_index_ = history_->index();
}

void EditorSession::RequireWritable() const {
  if (read_only_) throw std::runtime_error(ReadOnlyMessage());
}

std::string EditorSession::ReadOnlyMessage() const {
  return source_file_ +
         " is open read-only: another editor has it open. Use Save As to keep a copy of it.";
}

void EditorSession::JournalHistory(int index) {
  if (history_->count() == 0) {  // cleared: the commands are gone
    journaled_index_ = 0;
    return;
  }
  if (!keep_journal_) {
    journaled_index_ = index;
    return;
  }
  EditRecord record;
  auto journal = [&](int at, bool forward) {
    if (auto* command = dynamic_cast<const EditorCommand*>(history_->command(at))) {
      command->Journal(*popup_, record, forward);
    }
  };
  for (int at = journaled_index_ - 1; at >= index; --at) journal(at, false);
  for (int at = journaled_index_; at < index; ++at) journal(at, true);
  journaled_index_ = index;
  try {
    if (!IsModified()) {
      journal_.Discard();  // back where the files are
    } else if (!record.Empty()) {
      journal_.Write(record, *popup_, source_path_, source_file_);
    }
  } catch (const std::exception& error) {
    // Told once: the edits go on, only a crash would lose them.
    if (!std::exchange(journal_failed_, true)) {
      Tell(std::string(error.what()) + "\n\nA crash now would lose your unsaved edits.",
           MessageButtons::kOk, {}, MessageIcon::kExclamation);
    }
  }
}

void EditorSession::ClearHistory() {
  // What the history held is unsaved unless the history stood at the save.
  if (!history_->isClean()) modified_ = true;
  history_->clear();
  ReportModified();
}

void EditorSession::SetCopied(int32_t identity, bool cut) {
  copied_identity_ = identity;
  copied_was_cut_ = cut;
}

void EditorSession::ReportModified() {
  bool now = IsModified();
  if (now == reported_modified_) return;
  reported_modified_ = now;
  if (observer_.modified) observer_.modified(now);
}

}  // namespace zephyr::editor
