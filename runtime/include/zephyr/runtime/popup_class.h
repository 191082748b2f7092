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

#include "zephyr/runtime/popup_fields.h"
#include "zephyr/runtime/popup_item.h"
#include "zephyr/runtime/popup_items.h"
#include "zephyr/runtime/popup_levels.h"
#include "zephyr/runtime/popup_values.h"
#include "zephyr/support/variant.h"

namespace zephyr {

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

  // The names of the popup's files, as derived from DataSource.
  const std::string& DataFileName() const { return data_file_name_; }
  const std::string& WorkFileName() const { return work_file_name_; }
  const std::string& TemplateFileName() const { return template_file_name_; }

 private:
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
  Variant table_values_;
};

}  // namespace zephyr

#endif  // ZEPHYR_RUNTIME_POPUP_CLASS_H_
