#include "loaded_table.h"

namespace zephyr {

const LoadedTable* LoadedTable::Create(std::unique_ptr<TableRecords> records) {
  return new LoadedTable(std::move(records));
}

const LoadedTable* LoadedTable::Hold(const LoadedTable* table) {
  if (table) table->references_.fetch_add(1, std::memory_order_relaxed);
  return table;
}

void LoadedTable::Release(const LoadedTable* table) {
  if (table && table->references_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete table;
}

}  // namespace zephyr
