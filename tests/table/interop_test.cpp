// Tables are shared with other dBase tools: ours must read the same in
// dbfread, and shapelib's the same in ours. Every comparison covers whole values,
// so a byte that drifts fails here.
#include <gtest/gtest.h>
#include <shapefil.h>

#include <cstdio>

#include "helpers/temp_dir.h"
#include "table_test_util.h"
#include "zephyr/support/codepage.h"
#include "zephyr/table/dbase.h"

namespace zephyr {
namespace {

using testing::Rows;
using testing::TempDir;
using testing::WriteBytes;

// Runs a shell command and returns what it printed; fails the test when it
// does not exit with 0.
std::string RunTool(const std::string& command) {
  std::string output;
  FILE* pipe = ::popen((command + " 2>&1").c_str(), "r");
  if (!pipe) {
    ADD_FAILURE() << "cannot run " << command;
    return output;
  }
  char chunk[4096];
  size_t got;
  while ((got = std::fread(chunk, 1, sizeof chunk, pipe)) > 0) output.append(chunk, got);
  int status = ::pclose(pipe);
  EXPECT_EQ(status, 0) << command << "\n" << output;
  return output;
}

std::string RTrimmed(std::string text) {
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

// The table every "ours" test writes: keys with leading blanks, text with
// code-page letters, a value longer than its column, a numeric column and a
// deleted record.
class OurTableTest : public ::testing::Test {
 protected:
  void SetUp() override {
    path_ = dir_.File("popup.dbf");
    testing::CreateTable(
        path_, {{"Popup Code", "C", 6}, {"Name", "C", 40}, {"Note", "C", 20}, {"Amount", "N", 5}},
        {{"  01", "Café Müller", "first"},
         {"  0101", "Zoë's \"Œuvre\", Ålborg", "a value longer than twenty"},
         {"gone", "deleted", ""},
         {"  02", "", "  leading"}});
    dBase table;
    table.OpenMode(dBase::kReadWrite);
    table.OpenFile(path_);
    table.GetRecord(3);
    table.Deleted(true);
    table.PutRecord(3);
  }

  TempDir dir_;
  std::string path_;
  // Live rows as our engine stores them (cut to the column width).
  Rows expected_ = {{"  01", "Café Müller", "first"},
                    {"  0101", "Zoë's \"Œuvre\", Ålborg", "a value longer than "},
                    {"  02", "", "  leading"}};
};

TEST_F(OurTableTest, DbfreadReadsTheSameFieldsAndValues) {
  std::string script =
      "import sys, dbfread\n"
      "t = dbfread.DBF(sys.argv[1], encoding='cp1252', char_decode_errors='strict')\n"
      "for f in t.fields: print('F', f.name, f.type, f.length, f.decimal_count)\n"
      "print('N', t.header.numrecords, len(list(t.deleted)))\n"
      "for r in t: print('R', '|'.join('<none>' if v is None else v for v in r.values()))\n";
  std::string script_path = dir_.File("read.py");
  WriteBytes(script_path, script);
  std::string output = RunTool(std::string(ZEPHYR_SYSTEM_PYTHON) + " " + script_path + " " + path_);

  std::string wanted = "F POPUP CODE C 6 0\nF NAME C 40 0\nF NOTE C 20 0\nF AMOUNT N 5 0\nN 4 1\n";
  // dbfread drops trailing blanks and reads a blank number as None.
  for (const auto& row : expected_) {
    wanted +=
        "R " + RTrimmed(row[0]) + "|" + RTrimmed(row[1]) + "|" + RTrimmed(row[2]) + "|<none>\n";
  }
  EXPECT_EQ(output, wanted);
}

TEST(TheirTableTest, ShapelibTablesReadTheSame) {
  TempDir dir;
  std::string path = dir.File("shapelib.dbf");
  const Rows rows = {{"01", "Ærø Köbenhavn", "x"}, {"0102", "plain", ""}, {"99", "", "last one"}};
  DBFHandle handle = DBFCreate(path.c_str());
  ASSERT_NE(handle, nullptr);
  ASSERT_EQ(DBFAddField(handle, "KEY", FTString, 6, 0), 0);
  ASSERT_EQ(DBFAddField(handle, "NAME", FTString, 40, 0), 1);
  ASSERT_EQ(DBFAddField(handle, "COUNT", FTInteger, 4, 0), 2);
  ASSERT_EQ(DBFAddField(handle, "NOTE", FTString, 10, 0), 3);
  for (int r = 0; r < static_cast<int>(rows.size()); ++r) {
    DBFWriteStringAttribute(handle, r, 0, ToCodePage(rows[r][0]).c_str());
    DBFWriteStringAttribute(handle, r, 1, ToCodePage(rows[r][1]).c_str());
    DBFWriteIntegerAttribute(handle, r, 2, r * 7);
    DBFWriteStringAttribute(handle, r, 3, ToCodePage(rows[r][2]).c_str());
  }
  DBFClose(handle);

  dBase table;
  table.OpenFile(path);
  EXPECT_EQ(testing::ColumnsOf(table),
            (std::vector<std::string>{"KEY C6@2", "NAME C40@8", "COUNT N4@48", "NOTE C10@52"}));
  Variant values = table.GetTableValues();
  Rows seen = testing::ArrayRows(values);
  Rows wanted;
  for (const auto& row : rows) {
    auto pad = [](std::string text, size_t width) {
      return text + std::string(width - ActiveCodePage().CharacterCount(text), ' ');
    };
    wanted.push_back({pad(row[0], 6), pad(row[1], 40), "", pad(row[2], 10)});
  }
  EXPECT_EQ(seen, wanted);
}

}  // namespace
}  // namespace zephyr
