#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "workbook_test_util.h"
#include "zephyr/excel/workbook.h"

namespace zephyr::excel {
namespace {

using testing::RowTexts;
using Texts = std::vector<std::string>;

std::string Content(const std::string& tables) {
  return "<office:document-content "
         "xmlns:office=\"urn:oasis:names:tc:opendocument:xmlns:office:1.0\" "
         "xmlns:table=\"urn:oasis:names:tc:opendocument:xmlns:table:1.0\" "
         "xmlns:text=\"urn:oasis:names:tc:opendocument:xmlns:text:1.0\" "
         "xmlns:calcext=\"urn:org:documentfoundation:names:experimental:calc:xmlns:calcext:1.0\">"
         "<office:body><office:spreadsheet>" +
         tables + "</office:spreadsheet></office:body></office:document-content>";
}

// Settings that name the table in view; the first such item counts.
std::string Settings(const std::string& active_table) {
  return "<office:document-settings "
         "xmlns:office=\"urn:oasis:names:tc:opendocument:xmlns:office:1.0\" "
         "xmlns:config=\"urn:oasis:names:tc:opendocument:xmlns:config:1.0\">"
         "<config:config-item config:name=\"ActiveTable\" config:type=\"string\">" +
         active_table + "</config:config-item></office:document-settings>";
}

Sheet ReadFirst(const std::string& tables) {
  auto workbook =
      OpenWorkbookBytes(testing::MakeOds(Content(tables)), WorkbookFormat::kOds, "book.ods");
  return workbook->ReadSheet(0);
}

std::string TextCell(const std::string& text, const std::string& extra = "") {
  return "<table:table-cell office:value-type=\"string\"" + extra + "><text:p>" + text +
         "</text:p></table:table-cell>";
}

TEST(LibreOfficeOdsTest, ReadsTheCommittedFixture) {
  auto workbook = OpenWorkbook(ZEPHYR_EXCEL_FIXTURES "/libreoffice.ods");
  ASSERT_EQ(workbook->Sheets().size(), 3u);
  EXPECT_EQ(workbook->Sheets()[2].name, "Last");
  EXPECT_EQ(workbook->ActiveSheet(), 0u);
  EXPECT_EQ(RowTexts(workbook->ReadSheet(2), 0), (Texts{"last"}));

  testing::ExpectFixtureItems(workbook->ReadSheet(1));
}

// The active table comes from the settings; a huge one fails only when read.
TEST(OdsPartsTest, ActiveTableComesFromTheSettings) {
  std::string tables = "<table:table table:name=\"Small\"><table:table-row>" + TextCell("ok") +
                       "</table:table-row></table:table><table:table table:name=\"Huge\">"
                       "<table:table-row table:number-rows-repeated=\"2000000\">" +
                       TextCell("x") +
                       "</table:table-row></table:table>";
  auto open = [&](const std::string& settings) {
    return OpenWorkbookBytes(testing::MakeOds(Content(tables), settings), WorkbookFormat::kOds,
                             "big.ods");
  };
  EXPECT_EQ(open(Settings("Gone"))->ActiveSheet(), 0u);
  EXPECT_EQ(open("")->ActiveSheet(), 0u);
  auto workbook = open(Settings("Huge"));
  ASSERT_EQ(workbook->ActiveSheet(), 1u);
  EXPECT_EQ(RowTexts(workbook->ReadSheet(0), 0), (Texts{"ok"}));
  EXPECT_THROW(workbook->ReadSheet(1), WorkbookError);
}

// Collapsed and filtered rows are hidden, header rows among them.
TEST(OdsPartsTest, RepeatedRowsAndCellsExpandOnlyWhereTheyHoldSomething) {
  auto start = std::chrono::steady_clock::now();
  Sheet sheet = ReadFirst(
      "<table:table table:name=\"T\"><table:table-header-rows>"
      "<table:table-row table:visibility=\"collapse\">" +
      TextCell("head") +
      "</table:table-row></table:table-header-rows>"
      "<table:table-row table:number-rows-repeated=\"2\" table:visibility=\"filter\">"
      "<table:table-cell table:number-columns-repeated=\"2\"/>" +
      TextCell("r", " table:number-columns-repeated=\"2\"") +
      "</table:table-row>"
      "<table:table-row table:number-rows-repeated=\"3\" table:visibility=\"visible\">"
      "<table:table-cell table:number-columns-repeated=\"16384\"/></table:table-row>"
      "<table:table-row>" +
      TextCell("after gap") +
      "</table:table-row>"
      "<table:table-row table:number-rows-repeated=\"1048000\" "
      "table:visibility=\"collapse\"><table:table-cell table:number-columns-repeated=\"16384\"/>"
      "</table:table-row></table:table>");
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
  ASSERT_EQ(sheet.rows.size(), 7u);
  EXPECT_EQ(RowTexts(sheet, 0), (Texts{"head"}));
  EXPECT_EQ(RowTexts(sheet, 1), (Texts{"", "", "r", "r"}));
  EXPECT_EQ(RowTexts(sheet, 2), (Texts{"", "", "r", "r"}));
  EXPECT_TRUE(sheet.rows[3].cells.empty());
  EXPECT_EQ(RowTexts(sheet, 6), (Texts{"after gap"}));
  for (size_t row = 0; row < 7; ++row) EXPECT_EQ(sheet.rows[row].hidden, row < 3) << row;
}

TEST(OdsPartsTest, DisplayedTextAndKindsOfCells) {
  Sheet sheet = ReadFirst(
      "<table:table table:name=\"T\"><table:table-row>"
      "<table:table-cell office:value-type=\"string\"><text:p>one<text:s "
      "text:c=\"3\"/>two<text:tab/>three</text:p><text:p>next <text:span>span</text:span>"
      "<text:line-break/>end</text:p></table:table-cell>"
      "<table:table-cell office:value-type=\"float\" office:value=\"101\">"
      "<office:annotation><text:p>a comment</text:p></office:annotation>"
      "<text:p>0101</text:p></table:table-cell>"
      "<table:covered-table-cell office:value-type=\"string\"><text:p>covered</text:p>"
      "</table:covered-table-cell>"
      "<table:table-cell office:value-type=\"float\" office:value=\"2.5\"/>"
      "<table:table-cell office:value-type=\"boolean\" office:boolean-value=\"false\">"
      "<text:p>FALSCH</text:p></table:table-cell>"
      "<table:table-cell><text:p>no type</text:p></table:table-cell>"
      "<table:table-cell office:value-type=\"string\"><text:p/></table:table-cell>"
      "<table:table-cell table:formula=\"of:=A9+\"><text:p>Err:502</text:p></table:table-cell>"
      "<table:table-cell table:formula=\"of:=NA()\" office:value-type=\"string\" "
      "office:string-value=\"\" calcext:value-type=\"error\"><text:p>#N/A</text:p>"
      "</table:table-cell>" +
      TextCell("#hashtag") + TextCell("x", " table:formula=\"of:=&quot;x&quot;\"") +
      "</table:table-row></table:table>");
  using enum CellKind;
  // Typed text without a formula is no error, and neither is a formula's text.
  const std::pair<const char*, CellKind> cells[] = {
      {"one   two\tthree\nnext span\nend", kText}, {"0101", kNumber}, {"covered", kText},
      {"2.5", kNumber}, {"FALSE", kBoolean}, {"no type", kText}, {"", kText},  // an empty string
      {"Err:502", kError}, {"#N/A", kError}, {"#hashtag", kText}, {"x", kText}};
  ASSERT_EQ(sheet.rows.size(), 1u);
  ASSERT_EQ(sheet.rows[0].cells.size(), std::size(cells));
  for (size_t i = 0; i < std::size(cells); ++i) {
    EXPECT_EQ(sheet.rows[0].cells[i].text, cells[i].first) << i;
    EXPECT_EQ(sheet.rows[0].cells[i].kind, cells[i].second) << i;
  }
}

}  // namespace
}  // namespace zephyr::excel
