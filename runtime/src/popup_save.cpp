// The write path: the work table, its records, and the swap of the work
// files into the popup's place.
#include <stdio.h>
#include <unistd.h>

#include "log_module.h"
#include "item_access.h"
#include "zephyr/runtime/popup_class.h"
#include "zephyr/support/debug_log.h"
#include "zephyr/support/errors.h"
#include "zephyr/support/file.h"
#include "zephyr/support/file_utils.h"
#include "zephyr/table/dbase.h"

namespace zephyr {

namespace {

// The name with its last three characters (the extension) replaced.
std::string WithExtension(const std::string& name, const char* extension) {
  if (name.size() < 3) {
    throw RuntimeError(RuntimeErrorCode::kInvalidArgument,
                       "the popup has no file name '" + name + "' (set DataSource first)");
  }
  return name.substr(0, name.size() - 3) + extension;
}

// Makes a finished work file durable before it replaces anything.
void Flush(const std::string& path) {
  if (!PathExists(path)) {
    throw RuntimeError(RuntimeErrorCode::kFileNotFound,
                       "the work file '" + path + "' was not written; the popup was not saved");
  }
  File::Open(path, File::Mode::kRead).Sync();
}

// Replaces `target` by `work` in one step: at every instant `target` is
// either the complete old file or the complete new one.
void Replace(const std::string& work, const std::string& target) {
  if (::rename(work.c_str(), target.c_str()) != 0) {
    RaiseFileError(errno, "rename '" + work + "' to", target);
  }
}

}  // namespace

std::string PopupClass::TemplateWorkFileName() const {
  return WithExtension(template_file_name_, "bpt");
}

void PopupClass::SavePopup() {
  DebugLog(kPopupClassModule, "SavePopup", "Start");
  std::string folder = WithTrailingSlash(popup_path_);
  try {
    table_ = std::make_unique<dBase>();
    work_file_name_ = WithExtension(data_file_name_, "bpd");
    if (PathExists(folder + work_file_name_)) ::unlink((folder + work_file_name_).c_str());
    DebugLog(kPopupClassModule, "SavePopup", "mstrPopupPath = " + popup_path_);
    auto columns = table_->Fields();
    columns->Add("POPUP_CODE", "C", 2 * PopupLevels()->Count(), 0, 0);
    auto fields = PopupFields();
    for (int32_t i = 2; i <= fields->Count(); ++i) {
      columns->Add("FIELD" + std::to_string(i), "C", fields->Item(i)->FieldLength(), 0, 0);
    }
    table_->OpenMode(1);
    table_->OpenFile(folder + work_file_name_);
    if (table_->FileExists()) {
      // The work table is the save's alone until SaveClose renames it.
      table_->HoldAppends();
      return;
    }
  } catch (const std::exception&) {
    // Reported below like a table that could not be created.
  }
  Message message;
  message.prompt = "Problem saving Popup File:\r\n" + folder + work_file_name_;
  message_box_->Show(message);
}

void PopupClass::WritePopupRecord(const std::shared_ptr<PopupItem>& Item) {
  if (table_ && table_->FileExists()) {
    table_->InitRecord();
    table_->PutText(1, Item->PopupKey());
    int32_t column = 2;
    ItemAccess::VisitValues(*Item,
                            [&](std::string_view value) { table_->PutText(column++, value); });
    table_->PutRecord(0);
  }
  ItemAccess::SetLoadedKey(*Item, Item->PopupKey());
}

void PopupClass::SaveClose() {
  DebugLog(kPopupClassModule, "SaveClose", "Start");
  if (table_ && table_->FileExists()) table_->CloseFile();
  table_.reset();
  std::string folder = WithTrailingSlash(popup_path_);
  std::string template_work = folder + TemplateWorkFileName();
  std::string data_work = folder + WithExtension(data_file_name_, "bpd");
  Flush(template_work);
  Flush(data_work);
  Replace(template_work, folder + template_file_name_);
  Replace(data_work, folder + data_file_name_);
  SyncFolder(folder);
  StampFiles();
}

namespace {

void WriteRecords(PopupClass& popup, PopupItems& items) {
  for (const auto& item : items) {
    popup.WritePopupRecord(item);
    if (item->HasChildren()) WriteRecords(popup, *item->Children());
  }
}

}  // namespace

void SavePopupInTreeOrder(PopupClass& popup) {
  popup.WriteTemplate();
  popup.SavePopup();
  WriteRecords(popup, *popup.PopupItems());
  popup.SaveClose();
}

}  // namespace zephyr
