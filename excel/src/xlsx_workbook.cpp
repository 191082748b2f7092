#include "xlsx_workbook.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <map>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "number_format.h"
#include "sheet_builder.h"
#include "xml_parser.h"
#include "zip_archive.h"

namespace zephyr::excel {

namespace {

using Kind = WorkbookError::Kind;

bool IsTrue(const char* value) {
  return value != nullptr && (std::strcmp(value, "1") == 0 || std::strcmp(value, "true") == 0);
}

// Parses a non-negative decimal; false for anything else. Huge values stop
// at 2^40, far out of every range, instead of wrapping around.
bool ParseIndex(std::string_view text, uint64_t* value) {
  constexpr uint64_t kCap = uint64_t{1} << 40;
  if (text.empty()) return false;
  uint64_t result = 0;
  for (char c : text) {
    if (c < '0' || c > '9') return false;
    result = std::min(result * 10 + static_cast<uint64_t>(c - '0'), kCap);
  }
  *value = result;
  return true;
}

// "AB12" to a 0-based column and 1-based row; false when malformed. More
// than three letters is past the last column, and stays so.
bool ParseCellReference(std::string_view ref, uint64_t* column, uint64_t* row) {
  size_t i = 0;
  uint64_t letters = 0;
  for (; i < ref.size(); ++i) {
    char c = ref[i];
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    if (c < 'A' || c > 'Z') break;
    if (i < 4) letters = letters * 26 + static_cast<uint64_t>(c - 'A' + 1);
  }
  if (i == 0) return false;
  *column = letters - 1;
  return ParseIndex(ref.substr(i), row) && *row > 0;
}

bool IsErrorValue(std::string_view text) {
  for (std::string_view error :
       {"#NULL!", "#DIV/0!", "#VALUE!", "#REF!", "#NAME?", "#NUM!", "#N/A", "#GETTING_DATA"}) {
    if (text == error) return true;
  }
  return false;
}

// Undoes the "_xHHHH_" escapes that stand for characters XML cannot carry.
void DecodeEscapes(std::string& text) {
  if (text.find("_x") == std::string::npos) return;
  std::string out;
  out.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    unsigned code = 0;
    if (text.compare(i, 2, "_x") == 0 && i + 7 <= text.size() && text[i + 6] == '_' &&
        std::from_chars(text.data() + i + 2, text.data() + i + 6, code, 16).ptr ==
            text.data() + i + 6) {
      if (code < 0x80) {
        out += static_cast<char>(code);
      } else if (code < 0x800) {
        out += static_cast<char>(0xC0 | (code >> 6));
        out += static_cast<char>(0x80 | (code & 0x3F));
      } else {
        out += static_cast<char>(0xE0 | (code >> 12));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
      }
      i += 6;
    } else {
      out += text[i];
    }
  }
  text = std::move(out);
}

// Joins a relationship target to the folder of the part that names it;
// targets starting with "/" are absolute within the package.
std::string ResolveTarget(std::string_view base_folder, std::string_view target) {
  std::string joined = target.starts_with("/") ? std::string(target.substr(1))
                                               : std::string(base_folder) + std::string(target);
  std::vector<std::string_view> parts;
  std::string_view rest = joined;
  while (!rest.empty()) {
    size_t slash = rest.find('/');
    std::string_view part = rest.substr(0, slash);
    rest = slash == std::string_view::npos ? "" : rest.substr(slash + 1);
    if (part == "..") {
      if (!parts.empty()) parts.pop_back();
    } else if (!part.empty() && part != ".") {
      parts.push_back(part);
    }
  }
  std::string path;
  for (std::string_view part : parts) {
    if (!path.empty()) path += '/';
    path += part;
  }
  return path;
}

std::string FolderOf(std::string_view part) {
  size_t slash = part.rfind('/');
  return slash == std::string_view::npos ? "" : std::string(part.substr(0, slash + 1));
}

std::string RelationshipsOf(std::string_view part) {
  size_t slash = part.rfind('/');
  std::string_view name = slash == std::string_view::npos ? part : part.substr(slash + 1);
  return FolderOf(part) + "_rels/" + std::string(name) + ".rels";
}

bool TypeIs(std::string_view type, std::string_view suffix) {
  return type.size() > suffix.size() && type.ends_with(suffix) &&
         type[type.size() - suffix.size() - 1] == '/';
}

struct Relationship {
  std::string type;
  std::string target;  // resolved to a package path
};

// Collects the relationships of a .rels part by id.
class RelationshipsHandler : public XmlHandler {
 public:
  explicit RelationshipsHandler(std::string base_folder) : base_folder_(std::move(base_folder)) {}

  bool StartElement(std::string_view name, const char** attributes) override {
    if (name != "Relationship") return true;
    const char* id = FindAttribute(attributes, "Id");
    const char* type = FindAttribute(attributes, "Type");
    const char* target = FindAttribute(attributes, "Target");
    const char* mode = FindAttribute(attributes, "TargetMode");
    if (id == nullptr || target == nullptr) return true;
    if (mode != nullptr && std::strcmp(mode, "External") == 0) return true;
    by_id_[id] = {type ? type : "", ResolveTarget(base_folder_, target)};
    return true;
  }
  bool EndElement(std::string_view) override { return true; }
  bool Text(std::string_view) override { return true; }

  const std::map<std::string, Relationship>& by_id() const { return by_id_; }
  const Relationship* FindType(std::string_view suffix) const {
    for (const auto& [id, relationship] : by_id_) {
      if (TypeIs(relationship.type, suffix)) return &relationship;
    }
    return nullptr;
  }

 private:
  std::string base_folder_;
  std::map<std::string, Relationship> by_id_;
};

// The sheet list and the active tab of workbook.xml.
class WorkbookHandler : public XmlHandler {
 public:
  struct SheetEntry {
    std::string name;
    std::string relationship_id;
  };

  bool StartElement(std::string_view name, const char** attributes) override {
    if (name == "sheet") {
      const char* sheet_name = FindAttribute(attributes, "name");
      const char* id = FindAttribute(attributes, "id");
      sheets.push_back({sheet_name ? sheet_name : "", id ? id : ""});
    } else if (name == "workbookView" && !view_seen) {
      view_seen = true;
      uint64_t tab = 0;
      const char* active = FindAttribute(attributes, "activeTab");
      if (active != nullptr && ParseIndex(active, &tab)) active_tab = tab;
    }
    return true;
  }
  bool EndElement(std::string_view) override { return true; }
  bool Text(std::string_view) override { return true; }

  std::vector<SheetEntry> sheets;
  bool view_seen = false;
  int64_t active_tab = -1;
};

// Finds <sheetView tabSelected="1"> ahead of the cells, then stops.
class TabSelectedHandler : public XmlHandler {
 public:
  bool StartElement(std::string_view name, const char** attributes) override {
    if (name == "sheetView" && IsTrue(FindAttribute(attributes, "tabSelected"))) selected = true;
    return !selected && name != "sheetData";
  }
  bool EndElement(std::string_view name) override { return name != "sheetViews"; }
  bool Text(std::string_view) override { return true; }

  bool selected = false;
};

// The shared strings, kept end to end in one buffer. Rich-text runs are
// joined; phonetic runs (reading aids) are not part of the text.
class SharedStringsHandler : public XmlHandler {
 public:
  bool StartElement(std::string_view name, const char** attributes) override {
    (void)attributes;
    if (name == "si") {
      current_.clear();
    } else if (name == "rPh") {
      ++phonetic_depth_;
    } else if (name == "t" && phonetic_depth_ == 0) {
      in_text_ = true;
    }
    return true;
  }
  bool EndElement(std::string_view name) override {
    if (name == "t") {
      in_text_ = false;
    } else if (name == "rPh") {
      if (phonetic_depth_ > 0) --phonetic_depth_;
    } else if (name == "si") {
      DecodeEscapes(current_);
      pool.append(current_);
      ends.push_back(pool.size());
    }
    return true;
  }
  bool Text(std::string_view text) override {
    if (in_text_) current_.append(text);
    return true;
  }

  std::string pool;
  std::vector<size_t> ends;

 private:
  std::string current_;
  int phonetic_depth_ = 0;
  bool in_text_ = false;
};

// The number format of each cell style (cellXfs), by style index.
class StylesHandler : public XmlHandler {
 public:
  bool StartElement(std::string_view name, const char** attributes) override {
    if (name == "numFmt") {
      const char* id = FindAttribute(attributes, "numFmtId");
      const char* code = FindAttribute(attributes, "formatCode");
      uint64_t number = 0;
      if (id && code && ParseIndex(id, &number)) custom_[number] = code;
    } else if (name == "cellXfs") {
      in_cell_xfs_ = true;
    } else if (name == "xf" && in_cell_xfs_) {
      const char* id = FindAttribute(attributes, "numFmtId");
      uint64_t number = 0;
      if (id == nullptr || !ParseIndex(id, &number)) number = 0;
      format_ids_.push_back(number);
    }
    return true;
  }
  bool EndElement(std::string_view name) override {
    if (name == "cellXfs") in_cell_xfs_ = false;
    return true;
  }
  bool Text(std::string_view) override { return true; }

  std::vector<NumberFormat> Formats() const {
    std::map<uint64_t, NumberFormat> cache;
    std::vector<NumberFormat> formats;
    formats.reserve(format_ids_.size());
    for (uint64_t id : format_ids_) {
      auto found = cache.find(id);
      if (found == cache.end()) {
        auto custom = custom_.find(id);
        NumberFormat format =
            custom != custom_.end()
                ? NumberFormat(custom->second)
                : NumberFormat::Builtin(static_cast<int>(std::min<uint64_t>(id, 1000)));
        found = cache.emplace(id, std::move(format)).first;
      }
      formats.push_back(found->second);
    }
    return formats;
  }

 private:
  std::map<uint64_t, std::string> custom_;
  std::vector<uint64_t> format_ids_;
  bool in_cell_xfs_ = false;
};

// The cells of one worksheet, streamed into a SheetBuilder.
class WorksheetHandler : public XmlHandler {
 public:
  WorksheetHandler(const std::string& path, SheetBuilder& builder, const std::string& strings,
                   const std::vector<size_t>& string_ends, const std::vector<NumberFormat>& formats)
      : path_(path),
        builder_(builder),
        strings_(strings),
        string_ends_(string_ends),
        formats_(formats) {}

  bool StartElement(std::string_view name, const char** attributes) override {
    if (name == "c") {
      StartCell(attributes);
    } else if (name == "v") {
      in_value_ = true;
      value_.clear();
    } else if (name == "row") {
      StartRow(attributes);
    } else if (name == "is") {
      in_inline_ = true;
      value_.clear();
    } else if (name == "t" && in_inline_ && phonetic_depth_ == 0) {
      in_value_ = true;
    } else if (name == "rPh") {
      ++phonetic_depth_;
    }
    return true;
  }

  bool EndElement(std::string_view name) override {
    if (name == "v") {
      in_value_ = false;
      has_value_ = true;
    } else if (name == "t") {
      in_value_ = false;
    } else if (name == "is") {
      in_inline_ = false;
      has_value_ = true;
    } else if (name == "rPh") {
      if (phonetic_depth_ > 0) --phonetic_depth_;
    } else if (name == "c") {
      EndCell();
    }
    return true;
  }

  bool Text(std::string_view text) override {
    if (in_value_) value_.append(text);
    return true;
  }

 private:
  [[noreturn]] void Fail(Kind kind, const std::string& reason) const {
    throw WorkbookError(kind, path_, reason);
  }

  void StartRow(const char** attributes) {
    uint64_t number = 0;
    const char* r = FindAttribute(attributes, "r");
    if (r != nullptr && ParseIndex(r, &number) && number > 0) {
      row_ = number - 1;
    } else {
      row_ = next_row_;
    }
    if (row_ >= WorkbookLimits::kMaxRows) {
      Fail(Kind::kTooLarge, "row " + std::to_string(row_ + 1) + " is beyond the last row");
    }
    next_row_ = row_ + 1;
    next_column_ = 0;
    if (IsTrue(FindAttribute(attributes, "hidden"))) builder_.HideRows(row_, 1);
  }

  void StartCell(const char** attributes) {
    cell_row_ = row_;
    cell_column_ = next_column_;
    type_ = Type::kNumber;
    style_ = 0;
    has_value_ = false;
    value_.clear();
    for (const char** a = attributes; a[0] != nullptr; a += 2) {
      std::string_view key = LocalName(a[0]);
      std::string_view value = a[1];
      if (key == "r") {
        uint64_t column = 0, row = 0;
        if (ParseCellReference(value, &column, &row)) {
          cell_column_ = column;
          cell_row_ = row - 1;
        }
      } else if (key == "t") {
        type_ = TypeOf(value);
      } else if (key == "s") {
        if (!ParseIndex(value, &style_)) style_ = 0;
      }
    }
    next_column_ = cell_column_ + 1;
  }

  enum class Type { kNumber, kShared, kInline, kFormulaText, kError, kBoolean, kDate };

  static Type TypeOf(std::string_view t) {
    if (t == "s") return Type::kShared;
    if (t == "inlineStr") return Type::kInline;
    if (t == "str") return Type::kFormulaText;
    if (t == "e") return Type::kError;
    if (t == "b") return Type::kBoolean;
    if (t == "d") return Type::kDate;
    return Type::kNumber;
  }

  void EndCell() {
    if (!has_value_) return;
    switch (type_) {
      case Type::kShared:
        Place(CellKind::kText, SharedString());
        break;
      case Type::kInline:
        DecodeEscapes(value_);
        Place(CellKind::kText, value_);
        break;
      case Type::kFormulaText:
        // Some writers cache an error result as text; a formula whose text
        // is exactly an error value is taken as that error.
        DecodeEscapes(value_);
        Place(IsErrorValue(value_) ? CellKind::kError : CellKind::kText, value_);
        break;
      case Type::kError:
        Place(CellKind::kError, value_);
        break;
      case Type::kBoolean:
        Place(CellKind::kBoolean, value_ == "1" || value_ == "true" ? "TRUE" : "FALSE");
        break;
      case Type::kDate:
        Place(CellKind::kNumber, value_);
        break;
      case Type::kNumber:
        PlaceNumber();
        break;
    }
  }

  std::string_view SharedString() const {
    uint64_t index = 0;
    if (!ParseIndex(Trimmed(value_), &index) || index >= string_ends_.size()) {
      Fail(Kind::kMalformed, "a cell refers to a shared string that does not exist");
    }
    size_t begin = index == 0 ? 0 : string_ends_[index - 1];
    return std::string_view(strings_).substr(begin, string_ends_[index] - begin);
  }

  void PlaceNumber() {
    std::string_view text = Trimmed(value_);
    if (text.empty()) return;
    double number = 0;
    auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size()) {
      Place(CellKind::kText, text);
      return;
    }
    const NumberFormat& format = style_ < formats_.size() ? formats_[style_] : general_;
    if (format.IsGeneral() && IsGeneralText(text)) {
      Place(CellKind::kNumber, text);
    } else {
      Place(CellKind::kNumber, format.Format(number));
    }
  }

  void Place(CellKind kind, std::string_view text) {
    builder_.SetCell(cell_row_, cell_column_, kind, text);
  }

  static std::string_view Trimmed(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\n')) text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\n')) text.remove_suffix(1);
    return text;
  }

  const std::string& path_;
  SheetBuilder& builder_;
  const std::string& strings_;
  const std::vector<size_t>& string_ends_;
  const std::vector<NumberFormat>& formats_;
  const NumberFormat general_;

  uint64_t row_ = 0;
  uint64_t next_row_ = 0;
  uint64_t next_column_ = 0;
  uint64_t cell_row_ = 0;
  uint64_t cell_column_ = 0;
  uint64_t style_ = 0;
  Type type_ = Type::kNumber;
  bool has_value_ = false;
  bool in_value_ = false;
  bool in_inline_ = false;
  int phonetic_depth_ = 0;
  std::string value_;
};

class XlsxWorkbook : public Workbook {
 public:
  XlsxWorkbook(std::string bytes, std::string path)
      : bytes_(std::move(bytes)), path_(std::move(path)), archive_(bytes_, path_) {
    LoadWorkbook();
  }

  const std::vector<SheetInfo>& Sheets() const override { return sheets_; }
  size_t ActiveSheet() const override { return active_; }

  Sheet ReadSheet(size_t index) override {
    if (index >= sheets_.size()) throw std::out_of_range("no sheet with that index");
    if (!sheets_[index].is_worksheet) {
      throw WorkbookError(Kind::kNotWorksheet, path_,
                          "sheet '" + sheets_[index].name + "' is not a worksheet");
    }
    if (parts_[index].empty()) {
      throw WorkbookError(Kind::kMalformed, path_,
                          "sheet '" + sheets_[index].name + "' has no content part");
    }
    LoadSharedParts();
    SheetBuilder builder(path_, sheets_[index].name);
    WorksheetHandler handler(path_, builder, strings_.pool, strings_.ends, formats_);
    ParseXmlEntry(archive_, parts_[index], handler);
    return builder.Finish();
  }

 private:
  void LoadWorkbook() {
    std::string workbook_part = "xl/workbook.xml";
    if (archive_.Contains("_rels/.rels")) {
      RelationshipsHandler package("");
      ParseXmlEntry(archive_, "_rels/.rels", package);
      if (const Relationship* office = package.FindType("officeDocument")) {
        workbook_part = office->target;
      }
    }
    WorkbookHandler workbook;
    ParseXmlEntry(archive_, workbook_part, workbook);
    if (workbook.sheets.empty()) {
      throw WorkbookError(Kind::kMalformed, path_, "the workbook has no sheets");
    }
    RelationshipsHandler relationships(FolderOf(workbook_part));
    std::string relationships_part = RelationshipsOf(workbook_part);
    if (archive_.Contains(relationships_part)) {
      ParseXmlEntry(archive_, relationships_part, relationships);
    }
    for (const WorkbookHandler::SheetEntry& entry : workbook.sheets) {
      auto found = relationships.by_id().find(entry.relationship_id);
      bool known = found != relationships.by_id().end();
      sheets_.push_back({entry.name, !known || TypeIs(found->second.type, "worksheet")});
      parts_.push_back(known ? found->second.target : "");
    }
    const Relationship* strings = relationships.FindType("sharedStrings");
    const Relationship* styles = relationships.FindType("styles");
    strings_part_ = strings ? strings->target : "xl/sharedStrings.xml";
    styles_part_ = styles ? styles->target : "xl/styles.xml";
    active_ = FindActiveSheet(workbook.active_tab);
  }

  // The workbook's active tab, else the first sheet whose view is selected.
  size_t FindActiveSheet(int64_t active_tab) const {
    if (active_tab >= 0 && static_cast<size_t>(active_tab) < sheets_.size()) {
      return static_cast<size_t>(active_tab);
    }
    for (size_t i = 0; i < sheets_.size(); ++i) {
      if (parts_[i].empty() || !archive_.Contains(parts_[i])) continue;
      TabSelectedHandler handler;
      try {
        ParseXmlEntry(archive_, parts_[i], handler);
      } catch (const WorkbookError&) {
        continue;  // a damaged sheet is reported when it is read
      }
      if (handler.selected) return i;
    }
    return 0;
  }

  void LoadSharedParts() {
    if (shared_parts_loaded_) return;
    strings_ = SharedStringsHandler();
    if (archive_.Contains(strings_part_)) ParseXmlEntry(archive_, strings_part_, strings_);
    if (archive_.Contains(styles_part_)) {
      StylesHandler styles;
      ParseXmlEntry(archive_, styles_part_, styles);
      formats_ = styles.Formats();
    }
    shared_parts_loaded_ = true;
  }

  const std::string bytes_;
  const std::string path_;
  ZipArchive archive_;
  std::vector<SheetInfo> sheets_;
  std::vector<std::string> parts_;  // package path of each sheet, empty when unknown
  size_t active_ = 0;
  std::string strings_part_;
  std::string styles_part_;
  bool shared_parts_loaded_ = false;
  SharedStringsHandler strings_;
  std::vector<NumberFormat> formats_;
};

}  // namespace

std::unique_ptr<Workbook> OpenXlsxWorkbook(std::string bytes, std::string path) {
  return std::make_unique<XlsxWorkbook>(std::move(bytes), std::move(path));
}

}  // namespace zephyr::excel
