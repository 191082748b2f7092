// Helpers of the workbook reader tests: building archives part by part and
// reading rows back as texts.
#ifndef ZEPHYR_TESTS_EXCEL_WORKBOOK_TEST_UTIL_H_
#define ZEPHYR_TESTS_EXCEL_WORKBOOK_TEST_UTIL_H_

#include <string>
#include <utility>
#include <vector>

#include "zephyr/excel/workbook.h"

namespace zephyr::testing {

// Parts of an archive: entry name, content.
using ZipEntries = std::vector<std::pair<std::string, std::string>>;

// The bytes of a deflated zip archive holding the entries.
std::string MakeZip(const ZipEntries& entries);

// The smallest xlsx package around one worksheet part; the shared strings
// and styles parts are added when not empty.
std::string MakeXlsx(const std::string& sheet_xml, const std::string& shared_strings_xml = "",
                     const std::string& styles_xml = "");

// An ods package with the given content.xml (and settings.xml when not empty).
std::string MakeOds(const std::string& content_xml, const std::string& settings_xml = "");

// The cells of a row as texts, trailing empty cells left out.
std::vector<std::string> Texts(const excel::SheetRow& row);

// The texts of row `index` (0-based), or nothing when the sheet is shorter.
std::vector<std::string> RowTexts(const excel::Sheet& sheet, size_t index);

// The kind of the cell, kEmpty when it is not stored.
excel::CellKind KindAt(const excel::Sheet& sheet, size_t row, size_t column);

// Checks the sheet "Items" of the committed LibreOffice fixtures, which is
// the same in both formats.
void ExpectFixtureItems(const excel::Sheet& sheet);

}  // namespace zephyr::testing

#endif  // ZEPHYR_TESTS_EXCEL_WORKBOOK_TEST_UTIL_H_
