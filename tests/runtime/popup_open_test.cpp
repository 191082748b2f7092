#include <gtest/gtest.h>

#include <filesystem>

#include "helpers/popup_files.h"
#include "helpers/recorders.h"
#include "helpers/temp_dir.h"
#include "zephyr/runtime/popup_class.h"

namespace zephyr {
namespace {

using testing::PopupDesign;
using testing::RecordingProgress;
using testing::Row;
using testing::TempDir;
using testing::WritePopupFiles;

const PopupDesign kFruit = {
    "Fruit and Veg", {"Category", "Item", "Variety"}, {{"Name", 20}, {"Note", 8}}};

class PopupOpenTest : public ::testing::Test {
 protected:
  std::unique_ptr<PopupClass> Open(const std::string& base = "P", std::string_view source = {}) {
    auto popup = std::make_unique<PopupClass>();
    popup->SetProgress(progress_);
    popup->PopupPath(dir_.Path());
    popup->DataSource(base);
    popup->OpenPopup(source);
    return popup;
  }

  // The error OpenPopup raises for this table.
  RuntimeError OpenFailure(const std::vector<Row>& rows) {
    WritePopupFiles(dir_.Path(), "P", kFruit, rows);
    try {
      Open();
    } catch (const RuntimeError& error) {
      return error;
    }
    ADD_FAILURE() << "the popup opened";
    return RuntimeError(RuntimeErrorCode::kInvalidArgument);
  }

  TempDir dir_;
  std::shared_ptr<RecordingProgress> progress_ = std::make_shared<RecordingProgress>();
};

// Every item depth first as "level:key=value|value|", with " ?question"
// after an item whose children ask it.
std::string Tree(PopupItems& items) {
  std::string text;
  for (const auto& item : items) {
    text += std::to_string(item->Level()) + ":" + item->PopupKey() + "=";
    for (const auto& value : *item->PopupValues()) text += value->Value() + "|";
    if (item->HasChildren()) text += " ?" + item->Children()->Question();
    text += "\n";
    if (item->HasChildren()) text += Tree(*item->Children());
  }
  return text;
}

// Rows become items in key order under the item whose path their key
// starts with; a key with blanks inside is compared as it is stored, rows
// without a parent are left out, a blank value reads as one blank, and each
// list of children asks the question of its own level.
TEST_F(PopupOpenTest, EachRowBecomesAnItemUnderTheItemItsKeyNames) {
  const struct {
    std::vector<std::string> questions;
    std::vector<Row> rows;
    const char* tree;
  } cases[] = {
      {{"Group", "Item"},
       {{"  02", "  b", ""}, {"0101", "x", "y"}, {"01 2", "odd", ""}, {"  01", "a", ""}},
       "?Group\n1:  01=a| | ?Item\n2:01 2=odd| |\n2:0101=x|y|\n1:  02=  b| |\n"},
      {{"Aisle", "Shelf", "Bin"},
       {{"010101", "Cox", ""},
        {"09  01", "orphan", ""},
        {"    01", "Fruit", ""},
        {"01  01", "Apples", "crisp"},
        {"    02", "Veg", ""},
        {"01  02", "Pears", ""}},
       "?Aisle\n1:    01=Fruit| | ?Shelf\n2:01  01=Apples|crisp| ?Bin\n3:010101=Cox| |\n"
       "2:01  02=Pears| |\n1:    02=Veg| |\n"},
  };
  for (const auto& c : cases) {
    WritePopupFiles(dir_.Path(), "T", {"T", c.questions, {{"A", 8}, {"B", 6}}}, c.rows);
    auto popup = Open("T");
    EXPECT_EQ("?" + popup->PopupItems()->Question() + "\n" + Tree(*popup->PopupItems()), c.tree);
  }
}

// The table's rows stay readable, sorted by key, beside the tree.
TEST_F(PopupOpenTest, ProgressIsShownOnceWithItsMessageAndRange) {
  WritePopupFiles(dir_.Path(), "P", kFruit,
                  {{"010101", "c", ""},
                   {"    01", "a", ""},
                   {"01  01", "b", ""},
                   {"09  01", "orphan", ""},
                   {"090101", "grandorphan", ""}});
  auto popup = Open();
  EXPECT_EQ(popup->RowCount(), 5);
  EXPECT_EQ(popup->Values(1, 1).ToText(), "    01");
  EXPECT_EQ(popup->Values(2, 3).ToText(), "c" + std::string(19, ' '));
  EXPECT_EQ(progress_->message, "Reading Popup Data.. this may take a few minutes");
  EXPECT_EQ(progress_->maximum, 5);
  EXPECT_EQ(progress_->value, 3);
  EXPECT_EQ(progress_->events, 2);  // once per child found below the top level
  EXPECT_EQ(progress_->shows, 1);
  EXPECT_FALSE(progress_->shown);
}

TEST_F(PopupOpenTest, AnEmptyOrMissingDataFileGivesNoNewItems) {
  WritePopupFiles(dir_.Path(), "P", kFruit, {});
  auto popup = Open();
  EXPECT_EQ(popup->PopupItems()->Count(), 0);
  EXPECT_EQ(popup->RowCount(), 0);
  EXPECT_EQ(progress_->maximum, 1);

  std::filesystem::remove(dir_.File("P.ZPD"));  // the items the popup had are kept
  PopupClass kept;
  kept.PopupPath(dir_.Path());
  kept.DataSource("P");
  kept.PopupItems()->Add("    07");
  kept.OpenPopup();
  EXPECT_EQ(kept.Title(), "Fruit and Veg");
  EXPECT_EQ(kept.PopupItems()->Count(), 1);
}

// Files in other letter case are popup_save_test.cpp's business.
TEST_F(PopupOpenTest, SourceNamesTheDataFileButNotTheTemplate) {
  WritePopupFiles(dir_.Path(), "P", kFruit, {{"    01", "From P", ""}});
  PopupDesign alt = kFruit;
  alt.title = "Alt";
  WritePopupFiles(dir_.Path(), "Alt", alt, {{"    05", "From Alt", ""}});
  auto popup = Open("P", "Alt.ZPD");
  EXPECT_EQ(popup->Title(), "Fruit and Veg");
  EXPECT_EQ(popup->PopupItems()->Item(1)->PopupKey(), "    05");
  EXPECT_EQ(popup->DataFileName(), "Alt.ZPD");
}

TEST_F(PopupOpenTest, LoadFailuresNameTheFile) {
  RuntimeError error = OpenFailure(
      {{"    01", "a", ""}, {"01  01", "b", ""}, {"01  01", "again", ""}, {"    02", "c", ""}});
  EXPECT_EQ(error.Number(), 457);
  EXPECT_NE(error.Description().find("P.ZPD"), std::string::npos);

  // A blank own code ends the load instead of recursing forever.
  error = OpenFailure({{"    01", "a", ""}, {"01    ", "blank", ""}});
  EXPECT_EQ(error.Number(), 28);
  EXPECT_NE(error.Description().find("'01    '"), std::string::npos);
  EXPECT_NE(error.Description().find("P.ZPD"), std::string::npos);
}

}  // namespace
}  // namespace zephyr
