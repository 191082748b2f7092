// The read path: opening a popup and turning its table into the item tree.
#include "log_module.h"
#include "tree_loader.h"
#include "zephyr/runtime/popup_class.h"
#include "zephyr/support/debug_log.h"
#include "zephyr/support/file_utils.h"
#include "zephyr/table/dbase.h"

namespace zephyr {

namespace {

constexpr const char* kReadingMessage = "Reading Popup Data.. this may take a few minutes";

}  // namespace

void PopupClass::OpenPopup(std::string_view Source) {
  DebugLog(kPopupClassModule, "OpenPopup", "Start");
  if (!Source.empty()) data_file_name_ = std::string(Source);
  template_file_name_ = ResolveCaseVariant(popup_path_, data_source_ + ".ZPT");
  LoadTemplate();
  popup_path_ = WithTrailingSlash(popup_path_);
  data_file_name_ = ResolveCaseVariant(popup_path_, data_file_name_);
  // Stamped before reading: a change made while it reads counts as a change.
  StampFiles();
  table_ = std::make_unique<dBase>();
  try {
    if (PathExists(popup_path_ + data_file_name_)) {
      DebugLog(kPopupClassModule, "OpenPopup", "PopupFound- Opening DB");
      items_ = std::make_shared<zephyr::PopupItems>();
      LoadTopLevel();
    }
  } catch (...) {
    table_.reset();
    throw;
  }
  table_.reset();
}

void PopupClass::LoadTopLevel() {
  Progress& progress = *progress_;
  ProgressUnloader shown(progress);
  if (!table_) return;
  DebugLog(kPopupClassModule, "LoadTopLevel", "Start");
  progress.Show();
  progress.SetMessage(kReadingMessage);
  progress.SetValue(0);
  progress.SetMaximum(1);
  progress.SetMinimum(0);

  std::string path = popup_path_ + data_file_name_;
  DebugLog(kPopupClassModule, "LoadTopLevel", "Opening: " + path);
  table_->OpenFile(path);
  DebugLog(kPopupClassModule, "LoadTopLevel", "GetTableValues");
  std::unique_ptr<TableRecords> records = table_->ReadRecords();
  DebugLog(kPopupClassModule, "LoadTopLevel", "SortTableValues");
  if (records) records->SortBy(1);
  LoadedTable::Release(table_values_);
  table_values_ = records ? LoadedTable::Create(std::move(records)) : nullptr;
  DebugLog(kPopupClassModule, "LoadTopLevel", "RecordCount: " + table_->RecordCount().ToText());
  progress.SetMaximum(RowCount() < 1 ? 1 : RowCount());

  DebugLog(kPopupClassModule, "LoadTopLevel", "Begin Loop");
  if (RowCount() > 0) {
    auto levels = PopupLevels();
    items_->Question(levels->Item(1)->Question().ToText());
    BuildItemTree({table_values_, levels_count_, levels.get(), path}, *items_, progress);
  }
  table_->CloseFile();
}

void PopupClass::StampFiles() {
  std::string folder = WithTrailingSlash(popup_path_);
  stamped_template_path_ = folder + template_file_name_;
  stamped_data_path_ = folder + data_file_name_;
  template_stamp_ = FileStamp::Of(stamped_template_path_);
  data_stamp_ = FileStamp::Of(stamped_data_path_);
}

bool PopupClass::ChangedOnDisk() const {
  std::string folder = WithTrailingSlash(popup_path_);
  if (stamped_template_path_ != folder + template_file_name_ ||
      stamped_data_path_ != folder + data_file_name_) {
    return false;
  }
  return template_stamp_.ChangedAt(stamped_template_path_) ||
         data_stamp_.ChangedAt(stamped_data_path_);
}

void PopupClass::ClosePopup() {
  if (!table_) return;
  table_->CloseFile();
  table_.reset();
  DebugLog(kPopupClassModule, "ClosePopup", "Popup Closed");
}

}  // namespace zephyr
