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

// Values as hosts see them: numbers printed as the platform prints them,
// True -1 as a number (every bit set, so that flags combine with And, Or and
// Not), halves rounded to even, overflow (6) and type mismatch (13).
TEST(VariantTest, ConversionsFollowThePlatform) {
  struct Conversion {
    Variant value;
    const char* text;
    int16_t number;  // ToInt16(), when it raises no error
    int32_t error;
  };
  const Conversion conversions[] = {
      {Variant(), "", 0, 0},
      {Variant(int16_t{-3}), "-3", -3, 0},
      {Variant(0.1), "0.1", 0, 0},
      {Variant(1e20), "1E+20", 0, 6},
      {Variant(-2.5e-16), "-2.5E-16", 0, 0},
      {Variant(123456789012.0), "123456789012", 0, 6},
      {Variant(true), "True", -1, 0},
      {Variant("2.5"), "2.5", 2, 0},
      {Variant("3.5"), "3.5", 4, 0},
      {Variant(" 12 "), " 12 ", 12, 0},
      {Variant("&H10"), "&H10", 16, 0},
      {Variant("40000"), "40000", 0, 6},
      {Variant("1,5"), "1,5", 0, 13},
  };
  for (const Conversion& c : conversions) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(c.value.ToText(), c.text);
    int16_t number = 0;
    EXPECT_EQ(ErrorNumberOf([&] { number = c.value.ToInt16(); }), c.error);
    EXPECT_EQ(number, c.number);
  }
  EXPECT_EQ(ErrorNumberOf([] { Variant(std::make_shared<Object>()).ToText(); }), 13);
}

}  // namespace
}  // namespace zephyr
