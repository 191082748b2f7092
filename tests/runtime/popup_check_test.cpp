#include "zephyr/runtime/popup_check.h"

#include <gtest/gtest.h>

namespace zephyr {
namespace {

VariantArray Keys(const std::vector<std::string>& keys) {
  VariantArray table = VariantArray::Table(1, static_cast<int32_t>(keys.size()));
  for (size_t i = 0; i < keys.size(); ++i)
    table.At(1, static_cast<int32_t>(i + 1)) = Variant(keys[i]);
  return table;
}

std::vector<std::string> Texts(const std::vector<CheckFinding>& findings) {
  std::vector<std::string> texts;
  for (const auto& finding : findings)
    texts.push_back(std::to_string(finding.row) + ": " + finding.text);
  return texts;
}

TEST(PopupCheckTest, EachKindOfProblemIsNamedOnItsRow) {
  EXPECT_TRUE(CheckPopupKeys(Keys({"    01", "01  01", "010101", "    02"}), 3).empty());
  auto findings = CheckPopupKeys(
      Keys({"    01", "01  01", "    01", "02  05", "01    ", "0a  01", "  03  ", "  01"}), 3);
  EXPECT_EQ(Texts(findings), (std::vector<std::string>{
                                 "3: key '    01' repeats the key of row 1",
                                 "4: key '02  05' has no parent (no item '02')",
                                 "5: key '01    ' has a blank own code",
                                 "6: key '0a  01' has a code that is not two digits",
                                 "6: key '0a  01' has no parent (no item '0a')",
                                 "7: key '  03  ' has a blank own code",
                                 "7: key '  03' has no parent",
                                 "8: key '  01' is 4 characters wide, not 6",
                                 "8: key '  01' has no parent",
                             }));
}

}  // namespace
}  // namespace zephyr
