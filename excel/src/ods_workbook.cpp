#include "ods_workbook.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "sheet_builder.h"
#include "xml_parser.h"
#include "zip_archive.h"

namespace zephyr::excel {

namespace {

using Kind = WorkbookError::Kind;

constexpr char kContent[] = "content.xml";
constexpr char kSettings[] = "settings.xml";
// The spaces of a <text:s> stop at the longest text a cell can hold.
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

// Lists the top-level tables (the sheets) of content.xml and reads the rows
// of the first one that `wanted` picks into a Sheet. A row or cell that is
// repeated N times is stored N times only when it holds something; an empty
// repeated block just moves the position on.
class TableHandler : public XmlHandler {
 public:
  using Wanted = std::function<bool(size_t index, const std::string& name)>;

  // With `read_to_end` false the parse stops after the wanted table.
  TableHandler(const std::string& path, Wanted wanted, bool read_to_end)
      : path_(path), wanted_(std::move(wanted)), read_to_end_(read_to_end) {}

  std::vector<std::string> names;
  std::optional<Sheet> sheet;  // the wanted table's rows, once complete

  bool StartElement(std::string_view name, const char** attributes) override {
    if (skip_depth_ > 0) {
      ++skip_depth_;
      return true;
    }
    if (name == "table") {
      if (table_depth_++ == 0) StartTable(attributes);
      return true;
    }
    if (table_depth_ != 1 || !builder_) return true;
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
      if (--table_depth_ == 0 && builder_) {
        sheet = builder_->Finish();
        builder_.reset();
        return read_to_end_;
      }
      return true;
    }
    if (table_depth_ != 1 || !builder_) return true;
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
    if (in_cell_ && paragraph_depth_ > 0 && skip_depth_ == 0) text_.append(text);
    return true;
  }

 private:
  struct PendingCell {
    uint64_t column;
    uint64_t repeat;
    CellKind kind;
    std::string text;
  };

  void StartTable(const char** attributes) {
    const char* table_name = FindAttribute(attributes, "name");
    names.emplace_back(table_name ? table_name : "");
    if (found_ || !wanted_(names.size() - 1, names.back())) return;
    found_ = true;
    builder_.emplace(path_, names.back());
  }

  void StartCell(const char** attributes) {
    in_cell_ = true;
    cell_repeat_ = RepeatCount(FindAttribute(attributes, "number-columns-repeated"));
    text_.clear();
    paragraphs_ = 0;
    paragraph_depth_ = 0;
    value_type_.clear();
    calc_value_type_.clear();
    fallback_.clear();
    boolean_ = false;
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
      if (paragraph_depth_++ == 0 && paragraphs_++ > 0) text_ += '\n';
    } else if (paragraph_depth_ == 0) {
      return;
    } else if (name == "s") {
      uint64_t count = RepeatCount(FindAttribute(attributes, "c"));
      size_t room = kMaxCellText > text_.size() ? kMaxCellText - text_.size() : 0;
      text_.append(std::min<uint64_t>(count, room), ' ');
    } else if (name == "tab") {
      text_ += '\t';
    } else if (name == "line-break") {
      text_ += '\n';
    }
  }

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
    if (row_hidden_) builder_->HideRows(row_, row_repeat_);
    for (uint64_t copy = 0; copy < row_repeat_ && !row_cells_.empty(); ++copy) {
      for (const PendingCell& cell : row_cells_) {
        for (uint64_t k = 0; k < cell.repeat; ++k) {
          builder_->SetCell(row_ + copy, cell.column + k, cell.kind, cell.text);
        }
      }
    }
    row_ = std::min(row_ + row_repeat_, kMaxRepeat);
  }

  const std::string& path_;
  const Wanted wanted_;
  const bool read_to_end_;
  bool found_ = false;
  std::optional<SheetBuilder> builder_;  // while inside the wanted table
  int table_depth_ = 0;
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
  // One pass over content.xml lists the tables and reads the active one,
  // which is usually the only one asked for.
  OdsWorkbook(std::string bytes, std::string path)
      : bytes_(std::move(bytes)), path_(std::move(path)), archive_(bytes_, path_) {
    std::optional<std::string> active_name = ActiveTableName();
    TableHandler::Wanted active = [&](size_t index, const std::string& name) {
      return active_name ? name == *active_name : index == 0;
    };
    std::optional<TableHandler> tables;
    tables.emplace(path_, active, true);
    try {
      ParseXmlEntry(archive_, kContent, *tables);
    } catch (const WorkbookError&) {
      // Bad content in the active table is reported when it is read; only
      // a broken table list fails the opening.
      tables.emplace(
          path_, [](size_t, const std::string&) { return false; }, true);
      ParseXmlEntry(archive_, kContent, *tables);
    }
    if (tables->names.empty()) {
      throw WorkbookError(Kind::kMalformed, path_, "the spreadsheet has no tables");
    }
    for (std::string& name : tables->names) sheets_.push_back({std::move(name), true});
    for (size_t i = 0; active_name && i < sheets_.size(); ++i) {
      if (sheets_[i].name == *active_name) {
        active_ = i;
        break;
      }
    }
    if (tables->sheet) active_sheet_ = std::move(tables->sheet);
  }

  const std::vector<SheetInfo>& Sheets() const override { return sheets_; }
  size_t ActiveSheet() const override { return active_; }

  Sheet ReadSheet(size_t index) override {
    if (index >= sheets_.size()) throw std::out_of_range("no sheet with that index");
    if (index == active_ && active_sheet_) {
      Sheet sheet = std::move(*active_sheet_);
      active_sheet_.reset();
      return sheet;
    }
    TableHandler tables(
        path_, [index](size_t i, const std::string&) { return i == index; }, false);
    ParseXmlEntry(archive_, kContent, tables);
    if (!tables.sheet) {
      throw WorkbookError(Kind::kMalformed, path_,
                          "table '" + sheets_[index].name + "' cannot be found");
    }
    return std::move(*tables.sheet);
  }

 private:
  std::optional<std::string> ActiveTableName() const {
    if (!archive_.Contains(kSettings)) return std::nullopt;
    ActiveTableHandler settings;
    try {
      ParseXmlEntry(archive_, kSettings, settings);
    } catch (const WorkbookError&) {
      return std::nullopt;  // view settings are a nicety; the first table will do
    }
    if (!settings.found) return std::nullopt;
    return settings.active_table;
  }

  const std::string bytes_;
  const std::string path_;
  ZipArchive archive_;
  std::vector<SheetInfo> sheets_;
  size_t active_ = 0;
  std::optional<Sheet> active_sheet_;  // read while listing the tables, until asked for
};

}  // namespace

std::unique_ptr<Workbook> OpenOdsWorkbook(std::string bytes, std::string path) {
  return std::make_unique<OdsWorkbook>(std::move(bytes), std::move(path));
}

}  // namespace zephyr::excel
