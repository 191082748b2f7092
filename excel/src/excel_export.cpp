#include "zephyr/excel/excel_export.h"

#include <xlsxwriter.h>

#include <functional>

#include "zephyr/runtime/popup_key.h"
#include "zephyr/support/errors.h"
#include "zephyr/support/text.h"

namespace zephyr::excel {

namespace {

// A sheet name the workbook format accepts: at most 31 characters, none of []:*?/\.
std::string SheetName(const std::string& title) {
  std::string name;
  for (char c : title) {
    if (std::string_view("[]:*?/\\").find(c) == std::string_view::npos) name.push_back(c);
  }
  name = std::string(Trim(name)).substr(0, 31);
  while (!name.empty() && (static_cast<unsigned char>(name.back()) & 0xC0) == 0x80) name.pop_back();
  if (!name.empty() && static_cast<unsigned char>(name.back()) >= 0xC0) name.pop_back();
  return name.empty() ? "Popup" : name;
}

std::string Value(PopupItem& item, int32_t index) {
  auto values = item.PopupValues();
  return index <= values->Count() ? std::string(RTrim(values->Item(index)->Value()))
                                  : std::string();
}

class Exporter {
 public:
  Exporter(PopupClass& popup, const std::string& path) : popup_(popup), path_(path) {}

  ExportReport Run() {
    lxw_workbook* book = workbook_new(path_.c_str());
    if (!book) Raise("cannot create the workbook");
    lxw_worksheet* sheet = workbook_add_worksheet(book, SheetName(popup_.Title()).c_str());
    sheet_ = sheet;
    WriteHeading();
    std::vector<std::string> texts;
    for (const auto& item : *popup_.PopupItems()) Visit(*item, texts);
    lxw_error closed = workbook_close(book);
    if (closed != LXW_NO_ERROR) Raise(lxw_strerror(closed));
    return report_;
  }

 private:
  [[noreturn]] void Raise(const std::string& reason) {
    throw RuntimeError(RuntimeErrorCode::kPathFileAccessError,
                       "cannot write the workbook '" + path_ + "': " + reason);
  }

  void Write(lxw_row_t row, lxw_col_t column, const std::string& text) {
    if (!text.empty()) worksheet_write_string(sheet_, row, column, text.c_str(), nullptr);
  }

  void WriteHeading() {
    auto fields = popup_.PopupFields();
    lxw_col_t column = 0;
    Write(0, column++, fields->Count() >= 1 ? fields->Item(1)->Name() : "Popup Code");
    for (const auto& level : *popup_.PopupLevels()) Write(0, column++, level->Question().ToText());
    for (int32_t i = 3; i <= fields->Count(); ++i) Write(0, column++, fields->Item(i)->Name());
  }

  void Visit(PopupItem& item, std::vector<std::string>& texts) {
    std::string text = Value(item, 1);
    if (text.empty()) Note(item, "has no text, which every level needs");
    texts.push_back(text);
    if (item.HasChildren()) {
      for (int32_t i = 2; i <= item.PopupValues()->Count(); ++i) {
        if (!Value(item, i).empty()) {
          Note(item, "has companion values, which only leaves carry");
          break;
        }
      }
      for (const auto& child : *item.Children()) Visit(*child, texts);
    } else if (static_cast<int>(texts.size()) < popup_.Levels()) {
      Note(item, "is a leaf at level " + std::to_string(texts.size()) + " of " +
                     std::to_string(popup_.Levels()) +
                     "; only leaves of the deepest level are written");
    } else {
      WriteLeaf(item, texts);
    }
    texts.pop_back();
  }

  void WriteLeaf(PopupItem& item, const std::vector<std::string>& texts) {
    lxw_row_t row = static_cast<lxw_row_t>(++report_.rows_written);
    lxw_col_t column = 0;
    Write(row, column++, CompactPath(item.PopupKey()));
    for (const std::string& text : texts) Write(row, column++, text);
    for (int32_t i = 2; i <= item.PopupValues()->Count(); ++i) Write(row, column++, Value(item, i));
  }

  void Note(PopupItem& item, const std::string& problem) {
    report_.cannot_round_trip.push_back("item '" + item.PopupKey() + "' (" + Value(item, 1) + ") " +
                                        problem);
  }

  PopupClass& popup_;
  std::string path_;
  lxw_worksheet* sheet_ = nullptr;
  ExportReport report_;
};

}  // namespace

ExportReport ExportToWorkbook(PopupClass& popup, const std::string& path) {
  return Exporter(popup, path).Run();
}

}  // namespace zephyr::excel
