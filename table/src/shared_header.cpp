#include "shared_header.h"

#include <sys/mman.h>

#include <cstring>

#include "zephyr/support/errors.h"

namespace zephyr {

void SharedHeader::Attach(File* file, bool writable) {
  Detach();
  file_ = file;
  if (!writable) return;
  void* address = ::mmap(nullptr, TableHeader::kSize, PROT_READ | PROT_WRITE, MAP_SHARED,
                         file->Descriptor(), 0);
  if (address != MAP_FAILED) mapping_ = static_cast<unsigned char*>(address);
}

void SharedHeader::Detach() {
  if (mapping_) ::munmap(mapping_, TableHeader::kSize);
  mapping_ = nullptr;
  file_ = nullptr;
}

TableHeader SharedHeader::Read() const {
  TableHeader::Bytes bytes;
  if (mapping_) {
    std::memcpy(bytes.data(), mapping_, bytes.size());
  } else if (file_->ReadAt(0, bytes.data(), bytes.size()) < bytes.size()) {
    throw RuntimeError(RuntimeErrorCode::kInputPastEndOfFile,
                       "the header of '" + file_->Path() + "' is cut short");
  }
  return TableHeader::Decode(bytes.data());
}

void SharedHeader::Write(const TableHeader& header) {
  TableHeader::Bytes bytes = header.Encode();
  if (mapping_) {
    std::memcpy(mapping_, bytes.data(), bytes.size());
  } else {
    file_->WriteAt(0, bytes.data(), bytes.size());
  }
}

}  // namespace zephyr
