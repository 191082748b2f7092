// Reading spreadsheets: the sheets of a workbook file (.xlsx, .ods, or .csv
// as a single sheet), which one is active, and the rows of a worksheet as a
// user sees them — each cell's kind and displayed text, each row's hidden flag.
//
// A workbook is untrusted input: malformed archives or XML, archive entries
// that inflate far beyond a sane size, entity expansion and absurd dimensions
// all end in a WorkbookError naming the file, within bounded time and memory.
#ifndef ZEPHYR_EXCEL_WORKBOOK_H_
#define ZEPHYR_EXCEL_WORKBOOK_H_

#include <cstddef>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "zephyr/support/errors.h"

namespace zephyr::excel {

enum class CellKind { kEmpty, kText, kNumber, kBoolean, kError };

struct Cell {
  CellKind kind = CellKind::kEmpty;
  // The text a user sees in the cell: a number as its number format shows it
  // ("0101" for 101 formatted "0000"; "3" and "1.5" in the General format),
  // a boolean "TRUE" or "FALSE", an error value as written ("#N/A"), and
  // empty text for an empty cell.
  std::string text;
};

struct SheetRow {
  bool hidden = false;
  // cells[0] is column A. Trailing empty cells may be left out.
  std::vector<Cell> cells;
};

struct Sheet {
  std::string name;
  // rows[0] is sheet row 1. Trailing empty rows may be left out; rows in
  // between are present (empty) so that indexes stay sheet row numbers.
  std::vector<SheetRow> rows;
};

struct SheetInfo {
  std::string name;
  bool is_worksheet = true;  // false for a chart sheet or another non-grid sheet
};

class Workbook {
 public:
  virtual ~Workbook() = default;
  // Every sheet, in tab order.
  virtual const std::vector<SheetInfo>& Sheets() const = 0;
  // The index (in Sheets()) of the sheet that was active when the file was saved.
  virtual size_t ActiveSheet() const = 0;
  // Reads a worksheet; raises WorkbookError (kNotWorksheet) for a sheet that
  // is no worksheet and (kMalformed, kTooLarge) for bad content.
  virtual Sheet ReadSheet(size_t index) = 0;
  // The document's file, where the source's name is not it (a document open
  // in a program); empty otherwise. An import takes its title from it.
  virtual std::string DocumentPath() const { return {}; }
};

// One of the component's run-time errors: file not found (53) for a missing
// file, path/file access error (75) for another that cannot be opened, and
// invalid file format (321) for the rest.
class WorkbookError : public Error {
 public:
  enum class Kind {
    kUnsupportedFormat,  // not a workbook this library reads
    kCannotOpen,         // missing or unreadable file
    kMalformed,          // broken archive, XML or references
    kTooLarge,           // beyond the limits below
    kNotWorksheet,       // the sheet holds no cells (a chart sheet)
    kNoProgram,          // no running spreadsheet program answers
  };

  // Description() and what() are "'<path>': <reason>".
  WorkbookError(Kind kind, std::string path, std::string reason);

  Kind kind() const { return kind_; }
  const std::string& path() const { return path_; }
  const std::string& reason() const { return reason_; }

 private:
  Kind kind_;
  std::string path_;
  std::string reason_;
};

// Bounds that every reader enforces.
struct WorkbookLimits {
  static constexpr size_t kMaxRows = 1'048'576;
  static constexpr size_t kMaxColumns = 16'384;
  static constexpr size_t kMaxEntryBytes = size_t{512} << 20;  // one inflated archive entry
  static constexpr size_t kMaxCompressionRatio = 1000;         // inflated : stored
  // Memory that the cells and texts of one sheet may take once read: repeated
  // cells, far-away cell references and shared texts cannot multiply beyond it.
  static constexpr size_t kMaxSheetBytes = size_t{256} << 20;
};

enum class WorkbookFormat { kXlsx, kOds, kCsv };

// Where an import reads its sheet: a workbook file, or the document open in a
// running spreadsheet program. `open` raises WorkbookError: kNoProgram when no
// program answers, kCannotOpen when it has no document, kNotWorksheet when the
// document is no spreadsheet, and as a file's readers do.
struct SheetSource {
  // The file's path, or the program's name; messages name it.
  std::string name;
  std::function<std::unique_ptr<Workbook>()> open;

  static SheetSource File(std::string path);
};

// Opens a workbook file; the format comes from the content (a zip archive
// holding xl/workbook.xml or content.xml) or, for text, the ".csv" extension.
std::unique_ptr<Workbook> OpenWorkbook(const std::string& path);

// Opens a workbook held in memory (for fuzzing); `name` stands for the path in errors.
std::unique_ptr<Workbook> OpenWorkbookBytes(std::string bytes, WorkbookFormat format,
                                            const std::string& name);

}  // namespace zephyr::excel

#endif  // ZEPHYR_EXCEL_WORKBOOK_H_
