// The data view's item edits: adding items (a new item's code from the key
// step and its siblings' codes, its key from its parent's, its outline row),
// copying, pasting, moving, indenting and outdenting.
#include <QComboBox>
#include <QTreeView>

#include "editor_state.h"
#include "item_commands.h"
#include "zephyr/runtime/popup_key.h"
#include "zephyr/support/debug_log.h"
#include "zephyr/support/text.h"

namespace zephyr::editor {

namespace {

constexpr const char* kUndefinedValue = "<.Undefined.>";
constexpr int kNoCode = 100;

int CodeOf(const PopupItem& item) {
  const std::string& key = item.PopupKey();
  double code = 0;
  ParseNumber(OwnCode(key), &code);
  return static_cast<int>(code);
}

}  // namespace

int16_t DataView::KeyStep() const {
  return TextToInt16(ToUtf8(cboStep_->currentText()));
}

int16_t DataView::GetNewKey(const PopupItems& siblings, int16_t step,
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

int16_t DataView::AskNewKey(const PopupItems& siblings) {
  int16_t result = 0;
  // Once a used code has been typed, every later answer counts as used too,
  // until the user cancels: the flag is set only here.
  bool unique = true;
  while (true) {
    std::string answer = session_.services().new_key_prompt->AskNewKey();
    double number = 0;
    if (ParseNumber(answer, &number) && number == -1) return -1;
    for (const auto& sibling : siblings) {
      if (OwnCode(sibling->PopupKey()) == answer) unique = false;
    }
    if (unique) {
      result = TextToInt16(answer);
      return result;
    }
  }
}

std::shared_ptr<PopupItem> DataView::AddpopupDataItem(const std::shared_ptr<PopupItems>& siblings,
                                                      int16_t step, const std::string& parent_key,
                                                      const std::string& after_code) {
  DebugLog(kEditModule, "AddpopupDataItem", "Start");
  std::string key(2 * static_cast<size_t>(session_.Popup()->Levels()), ' ');
  std::string path = RemoveBlanks(parent_key);
  key.replace(0, std::min(path.size(), key.size()), path.substr(0, key.size()));
  std::string code = NewCode(*siblings, step, after_code);
  if (code.empty()) return nullptr;
  if (key.size() >= 2) key.replace(key.size() - 2, 2, code);
  std::vector<std::string> values{kUndefinedValue};
  for (int32_t i = 3; i <= session_.Popup()->PopupFields()->Count(); ++i) values.emplace_back();
  return session_.Popup()->AddItem(AddLevel_ == 1 ? nullptr : AddParent_, key, values);
}

void DataView::AddGridRow(const QModelIndex& parent_row, const std::shared_ptr<PopupItem>& item,
                          const QString& text) {
  int32_t current_before = IdentityOf(DataGrid_->currentIndex());
  bool parent_was_expanded = DataGrid_->isExpanded(parent_row);
  // Where Sort_Tree would put it: it then has only what edits unsorted to order.
  QModelIndex row = grid_->InsertRowInOrder(parent_row, item->Identity());
  DataGrid_->expand(row.parent());
  SortRecord sorted = SortTree();
  SelectItemRow(item);
  session_.Record(new AddBranchCommand(*this, text, item->Identity(), current_before,
                                       parent_was_expanded, std::move(sorted)));
}

void DataView::AddChild() {
  DebugLog(kEditModule, "AddChild", "Start");
  session_.RequireWritable();
  AddParent_ = nullptr;
  bool title = CurrentIsTitle();
  auto current = CurrentItem();
  std::shared_ptr<PopupItem> added;
  QModelIndex parent_row;
  if (!title && current) {
    AddParent_ = current;
    AddLevel_ = static_cast<int16_t>(current->Level() + 1);
    added = AddpopupDataItem(current->Children(), KeyStep(), current->PopupKey(), "");
    parent_row = grid_->IndexOfIdentity(current->Identity());
  } else if (title) {
    AddLevel_ = 1;
    added = AddpopupDataItem(session_.Popup()->PopupItems(), KeyStep(), "", "");
    parent_row = grid_->TitleIndex();
  } else {
    return;  // no current row
  }
  if (!added) {
    session_.SetDataChanged(true);  // only a cancelled add marks the popup changed
    return;
  }
  AddGridRow(parent_row, added, QStringLiteral("New Child"));
  DataGrid_->setFocus();
  EnableDisable();
}

std::shared_ptr<PopupItem> DataView::AddSiblingItem(const std::shared_ptr<PopupItem>& current) {
  AddParent_ = nullptr;
  AddLevel_ = current->Level();
  if (current->Level() == 1) {
    // Top-level items are appended after the last one, not after this one.
    return AddpopupDataItem(session_.Popup()->PopupItems(), KeyStep(), "", "");
  }
  AddParent_ = current->Parent();
  if (!AddParent_) return nullptr;
  return AddpopupDataItem(AddParent_->Children(), KeyStep(), AddParent_->PopupKey(),
                          OwnCode(current->PopupKey()));
}

QModelIndex DataView::ParentRowOf(const PopupItem& item) {
  if (item.Level() == 1) return grid_->TitleIndex();
  auto parent = item.Parent();
  return parent ? grid_->IndexOfIdentity(parent->Identity()) : QModelIndex();
}

void DataView::AddSibling() {
  DebugLog(kEditModule, "AddSibling", "Start");
  session_.RequireWritable();
  auto current = CurrentItem();
  if (!current) return;
  auto added = AddSiblingItem(current);
  if (!added) {
    session_.SetDataChanged(true);
    return;
  }
  AddGridRow(ParentRowOf(*added), added, QStringLiteral("New Sibling"));
  DataGrid_->setFocus();
}

void DataView::CopyPopupItem() {
  DebugLog(kEditModule, "CopyPopupItem", "Start");
  auto current = CurrentItem();
  if (!current) return;
  // A fresh sibling: the menu says copy, but nothing of the item is copied.
  auto added = AddSiblingItem(current);
  if (added)
    AddGridRow(ParentRowOf(*added), added, QStringLiteral("Copy '%1'").arg(NameOf(*current)));
}

void DataView::CopyPopupItemW_Children() {
  DebugLog(kEditModule, "CopyPopupItemW_Children", "Start");
  auto source = CurrentItem();
  if (!source) return;
  CopyBranchBeside(source, source, QStringLiteral("Copy '%1' with Children").arg(NameOf(*source)));
}

void DataView::CopyBranchBeside(const std::shared_ptr<PopupItem>& source,
                                const std::shared_ptr<PopupItem>& beside, const QString& text) {
  auto added = AddSiblingItem(beside);
  if (!added) return;
  std::string code = OwnCode(added->PopupKey());
  CloneNewItem(added, source);
  session_.Popup()->ModifyKey(code, added, added->Level());
  // A copy under another parent takes that parent's codes, level by level.
  if (auto parent = added->Parent(); parent && parent != source->Parent()) {
    std::string path = CompactPath(parent->PopupKey());
    for (int16_t level = 1; level < added->Level() && static_cast<size_t>(2 * level) <= path.size();
         ++level) {
      session_.Popup()->ModifyKey(path.substr(2 * static_cast<size_t>(level) - 2, 2), added, level);
    }
  }
  ShowAddedBranch(added, text);
}

void DataView::ShowAddedBranch(const std::shared_ptr<PopupItem>& added, const QString& text) {
  int32_t current_before = IdentityOf(DataGrid_->currentIndex());
  QModelIndex parent_row = ParentRowOf(*added);
  bool parent_was_expanded = DataGrid_->isExpanded(parent_row);
  QModelIndex row = grid_->AppendRow(parent_row, added->Identity());
  LogAdd2GridCopy(*added);
  grid_->AppendBranch(row, *added);
  SortRecord sorted = SortTree();
  QModelIndex copied = grid_->IndexOfIdentity(added->Identity());
  DataGrid_->expand(copied.parent());
  DataGrid_->expandRecursively(copied);
  SelectItemRow(added);
  session_.Record(new AddBranchCommand(*this, text, added->Identity(), current_before,
                                       parent_was_expanded, std::move(sorted)));
}

void DataView::CloneNewItem(const std::shared_ptr<PopupItem>& target,
                            const std::shared_ptr<PopupItem>& source) {
  DebugLog(kEditModule, "CloneNewItem", "Start");
  std::string pattern(2 * static_cast<size_t>(session_.Popup()->Levels()), ' ');
  CopyItemData(*target, *source);
  std::string path = RemoveBlanks(target->PopupKey());
  pattern.replace(0, std::min(path.size(), pattern.size()), path.substr(0, pattern.size()));
  if (!source->HasChildren()) return;
  // The provisional key takes the two characters before the last two of the
  // pattern: it only has to let the Add through; the re-key follows.
  std::string prefix = pattern.size() >= 3 ? pattern.substr(pattern.size() - 3, 2) : pattern;
  for (const auto& source_child : *source->Children()) {
    auto child = target->Children()->Add(prefix + OwnCode(source_child->PopupKey()));
    child->Parent(target);
    CloneNewItem(child, source_child);
  }
}

void DataView::LogAdd2GridCopy(PopupItem& item) {
  // Add2GridCopy calls itself for each copied item that has children.
  DebugLog(kEditModule, "Add2GridCopy", "Start");
  if (!item.HasChildren()) return;
  for (const auto& child : *item.Children()) {
    if (child->HasChildren()) LogAdd2GridCopy(*child);
  }
}

void DataView::Paste() {
  DebugLog(kEditModule, "mnuPaste_Click", "Start");
  session_.RequireWritable();
  // Paste obeys the rule that enables its menu item, whichever way it is
  // asked, and puts a copy of the item with its branch after the current
  // one, coded from the key step as a copy with children is.
  auto source = PasteSource();
  auto current = CurrentItem();
  if (!source || !current) return;
  if (!session_.CopiedWasCut()) {
    CopyBranchBeside(source, current, QStringLiteral("Paste '%1'").arg(NameOf(*source)));
    return;
  }
  // A cut item moves, once, with its identity, after the current item.
  session_.SetCopied(0, false);
  if (source == current) {
    EnableDisable();
    return;
  }
  auto parent = current->Level() == 1 ? nullptr : current->Parent();
  std::string code =
      NewCode(*session_.Popup()->SiblingsOf(*current), KeyStep(), OwnCode(current->PopupKey()));
  if (code.empty()) return;
  session_.Record(new ReparentCommand(*this, QStringLiteral("Move '%1'").arg(NameOf(*source)),
                                      source->Identity(), parent ? parent->Identity() : 0, code));
}

QModelIndex DataView::MoveNeighbour(int step) const {
  QModelIndex current = DataGrid_->currentIndex();
  if (!current.isValid() || !current.parent().isValid()) return {};  // the title row
  return current.siblingAtColumn(0).siblingAtRow(current.row() + step);
}

void DataView::MoveItem(int step) {
  session_.RequireWritable();
  QModelIndex neighbour = MoveNeighbour(step);
  if (!neighbour.isValid()) return;
  int32_t moved = IdentityOf(DataGrid_->currentIndex());
  QString name = NameOf(*FindItemByIdentity(moved));
  session_.Record(new MoveCommand(
      *this,
      (step < 0 ? QStringLiteral("Move '%1' Up") : QStringLiteral("Move '%1' Down")).arg(name),
      moved, IdentityOf(neighbour)));
}

std::string DataView::NewCode(const PopupItems& siblings, int16_t step,
                              const std::string& after_code) {
  int16_t code = GetNewKey(siblings, step, after_code);
  if (code == -1) return {};
  std::string text = std::to_string(code);
  if (text.size() < 2) text = "0" + text;
  return text.substr(0, 2);
}

bool DataView::TooDeep(const std::shared_ptr<PopupItem>& item, int level, const char* what) {
  int deepest = 0;
  for (const auto& entry : session_.Popup()->KeysOf(item).entries) {
    deepest = std::max<int>(deepest, entry.level);
  }
  if (deepest - item->Level() + level <= session_.Popup()->Levels()) return false;
  session_.Tell(std::string("The item cannot be ") + what +
                ": its branch would go below the popup's " +
                std::to_string(session_.Popup()->Levels()) + " levels.");
  return true;
}

namespace {

// True when `candidate` is `top` or stands in its branch.
bool InBranchOf(std::shared_ptr<PopupItem> candidate, const std::shared_ptr<PopupItem>& top) {
  for (; candidate; candidate = candidate->Level() > 1 ? candidate->Parent() : nullptr) {
    if (candidate == top) return true;
  }
  return false;
}

}  // namespace

void DataView::DropItem(const QModelIndex& target, OutlineView::DropPlace place, bool copy) {
  session_.RequireWritable();
  auto item = FindItemByIdentity(IdentityOf(DataGrid_->currentIndex()));
  if (!item || !target.isValid()) return;
  auto target_item = grid_->ItemAt(target);  // null for the title row
  std::shared_ptr<PopupItem> parent;
  std::string after_code;
  if (place == OutlineView::DropPlace::kOn) {
    parent = target_item;  // as its last child
  } else {
    if (!target_item) return;  // nothing stands beside the title row
    parent = target_item->Level() == 1 ? nullptr : target_item->Parent();
    if (place == OutlineView::DropPlace::kBelow) {
      after_code = OwnCode(target_item->PopupKey());
    } else {
      // Between the row above (or the start of the list) and the target.
      auto above = grid_->ItemAt(target.siblingAtRow(target.row() - 1));
      after_code = above ? OwnCode(above->PopupKey()) : "00";
    }
  }
  if (!copy && InBranchOf(parent, item)) return;  // not into its own branch
  int level = parent ? parent->Level() + 1 : 1;
  if (TooDeep(item, level, copy ? "copied there" : "moved there")) return;
  auto siblings = parent ? parent->Children() : session_.Popup()->PopupItems();
  std::string code = NewCode(*siblings, KeyStep(), after_code);
  if (code.empty()) return;
  if (copy) {
    auto added = PopupItem::Create();
    CloneNewItem(added, item);
    session_.Popup()->AppendBranch(added, parent, code);
    ShowAddedBranch(added, QStringLiteral("Copy '%1' with Children").arg(NameOf(*item)));
  } else {
    session_.Record(new ReparentCommand(*this, QStringLiteral("Move '%1'").arg(NameOf(*item)),
                                        item->Identity(), parent ? parent->Identity() : 0, code));
  }
}

void DataView::Indent() {
  session_.RequireWritable();
  QModelIndex previous = MoveNeighbour(-1);
  auto item = FindItemByIdentity(IdentityOf(DataGrid_->currentIndex()));
  if (!previous.isValid() || !item) return;
  if (TooDeep(item, item->Level() + 1, "indented")) return;
  auto parent = FindItemByIdentity(IdentityOf(previous));
  std::string code = NewCode(*parent->Children(), KeyStep(), "");
  if (code.empty()) return;
  session_.Record(new ReparentCommand(*this, QStringLiteral("Indent '%1'").arg(NameOf(*item)),
                                      item->Identity(), parent->Identity(), code));
}

void DataView::Outdent() {
  session_.RequireWritable();
  auto item = FindItemByIdentity(IdentityOf(DataGrid_->currentIndex()));
  if (!item || item->Level() < 2) return;
  auto parent = item->Parent();
  if (!parent) return;
  std::string code =
      NewCode(*session_.Popup()->SiblingsOf(*parent), KeyStep(), OwnCode(parent->PopupKey()));
  if (code.empty()) return;
  auto grandparent = parent->Level() == 1 ? nullptr : parent->Parent();
  session_.Record(new ReparentCommand(*this, QStringLiteral("Outdent '%1'").arg(NameOf(*item)),
                                      item->Identity(), grandparent ? grandparent->Identity() : 0,
                                      code));
}

void DataView::CopyToClipboard(bool cut) {
  if (cut) session_.RequireWritable();
  if (auto item = CurrentItem(); item && !CurrentIsTitle()) {
    session_.services().clipboard->SetText(std::to_string(item->Identity()));
    session_.SetCopied(item->Identity(), cut);
    EnableDisable();
  }
}

}  // namespace zephyr::editor
