#include "zephyr/runtime/edit_record.h"

#include <gtest/gtest.h>

#include <functional>

#include "helpers/error_number.h"
#include "helpers/popup_files.h"
#include "helpers/temp_dir.h"

namespace zephyr {
namespace {

class EditRecordTest : public ::testing::Test {
 protected:
  void SetUp() override { testing::WriteProducts(dir_.Path()); }

  std::shared_ptr<PopupClass> Open() {
    auto popup = std::make_shared<PopupClass>();
    popup->PopupPath(dir_.Path() + "/");
    popup->DataSource("Products");
    popup->OpenPopup();
    return popup;
  }
  // The popup's files as a save in tree order writes them.
  std::string Saved(PopupClass& popup, const std::string& name) {
    popup.PopupPath(dir_.Path() + "/");
    popup.DataSource(name);
    SavePopupInTreeOrder(popup);
    return testing::ReadBytes(dir_.File(name + ".ZPT")) + "|" +
           testing::ReadBytes(dir_.File(name + ".ZPD"));
  }
  // Makes the edits on one opened popup while recording them, replays the
  // record on another, and expects both to save the same bytes.
  void ExpectReplayMatches(const std::function<void(PopupClass&, EditRecord&)>& edit) {
    auto edited = Open();
    auto replayed = Open();
    EditRecord record;
    edit(*edited, record);
    ReplayEdits(*replayed, record.Bytes());
    EXPECT_EQ(Saved(*replayed, "Replayed"), Saved(*edited, "Edited"));
  }
  std::shared_ptr<PopupItem> At(PopupClass& popup, int top, int child = 0) {
    auto item = popup.PopupItems()->Item(Variant(top));
    return child == 0 ? item : item->Children()->Item(Variant(child));
  }

  testing::TempDir dir_;
};

TEST_F(EditRecordTest, ValuesCodesRemovalsAndInsertionsReplayInOrder) {
  ExpectReplayMatches([this](PopupClass& popup, EditRecord& record) {
    auto pears = At(popup, 1, 2);
    pears->PopupValues()->Item(Variant(2))->Value("Ripe, green");
    record.Value(popup, *pears, 2);

    auto bakery = At(popup, 2);
    popup.ModifyKey("30", bakery, 1);
    record.Code(popup, *bakery);

    // The fruit group leaves and comes back last, with its branch.
    auto detached = popup.DetachItem(At(popup, 1));
    record.Removed(popup, detached);
    detached.position = popup.PopupItems()->Count() + 1;
    popup.ReattachItem(detached);
    record.Inserted(popup, detached.item);

    auto apples = popup.DetachItem(At(popup, 2, 1));
    record.Removed(popup, apples);
  });
}

TEST_F(EditRecordTest, AWholePopupReplacesTheDesignAndEveryItem) {
  ExpectReplayMatches([](PopupClass& popup, EditRecord& record) {
    popup.Title("Renamed, with \"quotes\"");
    popup.ReplaceLevels({{Variant(std::string("Group")), 1}});
    FormatKeysToLevels(*popup.PopupItems(), 1);
    popup.DeleteLevel(2, popup.PopupItems());
    popup.ReplaceFields({{"Note", 5, 0, 2}, {"Price", 8, 0, 0}});
    ReorderValues(*popup.PopupItems(), {2, 0});
    record.Whole(popup);
  });
}

TEST_F(EditRecordTest, ARecordThatDoesNotFitIsRefused) {
  auto popup = Open();
  EditRecord record;
  auto big = Open();
  big->AddItem(nullptr, "30", {"Dairy", ""});
  auto dairy = big->PopupItems()->Item(Variant(3));
  dairy->PopupValues()->Item(Variant(1))->Value("Milk");
  record.Value(*big, *dairy, 1);

  EXPECT_EQ(testing::ErrorNumberOf([&] { ReplayEdits(*popup, record.Bytes()); }), 321);
  std::string cut = record.Bytes().substr(0, record.Bytes().size() - 1);
  EXPECT_EQ(testing::ErrorNumberOf([&] { ReplayEdits(*popup, cut); }), 321);
  EXPECT_EQ(testing::ErrorNumberOf([&] { ReplayEdits(*popup, "?"); }), 321);
}

}  // namespace
}  // namespace zephyr
