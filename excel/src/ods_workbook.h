// The reader of OpenDocument spreadsheets (.ods).
#ifndef ZEPHYR_EXCEL_SRC_ODS_WORKBOOK_H_
#define ZEPHYR_EXCEL_SRC_ODS_WORKBOOK_H_

#include <memory>
#include <string>

#include "zephyr/excel/workbook.h"

namespace zephyr::excel {

// Reads the workbook's table list and active table from the archive in
// `bytes`; tables are read on demand. Raises WorkbookError naming `path`.
std::unique_ptr<Workbook> OpenOdsWorkbook(std::string bytes, std::string path);

}  // namespace zephyr::excel

#endif  // ZEPHYR_EXCEL_SRC_ODS_WORKBOOK_H_
