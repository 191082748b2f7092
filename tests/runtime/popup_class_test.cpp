#include "zephyr/runtime/popup_class.h"

#include <gtest/gtest.h>

#include "helpers/error_number.h"

namespace zephyr {
namespace {

using testing::ErrorNumberOf;

TEST(PopupClassTest, FileNamesTitleAndValuesBeforeAnyRead) {
  PopupClass popup;
  EXPECT_EQ(popup.DataFileName(), "");
  EXPECT_EQ(popup.WorkFileName(), "");
  popup.DataSource("Products");
  EXPECT_EQ(popup.DataFileName(), "Products.ZPD");
  EXPECT_EQ(popup.TemplateFileName(), "Products.ZPT");
  popup.Title("  Fruit \t ");
  EXPECT_EQ(popup.Title(), "Fruit \t");  // trimmed of blanks only
  EXPECT_EQ(popup.RowCount(), 0);  // no table values before any data was read
  EXPECT_EQ(ErrorNumberOf([&] { popup.Values(1, 1); }), 13);
}

TEST(PopupClassTest, SetSelectedItemTakesTheDecimalIdentityOfALiveItem) {
  PopupClass popup;
  auto item = popup.PopupItems()->Add("  01");
  popup.SetSelectedItem(std::to_string(item->Identity()));
  EXPECT_EQ(popup.SelectedItem(), item);
  popup.SetSelectedItem(" " + std::to_string(item->Identity()) + ".4 ");  // rounded
  EXPECT_EQ(popup.SelectedItem(), item);
  popup.SetSelectedItem("0");
  EXPECT_EQ(popup.SelectedItem(), nullptr);
  EXPECT_EQ(ErrorNumberOf([&] { popup.SetSelectedItem("not a number"); }), 13);

  auto gone = PopupItem::Create();  // the selection is weak
  std::string identity = std::to_string(gone->Identity());
  popup.SetSelectedItem(identity);
  gone.reset();
  EXPECT_EQ(popup.SelectedItem(), nullptr);
  popup.SetSelectedItem(identity);  // a stale identity selects nothing
  EXPECT_EQ(popup.SelectedItem(), nullptr);
}

}  // namespace
}  // namespace zephyr
