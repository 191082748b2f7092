#include "csv_workbook.h"

#include <stdexcept>
#include <string_view>

#include "sheet_builder.h"
#include "zephyr/support/codepage.h"

namespace zephyr::excel {

namespace {

bool IsValidUtf8(std::string_view text) {
  size_t i = 0;
  while (i < text.size()) {
    auto lead = static_cast<unsigned char>(text[i]);
    size_t length = lead < 0x80           ? 1
                    : (lead >> 5) == 0x6  ? 2
                    : (lead >> 4) == 0xE  ? 3
                    : (lead >> 3) == 0x1E ? 4
                                          : 0;
    if (length == 0 || i + length > text.size()) return false;
    for (size_t k = 1; k < length; ++k) {
      if ((static_cast<unsigned char>(text[i + k]) & 0xC0) != 0x80) return false;
    }
    i += length;
  }
  return true;
}

// The file name without folder and extension.
std::string SheetName(std::string_view path) {
  size_t slash = path.rfind('/');
  std::string_view name = slash == std::string_view::npos ? path : path.substr(slash + 1);
  size_t dot = name.rfind('.');
  if (dot != std::string_view::npos && dot > 0) name = name.substr(0, dot);
  return std::string(name);
}

bool IsLineEnd(char c) {
  return c == '\r' || c == '\n';
}

class CsvWorkbook : public Workbook {
 public:
  CsvWorkbook(std::string bytes, std::string path)
      : path_(std::move(path)), sheets_{{SheetName(path_), true}} {
    std::string_view text = bytes;
    if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
    text_ = IsValidUtf8(text) ? std::string(text) : FromCodePage(text);
  }

  const std::vector<SheetInfo>& Sheets() const override { return sheets_; }
  size_t ActiveSheet() const override { return 0; }

  Sheet ReadSheet(size_t index) override {
    if (index != 0) throw std::out_of_range("no sheet with that index");
    SheetBuilder builder(path_, sheets_[0].name);
    std::string_view text = text_;
    std::string field;
    size_t row = 0;
    size_t column = 0;
    size_t i = 0;
    while (i < text.size()) {
      i = ReadField(text, i, &field);
      if (!field.empty()) builder.SetCell(row, column, CellKind::kText, field);
      if (i >= text.size()) break;
      if (text[i] == ',') {
        ++column;
        ++i;
        continue;
      }
      // A line end: CR LF, LF or a lone CR.
      i += text.compare(i, 2, "\r\n") == 0 ? 2 : 1;
      ++row;
      column = 0;
    }
    return builder.Finish();
  }

 private:
  // Reads the field at `i` into `field`; returns the position of the comma
  // or line end after it, or the end of the text. A quoted field may hold
  // commas, line breaks and doubled quotes; text after its closing quote is
  // kept, and an unclosed quote runs to the end.
  static size_t ReadField(std::string_view text, size_t i, std::string* field) {
    field->clear();
    if (i < text.size() && text[i] == '"') {
      ++i;
      for (;;) {
        size_t quote = text.find('"', i);
        if (quote == std::string_view::npos) {
          field->append(text.substr(i));
          return text.size();
        }
        field->append(text.substr(i, quote - i));
        i = quote + 1;
        if (i < text.size() && text[i] == '"') {
          field->push_back('"');
          ++i;
        } else {
          break;
        }
      }
    }
    size_t end = i;
    while (end < text.size() && text[end] != ',' && !IsLineEnd(text[end])) ++end;
    field->append(text.substr(i, end - i));
    return end;
  }

  const std::string path_;
  std::vector<SheetInfo> sheets_;
  std::string text_;
};

}  // namespace

std::unique_ptr<Workbook> OpenCsvWorkbook(std::string bytes, std::string path) {
  return std::make_unique<CsvWorkbook>(std::move(bytes), std::move(path));
}

}  // namespace zephyr::excel
