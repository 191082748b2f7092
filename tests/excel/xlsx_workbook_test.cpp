#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "helpers/temp_dir.h"
#include "workbook_test_util.h"
#include "zephyr/excel/workbook.h"

namespace zephyr::excel {
namespace {

using testing::KindAt;
using testing::RowTexts;
using Texts = std::vector<std::string>;

constexpr char kRelationshipsNs[] =
    "http://schemas.openxmlformats.org/officeDocument/2006/relationships";

Sheet ReadOnly(const std::string& bytes) {
  auto workbook = OpenWorkbookBytes(bytes, WorkbookFormat::kXlsx, "book.xlsx");
  return workbook->ReadSheet(0);
}

std::string SheetXml(const std::string& rows) {
  return "<worksheet xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\">"
         "<sheetData>" +
         rows + "</sheetData></worksheet>";
}

// Saved by LibreOffice: hidden="true", cached errors, shared strings.
TEST(LibreOfficeXlsxTest, ReadsTheCommittedFixture) {
  auto workbook = OpenWorkbook(ZEPHYR_EXCEL_FIXTURES "/libreoffice.xlsx");
  ASSERT_EQ(workbook->Sheets().size(), 3u);
  testing::ExpectFixtureItems(workbook->ReadSheet(1));
}

// Shared strings join their runs and skip phonetic readings.
TEST(XlsxPartsTest, CellTypesSharedStringsAndInlineRichText) {
  std::string strings =
      "<sst><si><t>plain</t></si>"
      "<si><r><rPr><b/></rPr><t>Ka</t></r><r><t xml:space=\"preserve\">nji </t></r>"
      "<rPh sb=\"0\" eb=\"1\"><t>reading</t></rPh><phoneticPr fontId=\"1\"/></si>"
      "<si><t>a_x000D_b_x0041_</t></si><si><t/></si></sst>";
  Sheet sheet = ReadOnly(testing::MakeXlsx(
      SheetXml("<row r=\"1\">"
               "<c r=\"A1\" t=\"inlineStr\"><is><r><t>in</t></r><r><t>line</t></r></is></c>"
               "<c r=\"B1\" t=\"str\"><f>A1</f><v>formula text</v></c>"
               "<c r=\"C1\" t=\"e\"><f>1/0</f><v>#DIV/0!</v></c>"
               "<c r=\"D1\" t=\"b\"><v>0</v></c>"
               "<c r=\"E1\" t=\"n\"><v>1E+20</v></c>"
               "<c r=\"F1\"><v>-0.5</v></c>"
               "<c r=\"G1\"><f>NOW()</f></c>"
               "<c r=\"H1\" s=\"3\"/>"
               "<c r=\"I1\" t=\"d\"><v>2023-03-15</v></c>"
               "<c r=\"J1\" t=\"str\"><f>NA()</f><v>#N/A</v></c>"
               "<c r=\"K1\" t=\"s\"><v>1</v></c><c r=\"L1\" t=\"s\"><v>0</v></c>"
               "<c r=\"M1\" t=\"s\"><v>2</v></c><c r=\"N1\" t=\"s\"><v>3</v></c>"
               "</row>"),
      strings));
  EXPECT_EQ(RowTexts(sheet, 0), (Texts{"inline", "formula text", "#DIV/0!", "FALSE", "1E+20",
                                       "-0.5", "", "", "2023-03-15", "#N/A", "Kanji ", "plain",
                                       "a\rbA"}));
  using enum CellKind;
  // J1: an error result cached as text; N1: an empty string, still text.
  const CellKind kinds[] = {kText,  kText,   kError, kBoolean, kNumber, kNumber, kEmpty,
                            kEmpty, kNumber, kError, kText,    kText,   kText,   kText};
  for (size_t i = 0; i < std::size(kinds); ++i) EXPECT_EQ(KindAt(sheet, 0, i), kinds[i]) << i;
}

TEST(XlsxPartsTest, RowsAndCellsWithoutReferencesFollowTheirPredecessors) {
  Sheet sheet = ReadOnly(testing::MakeXlsx(SheetXml(
      "<row><c t=\"inlineStr\"><is><t>a</t></is></c><c t=\"inlineStr\"><is><t>b</t></is></c></row>"
      "<row r=\"3\" hidden=\"true\"><c r=\"C3\"><v>1</v></c><c><v>2</v></c></row>"
      "<row><c><v>3</v></c></row><row r=\"5\" hidden=\"1\"/>"
      "<row r=\"6\"><c><v>6</v></c></row><row r=\"9\" hidden=\"1\"/>")));
  ASSERT_EQ(sheet.rows.size(), 6u);  // the trailing hidden row holds nothing
  EXPECT_EQ(RowTexts(sheet, 0), (Texts{"a", "b"}));
  EXPECT_TRUE(sheet.rows[1].cells.empty());
  EXPECT_EQ(RowTexts(sheet, 2), (Texts{"", "", "1", "2"}));
  EXPECT_EQ(RowTexts(sheet, 3), (Texts{"3"}));
  EXPECT_EQ(RowTexts(sheet, 5), (Texts{"6"}));
  for (size_t row = 0; row < sheet.rows.size(); ++row) {
    EXPECT_EQ(sheet.rows[row].hidden, row == 2 || row == 4) << "row " << row + 1;
  }
}

TEST(XlsxPartsTest, NumberFormatsComeFromCellStyles) {
  std::string styles =
      "<styleSheet><numFmts count=\"2\"><numFmt numFmtId=\"164\" formatCode=\"0000\"/>"
      "<numFmt numFmtId=\"165\" formatCode=\"&quot;#&quot;00\"/></numFmts>"
      "<cellStyleXfs><xf numFmtId=\"164\"/></cellStyleXfs>"
      "<cellXfs><xf numFmtId=\"0\"/><xf numFmtId=\"164\"/><xf numFmtId=\"2\"/>"
      "<xf numFmtId=\"49\"/><xf numFmtId=\"14\"/><xf numFmtId=\"165\"/></cellXfs>"
      "</styleSheet>";
  Sheet sheet = ReadOnly(testing::MakeXlsx(
      SheetXml("<row r=\"1\"><c s=\"0\"><v>101</v></c><c s=\"1\"><v>101</v></c>"
               "<c s=\"2\"><v>1.5</v></c><c s=\"3\"><v>42</v></c><c s=\"4\"><v>45000</v></c>"
               "<c s=\"5\"><v>7</v></c><c s=\"99\"><v>8</v></c></row>"),
      "", styles));
  EXPECT_EQ(RowTexts(sheet, 0), (Texts{"101", "0101", "1.50", "42", "2023-03-15", "#07", "8"}));
}

// Two worksheets, one with an absolute and one with a "../" target, and a
// chart sheet, which is listed but cannot be read. The active tab decides
// which is active; without one, or with one past the last sheet, the
// selected tab does.
TEST(XlsxPartsTest, RelationshipTargetsAndTheActiveSheet) {
  auto rel = [](const char* id, const char* type, const char* target) {
    return std::string("<Relationship Id=\"") + id + "\" Type=\"" + kRelationshipsNs + "/" + type +
           "\" Target=\"" + target + "\"/>";
  };
  auto open = [&](const std::string& tab) {
    std::string views;
    if (!tab.empty()) {
      views = "<x:bookViews><x:workbookView activeTab=\"" + tab + "\"/></x:bookViews>";
    }
    return OpenWorkbookBytes(
        testing::MakeZip({
            {"xl/workbook.xml", "<x:workbook xmlns:x=\"s\" xmlns:r=\"r\">" + views +
                                    "<x:sheets><x:sheet name=\"One\" r:id=\"a\"/>"
                                    "<x:sheet name=\"Two\" r:id=\"b\"/><x:sheet name=\"Chart\" "
                                    "r:id=\"c\"/></x:sheets></x:workbook>"},
            {"xl/_rels/workbook.xml.rels",
             "<Relationships>" + rel("a", "worksheet", "/xl/worksheets/one.xml") +
                 rel("b", "worksheet", "../xl/./worksheets/two.xml") +
                 rel("c", "chartsheet", "chartsheets/sheet1.xml") + "</Relationships>"},
            {"xl/worksheets/one.xml", SheetXml("<row><c><v>1</v></c></row>")},
            {"xl/worksheets/two.xml",
             "<x:worksheet xmlns:x=\"s\"><x:sheetViews><x:sheetView tabSelected=\"1\"/>"
             "</x:sheetViews><x:sheetData><x:row><x:c><x:v>2</x:v></x:c></x:row></x:sheetData>"
             "</x:worksheet>"},
        }),
        WorkbookFormat::kXlsx, "book.xlsx");
  };
  EXPECT_EQ(open("0")->ActiveSheet(), 0u);
  EXPECT_EQ(open("3")->ActiveSheet(), 1u);
  auto workbook = open("");
  EXPECT_EQ(workbook->ActiveSheet(), 1u);
  ASSERT_EQ(workbook->Sheets().size(), 3u);
  EXPECT_EQ(RowTexts(workbook->ReadSheet(0), 0), (Texts{"1"}));
  EXPECT_EQ(RowTexts(workbook->ReadSheet(1), 0), (Texts{"2"}));
  EXPECT_FALSE(workbook->Sheets()[2].is_worksheet);
  try {
    workbook->ReadSheet(2);
    ADD_FAILURE() << "a chart sheet was read";
  } catch (const WorkbookError& error) {
    EXPECT_EQ(error.kind(), WorkbookError::Kind::kNotWorksheet);
  }
}

TEST(XlsxPartsTest, FormatDetectionFromContent) {
  testing::TempDir dir;
  // The content decides, not the name.
  testing::WriteBytes(dir.File("book.dat"),
                      testing::MakeXlsx(SheetXml("<row><c><v>5</v></c></row>")));
  EXPECT_EQ(RowTexts(OpenWorkbook(dir.File("book.dat"))->ReadSheet(0), 0), (Texts{"5"}));

  // A workbook's extension on other bytes is malformed; text is CSV only by
  // its extension.
  auto expect_error = [&](const std::string& name, const std::string& bytes,
                          WorkbookError::Kind kind) {
    testing::WriteBytes(dir.File(name), bytes);
    try {
      OpenWorkbook(dir.File(name));
      ADD_FAILURE() << name << " opened";
    } catch (const WorkbookError& error) {
      EXPECT_EQ(error.kind(), kind) << name << ": " << error.what();
      EXPECT_EQ(error.path(), dir.File(name));
    }
  };
  expect_error("text.xlsx", "not a zip", WorkbookError::Kind::kMalformed);
  expect_error("notes.txt", "a,b", WorkbookError::Kind::kUnsupportedFormat);
}

}  // namespace
}  // namespace zephyr::excel
