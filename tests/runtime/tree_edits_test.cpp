// Item, key and design edits of the runtime in the cases the editor's tests
// do not reach; the editor's commands drive the rest in tests/editor.
#include <gtest/gtest.h>

#include "helpers/error_number.h"
#include "helpers/popup_files.h"
#include "helpers/temp_dir.h"
#include "zephyr/runtime/popup_class.h"

namespace zephyr {
namespace {

using Texts = std::vector<std::string>;

Texts ValuesOf(PopupItem& item) {
  Texts values;
  for (const auto& value : *item.PopupValues()) values.push_back(value->Value());
  return values;
}

// A code longer than two characters at an ancestor's level must not spill
// into the next level's code in the descendants' keys.
TEST(TreeEditsTest, ALongCodeAtAnAncestorLevelStaysInItsPlace) {
  PopupClass popup;
  popup.ReplaceLevels({{Variant("A"), 1}, {Variant("B"), 2}, {Variant("C"), 3}});
  auto top = popup.AddItem(nullptr, "    01", {});
  auto middle = popup.AddItem(top, "01  02", {});
  auto leaf = popup.AddItem(middle, "010203", {});
  popup.ModifyKey("789", top, 1);
  EXPECT_EQ(top->PopupKey(), "    78");
  EXPECT_EQ(middle->PopupKey(), "78  02");
  EXPECT_EQ(leaf->PopupKey(), "780203");
  popup.ModifyKey("3456", middle, 2);
  EXPECT_EQ(middle->PopupKey(), "78  34");
  EXPECT_EQ(leaf->PopupKey(), "783403");
}

// Taken out and put back among more siblings than a list holds without an
// index, a branch is where it was and found under its key again.
TEST(TreeEditsTest, ADetachedBranchGoesBackWhereItWasAmongManySiblings) {
  PopupClass popup;
  popup.ReplaceLevels({{Variant("Aisle"), 1}, {Variant("Shelf"), 2}});
  auto top = popup.AddItem(nullptr, "  01", {"Drinks"});
  for (int code = 1; code <= 40; ++code) {
    popup.AddItem(top, "01" + std::string(code < 10 ? "0" : "") + std::to_string(code), {});
  }
  auto second = top->Children()->Item(2);
  PopupClass::DetachedItem detached = popup.DetachItem(second);
  EXPECT_EQ(detached.position, 2);
  EXPECT_EQ(top->Children()->Item("0102"), nullptr);
  EXPECT_EQ(testing::ErrorNumberOf([&] { popup.AppendBranch(second, top, "03"); }), 457);

  popup.ReattachItem(detached);
  EXPECT_EQ(top->Children()->Item(2), second);
  EXPECT_EQ(top->Children()->Item("0102"), second);
  EXPECT_EQ(top->Children()->Item("0103"), top->Children()->Item(3));
  EXPECT_EQ(testing::ErrorNumberOf([&] { popup.ReattachItem(detached); }), 457);
}

TEST(TreeEditsTest, ADesignWithAnInsertedLevelIsSavedAndReopened) {
  testing::TempDir dir;
  testing::WritePopupFiles(dir.Path(), "Shop",
                           {"Shop", {"Aisle", "Shelf"}, {{"Name", 8}, {"Price", 5}, {"Old", 3}}},
                           {{"  01", "Drinks", "1.5", "a"}, {"0102", "Tea", "2", "b"}});
  PopupClass popup;
  popup.PopupPath(dir.Path());
  popup.DataSource("Shop");
  popup.OpenPopup();
  popup.ReplaceLevels({{Variant("Aisle"), 1}, {Variant("Bay"), 0}, {Variant("Shelf"), 2}});
  FormatKeysToLevels(*popup.PopupItems(), popup.Levels());
  // Price before Name, Old removed, a new Note last.
  ReorderValues(*popup.PopupItems(), {2, 1, 0});
  popup.ReplaceFields({{"Price", 5, 0, 2}, {"Name", 8, 0, 1}, {"Note", 4, 0, 0}});
  SavePopupInTreeOrder(popup);

  PopupClass again;
  again.PopupPath(dir.Path());
  again.DataSource("Shop");
  again.OpenPopup();
  EXPECT_EQ(again.Levels(), 3);
  EXPECT_EQ(again.PopupLevels()->Item(2)->Question().ToText(), "Bay");
  EXPECT_EQ(again.PopupFields()->Item(2)->Name(), "Price");
  EXPECT_EQ(again.PopupFields()->Item(4)->Name(), "Note");
  ASSERT_EQ(again.PopupItems()->Count(), 1);
  auto drinks = again.PopupItems()->Item(1);
  EXPECT_EQ(drinks->PopupKey(), "    01");
  EXPECT_EQ(ValuesOf(*drinks), (Texts{"1.5", "Drinks", " "}));  // a blank reads as one blank
  ASSERT_EQ(drinks->Children()->Count(), 1);
  EXPECT_EQ(drinks->Children()->Item(1)->PopupKey(), "01  02");
  EXPECT_EQ(ValuesOf(*drinks->Children()->Item(1)), (Texts{"2", "Tea", " "}));
}

}  // namespace
}  // namespace zephyr
