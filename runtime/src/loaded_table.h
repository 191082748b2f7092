// LoadedTable: the table values a popup was read from. The popup and every
// item loaded from them hold a reference, so that an item can make its
// values from its row whenever they are first read, even after the popup
// has let go of the table.
#ifndef ZEPHYR_RUNTIME_LOADED_TABLE_H_
#define ZEPHYR_RUNTIME_LOADED_TABLE_H_

#include <atomic>
#include <cstdint>
#include <memory>

#include "zephyr/table/table_records.h"

namespace zephyr {

class LoadedTable {
 public:
  // A table held once, by the caller.
  static const LoadedTable* Create(std::unique_ptr<TableRecords> records);
  // Another reference to `table` (none for null).
  static const LoadedTable* Hold(const LoadedTable* table);
  // Gives a reference back; the last one frees the table. Null is ignored.
  static void Release(const LoadedTable* table);

  const TableRecords& Records() const { return *records_; }

 private:
  explicit LoadedTable(std::unique_ptr<TableRecords> records) : records_(std::move(records)) {}

  mutable std::atomic<int64_t> references_{1};
  std::unique_ptr<TableRecords> records_;
};

}  // namespace zephyr

#endif  // ZEPHYR_RUNTIME_LOADED_TABLE_H_
