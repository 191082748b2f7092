#include "number_format.h"

#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <random>
#include <string>

#include "zephyr/support/variant.h"

namespace zephyr::excel {
namespace {

std::string Show(const char* code, double value) {
  return NumberFormat(code).Format(value);
}

TEST(NumberFormatTest, GeneralShowsTheShortestNumber) {
  NumberFormat general;
  EXPECT_TRUE(general.IsGeneral());
  EXPECT_EQ(general.Format(3), "3");
  EXPECT_EQ(general.Format(1.5), "1.5");
  EXPECT_EQ(general.Format(1e20), "1E+20");
  EXPECT_TRUE(NumberFormat("General").IsGeneral());
  EXPECT_EQ(NumberFormat::Builtin(0).Format(-2.25), "-2.25");
}

TEST(NumberFormatTest, ZeroPaddedIntegersKeepTheirLeadingZeros) {
  EXPECT_EQ(Show("0000", 101), "0101");
  EXPECT_EQ(Show("00", 5), "05");
  EXPECT_EQ(Show("000000", 123), "000123");
  EXPECT_EQ(Show("0000", 12345), "12345");
  EXPECT_EQ(Show("0000", 0), "0000");
  EXPECT_EQ(Show("0000", -5), "-0005");
  EXPECT_EQ(Show("\"No. \"0000", 7), "No. 0007");
  EXPECT_EQ(Show("0", 1234567), "1234567");
}

TEST(NumberFormatTest, DecimalsRoundHalfAwayFromZeroAsShown) {
  EXPECT_EQ(Show("0", 2.5), "3");
  EXPECT_EQ(Show("0.00", 1.5), "1.50");
  EXPECT_EQ(Show("0.00", 2.345), "2.35");
  EXPECT_EQ(Show("0.00", -2.345), "-2.35");
  EXPECT_EQ(Show("0.00", 0), "0.00");
  EXPECT_EQ(Show("0.0#", 1.25), "1.25");
  EXPECT_EQ(Show("0.0#", 1.2), "1.2");
  EXPECT_EQ(Show("#.##", 0.5), ".5");
  EXPECT_EQ(Show("0.00", -0.001), "0.00");  // no "-0.00"
  EXPECT_EQ(NumberFormat::Builtin(2).Format(3), "3.00");
}

TEST(NumberFormatTest, ThousandsSeparatorsAndScaling) {
  EXPECT_EQ(Show("#,##0", 999), "999");
  EXPECT_EQ(Show("#,##0", 1000), "1,000");
  EXPECT_EQ(Show("#,##0.00", 1234567.891), "1,234,567.89");
  EXPECT_EQ(Show("#,##0,", 1234567), "1,235");
  EXPECT_EQ(NumberFormat::Builtin(3).Format(-1234), "-1,234");
}

TEST(NumberFormatTest, PercentagesMultiplyByHundred) {
  EXPECT_EQ(Show("0%", 0.25), "25%");
  EXPECT_EQ(Show("0.00%", 0.1234), "12.34%");
  EXPECT_EQ(NumberFormat::Builtin(9).Format(1), "100%");
}

TEST(NumberFormatTest, SectionsForNegativeAndZeroValues) {
  EXPECT_EQ(Show("0.00;(0.00)", -1.5), "(1.50)");
  EXPECT_EQ(Show("0.00;(0.00)", 1.5), "1.50");
  EXPECT_EQ(Show("0;-0;\"zero\"", 0), "zero");
  EXPECT_EQ(Show("#,##0.00_);[Red](#,##0.00)", -1234.5), "(1,234.50)");
  EXPECT_EQ(Show("#,##0.00_);[Red](#,##0.00)", 1234.5), "1,234.50 ");
}

TEST(NumberFormatTest, LiteralsEscapesAndCurrencies) {
  EXPECT_EQ(Show("[$€-407] #,##0.00", 1234.5), "€ 1,234.50");
  EXPECT_EQ(Show("\\$0.00", 3), "$3.00");
  EXPECT_EQ(Show("0.00 \"kg\"", 2), "2.00 kg");
  EXPECT_EQ(Show("\"tel;\"0", 5), "tel;5");  // a quoted ';' is no section break
  EXPECT_EQ(Show("[Magenta]0.00", 1.5), "1.50");
  EXPECT_EQ(Show("[>=100]0;0.0", 5), "5");  // conditions are skipped
}

TEST(NumberFormatTest, ScientificNotation) {
  EXPECT_EQ(Show("0.00E+00", 12345), "1.23E+04");
  EXPECT_EQ(Show("0.00E+00", 0.000123), "1.23E-04");
  EXPECT_EQ(Show("0.00E+00", 99999), "1.00E+05");
  EXPECT_EQ(NumberFormat::Builtin(11).Format(0), "0.00E+00");
}

TEST(NumberFormatTest, DatesAndTimesReadAsIso) {
  EXPECT_EQ(NumberFormat::Builtin(14).Format(45000), "2023-03-15");
  EXPECT_EQ(NumberFormat::Builtin(15).Format(45000.75), "2023-03-15");
  EXPECT_EQ(NumberFormat::Builtin(22).Format(45000.5), "2023-03-15 12:00:00");
  EXPECT_EQ(NumberFormat::Builtin(20).Format(0.75), "18:00:00");
  EXPECT_EQ(Show("dd/mm/yyyy", 1), "1900-01-01");
  EXPECT_EQ(Show("dd/mm/yyyy", 60), "1900-02-29");  // the serial the 1900 leap year bug invented
  EXPECT_EQ(Show("dd/mm/yyyy", 61), "1900-03-01");
  EXPECT_EQ(Show("yyyy-mm-dd hh:mm:ss", 45000.999999999), "2023-03-16 00:00:00");
  EXPECT_EQ(Show("mm:ss", 0.5), "12:00:00");  // minutes next to seconds are a time
}

TEST(NumberFormatTest, TextAndFractionFormatsShowTheNumber) {
  EXPECT_EQ(Show("@", 42), "42");
  EXPECT_EQ(NumberFormat::Builtin(49).Format(1.5), "1.5");
  EXPECT_EQ(NumberFormat::Builtin(12).Format(1.5), "1.5");
  EXPECT_EQ(NumberFormat::Builtin(1000).Format(7), "7");
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

// Writers store the shortest text of a double; whenever that text is taken
// as it is, it must be what General would print.
TEST(IsGeneralTextTest, AgreesWithNumberToTextOnRandomNumbers) {
  std::mt19937_64 random(11);
  std::uniform_int_distribution<int> exponent(-20, 20);
  std::uniform_real_distribution<double> mantissa(-10, 10);
  int accepted = 0;
  for (int i = 0; i < 200000; ++i) {
    double value = mantissa(random) * std::pow(10.0, exponent(random));
    if (i % 3 == 0) value = std::round(value * 1000) / 1000;
    if (i % 3 == 1) value = std::round(value);
    char buffer[64];
    auto end = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed).ptr;
    std::string text(buffer, end);
    if (!IsGeneralText(text)) continue;
    ++accepted;
    ASSERT_EQ(NumberToText(value), text);
  }
  EXPECT_GT(accepted, 50000);
}

}  // namespace
}  // namespace zephyr::excel
