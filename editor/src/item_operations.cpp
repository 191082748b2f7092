// Adding items to the tree: choosing a new item's code from the key step and
// its siblings' codes, building its key from its parent's, and its grid row.
#include <QComboBox>
#include <QTreeView>

#include "editor_state.h"
#include "zephyr/support/debug_log.h"
#include "zephyr/support/text.h"

namespace zephyr::editor {

namespace {

constexpr const char* kUndefinedValue = "<.Undefined.>";
constexpr int kNoCode = 100;

int CodeOf(const PopupItem& item) {
  const std::string& key = item.PopupKey();
  double code = 0;
  ParseNumber(key.size() >= 2 ? key.substr(key.size() - 2) : key, &code);
  return static_cast<int>(code);
}

std::string LastTwo(const std::string& text) {
  return text.size() >= 2 ? text.substr(text.size() - 2) : text;
}

}  // namespace

int16_t EditorState::KeyStep() const {
  double step = 0;
  ParseNumber(ToUtf8(cboStep->currentText()), &step);
  return ToInt16Checked(step);
}

int16_t EditorState::GetNewKey(const PopupItems& siblings, int16_t step,
                               const std::string& after_code) {
  DebugLog(kEditModule, "GetNewKey", "Start");
  int low = 0;
  int high = kNoCode;
  if (after_code.empty()) {
    for (const auto& sibling : siblings) low = std::max(low, CodeOf(*sibling));
  } else {
    double after = 0;
    ParseNumber(after_code, &after);
    low = static_cast<int>(after);
    for (const auto& sibling : siblings) {
      int code = CodeOf(*sibling);
      if (code > low && code < high) high = code;
    }
  }
  if (high - low > step) return static_cast<int16_t>(low + step);
  return AskNewKey(siblings);
}

int16_t EditorState::AskNewKey(const PopupItems& siblings) {
  int16_t result = 0;
  // Once a used code has been typed, every later answer counts as used too,
  // until the user cancels: the flag is set only here.
  bool unique = true;
  while (true) {
    std::string answer = new_key_prompt->AskNewKey();
    double number = 0;
    if (ParseNumber(answer, &number) && number == -1) return -1;
    for (const auto& sibling : siblings) {
      if (LastTwo(sibling->PopupKey()) == answer) unique = false;
    }
    if (unique) {
      result = TextToInt16(answer);
      return result;
    }
  }
}

std::shared_ptr<PopupItem> EditorState::AddpopupDataItem(
    const std::shared_ptr<PopupItems>& siblings, int16_t step, const std::string& parent_key,
    const std::string& after_code) {
  DebugLog(kEditModule, "AddpopupDataItem", "Start");
  std::string key(2 * static_cast<size_t>(popup->Levels()), ' ');
  std::string path = RemoveBlanks(parent_key);
  key.replace(0, std::min(path.size(), key.size()), path.substr(0, key.size()));
  std::string code = std::to_string(GetNewKey(*siblings, step, after_code));
  if (code == kCancelledNewKey) return nullptr;
  if (code.size() < 2) code = "0" + code;
  if (code.size() > 2) code = code.substr(0, 2);
  if (key.size() >= 2) key.replace(key.size() - 2, 2, code);
  std::vector<std::string> values{kUndefinedValue};
  for (int32_t i = 3; i <= popup->PopupFields()->Count(); ++i) values.emplace_back();
  return popup->AddItem(AddLevel == 1 ? nullptr : AddParent, key, values);
}

void EditorState::AddGridRow(const QModelIndex& parent_row,
                             const std::shared_ptr<PopupItem>& item) {
  QModelIndex row = grid->AppendRow(parent_row, item->Identity());
  // Only the new row's siblings can be out of order.
  grid->SortChildren(row.parent());
  DataGrid->expand(row.parent());
  SelectItemRow(item);
  DataGrid->setFocus();
}

void EditorState::AddChild() {
  DebugLog(kEditModule, "AddChild", "Start");
  AddParent = nullptr;
  bool title = CurrentIsTitle();
  auto current = CurrentItem();
  std::shared_ptr<PopupItem> added;
  QModelIndex parent_row;
  if (!title && current) {
    AddParent = current;
    AddLevel = static_cast<int16_t>(current->Level() + 1);
    added = AddpopupDataItem(current->Children(), KeyStep(), current->PopupKey(), "");
    parent_row = grid->IndexOfIdentity(current->Identity());
  } else if (title) {
    AddLevel = 1;
    added = AddpopupDataItem(popup->PopupItems(), KeyStep(), "", "");
    parent_row = grid->TitleIndex();
  } else {
    return;  // no current row
  }
  if (!added) {
    SetDataChanged(true);  // only a cancelled add marks the popup changed
    return;
  }
  AddGridRow(parent_row, added);
  EnableDisable();
}

void EditorState::AddSibling() {
  DebugLog(kEditModule, "AddSibling", "Start");
  AddParent = nullptr;
  auto current = CurrentItem();
  if (!current) return;
  AddLevel = current->Level();
  std::shared_ptr<PopupItem> added;
  if (current->Level() != 1) {
    AddParent = current->Parent();
    if (!AddParent) return;
    added = AddpopupDataItem(AddParent->Children(), KeyStep(), AddParent->PopupKey(),
                             LastTwo(current->PopupKey()));
  } else {
    // Top-level items are appended after the last one, not after this one.
    added = AddpopupDataItem(popup->PopupItems(), KeyStep(), "", "");
  }
  if (!added) {
    SetDataChanged(true);
    return;
  }
  QModelIndex parent_row =
      added->Level() == 1 ? grid->TitleIndex() : grid->IndexOfIdentity(AddParent->Identity());
  AddGridRow(parent_row, added);
}

}  // namespace zephyr::editor
