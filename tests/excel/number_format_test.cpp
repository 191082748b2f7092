#include "number_format.h"

#include <gtest/gtest.h>

#include <string>

namespace zephyr::excel {
namespace {

std::string Show(const char* code, double value) {
  return NumberFormat(code).Format(value);
}

struct Shown {
  const char* code;  // nullptr: the built-in format `builtin`
  int builtin;
  double value;
  const char* text;
};

TEST(NumberFormatTest, ShowsValuesAsTheCodeSays) {
  EXPECT_TRUE(NumberFormat().IsGeneral());
  EXPECT_TRUE(NumberFormat("General").IsGeneral());
  EXPECT_EQ(NumberFormat().Format(1e20), "1E+20");
  const Shown rows[] = {
      {nullptr, 0, -2.25, "-2.25"},
      {"0000", 0, -5, "-0005"},
      {"0.00", 0, 2.345, "2.35"},  // halves round away from zero as shown
      {"#.##", 0, 0.5, ".5"},
      {"0.00", 0, -0.001, "0.00"},  // no "-0.00"
      {"#,##0", 0, 123456, "123,456"},  // no separator before the first group
      {"#,##0,", 0, 1234567, "1,235"},
      {"0%", 0, 0.25, "25%"},
      // Sections for negative and zero values.
      {"0;-0;\"zero\"", 0, 0, "zero"},
      {"#,##0.00_);[Red](#,##0.00)", 0, -1234.5, "(1,234.50)"},
      {"#,##0.00_);[Red](#,##0.00)", 0, 1234.5, "1,234.50 "},
      // Literals, escapes and currencies.
      {"[$€-407] #,##0.00", 0, 1234.5, "€ 1,234.50"},
      {"\\$0.00", 0, 3, "$3.00"},
      {"\"tel;\"0", 0, 5, "tel;5"},  // a quoted ';' is no section break
      {"0.00E+00", 0, 99999, "1.00E+05"},
      // Dates and times read as ISO.
      {nullptr, 14, 45000, "2023-03-15"},
      {"dd/mm/yyyy", 0, 1, "1900-01-01"},
      {"dd/mm/yyyy", 0, 60, "1900-02-29"},  // the serial the 1900 leap year bug invented
      {"yyyy-mm-dd hh:mm:ss", 0, 45000.999999999, "2023-03-16 00:00:00"},
      {"mm:ss", 0, 0.5, "12:00:00"},  // minutes next to seconds are a time
      // Text formats and unknown built-in numbers show the number.
      {nullptr, 49, 1.5, "1.5"},
      {nullptr, 1000, 7, "7"},
  };
  for (const Shown& row : rows) {
    NumberFormat format = row.code ? NumberFormat(row.code) : NumberFormat::Builtin(row.builtin);
    EXPECT_EQ(format.Format(row.value), row.text)
        << (row.code ? row.code : "builtin " + std::to_string(row.builtin)) << " " << row.value;
  }
}

TEST(NumberFormatTest, HostileCodesStayBounded) {
  std::string zeros(100000, '0');
  EXPECT_LE(Show(zeros.c_str(), 1).size(), 40u);
  EXPECT_LE(Show(("0." + zeros).c_str(), 1).size(), 40u);
  std::string percents(500, '%');
  EXPECT_FALSE(Show(percents.c_str(), 1).empty());
  EXPECT_EQ(Show("0.00E+00", 1e-320).empty(), false);
  EXPECT_EQ(Show("\"unterminated", 1), "unterminated");
  EXPECT_EQ(Show("0000", 1e300).size(), 301u);
}

TEST(IsGeneralTextTest, AcceptsOnlyTextThatGeneralWouldPrint) {
  for (const char* text : {"0", "3", "-3", "1.5", "-0.25", "123456789012345", "0.000001",
                           "0.000000000000123", "99999.9999999999"}) {
    EXPECT_TRUE(IsGeneralText(text)) << text;
  }
  for (const char* text :
       {"", "-", "-0", "00", "01", "1.", ".5", "1.50", "1e5", "1E+20", " 1", "1,5",
        "1234567890123456", "0.0000000000000001", "1.23456789012345678", "0x10", "--1", "1.2.3"}) {
    EXPECT_FALSE(IsGeneralText(text)) << text;
  }
}

}  // namespace
}  // namespace zephyr::excel
