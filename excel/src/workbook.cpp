#include "zephyr/excel/workbook.h"

#include <cctype>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "csv_workbook.h"
#include "ods_workbook.h"
#include "xlsx_workbook.h"
#include "zip_archive.h"

namespace zephyr::excel {

namespace {

using Kind = WorkbookError::Kind;

constexpr const char* kNoSuchFile = "no such file";

// A workbook file larger than this cannot hold entries within the limits.
constexpr uintmax_t kMaxFileBytes = 2 * WorkbookLimits::kMaxEntryBytes;

std::string ReadFile(const std::string& path) {
  std::error_code error;
  if (!std::filesystem::exists(path, error)) {
    throw WorkbookError(Kind::kCannotOpen, path, kNoSuchFile);
  }
  if (!std::filesystem::is_regular_file(path, error)) {
    throw WorkbookError(Kind::kCannotOpen, path, "not a regular file");
  }
  uintmax_t size = std::filesystem::file_size(path, error);
  if (error) throw WorkbookError(Kind::kCannotOpen, path, error.message());
  if (size > kMaxFileBytes) throw WorkbookError(Kind::kTooLarge, path, "the file is too large");
  std::ifstream in(path, std::ios::binary);
  if (!in) throw WorkbookError(Kind::kCannotOpen, path, std::strerror(errno));  // "Permission denied"
  std::string bytes(size, '\0');
  in.read(bytes.data(), static_cast<std::streamsize>(size));
  if (static_cast<uintmax_t>(in.gcount()) != size) {
    throw WorkbookError(Kind::kCannotOpen, path, "the file cannot be read");
  }
  return bytes;
}

std::string LowerExtension(const std::string& path) {
  std::string extension = std::filesystem::path(path).extension().string();
  for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return extension;
}

// True when the archive's mimetype entry, if any, names a spreadsheet: text
// documents and drawings hold content.xml too, and may hold tables.
bool IsSpreadsheetPackage(const ZipArchive& archive) {
  if (!archive.Contains("mimetype")) return true;
  std::string head;
  archive.Read("mimetype", [&](std::string_view chunk) {
    head = chunk.substr(0, 64);
    return false;
  });
  return head.starts_with("application/vnd.oasis.opendocument.spreadsheet");
}

// The format of a zip archive from the parts it holds.
WorkbookFormat ArchiveFormat(const std::string& bytes, const std::string& path) {
  ZipArchive archive(bytes, path);
  if (archive.Contains("content.xml")) {
    if (!IsSpreadsheetPackage(archive)) {
      throw WorkbookError(Kind::kUnsupportedFormat, path, "the document is no spreadsheet");
    }
    return WorkbookFormat::kOds;
  }
  if (archive.Contains("xl/workbook.xml") || archive.Contains("_rels/.rels")) {
    return WorkbookFormat::kXlsx;
  }
  throw WorkbookError(Kind::kUnsupportedFormat, path, "the archive holds no workbook");
}

}  // namespace

namespace {

int32_t ErrorNumber(WorkbookError::Kind kind, const std::string& reason) {
  RuntimeErrorCode code = RuntimeErrorCode::kInvalidFileFormat;
  if (kind == Kind::kCannotOpen) {
    code = reason == kNoSuchFile ? RuntimeErrorCode::kFileNotFound
                                 : RuntimeErrorCode::kPathFileAccessError;
  }
  if (kind == Kind::kNoProgram) code = RuntimeErrorCode::kCannotCreateObject;
  return static_cast<int32_t>(code);
}

}  // namespace

WorkbookError::WorkbookError(Kind kind, std::string path, std::string reason)
    : Error(ErrorNumber(kind, reason), kRuntimeErrorSource, "'" + path + "': " + reason),
      kind_(kind),
      path_(std::move(path)),
      reason_(std::move(reason)) {}

SheetSource SheetSource::File(std::string path) {
  SheetSource source;
  source.name = path;
  source.open = [path]() { return OpenWorkbook(path); };
  return source;
}

std::unique_ptr<Workbook> OpenWorkbook(const std::string& path) {
  std::string bytes = ReadFile(path);
  std::string extension = LowerExtension(path);
  if (ZipArchive::LooksLikeZip(bytes)) {
    return OpenWorkbookBytes(std::move(bytes), ArchiveFormat(bytes, path), path);
  }
  if (bytes.starts_with("\xD0\xCF\x11\xE0")) {
    throw WorkbookError(Kind::kUnsupportedFormat, path,
                        "an encrypted or binary-format workbook cannot be read");
  }
  if (extension == ".csv") return OpenWorkbookBytes(std::move(bytes), WorkbookFormat::kCsv, path);
  if (extension == ".xlsx" || extension == ".xlsm" || extension == ".ods") {
    throw WorkbookError(Kind::kMalformed, path, "the file is not a zip archive");
  }
  throw WorkbookError(Kind::kUnsupportedFormat, path, "not a .xlsx, .ods or .csv workbook");
}

std::unique_ptr<Workbook> OpenWorkbookBytes(std::string bytes, WorkbookFormat format,
                                            const std::string& name) {
  switch (format) {
    case WorkbookFormat::kXlsx:
      return OpenXlsxWorkbook(std::move(bytes), name);
    case WorkbookFormat::kOds:
      return OpenOdsWorkbook(std::move(bytes), name);
    case WorkbookFormat::kCsv:
      return OpenCsvWorkbook(std::move(bytes), name);
  }
  throw WorkbookError(Kind::kUnsupportedFormat, name, "unknown workbook format");
}

}  // namespace zephyr::excel
