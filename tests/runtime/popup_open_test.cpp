#include <gtest/gtest.h>

#include <filesystem>

#include "helpers/popup_files.h"
#include "helpers/recorders.h"
#include "helpers/temp_dir.h"
#include "zephyr/runtime/item_access.h"
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
  RuntimeError OpenFailure(const std::vector<Row>& rows, PopupClass* popup) {
    WritePopupFiles(dir_.Path(), "P", kFruit, rows);
    popup->PopupPath(dir_.Path());
    popup->DataSource("P");
    try {
      popup->OpenPopup();
    } catch (const RuntimeError& error) {
      return error;
    }
    ADD_FAILURE() << "the popup opened";
    return RuntimeError(RuntimeErrorCode::kInvalidArgument);
  }

  TempDir dir_;
  std::shared_ptr<RecordingProgress> progress_ = std::make_shared<RecordingProgress>();
};

TEST_F(PopupOpenTest, BuildsTheTreeInKeyOrderWhateverTheRecordOrder) {
  WritePopupFiles(dir_.Path(), "P", kFruit,
                  {{"01  02", "Pears", ""},
                   {"    02", "Veg", ""},
                   {"010201", "Conference", "sweet"},
                   {"    01", "Fruit", ""},
                   {"01  01", "Apples", "crisp"}});
  auto popup = Open();
  EXPECT_EQ(popup->Title(), "Fruit and Veg");
  EXPECT_EQ(popup->RowCount(), 5);
  EXPECT_EQ(popup->Values(1, 1).ToText(), "    01");
  EXPECT_EQ(popup->Values(2, 5).ToText(), std::string("Conference") + std::string(10, ' '));

  auto top = popup->PopupItems();
  ASSERT_EQ(top->Count(), 2);
  EXPECT_EQ(top->Question(), "Category");
  auto fruit = top->Item(1);
  EXPECT_EQ(fruit->PopupKey(), "    01");
  EXPECT_EQ(fruit->Level(), 1);
  EXPECT_EQ(fruit->Parent(), nullptr);
  EXPECT_EQ(ItemAccess::LoadedKey(*fruit), "    01");
  EXPECT_EQ(fruit->PopupValues()->Item(1)->Value(), "Fruit");
  EXPECT_EQ(fruit->PopupValues()->Item(2)->Value(), " ");  // an empty cell is one blank

  auto items = fruit->Children();
  EXPECT_EQ(items->Question(), "Item");
  ASSERT_EQ(items->Count(), 2);
  EXPECT_EQ(items->Item(1)->PopupKey(), "01  01");
  EXPECT_EQ(items->Item("01  02")->Index(), 2);
  auto pears = items->Item(2);
  EXPECT_EQ(pears->Parent(), fruit);
  EXPECT_EQ(pears->Level(), 2);
  auto conference = pears->Children()->Item(1);
  EXPECT_EQ(conference->Level(), 3);
  EXPECT_EQ(conference->PopupValues()->Item(2)->Value(), "sweet");
  EXPECT_EQ(pears->Children()->Question(), "Variety");

  auto veg = top->Item(2);
  EXPECT_FALSE(veg->HasChildren());
  EXPECT_EQ(veg->Children()->Question(), "");  // no children, no question
}

TEST_F(PopupOpenTest, ValuesAreRightTrimmedButKeepLeadingBlanks) {
  WritePopupFiles(dir_.Path(), "P", kFruit, {{"    01", "  indented", "   "}});
  auto values = Open()->PopupItems()->Item(1)->PopupValues();
  EXPECT_EQ(values->Item(1)->Value(), "  indented");
  EXPECT_EQ(values->Item(2)->Value(), " ");
}

TEST_F(PopupOpenTest, RowsWhoseParentIsMissingAreLeftOut) {
  WritePopupFiles(
      dir_.Path(), "P", kFruit,
      {{"    01", "Fruit", ""}, {"02  01", "Orphan", ""}, {"020101", "Grandorphan", ""}});
  auto popup = Open();
  EXPECT_EQ(popup->PopupItems()->Count(), 1);
  EXPECT_FALSE(popup->PopupItems()->Item(1)->HasChildren());
  EXPECT_EQ(progress_->value, 1);
}

TEST_F(PopupOpenTest, WithOneLevelEveryRowIsATopLevelItem) {
  PopupDesign flat = {"Flat", {"Code"}, {{"Text", 5}}};
  WritePopupFiles(dir_.Path(), "P", flat, {{"02", "b"}, {"01", "a"}, {"99", "z"}});
  auto top = Open()->PopupItems();
  ASSERT_EQ(top->Count(), 3);
  EXPECT_EQ(top->Item(3)->PopupKey(), "99");
  for (const auto& item : *top) EXPECT_FALSE(item->HasChildren());
}

TEST_F(PopupOpenTest, ProgressCountsTheItemsAndIsUnloaded) {
  WritePopupFiles(
      dir_.Path(), "P", kFruit,
      {{"    01", "a", ""}, {"01  01", "b", ""}, {"010101", "c", ""}, {"09  01", "x", ""}});
  Open();
  EXPECT_EQ(progress_->message, "Reading Popup Data.. this may take a few minutes");
  EXPECT_EQ(progress_->minimum, 0);
  EXPECT_EQ(progress_->maximum, 4);
  EXPECT_EQ(progress_->value, 3);
  EXPECT_EQ(progress_->events, 2);  // once per child found below the top level
  EXPECT_EQ(progress_->shows, 1);
  EXPECT_FALSE(progress_->shown);
}

TEST_F(PopupOpenTest, AnEmptyTableGivesNoItemsAndNoQuestion) {
  WritePopupFiles(dir_.Path(), "P", kFruit, {});
  auto popup = Open();
  EXPECT_EQ(popup->PopupItems()->Count(), 0);
  EXPECT_EQ(popup->PopupItems()->Question(), "");
  EXPECT_EQ(popup->RowCount(), 0);
  EXPECT_EQ(progress_->maximum, 1);
}

TEST_F(PopupOpenTest, AMissingDataFileKeepsTheItemsThePopupHad) {
  WritePopupFiles(dir_.Path(), "P", kFruit, {});
  std::filesystem::remove(dir_.File("P.ZPD"));
  PopupClass popup;
  popup.PopupPath(dir_.Path());
  popup.DataSource("P");
  popup.PopupItems()->Add("    07");
  popup.OpenPopup();
  EXPECT_EQ(popup.Title(), "Fruit and Veg");
  EXPECT_EQ(popup.PopupItems()->Count(), 1);
  EXPECT_EQ(popup.PopupPath(), dir_.Path() + "/");
}

TEST_F(PopupOpenTest, SourceNamesAnotherDataFileButTheTemplateStays) {
  WritePopupFiles(dir_.Path(), "P", kFruit, {{"    01", "From P", ""}});
  WritePopupFiles(dir_.Path(), "Other", {"Other", {"Q"}, {}}, {{"03"}});
  WritePopupFiles(dir_.Path(), "Alt", kFruit, {{"    05", "From Alt", ""}});
  auto popup = Open("P", "Alt.ZPD");
  EXPECT_EQ(popup->Title(), "Fruit and Veg");
  EXPECT_EQ(popup->PopupItems()->Item(1)->PopupKey(), "    05");
  EXPECT_EQ(popup->DataFileName(), "Alt.ZPD");
}

TEST_F(PopupOpenTest, FilesWithLowerCaseExtensionsOpen) {
  WritePopupFiles(dir_.Path(), "P", kFruit, {{"    01", "Fruit", ""}}, "P.zpt", "P.zpd");
  auto popup = Open();
  EXPECT_EQ(popup->PopupItems()->Count(), 1);
  EXPECT_EQ(popup->DataFileName(), "P.zpd");
  EXPECT_EQ(popup->TemplateFileName(), "P.zpt");
}

TEST_F(PopupOpenTest, ADuplicateKeyFailsAfterTheItemsBeforeIt) {
  PopupClass popup;
  RuntimeError error = OpenFailure(
      {{"    01", "a", ""}, {"01  01", "b", ""}, {"01  01", "again", ""}, {"    02", "c", ""}},
      &popup);
  EXPECT_EQ(error.Number(), 457);
  EXPECT_NE(error.Description().find("P.ZPD"), std::string::npos);
  EXPECT_EQ(popup.PopupItems()->Count(), 1);
  EXPECT_EQ(popup.PopupItems()->Item(1)->Children()->Count(), 1);
}

TEST_F(PopupOpenTest, ABlankOwnCodeEndsTheLoadInsteadOfRecursingForever) {
  PopupClass popup;
  RuntimeError error = OpenFailure({{"    01", "a", ""}, {"01    ", "blank", ""}}, &popup);
  EXPECT_EQ(error.Number(), 28);
  EXPECT_NE(error.Description().find("'01    '"), std::string::npos);
  EXPECT_NE(error.Description().find("P.ZPD"), std::string::npos);

  PopupClass all_blank;
  EXPECT_EQ(OpenFailure({{"      ", "root itself", ""}}, &all_blank).Number(), 28);
}

TEST_F(PopupOpenTest, AMissingTemplateFailsBeforeTheTableIsRead) {
  WritePopupFiles(dir_.Path(), "P", kFruit, {{"    01", "a", ""}});
  std::filesystem::remove(dir_.File("P.ZPT"));
  PopupClass popup;
  popup.PopupPath(dir_.Path());
  popup.DataSource("P");
  EXPECT_THROW(popup.OpenPopup(), RuntimeError);
  EXPECT_EQ(popup.RowCount(), 0);
}

}  // namespace
}  // namespace zephyr
