#include "zephyr/excel/excel_export.h"

#include <xlsxwriter.h>

#include <cctype>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <ostream>

#include "zephyr/runtime/popup_key.h"
#include "zephyr/support/errors.h"
#include "zephyr/support/text.h"

namespace zephyr::excel {

std::string ExportSheetName(const std::string& title) {
  std::string name;
  for (char c : title) {
    if (std::string_view("[]:*?/\\").find(c) == std::string_view::npos) name.push_back(c);
  }
  name = std::string(Trim(name));
  // Cut at 31 characters, not bytes, and never inside one.
  size_t characters = 0, cut = 0;
  while (cut < name.size() && characters < 31) {
    ++characters;
    ++cut;
    while (cut < name.size() && (static_cast<unsigned char>(name[cut]) & 0xC0) == 0x80) ++cut;
  }
  name.resize(cut);
  while (!name.empty() && (name.front() == '\'' || name.front() == ' ')) name.erase(0, 1);
  while (!name.empty() && (name.back() == '\'' || name.back() == ' ')) name.pop_back();
  return name.empty() ? "Popup" : name;
}

namespace {

std::string Value(PopupItem& item, int32_t index) {
  auto values = item.PopupValues();
  return index <= values->Count() ? std::string(RTrim(values->Item(index)->Value()))
                                  : std::string();
}

[[noreturn]] void RaiseCannotWrite(const std::string& path, const std::string& reason) {
  throw RuntimeError(RuntimeErrorCode::kPathFileAccessError,
                     "cannot write the workbook '" + path + "': " + reason);
}

// Where the exported rows go: cells of a worksheet or lines of CSV text.
class RowSink {
 public:
  virtual ~RowSink() = default;
  virtual void Write(const std::vector<std::string>& row) = 0;
  virtual void Close() = 0;
};

class XlsxSink : public RowSink {
 public:
  XlsxSink(const std::string& path, const std::string& sheet_name) : path_(path) {
    book_ = workbook_new(path.c_str());
    if (!book_) RaiseCannotWrite(path, "the file cannot be created");
    sheet_ = workbook_add_worksheet(book_, ExportSheetName(sheet_name).c_str());
    if (!sheet_) sheet_ = workbook_add_worksheet(book_, "Popup");
  }
  ~XlsxSink() override {
    if (book_) workbook_close(book_);
  }
  void Write(const std::vector<std::string>& row) override {
    for (size_t column = 0; column < row.size(); ++column) {
      if (row[column].empty()) continue;
      worksheet_write_string(sheet_, row_, static_cast<lxw_col_t>(column), row[column].c_str(),
                             nullptr);
    }
    ++row_;
  }
  void Close() override {
    lxw_error closed = workbook_close(book_);
    book_ = nullptr;
    if (closed != LXW_NO_ERROR) RaiseCannotWrite(path_, lxw_strerror(closed));
  }

 private:
  std::string path_;
  lxw_workbook* book_ = nullptr;
  lxw_worksheet* sheet_ = nullptr;
  lxw_row_t row_ = 0;
};

// UTF-8 text, fields quoted when they hold a comma, a quote or a line break,
// lines ended by CR LF.
class CsvSink : public RowSink {
 public:
  CsvSink(std::ostream& out, std::string path) : out_(out), path_(std::move(path)) {}
  void Write(const std::vector<std::string>& row) override {
    for (size_t column = 0; column < row.size(); ++column) {
      if (column > 0) out_ << ',';
      out_ << CsvField(row[column]);
    }
    out_ << "\r\n";
  }
  void Close() override {
    out_.flush();
    if (!out_) RaiseCannotWrite(path_, std::strerror(errno));
  }

 private:
  std::ostream& out_;
  std::string path_;
};

class Exporter {
 public:
  Exporter(PopupClass& popup, RowSink& sink) : popup_(popup), sink_(sink) {}

  ExportReport Run() {
    WriteHeading();
    std::vector<std::string> texts;
    for (const auto& item : *popup_.PopupItems()) Visit(*item, texts);
    sink_.Close();
    return report_;
  }

 private:
  void WriteHeading() {
    auto fields = popup_.PopupFields();
    std::vector<std::string> heading{fields->Count() >= 1 ? fields->Item(1)->Name() : "Popup Code"};
    for (const auto& level : *popup_.PopupLevels()) heading.push_back(level->Question().ToText());
    for (int32_t i = 3; i <= fields->Count(); ++i) heading.push_back(fields->Item(i)->Name());
    sink_.Write(heading);
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
    ++report_.rows_written;
    std::vector<std::string> row{CompactPath(item.PopupKey())};
    row.insert(row.end(), texts.begin(), texts.end());
    for (int32_t i = 2; i <= item.PopupValues()->Count(); ++i) row.push_back(Value(item, i));
    sink_.Write(row);
  }

  void Note(PopupItem& item, const std::string& problem) {
    report_.cannot_round_trip.push_back("item '" + item.PopupKey() + "' (" + Value(item, 1) + ") " +
                                        problem);
  }

  PopupClass& popup_;
  RowSink& sink_;
  ExportReport report_;
};

}  // namespace

std::string CsvField(std::string_view text) {
  if (text.find_first_of(",\"\r\n") == std::string_view::npos) return std::string(text);
  std::string quoted = "\"";
  for (char c : text) {
    if (c == '"') quoted += '"';
    quoted += c;
  }
  return quoted + '"';
}

ExportReport ExportToWorkbook(PopupClass& popup, const std::string& path) {
  std::string extension = std::filesystem::path(path).extension().string();
  for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  if (extension == ".xlsx") {
    XlsxSink sink(path, popup.Title());
    return Exporter(popup, sink).Run();
  }
  if (extension == ".csv") {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (!out) RaiseCannotWrite(path, std::strerror(errno));
    CsvSink sink(out, path);
    return Exporter(popup, sink).Run();
  }
  throw RuntimeError(RuntimeErrorCode::kBadFileNameOrNumber,
                     "cannot write '" + path + "': a workbook is written as .xlsx or .csv");
}

ExportedRows ExportRows(PopupClass& popup) {
  class Collected : public RowSink {
   public:
    explicit Collected(std::vector<std::vector<std::string>>& rows) : rows_(rows) {}
    void Write(const std::vector<std::string>& row) override { rows_.push_back(row); }
    void Close() override {}

   private:
    std::vector<std::vector<std::string>>& rows_;
  };
  ExportedRows exported;
  Collected sink(exported.rows);
  exported.report = Exporter(popup, sink).Run();
  return exported;
}

ExportReport ExportToCsv(PopupClass& popup, std::ostream& out, const std::string& name) {
  CsvSink sink(out, name);
  return Exporter(popup, sink).Run();
}

}  // namespace zephyr::excel
