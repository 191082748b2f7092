#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "workbook_test_util.h"
#include "zephyr/excel/workbook.h"

namespace zephyr::excel {
namespace {

using Kind = WorkbookError::Kind;
constexpr char kName[] = "hostile.xlsx";

std::string SheetXml(const std::string& inside) {
  return "<worksheet xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\">" +
         inside + "</worksheet>";
}

// Opens the bytes and reads every worksheet; returns the error's kind, and
// fails the test when there is none, when it names another file, or when it
// takes long.
Kind ErrorReading(const std::string& bytes, WorkbookFormat format = WorkbookFormat::kXlsx) {
  auto start = std::chrono::steady_clock::now();
  try {
    auto workbook = OpenWorkbookBytes(bytes, format, kName);
    for (size_t i = 0; i < workbook->Sheets().size(); ++i) workbook->ReadSheet(i);
  } catch (const WorkbookError& error) {
    EXPECT_EQ(error.path(), kName);
    EXPECT_EQ(std::string(error.what()).rfind(std::string("'") + kName + "': ", 0), 0u);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    return error.kind();
  }
  ADD_FAILURE() << "no error";
  return Kind::kUnsupportedFormat;
}

std::string Cells(const std::string& row_content) {
  return testing::MakeXlsx(SheetXml("<sheetData>" + row_content + "</sheetData>"));
}

// Sets the inflated size that the local and central headers of every entry
// declare.
void DeclareInflatedSize(std::string& zip, uint32_t size) {
  auto patch = [&](const std::string& signature, size_t offset) {
    for (size_t at = zip.find(signature); at != std::string::npos;
         at = zip.find(signature, at + 1)) {
      for (int i = 0; i < 4; ++i) zip[at + offset + i] = static_cast<char>(size >> (8 * i));
    }
  };
  patch(std::string("PK\x03\x04", 4), 22);
  patch(std::string("PK\x01\x02", 4), 24);
}

TEST(HostileWorkbookTest, BrokenArchivesMalformedXmlAndEntityDeclarations) {
  std::string good = Cells("<row><c><v>1</v></c></row>");
  std::string laughs =
      "<?xml version=\"1.0\"?><!DOCTYPE lolz [<!ENTITY lol \"lol\">"
      "<!ENTITY lol1 \"&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;\">"
      "<!ENTITY lol2 \"&lol1;&lol1;&lol1;&lol1;&lol1;&lol1;&lol1;&lol1;&lol1;&lol1;\">"
      "<!ENTITY lol3 \"&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;\">]>"
      "<sst><si><t>&lol3;</t></si></sst>";
  std::string external =
      "<!DOCTYPE x [<!ENTITY file SYSTEM \"file:///etc/passwd\">]>"
      "<worksheet><sheetData><row><c t=\"str\"><v>&file;</v></c></row></sheetData></worksheet>";
  const std::string xlsx[] = {
      "PK\x03\x04 garbage that is no archive",
      "",
      good.substr(0, good.size() / 2),
      testing::MakeZip({{"xl/worksheets/sheet1.xml", "<worksheet/>"}}),  // no workbook part
      Cells("<row><c><v>1</c></row>"),
      testing::MakeXlsx("<worksheet><sheetData>"),
      testing::MakeXlsx("\xFF\xFE<bad"),
      Cells("<row><c><v>&undefined;</v></c></row>"),
      testing::MakeXlsx(SheetXml("<sheetData><row><c t=\"s\"><v>0</v></c></row></sheetData>"),
                        laughs),
      testing::MakeXlsx(external),
      testing::MakeXlsx("<!DOCTYPE worksheet><worksheet/>"),
  };
  for (size_t i = 0; i < std::size(xlsx); ++i) {
    EXPECT_EQ(ErrorReading(xlsx[i]), Kind::kMalformed) << i;
  }
  EXPECT_EQ(ErrorReading(testing::MakeZip({{"mimetype", "x"}}), WorkbookFormat::kOds),
            Kind::kMalformed);  // no content part
  EXPECT_EQ(ErrorReading(testing::MakeOds("<office:document-content><table:table>"),
                         WorkbookFormat::kOds),
            Kind::kMalformed);
}

TEST(HostileWorkbookTest, ArchiveBombsStopAtTheLimit) {
  // Zeros deflate beyond 1000:1; the declared sizes give it away.
  std::string zeros(20 << 20, '\0');
  std::string bomb = testing::MakeXlsx(zeros);
  EXPECT_EQ(ErrorReading(bomb), Kind::kTooLarge);
  // With the declared sizes lowered, the bytes really inflated give it away.
  DeclareInflatedSize(bomb, 100);
  Kind lying = ErrorReading(bomb);
  EXPECT_TRUE(lying == Kind::kTooLarge || lying == Kind::kMalformed);
}

TEST(HostileWorkbookTest, ClaimedDimensionsCostNothing) {
  auto start = std::chrono::steady_clock::now();
  auto workbook = OpenWorkbookBytes(
      testing::MakeXlsx(SheetXml("<dimension ref=\"A1:XFD1048576\"/><sheetData>"
                                 "<row r=\"1\" spans=\"1:16384\"><c r=\"A1\"><v>1</v></c>"
                                 "<c r=\"XFD1\" s=\"0\"/></row>"
                                 "<row r=\"1048576\" hidden=\"1\"><c r=\"XFD1048576\"/></row>"
                                 "</sheetData>")),
      WorkbookFormat::kXlsx, kName);
  Sheet sheet = workbook->ReadSheet(0);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
  ASSERT_EQ(sheet.rows.size(), 1u);
  EXPECT_EQ(sheet.rows[0].cells.size(), 1u);
}

TEST(HostileWorkbookTest, CellsBeyondTheGridAreTooLarge) {
  for (const char* row :
       {"<row r=\"1000000000\"><c><v>1</v></c></row>", "<row r=\"99999999999999999999999\"/>",
        "<row r=\"1048577\"/>", "<row r=\"1\"><c r=\"XFE1\"><v>1</v></c></row>",
        "<row r=\"1\"><c r=\"ZZZZZZZZ1\"><v>1</v></c></row>",
        "<row><c r=\"A1048577\"><v>1</v></c></row>"}) {
    EXPECT_EQ(ErrorReading(Cells(row)), Kind::kTooLarge) << row;
  }
  // The last row and column themselves are fine.
  auto workbook =
      OpenWorkbookBytes(Cells("<row r=\"1048576\"><c r=\"XFD1048576\"><v>1</v></c></row>"),
                        WorkbookFormat::kXlsx, kName);
  Sheet sheet = workbook->ReadSheet(0);
  ASSERT_EQ(sheet.rows.size(), WorkbookLimits::kMaxRows);
  EXPECT_EQ(sheet.rows.back().cells.size(), WorkbookLimits::kMaxColumns);
}

TEST(HostileWorkbookTest, SharedStringIndexesOutOfRange) {
  std::string strings = "<sst><si><t>only</t></si></sst>";
  for (const char* index : {"1", "-1", "x", "", "18446744073709551616"}) {
    SCOPED_TRACE(index);
    std::string sheet = SheetXml(std::string("<sheetData><row><c t=\"s\"><v>") + index +
                                 "</v></c></row></sheetData>");
    EXPECT_EQ(ErrorReading(testing::MakeXlsx(sheet, strings)), Kind::kMalformed);
  }
  std::string sheet = SheetXml("<sheetData><row><c t=\"s\"><v>0</v></c></row></sheetData>");
  EXPECT_EQ(ErrorReading(testing::MakeXlsx(sheet)), Kind::kMalformed);  // no strings part
}

TEST(HostileWorkbookTest, CopiesOfOneTextCannotExhaustMemory) {
  std::mt19937 random(7);
  std::string text(1 << 20, ' ');
  for (char& c : text) c = static_cast<char>('a' + random() % 26);
  std::string cells;
  for (int column = 0; column < 300; ++column) cells += "<c t=\"s\"><v>0</v></c>";
  EXPECT_EQ(
      ErrorReading(testing::MakeXlsx(SheetXml("<sheetData><row>" + cells + "</row></sheetData>"),
                                     "<sst><si><t>" + text + "</t></si></sst>")),
      Kind::kTooLarge);
}

TEST(HostileWorkbookTest, RepeatedOdsCellsCannotExhaustMemory) {
  std::string content =
      "<office:document-content><office:body><office:spreadsheet>"
      "<table:table table:name=\"T\"><table:table-row table:number-rows-repeated=\"1048576\">"
      "<table:table-cell table:number-columns-repeated=\"16384\" office:value-type=\"string\">"
      "<text:p>x<text:s text:c=\"4000000000\"/></text:p></table:table-cell>"
      "</table:table-row></table:table></office:spreadsheet></office:body>"
      "</office:document-content>";
  EXPECT_EQ(ErrorReading(testing::MakeOds(content), WorkbookFormat::kOds), Kind::kTooLarge);
  std::string too_far =
      "<office:document-content><office:body><office:spreadsheet>"
      "<table:table table:name=\"T\"><table:table-row table:number-rows-repeated=\"1048576\"/>"
      "<table:table-row><table:table-cell><text:p>x</text:p></table:table-cell>"
      "</table:table-row></table:table></office:spreadsheet></office:body>"
      "</office:document-content>";
  EXPECT_EQ(ErrorReading(testing::MakeOds(too_far), WorkbookFormat::kOds), Kind::kTooLarge);
}

}  // namespace
}  // namespace zephyr::excel
