// dBase: one dBase III table file (version byte 0x03), opened, created, read
// and appended to one record at a time, plus bulk reading into a table array
// and sorting of such arrays.
//
// Only character ("C") columns carry values; columns of every other type are
// stored and described but read as empty. Text is converted between the
// active 8-bit code page (on disk) and UTF-8 (in the program) on every value
// read and write.
//
// Files are opened shared for reading and writing and never locked. Several
// processes may append to one table: every write re-reads the header first,
// appends at the record count found on disk and writes the new count back at
// once, so each process sees the others' records.
//
// Errors the table raises itself are AutomationErrors with source
// "dBase Class":
//   0x80040200 "dBase File Not Found '<path>'"   OpenFile of a missing file
//   0x80040201 "Invalid dBase File Type"         OpenFile of a file that is no table
//   0x80040202 "Database is ReadOnly"            PutRecord on a table not open for writing
//   0x80040203 .. 0x80040208                     PutTableValues / SortTableValues
// A file that promises more than it holds (records or descriptors beyond its
// end, a record length of 0) raises a RuntimeError that names the file.
//
// Not thread-safe: one object belongs to one thread at a time.
#ifndef ZEPHYR_TABLE_DBASE_H_
#define ZEPHYR_TABLE_DBASE_H_

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "zephyr/support/errors.h"
#include "zephyr/support/file.h"
#include "zephyr/support/variant.h"
#include "zephyr/table/fields.h"
#include "zephyr/table/table_header.h"
#include "zephyr/table/table_records.h"

namespace zephyr {

class SharedHeader;

// The source of every AutomationError the table raises.
inline constexpr const char* kDBaseErrorSource = "dBase Class";

// The numbers of the table's own errors.
enum DBaseError : int32_t {
  kDBaseFileNotFound = kObjectErrorBase + 512,
  kDBaseInvalidFileType = kObjectErrorBase + 513,
  kDBaseReadOnly = kObjectErrorBase + 514,
  kDBaseArrayDoesNotMatchFields = kObjectErrorBase + 515,
  kDBaseArrayHasNoColumns = kObjectErrorBase + 516,
  kDBaseArrayHasNoRows = kObjectErrorBase + 517,
  kDBaseColumnsNotBase1 = kObjectErrorBase + 518,
  kDBaseRowsNotBase1 = kObjectErrorBase + 519,
  kDBaseInvalidSortColumn = kObjectErrorBase + 520,
};

class dBase {
 public:
  // What OpenFile does.
  enum Mode : int32_t { kReadOnly = 0, kCreate = 1, kReadWrite = 2 };

  dBase();
  // Runs CloseFile; errors while closing are dropped.
  ~dBase();
  dBase(const dBase&) = delete;
  dBase& operator=(const dBase&) = delete;

  // 0 open read-only, 1 create, 2 open for reading and writing. Set it before
  // OpenFile; after a create it reads 2. CloseFile (and so OpenFile on an open
  // table) sets it back to 0.
  int32_t OpenMode() const { return open_mode_; }
  void OpenMode(int32_t mode) { open_mode_ = mode; }

  // The column list. Fill it before creating a table; OpenFile appends the
  // columns it reads, CloseFile empties it.
  std::shared_ptr<zephyr::Fields> Fields();
  void Fields(std::shared_ptr<zephyr::Fields> fields) { fields_ = std::move(fields); }

  // The path of the open table; set by OpenFile.
  const std::string& Filename() const { return filename_; }
  void Filename(std::string filename) { filename_ = std::move(filename); }

  // The record count of the header in memory as a 32-bit integer while a
  // table is open, otherwise the 16-bit integer 0.
  Variant RecordCount() const;
  // The record in the buffer (0 when there is none).
  int32_t RecordNo() const { return record_no_; }
  int32_t RecordLen() const { return record_length_; }
  // True exactly while a table is open.
  bool FileExists() const { return file_.IsOpen(); }

  // Whether the record in the buffer is marked deleted ("*" in byte 1).
  // Writing changes the mark only while a table is open and the buffer holds
  // a record.
  bool Deleted() const;
  void Deleted(bool deleted);

  // The value of column index (1-based) in the record buffer: for a "C"
  // column its text, trailing blanks included; for any other type an empty
  // Variant. With no table open or an empty buffer, the empty text. An index
  // with no column raises object required (424).
  Variant Value(int32_t index) const;
  // Writes the value's text into a "C" column, blank-padded or cut to the
  // column's length in code-page bytes; other column types ignore it.
  void Value(int32_t index, const Variant& value);
  // The same for text, without making a Variant of it.
  void PutText(int32_t index, std::string_view text);

  // Opens or creates file_name according to OpenMode, closing any open table
  // first (which resets OpenMode and Fields, so set them after closing).
  // Creating assigns the column positions, deletes the file and the files of
  // the same name with ".zpi" and ".inf" in place of the last four
  // characters, writes the header and never raises: if the file cannot be
  // made the object simply stays closed. Opening raises
  // kDBaseFileNotFound, kDBaseInvalidFileType, or, for an OpenMode other
  // than 0, 1 or 2, bad file name or number (52).
  void OpenFile(const std::string& file_name);

  // Blanks the record buffer for a new, live record.
  void InitRecord();
  // Loads record rec_no into the buffer. Outside 1 .. RecordCount (or with
  // no table open) the buffer is blanked and RecordNo becomes 0, silently.
  void GetRecord(int32_t rec_no);
  // Writes the buffer over record rec_no, or appends it when rec_no is not
  // an existing record (0 by convention). The header is re-read first, so an
  // append lands after the last record any process has written; unless a
  // bulk write is running, the new count and today's date reach the disk at
  // once. Raises kDBaseReadOnly when OpenMode is not 2.
  void PutRecord(int32_t rec_no);
  // Writes the end-of-file byte 0x1A after the last record when anything was
  // written, closes the file and resets the object.
  void CloseFile();

  // From now until CloseFile, appends collect in memory and reach the file
  // in large writes, each followed by the header with the new count; any
  // other read or write of records, and CloseFile, writes them first. Appends
  // then no longer re-read the header: only for a table that nobody else
  // uses while it is open, such as a work table that is renamed into place
  // once complete.
  void HoldAppends();

  // The live records as a table array (column, row), both from 1, in file
  // order; each element is what Value returns. An empty Variant when no table
  // is open or it has no records. A table whose records are all deleted
  // raises subscript out of range (9).
  Variant GetTableValues();
  // The same records kept as their bytes, each cell made on demand; null
  // where GetTableValues gives an empty Variant, and the same error when all
  // records are deleted.
  std::unique_ptr<TableRecords> ReadRecords();

  // Sorts the rows of a table array in place by column sort_column and
  // returns values. The order is exactly that of a Shell sort with halving
  // gaps that swaps two rows only when the first sorts after the second, so
  // rows with equal keys end where that algorithm leaves them. Keys compare as
  // text by CodePageCollation. Descending compares the texts with every
  // code-page byte replaced by 255 minus its code, which reverses the order
  // of texts of equal length but keeps a text before its own extensions
  // ("AB" before "ABC"). Raises kDBaseArrayHasNoColumns, kDBaseArrayHasNoRows,
  // kDBaseColumnsNotBase1, kDBaseRowsNotBase1, kDBaseInvalidSortColumn, in
  // that order of checks.
  Variant& SortTableValues(Variant& values, int32_t sort_column, bool descending);

  // Appends rows from an array in a single batch (the header count is not
  // rewritten between rows). Returns silently when no table is open or values
  // is no array. Elements 1 and 2 are read with one subscript: element 2
  // must be an array with elements, element 1 an array with one element per
  // column (else kDBaseArrayDoesNotMatchFields). The rows then run over
  // dimension 2 of values itself, which a one-dimensional array does not
  // have, so in practice this raises subscript out of range (9) and leaves
  // the batch mode on until CloseFile.
  void PutTableValues(Variant& values);

  // The 12-byte header block as last read or written.
  const TableHeader& Header() const { return header_; }

 private:
  zephyr::Fields& Columns();
  // The column at a 1-based index; raises object required (424) when none.
  const Field& Column(int32_t index) const;
  void CreateTable(const std::string& file_name);
  void ReadStructure(const std::string& file_name);
  void ReadHeader();
  void WriteHeader(uint32_t count);
  // The file offset of a record, with the header in memory.
  int64_t RecordOffset(int64_t rec_no) const;
  void WriteText(const Field& field, std::string_view text);
  // The number an appended record gets; raises overflow when there is none.
  int32_t NextRecordNumber() const;
  // Appends the buffer to the held records, writing them when they are many.
  void HoldAppend();
  void WriteHeldRecords();
  void Reset();

  TableHeader header_;
  std::array<unsigned char, 20> reserved_{};
  std::shared_ptr<zephyr::Fields> fields_;
  std::string filename_;
  int32_t record_length_ = 0;
  int32_t record_no_ = 0;
  int32_t open_mode_ = 0;
  File file_;
  std::unique_ptr<SharedHeader> shared_header_;
  std::string buffer_;  // code-page bytes of the current record
  bool dirty_ = false;
  bool batch_ = false;
  bool hold_appends_ = false;
  std::string held_;       // appended records not yet written
  int64_t held_from_ = 0;  // the record number of the first of them
};

}  // namespace zephyr

#endif  // ZEPHYR_TABLE_DBASE_H_
