// Tables are shared with other dBase tools: shapelib's must read the same in
// ours, whole values compared, so a byte that drifts fails here. What ours
// write is pinned byte for byte in table_file_test.cpp.
#include <gtest/gtest.h>
#include <shapefil.h>

#include "helpers/temp_dir.h"
#include "table_test_util.h"
#include "zephyr/support/codepage.h"
#include "zephyr/table/dbase.h"

namespace zephyr {
namespace {

using testing::Rows;
using testing::TempDir;

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
