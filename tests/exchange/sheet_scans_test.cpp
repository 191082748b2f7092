#include "sheet_scans.h"

#include <gtest/gtest.h>

namespace zephyr::excel {
namespace {

// Cells compare trimmed and one by one, never run together; the headings in
// row 1 take no part; the earliest first row of a pair wins, not the
// earliest repeat.
TEST(SheetScansTest, NameTheFirstRepeatedKeyAndTheFirstPairOfIdenticalRows) {
  const struct {
    std::vector<std::vector<std::string>> rows;
    std::optional<int32_t> repeated_key;
    std::optional<std::pair<int32_t, int32_t>> identical;
  } cases[] = {
      {{{"Key"}, {"Key"}}, std::nullopt, std::nullopt},
      {{{"Key"}, {"A"}, {"B"}, {"B"}, {"A"}}, 4, std::pair{2, 5}},
      {{{"K", "N"}, {" 01", "a"}, {"01 ", "b"}, {"02", ""}, {"02 ", " "}}, 3, std::pair{4, 5}},
      {{{"K", "N"}, {"a", "bc"}, {"ab", "c"}}, std::nullopt, std::nullopt},
  };
  for (const auto& c : cases) {
    ExcelArray sheet(static_cast<int32_t>(c.rows[0].size()));
    for (const auto& row : c.rows) sheet.AddRow(row);
    EXPECT_EQ(FirstRepeatedKeyRow(sheet), c.repeated_key) << c.rows[1][0];
    EXPECT_EQ(FirstIdenticalRows(sheet), c.identical) << c.rows[1][0];
  }
}

}  // namespace
}  // namespace zephyr::excel
