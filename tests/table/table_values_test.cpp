#include <gtest/gtest.h>

#include <random>
#include <set>

#include "helpers/temp_dir.h"
#include "table_test_util.h"
#include "zephyr/support/codepage.h"
#include "zephyr/support/errors.h"
#include "zephyr/table/collation.h"
#include "zephyr/table/dbase.h"

namespace zephyr {
namespace {

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

// The sort exactly as the table array has always been sorted: the halving-gap
// Shell sort over the Variant array, comparing texts on the fly.
void ReferenceShellSort(VariantArray* array, int32_t column, bool descending) {
  const CodePageCollation& collation = CodePageCollation::Active();
  auto text = [&](int32_t row) {
    std::string bytes = ToCodePage(array->At(column, row).ToText());
    if (descending) {
      for (char& c : bytes) c = static_cast<char>(255 - static_cast<unsigned char>(c));
    }
    return bytes;
  };
  int32_t n = array->UBound(2);
  for (int32_t gap = n / 2; gap > 0; gap /= 2) {
    for (int32_t i = gap; i <= n - 1; ++i) {
      for (int32_t j = i - gap + 1; j >= 1; j -= gap) {
        if (collation.Compare(text(j), text(j + gap)) <= 0) break;
        for (int32_t c = 1; c <= array->UBound(1); ++c) {
          std::swap(array->At(c, j), array->At(c, j + gap));
        }
      }
    }
  }
}

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
  table.OpenFile(path);
  Variant values = table.GetTableValues();
  const VariantArray* array = values.AsArray();
  ASSERT_NE(array, nullptr);
  EXPECT_EQ(array->LBound(1), 1);
  EXPECT_EQ(array->LBound(2), 1);
  EXPECT_EQ(testing::ArrayRows(values),
            (Rows{{"01  ", "", "a  "}, {"03  ", "", "c  "}, {"05  ", "", "e  "}}));
  EXPECT_TRUE(array->At(2, 1).IsEmpty());
  EXPECT_EQ(table.RecordNo(), 5);

  auto records = table.ReadRecords();  // the same cells, made on demand
  EXPECT_EQ(testing::RecordRows(*records), testing::ArrayRows(values));
  EXPECT_TRUE(records->Cell(2, 1).IsEmpty());
  for (auto [column, row] : {std::pair{0, 1}, {4, 1}, {1, 0}, {1, 4}}) {
    try {
      records->Cell(column, row);
      FAIL() << "no error";
    } catch (const RuntimeError& error) {
      EXPECT_EQ(error.Code(), RuntimeErrorCode::kSubscriptOutOfRange);
    }
  }
}

TEST(GetTableValuesTest, NothingWhenClosedOrEmptyAndAnErrorWhenAllAreDeleted) {
  TempDir dir;
  std::string path = dir.File("t.zpd");
  testing::CreateTable(path, {{"K", "C", 2}}, {});
  dBase table;
  EXPECT_TRUE(table.GetTableValues().IsEmpty());
  EXPECT_EQ(table.ReadRecords(), nullptr);
  table.OpenFile(path);
  EXPECT_TRUE(table.GetTableValues().IsEmpty());
  EXPECT_EQ(table.ReadRecords(), nullptr);

  path = dir.File("deleted.zpd");
  testing::CreateTable(path, {{"K", "C", 2}}, {{"01"}});
  std::string bytes = ReadBytes(path);
  bytes[65] = '*';
  testing::WriteBytes(path, bytes);
  table.OpenFile(path);
  for (int attempt = 0; attempt < 2; ++attempt) {
    try {
      attempt == 0 ? (void)table.GetTableValues() : (void)table.ReadRecords();
      FAIL() << "no error";
    } catch (const RuntimeError& error) {
      EXPECT_EQ(error.Code(), RuntimeErrorCode::kSubscriptOutOfRange);
    }
  }
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

// Row order against the literal sort is ShellOrderTest's business; these are
// the rules it does not spell out.
TEST(SortTableValuesTest, AnyColumnSortsDescendingKeepsPrefixesFirstOtherValuesByText) {
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

  VariantArray array = VariantArray::Table(1, 3);
  array.At(1, 1) = Variant(int32_t{7});
  array.At(1, 3) = Variant(true);
  Variant values(std::move(array));
  table.SortTableValues(values, 1, false);
  EXPECT_EQ(testing::ArrayRows(values), (Rows{{""}, {"7"}, {"True"}}));
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
  auto compare = [&](const char* a, const char* b) {
    return other.Compare(cyrillic.FromUtf8(a), cyrillic.FromUtf8(b));
  };
  EXPECT_EQ(compare("жук", "ЖУК"), 0);
  EXPECT_LT(compare("z", "а"), 0);  // other scripts after Z
  EXPECT_LT(compare("а", "Б"), 0);
  EXPECT_LT(compare("9", "а"), 0);
}

// Which keys tie: none (the fast path alone), one pair at either end of the
// order or in between, or many.
enum class Ties { kNone, kOnePair, kMany };

// Keys of digits and blanks are sorted by their bytes, any others by their
// weights.
class ShellOrderTest : public ::testing::TestWithParam<std::tuple<bool, Ties, bool>> {};

// Sorted table arrays and sorted records must leave every row exactly where
// the literal Shell sort does, whether or not keys tie (the fast path only
// runs without ties).
TEST_P(ShellOrderTest, MatchesTheLiteralAlgorithm) {
  auto [digits, ties, descending] = GetParam();
  const bool many = ties == Ties::kMany;
  std::mt19937 random(digits * 6 + static_cast<int>(ties) * 2 + descending + 11);
  const std::string alphabet = digits ? (many ? " 01" : " 0123456789")
                               : many ? "aAb 1"
                                      : "aAbBcC 0123-éÉ";
  TempDir dir;
  dBase table;
  for (int round = 0; round < 60; ++round) {
    int rows = 1 + static_cast<int>(random() % 200);
    std::set<std::string> seen;
    Rows data;
    while (static_cast<int>(data.size()) < rows) {
      std::string key;
      size_t length = many ? 1 + random() % 3 : 1 + random() % 8;
      while (key.size() < length) key += alphabet[random() % alphabet.size()];
      if (!many) {
        std::string folded = ToCodePage(key);
        folded = CodePageCollation::Active().UpperCase(folded);
        if (!seen.insert(folded).second) continue;  // distinct in the collation
      }
      data.push_back({key, std::to_string(data.size())});
    }
    Variant expected = MakeArray(data);
    ReferenceShellSort(expected.AsArray(), 1, descending);
    if (ties == Ties::kOnePair && rows > 1) {
      // A copy of the first, the last or a middle key in sorted order.
      int32_t source = round % 3 == 0 ? 1 : round % 3 == 1 ? rows : 1 + random() % rows;
      std::string key = expected.AsArray()->At(1, source).ToText();
      size_t target = random() % data.size();
      while (data[target][0] == key) target = (target + 1) % data.size();
      data[target][0] = key;
      expected = MakeArray(data);
      ReferenceShellSort(expected.AsArray(), 1, descending);
    }
    Variant values = MakeArray(data);
    table.SortTableValues(values, 1, descending);
    ASSERT_EQ(testing::ArrayRows(values), testing::ArrayRows(expected)) << "round " << round;
    if (descending) continue;

    // Records keep their keys as the file does: blank-padded to the column.
    std::string path = dir.File("sorted.zpd");
    testing::CreateTable(path, {{"K", "C", 8}, {"N", "C", 3}}, data);
    table.OpenFile(path);
    auto records = table.ReadRecords();
    table.CloseFile();
    expected = MakeArray(testing::RecordRows(*records));
    ReferenceShellSort(expected.AsArray(), 1, false);
    records->SortBy(1);
    ASSERT_EQ(testing::RecordRows(*records), testing::ArrayRows(expected)) << "round " << round;
  }
}

std::string CaseName(const ::testing::TestParamInfo<ShellOrderTest::ParamType>& info) {
  const char* tied[] = {"NoTies", "OnePairTied", "ManyTied"};
  return std::string(std::get<0>(info.param) ? "Digits" : "Letters") +
         tied[static_cast<int>(std::get<1>(info.param))] +
         (std::get<2>(info.param) ? "Down" : "Up");
}

INSTANTIATE_TEST_SUITE_P(AllCases, ShellOrderTest,
                         ::testing::Combine(::testing::Bool(),
                                            ::testing::Values(Ties::kNone, Ties::kOnePair,
                                                              Ties::kMany),
                                            ::testing::Bool()),
                         CaseName);

TEST(PutTableValuesTest, ArraysOfTheWrongShapeAreRefused) {
  TempDir dir;
  std::string path = dir.File("t.zpd");
  testing::CreateTable(path, {{"K", "C", 2}, {"V", "C", 2}}, {});
  dBase table;
  table.OpenMode(dBase::kReadWrite);
  table.OpenFile(path);
  Variant two_dimensional = MakeArray({{"a"}, {"b"}});  // rows are read with one subscript
  try {
    table.PutTableValues(two_dimensional);
    FAIL() << "no error";
  } catch (const RuntimeError& error) {
    EXPECT_EQ(error.Code(), RuntimeErrorCode::kSubscriptOutOfRange);
  }

  // Arrays of arrays hit the missing second dimension in batch mode.
  VariantArray outer({1, 2});
  outer.At(1) = Variant(VariantArray({1, 3}));
  outer.At(2) = Variant(VariantArray({1, 1}));
  Variant mismatched(outer);
  try {
    table.PutTableValues(mismatched);
    FAIL() << "no error";
  } catch (const AutomationError& error) {
    EXPECT_EQ(error.Number(), static_cast<int32_t>(0x80040203));
    EXPECT_EQ(error.Description(), "Array does not match Fields");
  }

  outer.At(2) = Variant(VariantArray({1, 0}));
  Variant no_rows(outer);
  EXPECT_NO_THROW(table.PutTableValues(no_rows));

  outer.At(1) = Variant(VariantArray({1, 2}));
  outer.At(2) = Variant(VariantArray({1, 2}));
  Variant matching(outer);
  EXPECT_THROW(table.PutTableValues(matching), RuntimeError);

  // The batch mode stays on: appends no longer reach the header on disk, so
  // both land in the slot after the last record on disk.
  for (const char* key : {"01", "02"}) {
    table.InitRecord();
    table.Value(1, key);
    table.PutRecord(0);
    EXPECT_EQ(table.RecordNo(), 1);
  }
  EXPECT_EQ(testing::Le32(ReadBytes(path), 4), 0u);
  table.CloseFile();
  EXPECT_EQ(ReadBytes(path).substr(97),
            "\x1A"
            "02  ");  // the count on disk is still 0
}

}  // namespace
}  // namespace zephyr
