#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "helpers/temp_dir.h"
#include "workbook_test_util.h"
#include "zephyr/excel/workbook.h"
#include "zephyr/support/codepage.h"

namespace zephyr::excel {
namespace {

using testing::RowTexts;
using Texts = std::vector<std::string>;

Sheet ReadCsv(const std::string& bytes) {
  auto workbook = OpenWorkbookBytes(bytes, WorkbookFormat::kCsv, "/data/Fruit List.csv");
  return workbook->ReadSheet(workbook->ActiveSheet());
}

TEST(CsvWorkbookTest, OneTextSheetNamedAfterTheFile) {
  testing::TempDir dir;
  testing::WriteBytes(dir.File("Fruit.CSV"), "Key,Name\n0101,Apple\n3,1.5\n");
  auto workbook = OpenWorkbook(dir.File("Fruit.CSV"));
  ASSERT_EQ(workbook->Sheets().size(), 1u);
  EXPECT_EQ(workbook->ActiveSheet(), 0u);
  Sheet sheet = workbook->ReadSheet(0);
  EXPECT_EQ(sheet.name, "Fruit");
  ASSERT_EQ(sheet.rows.size(), 3u);
  EXPECT_EQ(RowTexts(sheet, 2), (Texts{"3", "1.5"}));
  EXPECT_EQ(sheet.rows[2].cells[0].kind, CellKind::kText);  // numbers stay text
}

TEST(CsvWorkbookTest, QuotingIsReadStrictlyWhereSoundAndLenientlyWhereDamaged) {
  Sheet sheet = ReadCsv("\"a,b\",\"say \"\"hi\"\"\",\"two\r\nlines\"\r\nnext,\"\"\r\n");
  ASSERT_EQ(sheet.rows.size(), 2u);
  EXPECT_EQ(RowTexts(sheet, 0), (Texts{"a,b", "say \"hi\"", "two\r\nlines"}));
  EXPECT_EQ(RowTexts(sheet, 1), (Texts{"next"}));
  EXPECT_EQ(sheet.rows[1].cells.size(), 1u);  // "" is an empty cell
  EXPECT_EQ(RowTexts(ReadCsv("\"ab\"c,d"), 0), (Texts{"abc", "d"}));
  EXPECT_EQ(RowTexts(ReadCsv("\"open, never closed\nx"), 0), (Texts{"open, never closed\nx"}));
  EXPECT_EQ(RowTexts(ReadCsv("a\"b,c"), 0), (Texts{"a\"b", "c"}));
}

TEST(CsvWorkbookTest, LineEndsEmptyLinesAndEmptyCells) {
  EXPECT_EQ(ReadCsv("a\r\nb\r\n").rows.size(), 2u);
  EXPECT_EQ(ReadCsv("a\nb").rows.size(), 2u);
  EXPECT_EQ(RowTexts(ReadCsv("a\rb\r"), 1), (Texts{"b"}));
  Sheet quoted = ReadCsv("\"x\"\r\n\"y\"\r\n");  // a quoted cell followed by CR LF ends the row
  ASSERT_EQ(quoted.rows.size(), 2u);
  EXPECT_EQ(RowTexts(quoted, 1), (Texts{"y"}));
  Sheet sheet = ReadCsv("a,,c\n\n,b\n\n\n");
  ASSERT_EQ(sheet.rows.size(), 3u);  // trailing empty lines dropped
  EXPECT_EQ(RowTexts(sheet, 0), (Texts{"a", "", "c"}));
  EXPECT_EQ(sheet.rows[0].cells[1].kind, CellKind::kEmpty);
  EXPECT_TRUE(sheet.rows[1].cells.empty());
  EXPECT_EQ(RowTexts(sheet, 2), (Texts{"", "b"}));
  EXPECT_TRUE(ReadCsv("").rows.empty());
  // A full row of empty cells costs nothing.
  EXPECT_TRUE(ReadCsv(std::string(WorkbookLimits::kMaxColumns, ',')).rows.empty());
}

TEST(CsvWorkbookTest, ByteOrderMarkAndCodePages) {
  EXPECT_EQ(RowTexts(ReadCsv("\xEF\xBB\xBFK\xC3\xA9y,x"), 0), (Texts{"K\xC3\xA9y", "x"}));
  SetActiveCodePage("CP1252");
  // "Café" in Windows-1252 is no valid UTF-8: it is taken from the code page.
  EXPECT_EQ(RowTexts(ReadCsv("Caf\xE9,\x80"), 0), (Texts{"Caf\xC3\xA9", "\xE2\x82\xAC"}));
}

}  // namespace
}  // namespace zephyr::excel
