#include "design_commands.h"

#include <algorithm>
#include <utility>

#include "editor_state.h"

namespace zephyr::editor {

bool ShownDesign::operator==(const ShownDesign& other) const {
  auto same_level = [](const Level& a, const Level& b) {
    return a.initial_index == b.initial_index && a.question.ToText() == b.question.ToText();
  };
  auto same_field = [](const Field& a, const Field& b) {
    return a.initial_index == b.initial_index && a.name == b.name && a.length == b.length &&
           a.length_text == b.length_text && a.start_char_pos == b.start_char_pos;
  };
  return title == other.title && levels_changed == other.levels_changed &&
         fields_changed == other.fields_changed &&
         std::equal(levels.begin(), levels.end(), other.levels.begin(), other.levels.end(),
                    same_level) &&
         std::equal(fields.begin(), fields.end(), other.fields.begin(), other.fields.end(),
                    same_field);
}

DraftCommand::DraftCommand(DesignView& view, EditorSession& session, const QString& text,
                           ShownDesign before, ShownDesign after, bool title_typing)
    : EditorCommand(text),
      view_(view),
      session_(session),
      before_(std::move(before)),
      after_(std::move(after)),
      title_typing_(title_typing) {}

bool DraftCommand::mergeWith(const QUndoCommand* other) {
  // Only title typing merges (id 1), and only into title typing.
  after_ = static_cast<const DraftCommand*>(other)->after_;
  return true;
}

void DraftCommand::undo() {
  view_.ShowDraft(before_);
  session_.SetDataChanged(true);
}

void DraftCommand::redo() {
  if (std::exchange(done_, false)) return;
  view_.ShowDraft(after_);
  session_.SetDataChanged(true);
}

ApplyDesignCommand::ApplyDesignCommand(EditorState& state, ShownDesign draft, DesignState before,
                                       DesignState after, BranchLayout outline,
                                       std::vector<int32_t> expanded)
    : EditorCommand(QStringLiteral("Apply Design")),
      state_(state),
      draft_(std::move(draft)),
      before_(std::move(before)),
      after_(std::move(after)),
      outline_(std::move(outline)),
      expanded_(std::move(expanded)) {}

void ApplyDesignCommand::undo() {
  before_.Restore(*state_.session.Popup());
  state_.data->ShowOutline(outline_, expanded_);
  state_.design->LoadTemplateData();
  state_.design->ShowDraft(draft_);
  state_.session.SetDataChanged(true);
}

void ApplyDesignCommand::redo() {
  if (std::exchange(done_, false)) return;
  after_.Restore(*state_.session.Popup());
  state_.data->SetOutlineStale();
  state_.design->LoadTemplateData();
  state_.session.SetDataChanged(true);
}

ImportCommand::ImportCommand(EditorState& state, std::shared_ptr<PopupClass> before,
                             std::shared_ptr<PopupClass> after, BranchLayout outline,
                             std::vector<int32_t> expanded)
    : EditorCommand(QStringLiteral("Import")),
      state_(state),
      before_(std::move(before)),
      after_(std::move(after)),
      outline_(std::move(outline)),
      expanded_(std::move(expanded)) {}

void ImportCommand::undo() {
  state_.session.SetPopup(before_);
  state_.PopupReplaced();
  state_.data->ShowOutline(outline_, expanded_);
  state_.session.SetDataChanged(true);
}

void ImportCommand::redo() {
  if (std::exchange(done_, false)) return;
  state_.session.SetPopup(after_);
  state_.PopupReplaced();
  state_.session.SetDataChanged(true);
}

void ApplyDesignCommand::Journal(PopupClass& popup, EditRecord& record, bool) const {
  record.Whole(popup);
}

void ImportCommand::Journal(PopupClass& popup, EditRecord& record, bool) const {
  record.Whole(popup);
}

}  // namespace zephyr::editor
