#include <gtest/gtest.h>

#include "item_access.h"
#include "zephyr/runtime/popup_class.h"

namespace zephyr {
namespace {

// A three-level popup: 01 > 01 02 > 010203 and 010204, plus top-level 05.
class KeyEditsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    popup_.Levels(3);
    top_ = Add(*popup_.PopupItems(), "    01", 1, nullptr);
    middle_ = Add(*top_->Children(), "01  02", 2, top_);
    leaf_a_ = Add(*middle_->Children(), "010203", 3, middle_);
    leaf_b_ = Add(*middle_->Children(), "010204", 3, middle_);
    other_ = Add(*popup_.PopupItems(), "    05", 1, nullptr);
  }

  static std::shared_ptr<PopupItem> Add(PopupItems& items, const std::string& key, int16_t level,
                                        const std::shared_ptr<PopupItem>& parent) {
    auto item = items.Add(key);
    ItemAccess::SetLevel(*item, level);
    item->Parent(parent);
    return item;
  }

  PopupClass popup_;
  std::shared_ptr<PopupItem> top_, middle_, leaf_a_, leaf_b_, other_;
};

TEST_F(KeyEditsTest, ModifyKeyRewritesTheCodeOfItsLevelThroughTheBranch) {
  popup_.ModifyKey("07", top_, 1);
  popup_.ModifyKey("09", middle_, 2);
  popup_.ModifyKey("123", leaf_a_, 3);  // exactly two characters are written
  popup_.ModifyKey("4", leaf_b_, 3);
  EXPECT_EQ(top_->PopupKey(), "    07");
  EXPECT_EQ(middle_->PopupKey(), "07  09");
  EXPECT_EQ(leaf_a_->PopupKey(), "070912");
  EXPECT_EQ(leaf_b_->PopupKey(), "070944");
  EXPECT_EQ(other_->PopupKey(), "    05");
  EXPECT_EQ(popup_.PopupItems()->Item("    01"), top_);  // collection keys stay
  EXPECT_THROW(popup_.ModifyKey("01", top_, 9), RuntimeError);
}

// A code longer than two characters at an ancestor's level must not spill
// into the next level's code in the descendants' keys.
TEST_F(KeyEditsTest, ALongCodeAtAnAncestorLevelStaysInItsPlace) {
  popup_.ModifyKey("789", top_, 1);
  EXPECT_EQ(top_->PopupKey(), "    78");
  EXPECT_EQ(middle_->PopupKey(), "78  02");
  EXPECT_EQ(leaf_a_->PopupKey(), "780203");
  popup_.ModifyKey("3456", middle_, 2);
  EXPECT_EQ(middle_->PopupKey(), "78  34");
  EXPECT_EQ(leaf_b_->PopupKey(), "783404");
}

TEST_F(KeyEditsTest, DeleteLevelEmptiesTheChildrenOfTheLevelAbove) {
  popup_.DeleteLevel(3, popup_.PopupItems());
  EXPECT_EQ(middle_->Children()->Count(), 0);
  EXPECT_EQ(top_->Children()->Count(), 1);

  popup_.DeleteLevel(2, popup_.PopupItems());
  EXPECT_EQ(top_->Children()->Count(), 0);

  popup_.DeleteLevel(1, popup_.PopupItems());
  EXPECT_EQ(popup_.PopupItems()->Count(), 2);  // top-level items are never deleted
}

}  // namespace
}  // namespace zephyr
