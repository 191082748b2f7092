// PopupClass: one popup in memory — its title, question levels, field
// definitions, item tree and a copy of its data table — and the operations
// that read and write its files.
//
// Properties follow one idiom throughout the object model: `Title()` reads,
// `Title(value)` writes. Object-valued properties hand out shared pointers;
// collections are created on first read.
#ifndef ZEPHYR_RUNTIME_POPUP_CLASS_H_
#define ZEPHYR_RUNTIME_POPUP_CLASS_H_

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "zephyr/runtime/popup_fields.h"
#include "zephyr/runtime/popup_item.h"
#include "zephyr/runtime/popup_items.h"
#include "zephyr/runtime/popup_levels.h"
#include "zephyr/runtime/popup_values.h"
#include "zephyr/support/file_stamp.h"
#include "zephyr/support/message_box.h"
#include "zephyr/support/progress.h"
#include "zephyr/support/variant.h"

namespace zephyr {

class dBase;

class PopupClass : public Object {
 public:
  PopupClass();
  ~PopupClass() override;
  PopupClass(const PopupClass&) = delete;
  PopupClass& operator=(const PopupClass&) = delete;

  // One cell of the table values (column 1 = key). Raises type mismatch (13)
  // when no table was read and subscript out of range (9) outside the bounds.
  Variant Values(int32_t Col, int32_t Row) const;
  // The upper bound of the table values' rows; 0 when no table was read.
  int32_t RowCount() const;

  std::shared_ptr<zephyr::PopupValues> PopupValues();
  void PopupValues(std::shared_ptr<zephyr::PopupValues> values) { values_ = std::move(values); }
  std::shared_ptr<zephyr::PopupLevels> PopupLevels();
  void PopupLevels(std::shared_ptr<zephyr::PopupLevels> levels) { levels_ = std::move(levels); }
  std::shared_ptr<zephyr::PopupFields> PopupFields();
  void PopupFields(std::shared_ptr<zephyr::PopupFields> fields) { fields_ = std::move(fields); }
  std::shared_ptr<zephyr::PopupItems> PopupItems();
  void PopupItems(std::shared_ptr<zephyr::PopupItems> items) { items_ = std::move(items); }

  int16_t Levels() const { return levels_count_; }
  void Levels(int16_t count) { levels_count_ = count; }
  // The title; a written value is trimmed of blanks.
  const std::string& Title() const { return title_; }
  void Title(std::string_view title);
  // The folder holding the popup's files, stored as given.
  const std::string& PopupPath() const { return popup_path_; }
  void PopupPath(std::string path) { popup_path_ = std::move(path); }
  // The popup's base name (no folder, no extension). Writing it names the
  // data file NAME.ZPD and the template NAME.ZPT.
  const std::string& DataSource() const { return data_source_; }
  void DataSource(std::string name);

  // Reads the template and, when the data file exists, the whole table into
  // Values (sorted by key) and the item tree (replacing PopupItems). Source,
  // when not empty, names a data file in the same folder to read instead.
  // A file whose name differs only in letter case is used (and later saved)
  // under its own name. A missing data file is no error: the items stay.
  // Failures propagate: a duplicate key (457), a level beyond the template's
  // (9), a key with a blank own code (28), and the table's errors.
  void OpenPopup(std::string_view Source = {});
  // Closes the data table if one is held (normally none is).
  void ClosePopup();

  // Saving: WriteTemplate, SavePopup, one WritePopupRecord per item in the
  // order records are wanted, then SaveClose. The popup's files are replaced
  // only by SaveClose, once both work files are complete and on disk.
  //
  // Creates the work table ("NAME.bpd") and keeps it open. A failure is told
  // through the message box ("Problem saving Popup File:") and not raised.
  void SavePopup();
  // Appends the item's record to the work table (nothing when it is not
  // open) and records its key as the one last written.
  void WritePopupRecord(const std::shared_ptr<PopupItem>& Item);
  // Closes the work table, flushes both work files and renames each over the
  // file it replaces. Raises, leaving the old files untouched, when a work file
  // is missing or cannot be flushed.
  void SaveClose();

  // Where long work reports progress and how messages reach the user;
  // by default nothing is shown and messages go to standard error.
  void SetProgress(std::shared_ptr<Progress> progress);
  void SetMessageBox(std::shared_ptr<MessageBox> message_box);

  // Reads the template (title, levels, fields) from folder + template file name.
  void LoadTemplate();
  // Writes the title, levels and fields to the template's work file (".bpt").
  void WriteTemplate();
  // Kept for interface compatibility; they do nothing.
  void WriteINF() {}
  void MakeIndex() {}

  // Selects the item whose identity is the number in Key, without keeping it
  // alive; an unknown or stale identity selects nothing. Text that is no
  // number raises type mismatch (13).
  void SetSelectedItem(std::string_view Key);
  // The selected item, or null.
  std::shared_ptr<PopupItem> SelectedItem() const;
  // Selects an item and keeps it alive.
  void SelectedItem(std::shared_ptr<PopupItem> item);

  // Overwrites the two-digit code of level StartLevel in the item's key (its
  // own code when StartLevel is its level) and in the keys of all its
  // descendants. A code longer than two characters is cut; the key never
  // changes length. Collection keys stay as they were added.
  void ModifyKey(std::string_view NewKey, const std::shared_ptr<PopupItem>& Item,
                 int16_t StartLevel);
  // Removes every item of level LeveltoDelete (and so everything below it)
  // from the tree under `items`. Level 1 removes nothing.
  void DeleteLevel(int16_t LeveltoDelete, const std::shared_ptr<zephyr::PopupItems>& items);

  // Design edits. Each keeps Levels(), PopupLevels() and the key field
  // (field 1, "Popup Code", 2 x Levels() wide) in step.
  struct LevelSpec {
    Variant question;
    int16_t initial_index = 0;
  };
  struct FieldSpec {
    std::string name;
    int16_t length = 0;
    int16_t start_char_pos = 0;
    int16_t initial_index = 0;
  };
  // Replaces the levels by `levels`, in their order.
  void ReplaceLevels(const std::vector<LevelSpec>& levels);
  // Removes the last (deepest) level; nothing when there is none. The items
  // are left alone: DeleteLevel and FormatKeysToLevels adjust them.
  void RemoveLastLevel();
  // Replaces the fields by the key field followed by `companions`.
  void ReplaceFields(const std::vector<FieldSpec>& companions);

  // Tree edits that keep every item's parent, level and key in step.
  //
  // The sibling list an item belongs to: the top-level items for level 1,
  // else its parent's children.
  std::shared_ptr<zephyr::PopupItems> SiblingsOf(const PopupItem& item);
  // Adds an item under `key` to the children of `parent` (the top level when
  // parent is null), with the given values and LoadedKey = key. A key already
  // used among those siblings raises duplicate key (457) and adds nothing.
  std::shared_ptr<PopupItem> AddItem(const std::shared_ptr<PopupItem>& parent,
                                     const std::string& key,
                                     const std::vector<std::string>& values);
  // Removes the item, and so its branch, from its sibling list. False when it
  // is not in the list it should be in.
  bool RemoveItem(const std::shared_ptr<PopupItem>& item);

  // An item taken out of its sibling list with its whole branch, and the
  // place it had there. While it is held, the item and its branch keep
  // their identities.
  struct DetachedItem {
    std::shared_ptr<PopupItem> item;
    std::shared_ptr<PopupItem> parent;  // null for a top-level item
    int32_t position = 0;               // 1-based, in the sibling list
    CollectionKey key;                  // the key it was added under
  };
  // Takes the item out of its sibling list; nothing (an empty item) when it
  // is not in the list it should be in.
  DetachedItem DetachItem(const std::shared_ptr<PopupItem>& item);
  // Puts a detached item back where it was, under the key it had and with
  // the parent it had. The sibling list must be as it was when the item was
  // taken out.
  void ReattachItem(const DetachedItem& detached);

  // The keys and levels of an item and its branch, to put back as they were.
  struct BranchKeys {
    struct Entry {
      std::shared_ptr<PopupItem> item;
      std::string key;
      int16_t level;
    };
    std::vector<Entry> entries;
  };
  BranchKeys KeysOf(const std::shared_ptr<PopupItem>& item);
  void RestoreKeys(const BranchKeys& keys);
  // The key an item with this two-digit code has under `parent` (the top
  // level when null).
  std::string KeyUnder(const std::shared_ptr<PopupItem>& parent, std::string_view code) const;
  // Appends a detached item with its branch to the children of `parent` (the
  // top level when null) as `code`: the branch takes the parent's codes and
  // the levels below it. A key already used there raises duplicate key (457)
  // and nothing changes.
  void AppendBranch(const std::shared_ptr<PopupItem>& item,
                    const std::shared_ptr<PopupItem>& parent, std::string_view code);

  // True when another program has changed or replaced the popup's files (the
  // template or the table) since this object last opened or saved them: a
  // save now would overwrite that work. False for files it never opened or
  // saved, as after a Save As to a new name.
  bool ChangedOnDisk() const;

  // The names of the popup's files, as derived from DataSource.
  const std::string& DataFileName() const { return data_file_name_; }
  const std::string& WorkFileName() const { return work_file_name_; }
  const std::string& TemplateFileName() const { return template_file_name_; }

 private:
  void LoadTopLevel();
  // Levels() := the number of levels, and the key field's width to match.
  void SyncLevelCount();
  std::string TemplateWorkFileName() const;

  std::string popup_path_;
  std::string data_source_;
  std::string data_file_name_;
  std::string work_file_name_;
  std::string template_file_name_;
  int16_t levels_count_ = 0;
  std::string title_;
  std::weak_ptr<PopupItem> selected_weak_;
  std::shared_ptr<PopupItem> selected_strong_;
  std::shared_ptr<zephyr::PopupItems> items_;
  std::shared_ptr<zephyr::PopupFields> fields_;
  std::shared_ptr<zephyr::PopupLevels> levels_;
  std::shared_ptr<zephyr::PopupValues> values_;
  const LoadedTable* table_values_ = nullptr;  // holds a reference while set
  std::unique_ptr<dBase> table_;
  // The files as last opened or saved, by their full paths.
  void StampFiles();
  std::string stamped_template_path_;
  std::string stamped_data_path_;
  FileStamp template_stamp_;
  FileStamp data_stamp_;
  std::shared_ptr<Progress> progress_;
  std::shared_ptr<MessageBox> message_box_;
};

// Re-formats the keys of the items and all their descendants to a popup of
// `levels` levels: a shorter key gets blanks before its own code, a longer
// one loses the codes before its own ("0102" -> "01  02" from 2 to 3 levels,
// "010203" -> "0103" from 3 to 2).
void FormatKeysToLevels(PopupItems& items, int levels);

// Rebuilds every item's values in a new field order: new value k is old value
// map[k - 1], or empty when map[k - 1] is 0 (a new field).
void ReorderValues(PopupItems& items, const std::vector<int16_t>& map);

// Makes `target` a copy of `source` without its children: its level, key,
// the key it was loaded under, and its values.
void CopyItemData(PopupItem& target, PopupItem& source);

// Saves the whole popup with the usual sequence: WriteTemplate, SavePopup,
// one WritePopupRecord per item in tree order (each item before its
// children), SaveClose.
void SavePopupInTreeOrder(PopupClass& popup);

}  // namespace zephyr

#endif  // ZEPHYR_RUNTIME_POPUP_CLASS_H_
