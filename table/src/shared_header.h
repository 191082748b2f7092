// SharedHeader: the 12-byte TableHeader of an open table, read and written in
// place. Appends re-read the header before and rewrite it after every record,
// so for a writable file the first page is mapped shared: both steps are then
// plain memory accesses, and other processes see every change at once because
// their reads and writes go through the same page cache. Read-only files, and
// files the system refuses to map, use positioned reads and writes instead.
#ifndef ZEPHYR_TABLE_SHARED_HEADER_H_
#define ZEPHYR_TABLE_SHARED_HEADER_H_

#include "zephyr/support/file.h"
#include "zephyr/table/table_header.h"

namespace zephyr {

class SharedHeader {
 public:
  SharedHeader() = default;
  ~SharedHeader() { Detach(); }
  SharedHeader(const SharedHeader&) = delete;
  SharedHeader& operator=(const SharedHeader&) = delete;

  // Starts serving the header of file, which must stay open until Detach and
  // hold at least TableHeader::kSize bytes. Maps the header only when
  // writable (the file is open for reading and writing).
  void Attach(File* file, bool writable);
  void Detach();

  // Raises a run-time error naming the file when it is shorter than a header.
  TableHeader Read() const;
  void Write(const TableHeader& header);

 private:
  File* file_ = nullptr;
  unsigned char* mapping_ = nullptr;
};

}  // namespace zephyr

#endif  // ZEPHYR_TABLE_SHARED_HEADER_H_
