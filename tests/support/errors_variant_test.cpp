#include <gtest/gtest.h>

#include "helpers/error_number.h"
#include "zephyr/support/errors.h"
#include "zephyr/support/variant.h"

namespace zephyr {
namespace {

using testing::ErrorNumberOf;

TEST(ErrorsTest, ErrorsCarryNumberSourceAndStandardText) {
  RuntimeError error(RuntimeErrorCode::kSubscriptOutOfRange, "line 4 of template 'a.ZPT'");
  EXPECT_EQ(error.Number(), 9);
  EXPECT_EQ(error.Source(), "ZephyrPopup60");
  EXPECT_EQ(error.Description(), "Subscript out of range: line 4 of template 'a.ZPT'");
  EXPECT_STREQ(error.what(), error.Description().c_str());
  EXPECT_EQ(RuntimeError(RuntimeErrorCode::kDuplicateKey).Description(),
            "This key is already associated with an element of this collection");
  // Hosts catch one base type and test the number.
  EXPECT_EQ(ErrorNumberOf([] {
              throw AutomationError(kObjectErrorBase + 512, "dBase Class",
                                    "dBase File Not Found 'x'");
            }),
            static_cast<int32_t>(0x80040200u));
  EXPECT_EQ(ErrorNumberOf([] { RaiseFileError(ENOENT, "open", "/no/such"); }), 53);
  try {
    RaiseFileError(EACCES, "open", "/locked.ZPD");
  } catch (const RuntimeError& error) {
    EXPECT_EQ(error.Code(), RuntimeErrorCode::kPermissionDenied);
    EXPECT_NE(error.Description().find("'/locked.ZPD'"), std::string::npos);
  }
}

TEST(VariantTest, TextFormsFollowThePlatform) {
  EXPECT_EQ(Variant().ToText(), "");
  EXPECT_EQ(Variant(int16_t{-3}).ToText(), "-3");
  EXPECT_EQ(Variant(3.0).ToText(), "3");
  EXPECT_EQ(Variant(0.1).ToText(), "0.1");
  EXPECT_EQ(Variant(1e20).ToText(), "1E+20");
  EXPECT_EQ(Variant(-2.5e-16).ToText(), "-2.5E-16");
  EXPECT_EQ(Variant(123456789012.0).ToText(), "123456789012");
  EXPECT_EQ(Variant(true).ToText(), "True");
  EXPECT_EQ(Variant(false).ToText(), "False");
  EXPECT_EQ(ErrorNumberOf([] { Variant(std::make_shared<Object>()).ToText(); }), 13);
}

// True is -1 as a number (every bit set), so that hosts can combine flags
// with And, Or and Not.
TEST(VariantTest, BooleansAreMinusOneAndZeroAsNumbers) {
  EXPECT_EQ(Variant(true).ToDouble(), -1.0);
  EXPECT_EQ(Variant(true).ToInt16(), -1);
  EXPECT_EQ(Variant(false).ToInt32(), 0);
  EXPECT_TRUE(Variant(false).IsNumeric());
}

TEST(VariantTest, IntegerConversionsRoundHalfToEvenAndCheckRange) {
  EXPECT_EQ(Variant("2.5").ToInt16(), 2);
  EXPECT_EQ(Variant("3.5").ToInt16(), 4);
  EXPECT_EQ(Variant(" 12 ").ToInt16(), 12);
  EXPECT_EQ(Variant("-7").ToInt32(), -7);
  EXPECT_EQ(Variant("&H10").ToInt16(), 16);
  EXPECT_EQ(Variant("1e2").ToInt16(), 100);
  EXPECT_EQ(ErrorNumberOf([] { Variant("40000").ToInt16(); }), 6);
  EXPECT_EQ(ErrorNumberOf([] { TextToInt32("99999999999"); }), 6);
  for (const char* text : {"abc", "", "1,5"}) {
    EXPECT_EQ(ErrorNumberOf([&] { Variant(text).ToInt32(); }), 13) << text;
  }
}

TEST(VariantTest, CopiesAreValuesButObjectsAreShared) {
  VariantArray array = VariantArray::Table(2, 2);
  array.At(1, 1) = Variant("a");
  Variant original(array);
  Variant copy = original;
  copy.AsArray()->At(1, 1) = Variant("changed");
  EXPECT_EQ(original.AsArray()->At(1, 1).ToText(), "a");
  EXPECT_FALSE(original == copy);
  auto object = std::make_shared<Object>();
  Variant first(object);
  Variant second = first;
  EXPECT_EQ(second.AsObject(), object);
  EXPECT_TRUE(first == second);
}

TEST(VariantArrayTest, SubscriptsAreCheckedAndRedimPreserveKeepsRows) {
  VariantArray table = VariantArray::Table(3, 2);
  table.At(3, 2) = Variant("last");
  EXPECT_EQ(table.Elements().back().ToText(), "last");  // (column, row) with columns side by side
  EXPECT_EQ(ErrorNumberOf([&] { table.At(0, 1); }), 9);
  EXPECT_EQ(ErrorNumberOf([&] { table.At(1, 3); }), 9);
  EXPECT_EQ(ErrorNumberOf([&] { table.At(1); }), 9);  // one subscript on two dimensions
  EXPECT_EQ(ErrorNumberOf([&] { table.UBound(3); }), 9);
  table.At(2, 1) = Variant("kept");
  table.RedimPreserve(1);
  EXPECT_EQ(table.UBound(2), 1);
  EXPECT_EQ(table.At(2, 1).ToText(), "kept");
  EXPECT_EQ(ErrorNumberOf([&] { table.RedimPreserve(0); }), 9);
  EXPECT_EQ(table.UBound(2), 1);
}

}  // namespace
}  // namespace zephyr
