// Design edits of the runtime. Capturing and restoring a whole design is
// exercised through the editor's history in tests/editor.
#include <gtest/gtest.h>

#include "helpers/popup_files.h"
#include "helpers/temp_dir.h"
#include "zephyr/runtime/popup_class.h"

namespace zephyr {
namespace {

using Texts = std::vector<std::string>;

Texts KeysDepthFirst(PopupItems& items, Texts keys = {}) {
  for (const auto& item : items) {
    keys.push_back(item->PopupKey());
    if (item->HasChildren()) keys = KeysDepthFirst(*item->Children(), std::move(keys));
  }
  return keys;
}

Texts ValuesOf(PopupItem& item) {
  Texts values;
  for (const auto& value : *item.PopupValues()) values.push_back(value->Value());
  return values;
}

// A chain of items, one per key, each the only child of the one before.
void AddChain(PopupItems& items, const Texts& keys) {
  PopupItems* siblings = &items;
  for (const std::string& key : keys) siblings = siblings->Add(key)->Children().get();
}

TEST(DesignEditsTest, LevelEditsKeepTheLevelCountAndKeyWidthInStep) {
  PopupClass popup;
  popup.ReplaceLevels({{Variant("Aisle"), 1}, {Variant("Bay"), 0}, {Variant("Shelf"), 2}});
  popup.ReplaceFields({{"Price", 6, 0, 2}});
  EXPECT_EQ(popup.Levels(), 3);
  EXPECT_EQ(popup.PopupFields()->Item(1)->Name(), "Popup Code");
  EXPECT_EQ(popup.PopupFields()->Item(1)->FieldLength(), 6);
  EXPECT_EQ(popup.PopupLevels()->Item(3)->IntialIndex(), 2);

  popup.RemoveLastLevel();
  EXPECT_EQ(popup.Levels(), 2);
  EXPECT_EQ(popup.PopupFields()->Item(1)->FieldLength(), 4);
  EXPECT_EQ(popup.PopupLevels()->Item(2)->Question().ToText(), "Bay");
  for (int i = 0; i < 3; ++i) popup.RemoveLastLevel();  // one more than there are
  EXPECT_EQ(popup.Levels(), 0);
}

TEST(DesignEditsTest, FormatKeysToLevelsReformatsTheWholeTree) {
  PopupItems items;
  AddChain(items, {"    01", "01  02", "010203"});
  AddChain(items, {"    04"});
  FormatKeysToLevels(items, 2);
  EXPECT_EQ(KeysDepthFirst(items), (Texts{"  01", "0102", "0103", "  04"}));
  FormatKeysToLevels(items, 3);
  EXPECT_EQ(KeysDepthFirst(items), (Texts{"    01", "01  02", "01  03", "    04"}));
}

TEST(DesignEditsTest, AReplacedDesignIsSavedAndReopened) {
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
  EXPECT_EQ(KeysDepthFirst(*again.PopupItems()), (Texts{"    01", "01  02"}));
  auto drinks = again.PopupItems()->Item(1);
  EXPECT_EQ(ValuesOf(*drinks), (Texts{"1.5", "Drinks", " "}));  // a blank reads as one blank
  EXPECT_EQ(ValuesOf(*drinks->Children()->Item(1)), (Texts{"2", "Tea", " "}));
}

}  // namespace
}  // namespace zephyr
