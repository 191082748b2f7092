// ZipArchive: read-only access to the entries of a zip archive held in
// memory, inflating each entry in chunks under WorkbookLimits (declared size,
// compression ratio and the bytes really inflated), so that an archive bomb
// ends in an error after at most kMaxEntryBytes.
#ifndef ZEPHYR_EXCEL_SRC_ZIP_ARCHIVE_H_
#define ZEPHYR_EXCEL_SRC_ZIP_ARCHIVE_H_

#include <functional>
#include <string>
#include <string_view>

struct zip;

namespace zephyr::excel {

class ZipArchive {
 public:
  // Opens the archive in `bytes`, which must outlive this object; raises
  // WorkbookError (kMalformed) naming `path` when it is no zip archive.
  ZipArchive(std::string_view bytes, std::string path);
  ~ZipArchive();
  ZipArchive(const ZipArchive&) = delete;
  ZipArchive& operator=(const ZipArchive&) = delete;

  // True when `bytes` start like a zip archive.
  static bool LooksLikeZip(std::string_view bytes);

  const std::string& path() const { return path_; }

  // True when the archive holds the entry; names compare without letter case.
  bool Contains(std::string_view name) const;

  // Inflates the entry and hands it to `sink` chunk by chunk until the end or
  // until `sink` returns false. Raises WorkbookError: kMalformed for a missing
  // or damaged entry, kTooLarge past the limits.
  void Read(std::string_view name, const std::function<bool(std::string_view)>& sink) const;

  // The whole entry (for small parts).
  std::string ReadAll(std::string_view name) const;

 private:
  std::string path_;
  zip* archive_ = nullptr;
};

}  // namespace zephyr::excel

#endif  // ZEPHYR_EXCEL_SRC_ZIP_ARCHIVE_H_
