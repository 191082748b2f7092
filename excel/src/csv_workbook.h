// The reader of comma-separated text (.csv): one sheet named after the file,
// every non-empty field a text cell.
#ifndef ZEPHYR_EXCEL_SRC_CSV_WORKBOOK_H_
#define ZEPHYR_EXCEL_SRC_CSV_WORKBOOK_H_

#include <memory>
#include <string>

#include "zephyr/excel/workbook.h"

namespace zephyr::excel {

// Quoting follows RFC 4180 (quoted fields may hold commas, line breaks and
// doubled quotes); lines end in CR LF, LF or CR; a UTF-8 byte-order mark is
// skipped. Text that is not valid UTF-8 is taken in the 8-bit code page.
std::unique_ptr<Workbook> OpenCsvWorkbook(std::string bytes, std::string path);

}  // namespace zephyr::excel

#endif  // ZEPHYR_EXCEL_SRC_CSV_WORKBOOK_H_
