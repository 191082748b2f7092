#include <gtest/gtest.h>

#include <utility>

#include "helpers/error_number.h"
#include "helpers/temp_dir.h"
#include "table_test_util.h"
#include "zephyr/support/codepage.h"
#include "zephyr/support/errors.h"
#include "zephyr/table/collation.h"
#include "zephyr/table/dbase.h"

namespace zephyr {
namespace {

using testing::ErrorNumberOf;
using testing::ReadBytes;
using testing::Rows;
using testing::TempDir;

Variant MakeArray(const Rows& rows) {
  VariantArray array =
      VariantArray::Table(static_cast<int32_t>(rows[0].size()), static_cast<int32_t>(rows.size()));
  for (size_t r = 0; r < rows.size(); ++r) {
    for (size_t c = 0; c < rows[r].size(); ++c) {
      array.At(static_cast<int32_t>(c + 1), static_cast<int32_t>(r + 1)) = Variant(rows[r][c]);
    }
  }
  return Variant(std::move(array));
}

int32_t SortError(Variant values, int32_t column) {
  dBase table;
  try {
    table.SortTableValues(values, column, false);
  } catch (const AutomationError& error) {
    EXPECT_EQ(error.Source(), "dBase Class");
    if (error.Number() == kObjectErrorBase + 516) {
      EXPECT_EQ(error.Description(), "Array has no columns");
    }
    return error.Number() - kObjectErrorBase;
  }
  return 0;
}

// Nothing while the table is closed or empty; an error once every record is
// deleted.
TEST(GetTableValuesTest, LiveRecordsInFileOrderWithUntrimmedText) {
  TempDir dir;
  std::string path = dir.File("t.zpd");
  testing::CreateTable(
      path, {{"K", "C", 4}, {"N", "N", 3}, {"V", "C", 3}},
      {{"01", "", "a"}, {"02", "", "b"}, {"03", "", "c"}, {"04", "", "d"}, {"05", "", "e"}});
  std::string bytes = ReadBytes(path);
  bytes[129 + 11] = bytes[129 + 33] = '*';  // records 2 and 4 are deleted
  testing::WriteBytes(path, bytes);
  dBase table;
  EXPECT_TRUE(table.GetTableValues().IsEmpty());
  EXPECT_EQ(table.ReadRecords(), nullptr);
  table.OpenFile(path);
  Variant values = table.GetTableValues();
  EXPECT_EQ(testing::ArrayRows(values),
            (Rows{{"01  ", "", "a  "}, {"03  ", "", "c  "}, {"05  ", "", "e  "}}));
  EXPECT_TRUE(values.AsArray()->At(2, 1).IsEmpty());
  EXPECT_EQ(table.RecordNo(), 5);

  auto records = table.ReadRecords();  // the same cells, made on demand
  EXPECT_EQ(testing::RecordRows(*records), testing::ArrayRows(values));
  EXPECT_TRUE(records->Cell(2, 1).IsEmpty());
  EXPECT_EQ(ErrorNumberOf([&] { records->Cell(1, 4); }), 9);

  testing::CreateTable(dir.File("empty.zpd"), {{"K", "C", 2}}, {});
  table.OpenFile(dir.File("empty.zpd"));
  EXPECT_TRUE(table.GetTableValues().IsEmpty());
  EXPECT_EQ(table.ReadRecords(), nullptr);
  for (size_t record = 0; record < 5; ++record) bytes[129 + 11 * record] = '*';
  testing::WriteBytes(path, bytes);
  table.OpenFile(path);
  EXPECT_EQ(ErrorNumberOf([&] { table.GetTableValues(); }), 9);
  EXPECT_EQ(ErrorNumberOf([&] { table.ReadRecords(); }), 9);
}

TEST(SortTableValuesTest, ChecksInOrder) {
  EXPECT_EQ(SortError(Variant("text"), 1), 516);
  EXPECT_EQ(SortError(Variant(VariantArray({1, 0}, {1, 3})), 1), 516);
  EXPECT_EQ(SortError(Variant(VariantArray({1, 2}, {1, 0})), 1), 517);
  EXPECT_EQ(SortError(Variant(VariantArray({1, 2})), 1), 517);
  EXPECT_EQ(SortError(Variant(VariantArray({0, 2}, {1, 2})), 1), 518);
  EXPECT_EQ(SortError(Variant(VariantArray({1, 2}, {0, 2})), 1), 519);
  EXPECT_EQ(SortError(Variant(VariantArray({1, 2}, {1, 2})), 0), 520);
  EXPECT_EQ(SortError(Variant(VariantArray({1, 2}, {1, 2})), 3), 520);
  EXPECT_EQ(SortError(Variant(VariantArray({0, 2}, {1, 2})), 9), 518);  // base before column
}

TEST(SortTableValuesTest, AnyColumnSortsAndDescendingKeepsPrefixesFirst) {
  dBase table;
  auto sorted = [&](const Rows& rows, bool descending, int32_t column = 1) {
    Variant values = MakeArray(rows);
    Variant& result = table.SortTableValues(values, column, descending);
    EXPECT_EQ(&result, &values);
    return testing::ArrayRows(values);
  };
  EXPECT_EQ(sorted({{"ten", "10"}, {"two", "02"}, {"one", "01"}}, false, 2),
            (Rows{{"one", "01"}, {"two", "02"}, {"ten", "10"}}));
  EXPECT_EQ(sorted({{"AB"}, {"ABC"}, {"B"}, {"A"}}, true), (Rows{{"B"}, {"A"}, {"AB"}, {"ABC"}}));
}

TEST(CollationTest, ClassesAndCase) {
  const CodePageCollation& collation = CodePageCollation::Active();
  const std::vector<std::pair<std::string, std::string>> ascending = {
      {"\x01", " "}, {" ", "!"}, {"~", "0"}, {"9", "A"}, {"a", "B"}, {"B", "c"},
      {"e", "é"},    {"É", "f"}, {"s", "ß"}, {"ß", "t"}, {"z", "Þ"}, {"", "a"}};
  for (const auto& [a, b] : ascending) {
    EXPECT_LT(collation.Compare(ToCodePage(a), ToCodePage(b)), 0) << a << " < " << b;
  }
  EXPECT_EQ(collation.Compare(ToCodePage("ÉCOLE"), ToCodePage("école")), 0);
  EXPECT_EQ(collation.Compare(ToCodePage("Straße"), ToCodePage("STRAßE")), 0);
  EXPECT_EQ(collation.UpperCase(ToCodePage("abcÿœ1")), ToCodePage("ABCŸŒ1"));

  CodePage cyrillic("CP1251");  // other code pages fold and order their own letters
  CodePageCollation other(cyrillic);
  EXPECT_EQ(other.Compare(cyrillic.FromUtf8("жук"), cyrillic.FromUtf8("ЖУК")), 0);
  EXPECT_LT(other.Compare(cyrillic.FromUtf8("z"), cyrillic.FromUtf8("а")), 0);  // after Z
}

// Keys that compare equal (letters regardless of case, accented after plain
// ones) end where the halving-gap Shell sort the table array has always been
// sorted with leaves them, in table arrays and in records, whose keys are
// padded to the column. Each row carries its place before the sort.
TEST(SortTableValuesTest, TiedKeysEndWhereTheShellSortLeavesThem) {
  const struct {
    std::vector<std::string> keys;
    bool descending;
    bool records;
    std::vector<int> order;  // places before the sort
  } cases[] = {
      {{"ba", "B", "ab", "b", "a", "BB", "A"}, false, false, {6, 4, 2, 3, 1, 0, 5}},
      {{"11", "10", "1", "1", "0", "10", "11"}, true, false, {3, 2, 0, 6, 1, 5, 4}},
      {{" 0", "0", "10", "0 ", "1", "0", "1"}, false, true, {0, 1, 5, 3, 4, 6, 2}},
      {{"b", "é", "E", "B", "e", "É", "a"}, false, true, {6, 0, 3, 4, 2, 1, 5}},
  };
  TempDir dir;
  dBase table;
  for (const auto& c : cases) {
    Rows data, sorted;
    for (size_t i = 0; i < c.keys.size(); ++i) data.push_back({c.keys[i], std::to_string(i)});
    if (c.records) {
      testing::CreateTable(dir.File("sorted.zpd"), {{"K", "C", 3}, {"N", "C", 1}}, data);
      table.OpenFile(dir.File("sorted.zpd"));
      auto records = table.ReadRecords();
      table.CloseFile();
      records->SortBy(1);
      sorted = testing::RecordRows(*records);
    } else {
      Variant values = MakeArray(data);
      table.SortTableValues(values, 1, c.descending);
      sorted = testing::ArrayRows(values);
    }
    std::vector<int> order;
    for (const auto& row : sorted) {
      order.push_back(std::stoi(row[1]));
      EXPECT_TRUE(row[0].starts_with(c.keys[static_cast<size_t>(order.back())])) << row[0];
    }
    EXPECT_EQ(order, c.order) << c.keys[0];
  }
}

TEST(PutTableValuesTest, ArraysOfTheWrongShapeAreRefused) {
  TempDir dir;
  std::string path = dir.File("t.zpd");
  testing::CreateTable(path, {{"K", "C", 2}, {"V", "C", 2}}, {});
  dBase table;
  table.OpenMode(dBase::kReadWrite);
  table.OpenFile(path);
  Variant two_dimensional = MakeArray({{"a"}, {"b"}});  // rows are read with one subscript
  EXPECT_EQ(ErrorNumberOf([&] { table.PutTableValues(two_dimensional); }), 9);
  // Arrays of arrays: a first row of another length than the fields does not
  // match them; one that matches hits the missing second dimension in batch mode.
  const std::pair<int32_t, int32_t> first_rows[] = {{3, static_cast<int32_t>(0x80040203)}, {2, 9}};
  VariantArray outer({1, 2});
  outer.At(2) = Variant(VariantArray({1, 1}));
  for (const auto& [length, number] : first_rows) {
    outer.At(1) = Variant(VariantArray({1, length}));
    Variant values(outer);
    EXPECT_EQ(ErrorNumberOf([&] { table.PutTableValues(values); }), number);
  }
  // The batch mode stays on: appends no longer reach the header on disk, so
  // both land in the slot after the last record on disk.
  for (const char* key : {"01", "02"}) {
    table.InitRecord();
    table.Value(1, key);
    table.PutRecord(0);
  }
  EXPECT_EQ(testing::Le32(ReadBytes(path), 4), 0u);
}

}  // namespace
}  // namespace zephyr
