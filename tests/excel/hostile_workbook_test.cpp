#include <gtest/gtest.h>

#include <chrono>
#include <string>

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

std::string Cells(const std::string& row_content, const std::string& shared_strings = "") {
  return testing::MakeXlsx(SheetXml("<sheetData>" + row_content + "</sheetData>"), shared_strings);
}

// Entity declarations are malformed; repeats that would fill the memory and
// archives that inflate beyond the limit are too large.
TEST(HostileWorkbookTest, EachFailsWithItsKindInTime) {
  constexpr auto kOds = WorkbookFormat::kOds;
  const std::string laughs =
      "<?xml version=\"1.0\"?><!DOCTYPE lolz [<!ENTITY lol \"lol\">"
      "<!ENTITY lol1 \"&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;\">"
      "<!ENTITY lol2 \"&lol1;&lol1;&lol1;&lol1;&lol1;&lol1;&lol1;&lol1;&lol1;&lol1;\">]>";
  const struct {
    std::string bytes;
    Kind kind;
    WorkbookFormat format = WorkbookFormat::kXlsx;
  } cases[] = {
      {Cells("<row><c t=\"s\"><v>0</v></c></row>", laughs + "<sst><si><t>&lol2;</t></si></sst>"),
       Kind::kMalformed},
      {testing::MakeXlsx(std::string(20 << 20, '\0')), Kind::kTooLarge},  // beyond 1000:1
      {testing::MakeOds(laughs + "<office:document-content>&lol2;</office:document-content>"),
       Kind::kMalformed, kOds},
      {testing::MakeOds(
           "<office:document-content><office:body><office:spreadsheet><table:table "
           "table:name=\"T\"><table:table-row table:number-rows-repeated=\"1048576\">"
           "<table:table-cell table:number-columns-repeated=\"16384\"><text:p>x<text:s "
           "text:c=\"4000000000\"/></text:p></table:table-cell></table:table-row></table:table>"
           "</office:spreadsheet></office:body></office:document-content>"),
       Kind::kTooLarge, kOds},
      {std::string(WorkbookLimits::kMaxColumns, ',') + "x", Kind::kTooLarge, WorkbookFormat::kCsv},
  };
  for (size_t i = 0; i < std::size(cases); ++i) {
    EXPECT_EQ(ErrorReading(cases[i].bytes, cases[i].format), cases[i].kind) << i;
  }
}

// The last row and column are fine, and claimed dimensions cost nothing.
TEST(HostileWorkbookTest, TheWholeGridCanBeReachedCheaply) {
  auto workbook =
      OpenWorkbookBytes(Cells("<row r=\"1048576\"><c r=\"XFD1048576\"><v>1</v></c></row>"),
                        WorkbookFormat::kXlsx, kName);
  Sheet sheet = workbook->ReadSheet(0);
  ASSERT_EQ(sheet.rows.size(), WorkbookLimits::kMaxRows);
  EXPECT_EQ(sheet.rows.back().cells.size(), WorkbookLimits::kMaxColumns);

  auto start = std::chrono::steady_clock::now();
  workbook = OpenWorkbookBytes(
      testing::MakeXlsx(SheetXml("<dimension ref=\"A1:XFD1048576\"/><sheetData>"
                                 "<row r=\"1\" spans=\"1:16384\"><c r=\"A1\"><v>1</v></c>"
                                 "<c r=\"XFD1\" s=\"0\"/></row>"
                                 "<row r=\"1048576\" hidden=\"1\"><c r=\"XFD1048576\"/></row>"
                                 "</sheetData>")),
      WorkbookFormat::kXlsx, kName);
  sheet = workbook->ReadSheet(0);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
  ASSERT_EQ(sheet.rows.size(), 1u);
  EXPECT_EQ(sheet.rows[0].cells.size(), 1u);
}

}  // namespace
}  // namespace zephyr::excel
