#include "zephyr/runtime/popup_key.h"

#include <gtest/gtest.h>

#include "zephyr/support/errors.h"

namespace zephyr {
namespace {

TEST(PopupKeyTest, StoredAndCompactFormsOfKeys) {
  EXPECT_EQ(CompactPath("01  02"), "0102");
  EXPECT_EQ(CompactPath("    01"), "01");
  EXPECT_EQ(KeyLevel("    01"), 1);
  EXPECT_EQ(KeyLevel("01  02"), 2);
  EXPECT_EQ(KeyLevel("010201"), 3);
  EXPECT_EQ(GetParentKey("010203"), "0102");
  EXPECT_EQ(GetParentKey("01  02"), "01");
  EXPECT_EQ(GetParentKey("    01"), "");
  EXPECT_EQ(GetParentKey("1"), "");  // too short to have a parent
  EXPECT_EQ(FormatStoredKey("0102  ", 3), "01  02");  // the own code goes last
  for (const char* key : {"    01", "01  02", "010201"}) {
    EXPECT_EQ(FormatStoredKey(CompactPath(key), 3), key);
  }
}

// Which rows a pattern matches shows in the trees of popup_open_test.cpp.
TEST(PopupKeyTest, ChildPatternsKeepTheParentsPathAndLeaveTheOwnCodeOpen) {
  EXPECT_EQ(ChildPattern("", 1), "*");  // every row is a top-level item
  EXPECT_EQ(ChildPattern("", 3), "    *");
  EXPECT_EQ(ChildPattern("    01", 3), "01  *");
  EXPECT_EQ(ChildPattern("01  02", 3), "0102*");
  EXPECT_EQ(ChildPattern("010201", 3), "01020");  // never lengthened: matches nothing
  EXPECT_FALSE(MatchesChildPattern("010201", ChildPattern("010201", 3)));
  EXPECT_THROW(ChildPattern("", 0), RuntimeError);
}

}  // namespace
}  // namespace zephyr
