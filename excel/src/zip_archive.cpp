#include "zip_archive.h"

#include <zip.h>

#include <algorithm>
#include <memory>

#include "zephyr/excel/workbook.h"

namespace zephyr::excel {

namespace {

constexpr size_t kChunkBytes = 64 * 1024;

struct FileCloser {
  void operator()(zip_file_t* file) const { zip_fclose(file); }
};

std::string ErrorText(zip_error_t* error) {
  std::string text = zip_error_strerror(error);
  zip_error_fini(error);
  return text;
}

}  // namespace

ZipArchive::ZipArchive(std::string_view bytes, std::string path) : path_(std::move(path)) {
  zip_error_t error;
  zip_error_init(&error);
  zip_source_t* source = zip_source_buffer_create(bytes.data(), bytes.size(), 0, &error);
  if (source == nullptr) {
    throw WorkbookError(WorkbookError::Kind::kMalformed, path_, "zip: " + ErrorText(&error));
  }
  archive_ = zip_open_from_source(source, ZIP_RDONLY, &error);
  if (archive_ == nullptr) {
    zip_source_free(source);
    throw WorkbookError(WorkbookError::Kind::kMalformed, path_,
                        "not a readable zip archive: " + ErrorText(&error));
  }
  zip_error_fini(&error);
}

ZipArchive::~ZipArchive() {
  zip_discard(archive_);
}

bool ZipArchive::LooksLikeZip(std::string_view bytes) {
  return bytes.starts_with("PK");
}

bool ZipArchive::Contains(std::string_view name) const {
  return zip_name_locate(archive_, std::string(name).c_str(), ZIP_FL_NOCASE) >= 0;
}

void ZipArchive::Read(std::string_view name,
                      const std::function<bool(std::string_view)>& sink) const {
  const std::string entry(name);
  auto fail = [&](WorkbookError::Kind kind, const std::string& reason) {
    throw WorkbookError(kind, path_, entry + ": " + reason);
  };
  zip_int64_t index = zip_name_locate(archive_, entry.c_str(), ZIP_FL_NOCASE);
  if (index < 0) fail(WorkbookError::Kind::kMalformed, "missing from the archive");
  zip_stat_t stat;
  if (zip_stat_index(archive_, index, 0, &stat) != 0) {
    fail(WorkbookError::Kind::kMalformed, zip_strerror(archive_));
  }
  // Deflate cannot exceed about 1032:1, so a larger ratio, declared or
  // inflated, marks a crafted entry; the stored size bounds the real output.
  const size_t stored = (stat.valid & ZIP_STAT_COMP_SIZE) ? stat.comp_size : 0;
  const size_t limit =
      stored >= WorkbookLimits::kMaxEntryBytes / WorkbookLimits::kMaxCompressionRatio
          ? WorkbookLimits::kMaxEntryBytes
          : std::max<size_t>(stored, 1) * WorkbookLimits::kMaxCompressionRatio;
  if ((stat.valid & ZIP_STAT_SIZE) && stat.size > limit) {
    fail(WorkbookError::Kind::kTooLarge, "inflates beyond the size limit");
  }
  std::unique_ptr<zip_file_t, FileCloser> file(zip_fopen_index(archive_, index, 0));
  if (!file) fail(WorkbookError::Kind::kMalformed, zip_strerror(archive_));
  std::string buffer(kChunkBytes, '\0');
  size_t total = 0;
  for (;;) {
    zip_int64_t got = zip_fread(file.get(), buffer.data(), buffer.size());
    if (got < 0) fail(WorkbookError::Kind::kMalformed, zip_file_strerror(file.get()));
    if (got == 0) break;
    total += static_cast<size_t>(got);
    if (total > limit) fail(WorkbookError::Kind::kTooLarge, "inflates beyond the size limit");
    if (!sink(std::string_view(buffer.data(), static_cast<size_t>(got)))) break;
  }
}

std::string ZipArchive::ReadAll(std::string_view name) const {
  std::string content;
  Read(name, [&](std::string_view chunk) {
    content.append(chunk);
    return true;
  });
  return content;
}

}  // namespace zephyr::excel
