#include <gtest/gtest.h>

#include "helpers/temp_dir.h"
#include "table_test_util.h"
#include "zephyr/support/errors.h"
#include "zephyr/support/file_utils.h"
#include "zephyr/table/dbase.h"

namespace zephyr {
namespace {

using testing::Column;
using testing::ReadBytes;
using testing::TempDir;
using testing::WriteBytes;

// Runs f and returns the AutomationError it raises (fails the test if none).
template <typename F>
AutomationError ExpectAutomationError(F&& f) {
  try {
    f();
  } catch (const AutomationError& error) {
    return error;
  }
  ADD_FAILURE() << "no AutomationError raised";
  return AutomationError(0, "", "");
}

TEST(TableFileTest, CreatedTableHasTheExactLayout) {
  TempDir dir;
  std::string path = dir.File("pop.zpd");
  testing::CreateTable(path, {{"Popup Code", "C", 4}, {"field2", "c", 10}}, {});
  std::string bytes = ReadBytes(path);

  ASSERT_EQ(bytes.size(), 98u);
  EXPECT_EQ(bytes[0], 0x03);
  EXPECT_EQ(bytes.substr(1, 3), testing::TodayBytes());
  EXPECT_EQ(testing::Le32(bytes, 4), 0u);
  EXPECT_EQ(testing::Le16(bytes, 8), 97);
  EXPECT_EQ(testing::Le16(bytes, 10), 15);
  EXPECT_EQ(bytes.substr(12, 17), std::string(17, '\0'));
  EXPECT_EQ(bytes[29], 0x02);
  EXPECT_EQ(bytes.substr(30, 2), std::string(2, '\0'));

  EXPECT_EQ(bytes.substr(32, 11), std::string("POPUP CODE\0", 11));
  EXPECT_EQ(bytes[43], 'C');
  EXPECT_EQ(testing::Le32(bytes, 44), 2u);
  EXPECT_EQ(bytes[48], 4);
  EXPECT_EQ(bytes[49], 0);
  EXPECT_EQ(bytes[50], 0x02);
  EXPECT_EQ(bytes.substr(51, 13), std::string(13, '\0'));

  EXPECT_EQ(bytes.substr(64, 11), std::string("FIELD2\0\0\0\0\0", 11));
  EXPECT_EQ(testing::Le32(bytes, 76), 6u);
  EXPECT_EQ(bytes[80], 10);
  EXPECT_EQ(bytes[82], 0x02);
  EXPECT_EQ(bytes[96], 0x0D);
  EXPECT_EQ(bytes[97], 0x1A);
}

TEST(TableFileTest, RecordsAreFlagPlusPaddedValuesAndCloseEndsWithEofByte) {
  TempDir dir;
  std::string path = dir.File("t.zpd");
  testing::CreateTable(path, {{"K", "C", 4}, {"V", "C", 3}}, {{"01", "abcdef"}, {"0102", "x"}});
  std::string bytes = ReadBytes(path);
  EXPECT_EQ(testing::Le32(bytes, 4), 2u);
  EXPECT_EQ(bytes.substr(97), " 01  abc 0102x  \x1A");
}

TEST(TableFileTest, EveryAppendPutsTheCountAndTodayOnDiskAtOnce) {
  TempDir dir;
  std::string path = dir.File("t.zpd");
  testing::CreateTable(path, {{"K", "C", 2}}, {});
  std::string stale = ReadBytes(path);
  stale[1] = 90;  // an old date, to see it replaced
  stale[2] = 1;
  stale[3] = 1;
  WriteBytes(path, stale);

  dBase table;
  table.OpenMode(dBase::kReadWrite);
  table.OpenFile(path);
  for (uint32_t n = 1; n <= 3; ++n) {
    table.InitRecord();
    table.Value(1, std::to_string(n));
    table.PutRecord(0);
    EXPECT_EQ(table.RecordNo(), static_cast<int32_t>(n));
    std::string bytes = ReadBytes(path);  // the table is still open
    EXPECT_EQ(testing::Le32(bytes, 4), n);
    EXPECT_EQ(bytes.substr(1, 3), testing::TodayBytes());
  }
}

TEST(TableFileTest, RewritingARecordLeavesTheHeaderAlone) {
  TempDir dir;
  std::string path = dir.File("t.zpd");
  testing::CreateTable(path, {{"K", "C", 2}}, {{"01"}, {"02"}});
  std::string bytes = ReadBytes(path);
  bytes[1] = 90;
  WriteBytes(path, bytes);

  dBase table;
  table.OpenMode(dBase::kReadWrite);
  table.OpenFile(path);
  table.GetRecord(2);
  table.Value(1, "zz");
  table.PutRecord(2);
  EXPECT_EQ(table.RecordNo(), 2);
  table.PutRecord(-5);  // not a record: appended as record 3
  EXPECT_EQ(table.RecordNo(), 3);
  table.CloseFile();

  bytes = ReadBytes(path);
  EXPECT_NE(bytes[1], 90);  // the append stamped today
  EXPECT_EQ(bytes.substr(65), " 01 zz zz\x1A");
}

TEST(TableFileTest, ValuesAreCutPaddedAndConvertedToTheCodePage) {
  TempDir dir;
  std::string path = dir.File("t.zpd");
  testing::CreateTable(path, {{"K", "C", 4}, {"NAME", "C", 5}},
                       {{"toolong", "Café"}, {"", "ÀÉÎÕÜx"}});
  EXPECT_EQ(ReadBytes(path).substr(97, 20),
            " tool"
            "Caf\xE9 "
            "     \xC0\xC9\xCE\xD5\xDC");

  dBase table;
  table.OpenFile(path);
  table.GetRecord(1);
  EXPECT_EQ(table.Value(1), Variant("tool"));
  EXPECT_EQ(table.Value(2), Variant("Café "));
  table.GetRecord(2);
  EXPECT_EQ(table.Value(1), Variant("    "));
  EXPECT_EQ(table.Value(2), Variant("ÀÉÎÕÜ"));
}

TEST(TableFileTest, OnlyCharacterColumnsCarryValues) {
  TempDir dir;
  std::string path = dir.File("t.zpd");
  testing::CreateTable(path, {{"C1", "C", 2}, {"N1", "N", 3}, {"D1", "D", 8}, {"M1", "M", 2}}, {});
  std::string bytes = ReadBytes(path);
  EXPECT_EQ(bytes[32 + 32 * 3 + 11], 'C');  // a letter outside the list is written as "C"
  bytes +=
      " ab123"
      "20260101"
      "mm";
  testing::PutLe32(&bytes, 4, 1);
  bytes.erase(bytes.size() - 16 - 1, 1);  // drop the end-of-file byte before the record
  WriteBytes(path, bytes);

  dBase table;
  table.OpenFile(path);
  table.GetRecord(1);
  EXPECT_EQ(table.Value(1), Variant("ab"));
  EXPECT_TRUE(table.Value(2).IsEmpty());
  EXPECT_TRUE(table.Value(3).IsEmpty());
  EXPECT_EQ(table.Value(4), Variant("mm"));
  table.Value(2, "999");  // ignored
  EXPECT_TRUE(table.Value(2).IsEmpty());
}

TEST(TableFileTest, OpeningReadsTheFieldList) {
  TempDir dir;
  std::string path = dir.File("t.zpd");
  testing::CreateTable(path, {{"a_very_long_name", "C", 6}, {"num", "N", 5}}, {});
  dBase table;
  table.OpenFile(path);
  auto fields = table.Fields();
  ASSERT_EQ(fields->Count(), 2);
  EXPECT_EQ(fields->Item(1)->Name(), "A_VERY_LONG");
  EXPECT_EQ(fields->Item(1)->FieldType(), "C");
  EXPECT_EQ(fields->Item(1)->Position(), 2);
  EXPECT_EQ(fields->Item(2)->Name(), "NUM");
  EXPECT_EQ(fields->Item(2)->FieldType(), "N");
  EXPECT_EQ(fields->Item(2)->Length(), 5);
  EXPECT_EQ(fields->Item(2)->Position(), 8);
  EXPECT_EQ(fields->Item(3), nullptr);
  EXPECT_EQ(table.RecordLen(), 12);
  EXPECT_EQ(table.Filename(), path);
  EXPECT_EQ(table.RecordCount(), Variant(int32_t{0}));
  EXPECT_THROW(table.Value(3), RuntimeError);

  table.CloseFile();
  EXPECT_EQ(table.RecordCount(), Variant(int16_t{0}));
  EXPECT_EQ(table.Fields()->Count(), 0);
  EXPECT_EQ(table.Filename(), "");
  EXPECT_EQ(table.Value(1), Variant(""));
}

TEST(TableFileTest, RecordsOutsideTheTableGiveABlankBuffer) {
  TempDir dir;
  std::string path = dir.File("t.zpd");
  testing::CreateTable(path, {{"K", "C", 3}}, {{"abc"}});
  dBase table;
  table.OpenFile(path);
  for (int32_t rec_no : {0, 2, -1}) {
    table.GetRecord(1);
    table.GetRecord(rec_no);
    EXPECT_EQ(table.RecordNo(), 0);
    EXPECT_EQ(table.Value(1), Variant("   "));
  }
}

TEST(TableFileTest, DeletedMarkIsByteOneOfTheRecord) {
  TempDir dir;
  std::string path = dir.File("t.zpd");
  testing::CreateTable(path, {{"K", "C", 1}}, {{"a"}, {"b"}});
  dBase table;
  table.OpenMode(dBase::kReadWrite);
  table.OpenFile(path);
  table.GetRecord(2);
  EXPECT_FALSE(table.Deleted());
  table.Deleted(true);
  EXPECT_TRUE(table.Deleted());
  table.PutRecord(2);
  table.CloseFile();
  EXPECT_EQ(ReadBytes(path).substr(65), " a*b\x1A");

  table.Deleted(true);  // closed: no buffer, nothing to mark
  EXPECT_FALSE(table.Deleted());
}

TEST(TableFileTest, OpenErrorsCarryTheirNumbersAndTexts) {
  TempDir dir;
  std::string missing = dir.File("none.zpd");
  dBase table;
  table.OpenMode(dBase::kReadWrite);
  AutomationError error = ExpectAutomationError([&] { table.OpenFile(missing); });
  EXPECT_EQ(error.Number(), static_cast<int32_t>(0x80040200));
  EXPECT_EQ(error.Source(), "dBase Class");
  EXPECT_EQ(error.Description(), "dBase File Not Found '" + missing + "'");
  EXPECT_FALSE(table.FileExists());

  std::string memo = dir.File("memo.zpd");
  testing::CreateTable(memo, {{"K", "C", 2}}, {});
  std::string bytes = ReadBytes(memo);
  bytes[0] = static_cast<char>(0x83);
  WriteBytes(memo, bytes);
  error = ExpectAutomationError([&] { table.OpenFile(memo); });
  EXPECT_EQ(error.Number(), static_cast<int32_t>(0x80040201));
  EXPECT_EQ(error.Source(), "dBase Class");
  EXPECT_EQ(error.Description(), "Invalid dBase File Type");
  EXPECT_FALSE(table.FileExists());
}

TEST(TableFileTest, HeaderChecksRejectWhatIsNoTable) {
  TempDir dir;
  std::string path = dir.File("t.zpd");
  testing::CreateTable(path, {{"K", "C", 2}}, {});
  const std::string good = ReadBytes(path);
  auto rejected = [&](std::string bytes) {
    WriteBytes(path, bytes);
    dBase table;
    return ExpectAutomationError([&] { table.OpenFile(path); }).Number() ==
           static_cast<int32_t>(0x80040201);
  };
  std::string bytes = good;
  bytes[2] = 0;
  EXPECT_TRUE(rejected(bytes));
  bytes[2] = 13;
  EXPECT_TRUE(rejected(bytes));
  bytes = good;
  testing::PutLe16(&bytes, 8, 32);
  EXPECT_TRUE(rejected(bytes));
  testing::PutLe16(&bytes, 8, 64);  // room for no descriptor
  EXPECT_TRUE(rejected(bytes));
  testing::PutLe16(&bytes, 8, 8457);
  EXPECT_TRUE(rejected(bytes));
  testing::PutLe16(&bytes, 8, 0x8000);  // negative as a signed length
  EXPECT_TRUE(rejected(bytes));
  EXPECT_TRUE(rejected(""));

  bytes = good;
  bytes[1] = 0;  // year and day are not checked
  bytes[3] = 0;
  WriteBytes(path, bytes);
  dBase table;
  table.OpenFile(path);
  EXPECT_TRUE(table.FileExists());
}

TEST(TableFileTest, TableWithoutColumnsIsCreatedButCannotBeOpened) {
  TempDir dir;
  std::string path = dir.File("t.zpd");
  testing::CreateTable(path, {}, {});
  std::string bytes = ReadBytes(path);
  EXPECT_EQ(testing::Le16(bytes, 8), 33);
  dBase table;
  EXPECT_THROW(table.OpenFile(path), AutomationError);
}

TEST(TableFileTest, PutRecordNeedsReadWriteMode) {
  TempDir dir;
  std::string path = dir.File("t.zpd");
  testing::CreateTable(path, {{"K", "C", 2}}, {{"01"}});
  dBase table;
  table.PutRecord(0);  // nothing open: silently nothing
  EXPECT_EQ(table.RecordNo(), 0);
  table.OpenFile(path);
  table.GetRecord(1);
  AutomationError error = ExpectAutomationError([&] { table.PutRecord(1); });
  EXPECT_EQ(error.Number(), static_cast<int32_t>(0x80040202));
  EXPECT_EQ(error.Description(), "Database is ReadOnly");
  EXPECT_EQ(table.RecordNo(), 0);
}

TEST(TableFileTest, OpenFileOnAnOpenTableClosesAndReopensReadOnly) {
  TempDir dir;
  std::string first = dir.File("a.zpd");
  std::string second = dir.File("b.zpd");
  testing::CreateTable(second, {{"K", "C", 2}}, {{"01"}});
  dBase table;
  table.Fields()->Add("X", "C", 3, 0, 0);
  table.OpenMode(dBase::kCreate);
  table.OpenFile(first);
  EXPECT_EQ(table.OpenMode(), dBase::kReadWrite);
  table.InitRecord();
  table.PutRecord(0);

  table.OpenFile(second);
  EXPECT_EQ(table.OpenMode(), dBase::kReadOnly);
  EXPECT_EQ(table.Fields()->Count(), 1);
  EXPECT_EQ(table.Fields()->Item(1)->Name(), "K");
  EXPECT_THROW(table.PutRecord(0), AutomationError);
  EXPECT_EQ(ReadBytes(first).back(), '\x1A');  // the first table was closed properly
}

TEST(TableFileTest, OpenModesOutsideTheListOpenNothing) {
  TempDir dir;
  std::string path = dir.File("t.zpd");
  testing::CreateTable(path, {{"K", "C", 2}}, {});
  dBase table;
  table.OpenMode(3);
  try {
    table.OpenFile(path);
    FAIL() << "mode 3 opened a table";
  } catch (const RuntimeError& error) {
    EXPECT_EQ(error.Code(), RuntimeErrorCode::kBadFileNameOrNumber);
  }
  EXPECT_FALSE(table.FileExists());
}

TEST(TableFileTest, CreatingDiscardsTheOldTableAndItsCompanions) {
  TempDir dir;
  std::string path = dir.File("pop.zpd");
  WriteBytes(path, std::string(5000, 'x'));
  WriteBytes(dir.File("pop.zpi"), "index");
  WriteBytes(dir.File("pop.inf"), "info");
  WriteBytes(dir.File("pop.zpt"), "template");
  testing::CreateTable(path, {{"K", "C", 2}}, {});
  EXPECT_EQ(ReadBytes(path).size(), 66u);
  EXPECT_FALSE(PathExists(dir.File("pop.zpi")));
  EXPECT_FALSE(PathExists(dir.File("pop.inf")));
  EXPECT_TRUE(PathExists(dir.File("pop.zpt")));
}

TEST(TableFileTest, FailedCreationLeavesTheObjectClosedWithoutError) {
  TempDir dir;
  dBase table;
  table.Fields()->Add("K", "C", 2, 0, 0);
  table.OpenMode(dBase::kCreate);
  EXPECT_NO_THROW(table.OpenFile(dir.File("missing/folder/t.zpd")));
  EXPECT_FALSE(table.FileExists());
  EXPECT_NO_THROW(table.CloseFile());
}

TEST(TableFileTest, FieldSettersNormalise) {
  Fields fields;
  auto field = fields.Add("straße_und_weg", "character", 5, 2, 7);
  EXPECT_EQ(field->Name(), "STRAßE_UND_");  // 11 code-page characters
  EXPECT_EQ(field->FieldType(), "C");
  EXPECT_EQ(field->Decimals(), 2);
  EXPECT_EQ(field->Position(), 7);
  fields.Add("é", "n", 1, 0, 0);
  EXPECT_EQ(fields.Item(2)->Name(), "É");
  EXPECT_EQ(fields.Item(2)->FieldType(), "N");
  EXPECT_EQ(fields.Item(0), nullptr);
  EXPECT_THROW(fields.Remove(3), RuntimeError);
  fields.Remove(1);
  EXPECT_EQ(fields.Item(1)->Name(), "É");

  EXPECT_EQ(TypeCodeToName('M'), "C");
  EXPECT_EQ(TypeCodeToName('L'), "L");
  EXPECT_EQ(TypeCodeToName(0), "C");
  EXPECT_EQ(TypeNameToCode("Y"), 'Y');
  EXPECT_EQ(TypeNameToCode("M"), 'C');
  EXPECT_EQ(TypeNameToCode(""), 'C');
}

}  // namespace
}  // namespace zephyr
