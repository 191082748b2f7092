// The hashing scans name the same rows as the literal comparisons of every
// row with every other row, on random sheets full of repeats.
#include "sheet_scans.h"

#include <gtest/gtest.h>

#include <random>

#include "helpers/literal_scans.h"

namespace zephyr::excel {
namespace {

using testing::LiteralIdenticalRows;
using testing::LiteralRepeatedKey;

TEST(SheetScansTest, AgreeWithTheLiteralScansOnRandomSheets) {
  std::mt19937 random(5);
  const char* cells[] = {"01", " 01", "01 ", "02", "a", "", "b "};
  int repeats = 0, identical = 0;
  for (int round = 0; round < 2000; ++round) {
    int columns = 1 + round % 3;
    ExcelArray sheet(columns);
    sheet.AddRow(std::vector<std::string>(static_cast<size_t>(columns), "Heading"));
    int rows = std::uniform_int_distribution<int>(0, 9)(random);
    for (int r = 0; r < rows; ++r) {
      std::vector<std::string> row;
      for (int c = 0; c < columns; ++c) row.push_back(cells[random() % 7]);
      sheet.AddRow(row);
    }
    ASSERT_EQ(FirstRepeatedKeyRow(sheet), LiteralRepeatedKey(sheet)) << round;
    ASSERT_EQ(FirstIdenticalRows(sheet), LiteralIdenticalRows(sheet)) << round;
    repeats += LiteralRepeatedKey(sheet).has_value();
    identical += LiteralIdenticalRows(sheet).has_value();
  }
  EXPECT_GT(repeats, 500);
  EXPECT_GT(identical, 500);
}

TEST(SheetScansTest, TheEarliestFirstRowWinsNotTheEarliestRepeat) {
  ExcelArray sheet(1);
  for (const char* key : {"Key", "A", "B", "B", "A"}) sheet.AddRow({key});
  EXPECT_EQ(FirstIdenticalRows(sheet), std::make_pair(2, 5));
  EXPECT_EQ(FirstRepeatedKeyRow(sheet), 4);
}

}  // namespace
}  // namespace zephyr::excel
