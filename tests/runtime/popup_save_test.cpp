#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <map>

#include "helpers/popup_files.h"
#include "helpers/recorders.h"
#include "helpers/temp_dir.h"
#include "item_access.h"
#include "zephyr/runtime/popup_class.h"
#include "zephyr/table/dbase.h"

namespace zephyr {
namespace {

using testing::PopupDesign;
using testing::ReadBytes;
using testing::ScriptedMessageBox;
using testing::TempDir;
using testing::WritePopupFiles;

const PopupDesign kShop = {"Shop", {"Aisle", "Shelf"}, {{"Name", 12}}};

std::vector<std::string> FolderListing(const std::string& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::unique_ptr<PopupClass> OpenShop(const std::string& folder, const std::string& base = "Shop") {
  auto popup = std::make_unique<PopupClass>();
  popup->PopupPath(folder);
  popup->DataSource(base);
  popup->OpenPopup();
  return popup;
}

class PopupSaveTest : public ::testing::Test {
 protected:
  TempDir dir_;
};

// Values never read are saved as loaded, others as they now are; a changed
// key counts as loaded once it is saved. Files in other letter case are saved
// under their own names.
TEST_F(PopupSaveTest, ValuesAreSavedAsLoadedOrAsChanged) {
  WritePopupFiles(dir_.Path(), "Shop", kShop,
                  {{"  01", "Drinks"}, {"  02", "  Snacks"}, {"  03", ""}}, "Shop.zpt", "Shop.zpd");
  auto popup = OpenShop(dir_.Path());
  auto items = popup->PopupItems();
  auto drinks = items->Item(1);
  drinks->PopupKey("  04");
  EXPECT_EQ(ItemAccess::LoadedKey(*drinks), "  01");
  items->Item(3)->PopupValues()->Item(1)->Value("Bread");
  items->Item(2)->PopupValues(std::make_shared<PopupValues>());
  SavePopupInTreeOrder(*popup);
  EXPECT_EQ(ItemAccess::LoadedKey(*drinks), "  04");
  EXPECT_EQ(FolderListing(dir_.Path()), (std::vector<std::string>{"Shop.zpd", "Shop.zpt"}));

  auto again = OpenShop(dir_.Path());
  std::vector<std::string> saved;
  for (int32_t row = 1; row <= again->RowCount(); ++row) {
    saved.push_back(again->Values(1, row).ToText() + "|" + again->Values(2, row).ToText());
  }
  EXPECT_EQ(saved, (std::vector<std::string>{"  02|" + std::string(12, ' '), "  03|Bread       ",
                                             "  04|Drinks      "}));
}

TEST_F(PopupSaveTest, TheWorkTableHasOneColumnPerFieldAndFailuresAreReportedNotRaised) {
  auto messages = std::make_shared<ScriptedMessageBox>();
  PopupClass popup;
  popup.SetMessageBox(messages);
  popup.PopupPath(dir_.Path());
  popup.DataSource("Codes");
  popup.PopupLevels()->Add(Variant("Code"), 1);
  popup.PopupFields()->Add("Popup Code", 2, 0, 0);
  popup.WriteTemplate();
  popup.SavePopup();
  EXPECT_EQ(popup.WorkFileName(), "Codes.bpd");
  popup.SaveClose();
  std::string bytes = ReadBytes(dir_.File("Codes.ZPD"));
  ASSERT_EQ(bytes.size(), 66u);  // header, one descriptor, terminator, end-of-file byte
  EXPECT_EQ(bytes.substr(32, 10), "POPUP_CODE");

  popup.PopupPath(dir_.File("missing-folder"));
  EXPECT_NO_THROW(popup.SavePopup());
  ASSERT_EQ(messages->shown.size(), 1u);
  EXPECT_EQ(messages->shown[0].prompt,
            "Problem saving Popup File:\r\n" + dir_.File("missing-folder") + "/Codes.bpd");
  EXPECT_EQ(messages->shown[0].buttons, MessageButtons::kOk);
  EXPECT_EQ(messages->shown[0].title, "");
  auto item = PopupItem::Create();
  item->PopupKey("01");
  popup.WritePopupRecord(item);  // writes nothing, but the key counts as written
  EXPECT_EQ(ItemAccess::LoadedKey(*item), "01");
}

// The popup's files are replaced by renaming the finished work files over
// them: never deleted first, never created or written in place, and the
// template before the table. A save killed at any moment therefore leaves
// each file complete, old or new; one that fails leaves them untouched.
TEST_F(PopupSaveTest, TheOldFilesAreReplacedOnlyByRename) {
  WritePopupFiles(dir_.Path(), "Shop", kShop, {{"  01", "Drinks"}, {"0101", "Tea"}});
  std::string old_template = ReadBytes(dir_.File("Shop.ZPT"));
  std::string old_data = ReadBytes(dir_.File("Shop.ZPD"));
  auto popup = OpenShop(dir_.Path());
  popup->Title("Renamed");
  popup->WriteTemplate();
  // No SavePopup: the work table was never written.
  try {
    popup->SaveClose();
    FAIL() << "expected an error";
  } catch (const RuntimeError& error) {
    EXPECT_NE(error.Description().find("Shop.bpd"), std::string::npos);
  }
  EXPECT_EQ(ReadBytes(dir_.File("Shop.ZPT")), old_template);
  EXPECT_EQ(ReadBytes(dir_.File("Shop.ZPD")), old_data);

  // The next save clears the stale work files and goes through.
  int watch = ::inotify_init1(IN_NONBLOCK);
  ASSERT_GE(watch, 0);
  ASSERT_GE(::inotify_add_watch(watch, dir_.Path().c_str(),
                                IN_CREATE | IN_DELETE | IN_MODIFY | IN_MOVED_FROM | IN_MOVED_TO),
            0);
  SavePopupInTreeOrder(*popup);
  std::map<std::string, uint32_t> events;  // by file name, every kind seen
  std::vector<std::string> renamed_to;
  alignas(inotify_event) char buffer[1 << 16];
  for (ssize_t got; (got = ::read(watch, buffer, sizeof buffer)) > 0;) {
    for (ssize_t at = 0; at < got;) {
      const auto* event = reinterpret_cast<const inotify_event*>(buffer + at);
      if (event->len > 0) events[event->name] |= event->mask;
      if (event->len > 0 && (event->mask & IN_MOVED_TO)) renamed_to.push_back(event->name);
      at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
    }
  }
  ::close(watch);
  EXPECT_EQ(events["Shop.ZPT"], uint32_t{IN_MOVED_TO});
  EXPECT_EQ(events["Shop.ZPD"], uint32_t{IN_MOVED_TO});
  EXPECT_EQ(renamed_to, (std::vector<std::string>{"Shop.ZPT", "Shop.ZPD"}));
  EXPECT_EQ(OpenShop(dir_.Path())->Title(), "Renamed");
  EXPECT_EQ(FolderListing(dir_.Path()), (std::vector<std::string>{"Shop.ZPD", "Shop.ZPT"}));
}

// Another program's save, or another process appending to the table as
// shared popups allow, is seen before a save would overwrite it; a save of
// one's own, or a file only touched, is no change.
TEST_F(PopupSaveTest, ChangedOnDiskSeesOtherWritersOnly) {
  WritePopupFiles(dir_.Path(), "Shop", kShop, {{"  01", "Fruit"}});
  auto mine = OpenShop(dir_.Path());
  auto theirs = OpenShop(dir_.Path());
  EXPECT_FALSE(mine->ChangedOnDisk());

  theirs->AddItem(nullptr, "  02", {"Bread"});
  SavePopupInTreeOrder(*theirs);
  EXPECT_FALSE(theirs->ChangedOnDisk());
  EXPECT_TRUE(mine->ChangedOnDisk());
  SavePopupInTreeOrder(*mine);  // the host decided to overwrite
  EXPECT_FALSE(mine->ChangedOnDisk());

  std::filesystem::last_write_time(dir_.File("Shop.ZPT"),
                                   std::filesystem::file_time_type::clock::now());
  EXPECT_FALSE(mine->ChangedOnDisk());

  pid_t child = ::fork();
  if (child == 0) {
    dBase table;
    table.OpenMode(dBase::kReadWrite);
    table.OpenFile(dir_.File("Shop.ZPD"));
    table.Value(1, Variant("  03"));
    table.Value(2, Variant("Milk"));
    table.PutRecord(0);
    table.CloseFile();
    ::_exit(0);
  }
  ::waitpid(child, nullptr, 0);
  EXPECT_TRUE(mine->ChangedOnDisk());

  mine->DataSource("Elsewhere");  // a save under another name overwrites nobody
  EXPECT_FALSE(mine->ChangedOnDisk());
}

}  // namespace
}  // namespace zephyr
