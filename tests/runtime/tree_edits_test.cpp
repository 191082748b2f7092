// Item edits of the runtime. AddItem's links and its refusal of a taken key
// are exercised through the editor's add commands in tests/editor.
#include <gtest/gtest.h>

#include "helpers/error_number.h"
#include "zephyr/runtime/popup_class.h"

namespace zephyr {
namespace {

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

// Taken out and put back, a branch is where and what it was: its place among
// its siblings, the key it is found under, its identities; lists past the
// size at which they keep an index included.
TEST(TreeEditsTest, ADetachedBranchGoesBackWhereItWas) {
  for (int siblings : {3, 40}) {
    SCOPED_TRACE(siblings);
    PopupClass popup;
    popup.ReplaceLevels({{Variant("Aisle"), 1}, {Variant("Shelf"), 2}});
    auto top = popup.AddItem(nullptr, "  01", {"Drinks"});
    for (int code = 1; code <= siblings; ++code) {
      std::string key = "01" + std::string(code < 10 ? "0" : "") + std::to_string(code);
      popup.AddItem(top, key, {"Item"});
    }
    auto second = top->Children()->Item(2);
    const int32_t second_id = second->Identity();

    PopupClass::DetachedItem detached = popup.DetachItem(second);
    second.reset();
    ASSERT_EQ(detached.item->Identity(), second_id);
    EXPECT_EQ(detached.parent, top);
    EXPECT_EQ(detached.position, 2);
    EXPECT_EQ(top->Children()->Count(), siblings - 1);
    EXPECT_EQ(top->Children()->Item("0102"), nullptr);
    EXPECT_EQ(FindItemByIdentity(second_id), detached.item);  // held, so still known

    popup.ReattachItem(detached);
    EXPECT_EQ(top->Children()->Item(2), detached.item);
    EXPECT_EQ(top->Children()->Item("0102"), detached.item);
    EXPECT_EQ(top->Children()->Item("0103")->Identity(), top->Children()->Item(3)->Identity());
    EXPECT_EQ(testing::ErrorNumberOf([&] { popup.ReattachItem(detached); }), 457);
  }
  PopupClass popup;
  auto only = popup.AddItem(nullptr, "  01", {});
  EXPECT_EQ(popup.DetachItem(only).parent, nullptr);
  EXPECT_EQ(popup.DetachItem(only).item, nullptr);  // no longer in its list
}

// A branch moved under another parent takes its codes and levels, and can be
// put back exactly.
TEST(TreeEditsTest, AMovedBranchTakesItsNewParentsCodesAndComesBack) {
  PopupClass popup;
  popup.ReplaceLevels({{Variant("A"), 1}, {Variant("B"), 2}, {Variant("C"), 3}});
  auto drinks = popup.AddItem(nullptr, "    01", {"Drinks"});
  auto snacks = popup.AddItem(nullptr, "    02", {"Snacks"});
  auto tea = popup.AddItem(drinks, "01  05", {"Tea"});
  auto green = popup.AddItem(tea, "010507", {"Green"});
  popup.AddItem(snacks, "02  05", {"Crisps"});

  PopupClass::BranchKeys keys = popup.KeysOf(tea);
  PopupClass::DetachedItem detached = popup.DetachItem(tea);
  // Under Snacks, 05 is taken by its collection key.
  EXPECT_EQ(testing::ErrorNumberOf([&] { popup.AppendBranch(tea, snacks, "05"); }), 457);
  EXPECT_EQ(tea->PopupKey(), "01  05");
  popup.AppendBranch(tea, snacks, "30");
  EXPECT_EQ(tea->PopupKey(), "02  30");
  EXPECT_EQ(green->PopupKey(), "023007");
  EXPECT_EQ(tea->Parent(), snacks);
  EXPECT_EQ(snacks->Children()->Item("02  30"), tea);
  // Out to the top level: one level up, branch and all.
  popup.DetachItem(tea);
  popup.AppendBranch(tea, nullptr, "03");
  EXPECT_EQ(tea->PopupKey(), "    03");
  EXPECT_EQ(green->PopupKey(), "03  07");
  EXPECT_EQ(green->Level(), 2);
  EXPECT_EQ(popup.PopupItems()->Item(3), tea);

  popup.DetachItem(tea);
  popup.RestoreKeys(keys);
  popup.ReattachItem(detached);
  EXPECT_EQ(drinks->Children()->Item("01  05"), tea);
  EXPECT_EQ(tea->Parent(), drinks);
  EXPECT_EQ(green->PopupKey(), "010507");
  EXPECT_EQ(green->Level(), 3);
}

}  // namespace
}  // namespace zephyr
