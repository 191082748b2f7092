#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "helpers/error_number.h"
#include "helpers/temp_dir.h"
#include "table_test_util.h"
#include "zephyr/support/errors.h"
#include "zephyr/support/file_utils.h"
#include "zephyr/table/dbase.h"

namespace zephyr {
namespace {

using testing::ReadBytes;
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

class TableFileTest : public ::testing::Test {
 protected:
  // Creates the table `name` in the temporary folder and returns its path.
  std::string Create(const std::vector<testing::Column>& columns, const testing::Rows& rows,
                     const std::string& name = "t.zpd") {
    std::string path = dir_.File(name);
    testing::CreateTable(path, columns, rows);
    return path;
  }

  testing::TempDir dir_;
};

TEST_F(TableFileTest, CreatedTableHasTheExactLayoutAndReplacesTheOldOne) {
  std::string path = dir_.File("pop.zpd");
  WriteBytes(path, std::string(5000, 'x'));
  WriteBytes(dir_.File("pop.zpi"), "index");
  WriteBytes(dir_.File("pop.inf"), "info");
  WriteBytes(dir_.File("pop.zpt"), "template");
  testing::CreateTable(path, {{"Popup Code", "C", 4}, {"field2", "c", 10}}, {});
  EXPECT_FALSE(PathExists(dir_.File("pop.zpi")));  // the companions go, the template stays
  EXPECT_FALSE(PathExists(dir_.File("pop.inf")));
  EXPECT_TRUE(PathExists(dir_.File("pop.zpt")));

  // Version, date, no records, header and record length, the language driver
  // byte, then one descriptor per column and the terminator.
  const std::string header = "\x03" + testing::TodayBytes() +
                             std::string("\0\0\0\0\x61\0\x0F\0", 8) + std::string(17, '\0') +
                             std::string("\x02\0\0", 3);
  const std::string columns = std::string("POPUP CODE\0C\x02\0\0\0\x04\0\x02", 19) +
                              std::string(13, '\0') +
                              std::string("FIELD2\0\0\0\0\0C\x06\0\0\0\x0A\0\x02", 19) +
                              std::string(13, '\0');
  EXPECT_EQ(ReadBytes(path), header + columns + "\x0D\x1A");

  // Records are the deletion flag plus the padded values; close ends with 0x1A.
  path = Create({{"K", "C", 4}, {"V", "C", 3}}, {{"01", "abcdef"}, {"0102", "x"}});
  std::string bytes = ReadBytes(path);
  EXPECT_EQ(testing::Le32(bytes, 4), 2u);
  EXPECT_EQ(bytes.substr(97), " 01  abc 0102x  \x1A");
}

TEST_F(TableFileTest, WritesReachTheDiskAtOnce) {
  std::string path = Create({{"K", "C", 2}}, {{"01"}, {"02"}});
  // An old date, to see it replaced.
  WriteBytes(path, ReadBytes(path).replace(1, 3, "\x5A\x01\x01"));

  dBase table;
  table.OpenMode(dBase::kReadWrite);
  table.OpenFile(path);
  table.GetRecord(2);
  EXPECT_FALSE(table.Deleted());
  table.Value(1, "zz");
  table.Deleted(true);  // the deleted mark is byte one of the record
  EXPECT_TRUE(table.Deleted());
  table.PutRecord(2);
  EXPECT_EQ(table.RecordNo(), 2);
  for (uint32_t n = 3; n <= 4; ++n) {
    table.InitRecord();
    table.Value(1, "0" + std::to_string(n));
    table.PutRecord(n == 3 ? 0 : -5);  // not a record number: appended as well
    EXPECT_EQ(table.RecordNo(), static_cast<int32_t>(n));
    std::string bytes = ReadBytes(path);  // the table is still open
    EXPECT_EQ(testing::Le32(bytes, 4), n);
    EXPECT_EQ(bytes.substr(1, 3), testing::TodayBytes());
  }
  table.CloseFile();
  EXPECT_EQ(ReadBytes(path).substr(65), " 01*zz 03 04\x1A");
}

// Held appends reach the file in blocks, and before anything else reads or
// writes records; the table closes as if each had been written at once.
TEST_F(TableFileTest, HeldAppendsGiveTheSameFile) {
  auto fill = [&](const std::string& name, bool hold) {
    std::string path = Create({{"K", "C", 6}, {"V", "C", 200}}, {}, name);
    dBase table;
    table.OpenMode(dBase::kReadWrite);
    table.OpenFile(path);
    if (hold) table.HoldAppends();
    for (int n = 1; n <= 70000; ++n) {
      table.InitRecord();
      table.PutText(1, std::to_string(n));
      table.PutText(2, "é");
      table.PutRecord(0);
      EXPECT_EQ(table.RecordNo(), n);
    }
    EXPECT_EQ(table.RecordCount(), Variant(int32_t{70000}));
    if (hold) {
      EXPECT_LT(testing::Le32(ReadBytes(path), 4), 70000u);  // the last block is still held
      table.GetRecord(70000);
      EXPECT_EQ(table.Value(1).ToText(), "70000 ");
      EXPECT_EQ(testing::Le32(ReadBytes(path), 4), 70000u);
      table.InitRecord();
      table.PutRecord(0);  // holds again after the read
      EXPECT_EQ(testing::Le32(ReadBytes(path), 4), 70000u);
    } else {
      table.InitRecord();
      table.PutRecord(0);
    }
    table.CloseFile();
    return ReadBytes(path);
  };
  std::string held = fill("held.zpd", true);
  EXPECT_EQ(testing::Le32(held, 4), 70001u);
  EXPECT_EQ(held, fill("direct.zpd", false));
}

TEST_F(TableFileTest, ValuesAreCutPaddedAndConvertedToTheCodePage) {
  std::string path =
      Create({{"K", "C", 4}, {"NAME", "C", 5}}, {{"toolong", "Café"}, {"", "ÀÉÎÕÜx"}});
  EXPECT_EQ(ReadBytes(path).substr(97, 20), " toolCaf\xE9      \xC0\xC9\xCE\xD5\xDC");

  dBase table;
  table.OpenFile(path);
  table.GetRecord(1);
  EXPECT_EQ(table.Value(1), Variant("tool"));
  EXPECT_EQ(table.Value(2), Variant("Café "));
  table.GetRecord(2);
  EXPECT_EQ(table.Value(1), Variant("    "));
  EXPECT_EQ(table.Value(2), Variant("ÀÉÎÕÜ"));
  table.GetRecord(3);  // outside the table: a blank buffer
  EXPECT_EQ(table.RecordNo(), 0);
  EXPECT_EQ(table.Value(2), Variant("     "));
}

// Only character columns carry values; a type letter outside the list is
// written as "C".
TEST_F(TableFileTest, OnlyCharacterColumnsCarryValues) {
  std::string path =
      Create({{"a_very_long_name", "C", 2}, {"N1", "N", 3}, {"D1", "D", 8}, {"M1", "M", 2}}, {});
  std::string bytes = ReadBytes(path);
  bytes += " ab12320260101mm";  // one record: the deletion flag, then each column
  testing::PutLe32(&bytes, 4, 1);
  bytes.erase(bytes.size() - 16 - 1, 1);  // drop the end-of-file byte before the record
  WriteBytes(path, bytes);

  dBase table;
  table.OpenFile(path);
  EXPECT_EQ(testing::ColumnsOf(table),
            (std::vector<std::string>{"A_VERY_LONG C2@2", "N1 N3@4", "D1 D8@7", "M1 C2@15"}));
  EXPECT_EQ(table.RecordLen(), 16);
  table.GetRecord(1);
  EXPECT_EQ(table.Value(1), Variant("ab"));
  EXPECT_TRUE(table.Value(2).IsEmpty());
  EXPECT_TRUE(table.Value(3).IsEmpty());
  EXPECT_EQ(table.Value(4), Variant("mm"));
  EXPECT_THROW(table.Value(5), RuntimeError);
}

// Counts past 65,535 records and lengths past 255 bytes need the high bytes
// of their header fields. The big table is sparse, so the test stays cheap.
TEST_F(TableFileTest, CountsAndLengthsKeepTheirHighBytes) {
  auto head = [](const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::string bytes(12, '\0');
    in.read(bytes.data(), 12);
    return bytes;
  };
  std::string path = Create({{"K", "C", 1}}, {});
  std::string bytes = ReadBytes(path);
  const uint32_t count = 0x0100FFFF;  // the next append carries into both high bytes
  testing::PutLe32(&bytes, 4, count);
  WriteBytes(path, bytes.substr(0, 65));
  ASSERT_EQ(::truncate(path.c_str(), 65 + 2 * off_t{count}), 0);
  dBase table;
  table.OpenMode(dBase::kReadWrite);
  table.OpenFile(path);
  table.InitRecord();
  table.Value(1, "z");
  table.PutRecord(0);
  EXPECT_EQ(head(path).substr(4, 4), std::string("\x00\x00\x01\x01", 4));
  table.CloseFile();
  EXPECT_EQ(std::filesystem::file_size(path), 65 + 2 * (uint64_t{count} + 1) + 1);
  table.OpenFile(path);
  EXPECT_EQ(table.RecordCount(), Variant(static_cast<int32_t>(count + 1)));
  table.GetRecord(static_cast<int32_t>(count + 1));
  EXPECT_EQ(table.Value(1), Variant("z"));
  table.CloseFile();

  std::vector<testing::Column> wide;  // a header of 321 bytes, records of 361
  for (int c = 1; c <= 9; ++c) wide.push_back({"C" + std::to_string(c), "C", 40});
  path = Create(wide, {{"a", "", "", "", "", "", "", "", "last"}}, "wide.zpd");
  EXPECT_EQ(head(path).substr(8, 4), "\x41\x01\x69\x01");
  table.OpenFile(path);
  table.GetRecord(1);
  EXPECT_EQ(table.Value(9), Variant("last" + std::string(36, ' ')));
}

TEST_F(TableFileTest, OpenErrorsCarryTheirNumbersAndTexts) {
  std::string missing = dir_.File("none.zpd");
  dBase table;
  table.OpenMode(dBase::kReadWrite);
  AutomationError error = ExpectAutomationError([&] { table.OpenFile(missing); });
  EXPECT_EQ(error.Number(), static_cast<int32_t>(0x80040200));
  EXPECT_EQ(error.Source(), "dBase Class");
  EXPECT_EQ(error.Description(), "dBase File Not Found '" + missing + "'");
  EXPECT_FALSE(table.FileExists());

  std::string path = Create({{"K", "C", 2}}, {});
  const std::string good = ReadBytes(path);
  std::vector<std::string> bad(5, good);
  bad[0][0] = static_cast<char>(0x83);  // a table with memos
  bad[1][2] = 13;                       // month 13
  testing::PutLe16(&bad[2], 8, 32);
  testing::PutLe16(&bad[3], 8, 64);      // room for no descriptor
  testing::PutLe16(&bad[4], 8, 0x8000);  // negative as a signed length
  bad.push_back("");
  for (size_t i = 0; i < bad.size(); ++i) {
    WriteBytes(path, bad[i]);
    error = ExpectAutomationError([&] { table.OpenFile(path); });
    EXPECT_EQ(error.Number(), static_cast<int32_t>(0x80040201)) << i;
    EXPECT_FALSE(table.FileExists());
  }
  EXPECT_EQ(error.Source(), "dBase Class");
  WriteBytes(path, bad[0]);
  EXPECT_EQ(ExpectAutomationError([&] { table.OpenFile(path); }).Description(),
            "Invalid dBase File Type");

  WriteBytes(path, good);
  table.OpenMode(3);  // outside the list of modes
  EXPECT_EQ(testing::ErrorNumberOf([&] { table.OpenFile(path); }), 52);
  EXPECT_FALSE(table.FileExists());

  dBase creator;  // a failed creation leaves the object closed without error
  creator.Fields()->Add("K", "C", 2, 0, 0);
  creator.OpenMode(dBase::kCreate);
  EXPECT_NO_THROW(creator.OpenFile(dir_.File("missing/folder/t.zpd")));
  EXPECT_FALSE(creator.FileExists());
  EXPECT_NO_THROW(creator.CloseFile());
}

TEST_F(TableFileTest, OpeningAgainClosesAndReopensReadOnly) {
  std::string second = Create({{"K", "C", 2}}, {{"01"}}, "b.zpd");
  dBase table;
  table.Fields()->Add("X", "C", 3, 0, 0);
  table.OpenMode(dBase::kCreate);
  table.OpenFile(dir_.File("a.zpd"));
  EXPECT_EQ(table.OpenMode(), dBase::kReadWrite);
  table.InitRecord();
  table.PutRecord(0);

  table.OpenFile(second);
  EXPECT_EQ(table.OpenMode(), dBase::kReadOnly);
  ASSERT_EQ(table.Fields()->Count(), 1);
  EXPECT_EQ(table.Fields()->Item(1)->Name(), "K");
  table.GetRecord(1);
  AutomationError error = ExpectAutomationError([&] { table.PutRecord(1); });
  EXPECT_EQ(error.Number(), static_cast<int32_t>(0x80040202));
  EXPECT_EQ(error.Description(), "Database is ReadOnly");
  EXPECT_EQ(table.RecordNo(), 0);
  EXPECT_EQ(ReadBytes(dir_.File("a.zpd")).back(), '\x1A');  // the first table was closed properly
}

}  // namespace
}  // namespace zephyr
