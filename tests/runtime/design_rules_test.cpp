#include "zephyr/runtime/design_rules.h"

#include <gtest/gtest.h>

namespace zephyr {
namespace {

using Levels = std::vector<std::string>;
using Fields = std::vector<DesignDraft::Field>;
const Levels kLevels{"Aisle", "Shelf"};
const Fields kFields{{"Name", "12"}, {"Price", "8"}};

// `count` entries, the last one given.
Levels ManyLevels(int count, std::string last) {
  Levels levels(static_cast<size_t>(count - 1), "Q");
  levels.push_back(std::move(last));
  return levels;
}
Fields ManyFields(int count, std::string last_length) {
  Fields fields(static_cast<size_t>(count - 1), {"F", "1"});
  fields.push_back({"F", std::move(last_length)});
  return fields;
}

struct RuleCase {
  DesignDraft draft;
  DesignPlace place;
  int row;
  const char* message_start;
};

constexpr auto kTitle = DesignPlace::kTitle;
constexpr auto kLevel = DesignPlace::kLevels;
constexpr auto kField = DesignPlace::kFields;

// Each draft breaks two or more rules; the first in the fixed order wins.
const RuleCase kCases[] = {
    {{" ", {}, {}}, kTitle, 0, "Missing Title.  You must enter a Title"},
    {{"It's \"x\"", kLevels, kFields}, kTitle, 0, "Double Quotes are not permited in Title"},
    {{"It's", {}, kFields}, kTitle, 0, "Single Quotes are not permited in Title"},
    {{"T", {}, {}}, kLevel, 0, "Popup must contain at least 1 Level"},
    {{"T", {"", "9x", "A\"b"}, kFields}, kLevel, 3,
     "Double Quotes are not permited in Level Descriptions"},
    {{"T", {"Aisle", "  ", "9x"}, kFields}, kLevel, 2,
     "Missing Level Descritpion. Please Enter Level Description"},
    {{"T", ManyLevels(128, " Size"), kFields}, kLevel, 128,
     "The First Character of the level name is numeric."},
    {{"T", ManyLevels(128, "Q"), {}}, kLevel, 0,
     "Only 127 Levels are permited. Please Delete extra levels"},
    {{"T", kLevels, {}}, kField, 0, "Popup must contain at least 1 Field"},
    {{"T", kLevels, {{"N", "1"}, {"A\"", "x"}}}, kField, 2,
     "Double Quotes are not permited in Field Names"},
    {{"T", kLevels, {{"N", "12a"}, {"\"", "1"}}}, kField, 1, "Fields Length must be numeric"},
    {{"T", kLevels, {{"N", "1"}, {"P", "255"}}}, kField, 2, "Fields Length must be less than 250"},
    {{"T", kLevels, {{"N", "1"}, {"P", "0"}}}, kField, 2, "Fields Length must be at least 1"},
    {{"T", kLevels, ManyFields(255, "")}, kField, 255, "Fields Length must be numeric"},
    {{"T", kLevels, ManyFields(255, "1")}, kField, 0,
     "Only 254 Fields are permited. Please Delete extra Fields"},
};

TEST(DesignRulesTest, TheFirstBrokenRuleIsReported) {
  for (const RuleCase& rule : kCases) {
    SCOPED_TRACE(rule.message_start);
    auto broken = CheckDesign(rule.draft);
    ASSERT_TRUE(broken.has_value());
    EXPECT_EQ(broken->place, rule.place);
    EXPECT_EQ(broken->row, rule.row);
    EXPECT_EQ(broken->message.rfind(rule.message_start, 0), 0u) << broken->message;
  }
}

TEST(DesignRulesTest, DesignsAtTheLimitsPass) {
  EXPECT_FALSE(CheckDesign({"Shop", kLevels, kFields}));
  // A lower-case first letter is a letter; blanks around a length are allowed.
  EXPECT_FALSE(CheckDesign({"Shop", ManyLevels(127, "size"), ManyFields(254, " 254 ")}));
}

}  // namespace
}  // namespace zephyr
