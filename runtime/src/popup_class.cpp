#include "zephyr/runtime/popup_class.h"

#include "loaded_table.h"
#include "log_module.h"
#include "zephyr/support/debug_log.h"
#include "zephyr/support/errors.h"
#include "zephyr/support/text.h"
#include "zephyr/table/dbase.h"

namespace zephyr {

PopupClass::PopupClass()
    : progress_(std::make_shared<NoProgress>()),
      message_box_(std::make_shared<StderrMessageBox>()) {}

PopupClass::~PopupClass() {
  values_.reset();
  levels_.reset();
  selected_weak_.reset();
  selected_strong_.reset();
  fields_.reset();
  items_.reset();
  LoadedTable::Release(table_values_);
  ClosePopup();
  DebugLog(kPopupClassModule, "Class Terminate", "Popup Class Terminated");
}

Variant PopupClass::Values(int32_t Col, int32_t Row) const {
  if (!table_values_) {
    throw RuntimeError(RuntimeErrorCode::kTypeMismatch, "no table values were read");
  }
  return table_values_->Records().Cell(Col, Row);
}

int32_t PopupClass::RowCount() const {
  return table_values_ ? table_values_->Records().RowCount() : 0;
}

std::shared_ptr<PopupValues> PopupClass::PopupValues() {
  if (!values_) values_ = std::make_shared<zephyr::PopupValues>();
  return values_;
}

std::shared_ptr<PopupLevels> PopupClass::PopupLevels() {
  if (!levels_) levels_ = std::make_shared<zephyr::PopupLevels>();
  return levels_;
}

std::shared_ptr<PopupFields> PopupClass::PopupFields() {
  if (!fields_) fields_ = std::make_shared<zephyr::PopupFields>();
  return fields_;
}

std::shared_ptr<PopupItems> PopupClass::PopupItems() {
  if (!items_) items_ = std::make_shared<zephyr::PopupItems>();
  return items_;
}

void PopupClass::SetProgress(std::shared_ptr<Progress> progress) {
  progress_ = progress ? std::move(progress) : std::make_shared<NoProgress>();
}

void PopupClass::SetMessageBox(std::shared_ptr<MessageBox> message_box) {
  message_box_ = message_box ? std::move(message_box) : std::make_shared<StderrMessageBox>();
}

void PopupClass::Title(std::string_view title) {
  title_ = std::string(Trim(title));
}

void PopupClass::DataSource(std::string name) {
  data_source_ = std::move(name);
  data_file_name_ = data_source_ + ".ZPD";
  template_file_name_ = data_source_ + ".ZPT";
  DebugLog(kPopupClassModule, "Let DataSource", "Datasource set to: " + data_source_);
}

void PopupClass::SetSelectedItem(std::string_view Key) {
  selected_strong_.reset();
  selected_weak_ = FindItemByIdentity(TextToInt32(Key));
}

std::shared_ptr<PopupItem> PopupClass::SelectedItem() const {
  return selected_strong_ ? selected_strong_ : selected_weak_.lock();
}

void PopupClass::SelectedItem(std::shared_ptr<PopupItem> item) {
  selected_weak_.reset();
  selected_strong_ = std::move(item);
}

}  // namespace zephyr
