#include <gtest/gtest.h>

#include "helpers/error_number.h"
#include "zephyr/runtime/item_access.h"
#include "zephyr/runtime/popup_class.h"

namespace zephyr {
namespace {

TEST(TreeEditsTest, AddItemLinksTheItemAndRefusesADuplicateKey) {
  PopupClass popup;
  auto top = popup.AddItem(nullptr, "  01", {"Drinks"});
  auto tea = popup.AddItem(top, "0101", {"Tea"});
  EXPECT_EQ(popup.PopupItems()->Item("  01"), top);
  EXPECT_EQ(top->Level(), 1);
  EXPECT_EQ(top->Parent(), nullptr);
  EXPECT_EQ(tea->Level(), 2);
  EXPECT_EQ(tea->Parent(), top);
  EXPECT_EQ(ItemAccess::LoadedKey(*tea), "0101");
  EXPECT_EQ(popup.SiblingsOf(*top), popup.PopupItems());
  EXPECT_EQ(popup.SiblingsOf(*tea), top->Children());

  EXPECT_EQ(testing::ErrorNumberOf([&] { popup.AddItem(top, "0101", {"Again"}); }), 457);
  EXPECT_EQ(top->Children()->Count(), 1);
}

TEST(TreeEditsTest, RemoveItemFreesTheBranch) {
  PopupClass popup;
  auto top = popup.AddItem(nullptr, "  01", {});
  auto other = popup.AddItem(nullptr, "  02", {});
  const int32_t top_id = top->Identity();
  const int32_t child_id = popup.AddItem(top, "0101", {})->Identity();

  EXPECT_TRUE(popup.RemoveItem(top));
  top.reset();
  EXPECT_EQ(FindItemByIdentity(top_id), nullptr);
  EXPECT_EQ(FindItemByIdentity(child_id), nullptr);
  EXPECT_EQ(popup.PopupItems()->Item(1), other);

  EXPECT_TRUE(popup.RemoveItem(other));
  EXPECT_FALSE(popup.RemoveItem(other));  // no longer in the top-level list
}

}  // namespace
}  // namespace zephyr
