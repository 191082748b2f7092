#include "ods_workbook.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "sheet_builder.h"
#include "xml_parser.h"
#include "zephyr/support/variant.h"
#include "zip_archive.h"

namespace zephyr::excel {

namespace {

using Kind = WorkbookError::Kind;

constexpr char kContent[] = "content.xml";
constexpr char kSettings[] = "settings.xml";
// Longest text one cell can hold; also bounds the spaces one <text:s> adds.
constexpr size_t kMaxCellText = 32767;
// Repeat counts are clamped here: far beyond any grid, small enough not to overflow.
constexpr uint64_t kMaxRepeat = uint64_t{1} << 32;

uint64_t RepeatCount(const char* value) {
  if (value == nullptr) return 1;
  uint64_t count = 0;
  for (const char* c = value; *c != '\0'; ++c) {
    if (*c < '0' || *c > '9') return 1;
    count = std::min(count * 10 + static_cast<uint64_t>(*c - '0'), kMaxRepeat);
  }
  return count == 0 ? 1 : count;
}

// Counts the top-level tables (the sheets) of content.xml.
class TableNamesHandler : public XmlHandler {
 public:
  bool StartElement(std::string_view name, const char** attributes) override {
    if (name == "table" && depth_++ == 0) {
      const char* table_name = FindAttribute(attributes, "name");
      names.push_back(table_name ? table_name : "");
    }
    return true;
  }
  bool EndElement(std::string_view name) override {
    if (name == "table" && depth_ > 0) --depth_;
    return true;
  }
  bool Text(std::string_view) override { return true; }

  std::vector<std::string> names;

 private:
  int depth_ = 0;
};

// The first ActiveTable item of settings.xml: the table in view when saved.
class ActiveTableHandler : public XmlHandler {
 public:
  bool StartElement(std::string_view name, const char** attributes) override {
    if (name == "config-item") {
      const char* item = FindAttribute(attributes, "name");
      in_active_ = item != nullptr && std::strcmp(item, "ActiveTable") == 0;
    }
    return true;
  }
  bool EndElement(std::string_view name) override {
    if (name == "config-item" && in_active_) {
      found = true;
      return false;
    }
    return true;
  }
  bool Text(std::string_view text) override {
    if (in_active_) active_table.append(text);
    return true;
  }

  bool found = false;
  std::string active_table;

 private:
  bool in_active_ = false;
};

// The rows of one table, streamed into a SheetBuilder. A row or cell that is
// repeated N times is stored N times only when it holds something; an empty
// repeated block just moves the position on.
class TableHandler : public XmlHandler {
 public:
  TableHandler(size_t table_index, SheetBuilder& builder)
      : table_index_(table_index), builder_(builder) {}

  bool StartElement(std::string_view name, const char** attributes) override {
    if (skip_depth_ > 0) {
      ++skip_depth_;
      return true;
    }
    if (name == "table") {
      if (table_depth_++ == 0) ++tables_seen_;
      return true;
    }
    if (table_depth_ != 1 || tables_seen_ != table_index_ + 1) return true;
    if (in_cell_) {
      StartInCell(name, attributes);
    } else if (name == "table-row") {
      row_repeat_ = RepeatCount(FindAttribute(attributes, "number-rows-repeated"));
      const char* visibility = FindAttribute(attributes, "visibility");
      row_hidden_ = visibility != nullptr && (std::strcmp(visibility, "collapse") == 0 ||
                                              std::strcmp(visibility, "filter") == 0);
      column_ = 0;
      row_cells_.clear();
    } else if (name == "table-cell" || name == "covered-table-cell") {
      StartCell(attributes);
    }
    return true;
  }

  bool EndElement(std::string_view name) override {
    if (skip_depth_ > 0) {
      --skip_depth_;
      return true;
    }
    if (name == "table") {
      --table_depth_;
      // The wanted table is complete: nothing after it matters.
      return !(table_depth_ == 0 && tables_seen_ == table_index_ + 1);
    }
    if (table_depth_ != 1 || tables_seen_ != table_index_ + 1) return true;
    if (name == "table-cell" || name == "covered-table-cell") {
      EndCell();
    } else if (in_cell_ && (name == "p" || name == "h")) {
      --paragraph_depth_;
    } else if (name == "table-row" && !in_cell_) {
      EndRow();
    }
    return true;
  }

  bool Text(std::string_view text) override {
    if (in_cell_ && paragraph_depth_ > 0 && skip_depth_ == 0) Append(text);
    return true;
  }

 private:
  struct PendingCell {
    uint64_t column;
    uint64_t repeat;
    CellKind kind;
    std::string text;
  };

  void StartCell(const char** attributes) {
    in_cell_ = true;
    cell_repeat_ = RepeatCount(FindAttribute(attributes, "number-columns-repeated"));
    text_.clear();
    paragraphs_ = 0;
    paragraph_depth_ = 0;
    value_type_.clear();
    calc_value_type_.clear();
    fallback_.clear();
    has_formula_ = false;
    for (const char** a = attributes; a[0] != nullptr; a += 2) {
      std::string_view key = a[0];
      std::string_view local = LocalName(key);
      if (local == "value-type") {
        (key.starts_with("calcext:") ? calc_value_type_ : value_type_) = a[1];
      } else if (local == "formula") {
        has_formula_ = true;
      } else if (local == "value" || local == "string-value" || local == "date-value" ||
                 local == "time-value" || local == "boolean-value") {
        fallback_ = a[1];
        if (local == "boolean-value") boolean_ = std::strcmp(a[1], "true") == 0;
      }
    }
  }

  // Elements inside a cell: paragraphs and the spans, spaces, tabs and line
  // breaks in them. Comments and notes are no part of the displayed text.
  void StartInCell(std::string_view name, const char** attributes) {
    if (name == "annotation" || name == "note") {
      skip_depth_ = 1;
    } else if (name == "p" || name == "h") {
      if (paragraph_depth_++ == 0 && paragraphs_++ > 0) Append("\n");
    } else if (paragraph_depth_ == 0) {
      return;
    } else if (name == "s") {
      uint64_t count = RepeatCount(FindAttribute(attributes, "c"));
      size_t room = kMaxCellText > text_.size() ? kMaxCellText - text_.size() : 0;
      text_.append(std::min<uint64_t>(count, room), ' ');
    } else if (name == "tab") {
      Append("\t");
    } else if (name == "line-break") {
      Append("\n");
    }
  }

  void Append(std::string_view text) { text_.append(text); }

  void EndCell() {
    in_cell_ = false;
    if (paragraphs_ == 0 && !value_type_.empty()) text_ = fallback_;
    CellKind kind = KindOfCell();
    if (kind != CellKind::kEmpty) {
      if (kind == CellKind::kBoolean) text_ = boolean_ ? "TRUE" : "FALSE";
      row_cells_.push_back({column_, cell_repeat_, kind, text_});
    }
    column_ = std::min(column_ + cell_repeat_, kMaxRepeat);
  }

  CellKind KindOfCell() const {
    if (calc_value_type_ == "error") return CellKind::kError;
    if (has_formula_ && (text_.starts_with("#") || text_.starts_with("Err:"))) {
      return CellKind::kError;
    }
    if (value_type_ == "float" || value_type_ == "percentage" || value_type_ == "currency" ||
        value_type_ == "date" || value_type_ == "time") {
      return CellKind::kNumber;
    }
    if (value_type_ == "boolean") return CellKind::kBoolean;
    if (value_type_ == "string" || !text_.empty()) return CellKind::kText;
    return CellKind::kEmpty;
  }

  void EndRow() {
    if (row_hidden_) builder_.HideRows(row_, row_repeat_);
    for (uint64_t copy = 0; copy < row_repeat_ && !row_cells_.empty(); ++copy) {
      for (const PendingCell& cell : row_cells_) {
        for (uint64_t k = 0; k < cell.repeat; ++k) {
          builder_.SetCell(row_ + copy, cell.column + k, cell.kind, cell.text);
        }
      }
    }
    row_ = std::min(row_ + row_repeat_, kMaxRepeat);
  }

  const size_t table_index_;
  SheetBuilder& builder_;
  int table_depth_ = 0;
  size_t tables_seen_ = 0;
  int skip_depth_ = 0;

  uint64_t row_ = 0;
  uint64_t row_repeat_ = 1;
  bool row_hidden_ = false;
  uint64_t column_ = 0;
  std::vector<PendingCell> row_cells_;

  bool in_cell_ = false;
  uint64_t cell_repeat_ = 1;
  int paragraphs_ = 0;
  int paragraph_depth_ = 0;
  std::string text_;
  std::string value_type_;
  std::string calc_value_type_;
  std::string fallback_;
  bool boolean_ = false;
  bool has_formula_ = false;
};

class OdsWorkbook : public Workbook {
 public:
  OdsWorkbook(std::string bytes, std::string path)
      : bytes_(std::move(bytes)), path_(std::move(path)), archive_(bytes_, path_) {
    TableNamesHandler tables;
    ParseXmlEntry(archive_, kContent, tables);
    if (tables.names.empty()) {
      throw WorkbookError(Kind::kMalformed, path_, "the spreadsheet has no tables");
    }
    for (std::string& name : tables.names) sheets_.push_back({std::move(name), true});
    active_ = FindActiveTable();
  }

  const std::vector<SheetInfo>& Sheets() const override { return sheets_; }
  size_t ActiveSheet() const override { return active_; }

  Sheet ReadSheet(size_t index) override {
    if (index >= sheets_.size()) throw std::out_of_range("no sheet with that index");
    SheetBuilder builder(path_, sheets_[index].name);
    TableHandler handler(index, builder);
    ParseXmlEntry(archive_, kContent, handler);
    return builder.Finish();
  }

 private:
  size_t FindActiveTable() const {
    if (!archive_.Contains(kSettings)) return 0;
    ActiveTableHandler settings;
    ParseXmlEntry(archive_, kSettings, settings);
    for (size_t i = 0; i < sheets_.size(); ++i) {
      if (settings.found && sheets_[i].name == settings.active_table) return i;
    }
    return 0;
  }

  const std::string bytes_;
  const std::string path_;
  ZipArchive archive_;
  std::vector<SheetInfo> sheets_;
  size_t active_ = 0;
};

}  // namespace

std::unique_ptr<Workbook> OpenOdsWorkbook(std::string bytes, std::string path) {
  return std::make_unique<OdsWorkbook>(std::move(bytes), std::move(path));
}

}  // namespace zephyr::excel
