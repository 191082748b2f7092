// The reader of Office Open XML workbooks (.xlsx, .xlsm).
#ifndef ZEPHYR_EXCEL_SRC_XLSX_WORKBOOK_H_
#define ZEPHYR_EXCEL_SRC_XLSX_WORKBOOK_H_

#include <memory>
#include <string>

#include "zephyr/excel/workbook.h"

namespace zephyr::excel {

// Reads the workbook's sheet list and active sheet from the archive in
// `bytes`; sheets are read on demand. Raises WorkbookError naming `path`.
std::unique_ptr<Workbook> OpenXlsxWorkbook(std::string bytes, std::string path);

}  // namespace zephyr::excel

#endif  // ZEPHYR_EXCEL_SRC_XLSX_WORKBOOK_H_
