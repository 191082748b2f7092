// Feeds arbitrary bytes to the table engine as a table file: OpenFile,
// GetTableValues, sorting the result, the same records read and sorted as
// TableRecords, and single-record reads must either
// work or raise a zephyr::Error; anything else (a crash, a hang, a sanitizer
// report, another exception) is a finding.
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "zephyr/support/errors.h"
#include "zephyr/table/dbase.h"

namespace {

// The bytes as a file without touching the disk: a memory file named
// through /proc, which every open by path reaches.
class MemoryFile {
 public:
  MemoryFile(const uint8_t* data, size_t size) : fd_(::memfd_create("table", MFD_CLOEXEC)) {
    if (fd_ >= 0 && ::write(fd_, data, size) != static_cast<ssize_t>(size)) {
      ::close(fd_);
      fd_ = -1;
    }
  }
  ~MemoryFile() {
    if (fd_ >= 0) ::close(fd_);
  }
  bool Valid() const { return fd_ >= 0; }
  std::string Path() const { return "/proc/self/fd/" + std::to_string(fd_); }

 private:
  int fd_;
};

void Exercise(const std::string& path) {
  zephyr::dBase table;
  table.OpenMode(zephyr::dBase::kReadOnly);
  table.OpenFile(path);
  zephyr::Variant values = table.GetTableValues();
  if (values.IsArray()) {
    table.SortTableValues(values, 1, false);
    table.SortTableValues(values, table.Fields()->Count(), true);
  }
  if (auto records = table.ReadRecords()) records->SortBy(records->ColumnCount());
  for (int32_t rec_no = 0; rec_no <= 3; ++rec_no) {
    table.GetRecord(rec_no);
    for (int32_t column = 1; column <= table.Fields()->Count(); ++column) table.Value(column);
  }
  table.CloseFile();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  MemoryFile file(data, size);
  if (!file.Valid()) return 0;
  try {
    Exercise(file.Path());
  } catch (const zephyr::Error&) {
    // Rejecting damaged input with an error is the expected outcome.
  }
  return 0;
}
