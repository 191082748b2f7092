#include <gtest/gtest.h>
#include <signal.h>
#include <sys/inotify.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <map>
#include <random>

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
// key counts as loaded once it is saved.
TEST_F(PopupSaveTest, ValuesAreSavedAsLoadedOrAsChanged) {
  WritePopupFiles(dir_.Path(), "Shop", kShop,
                  {{"  01", "Drinks"}, {"  02", "  Snacks"}, {"  03", ""}});
  auto popup = OpenShop(dir_.Path());
  auto items = popup->PopupItems();
  auto drinks = items->Item(1);
  drinks->PopupKey("  04");
  EXPECT_EQ(ItemAccess::LoadedKey(*drinks), "  01");
  items->Item(3)->PopupValues()->Item(1)->Value("Bread");
  items->Item(2)->PopupValues(std::make_shared<PopupValues>());
  SavePopupInTreeOrder(*popup);
  EXPECT_EQ(ItemAccess::LoadedKey(*drinks), "  04");

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

TEST_F(PopupSaveTest, FilesWithOtherLetterCaseAreSavedUnderTheirOwnNames) {
  WritePopupFiles(dir_.Path(), "Shop", kShop, {{"  01", "Drinks"}}, "Shop.zpt", "Shop.zpd");
  auto popup = OpenShop(dir_.Path());
  popup->PopupItems()->Add("  02")->PopupValues()->Add("Bread");
  SavePopupInTreeOrder(*popup);
  EXPECT_EQ(FolderListing(dir_.Path()), (std::vector<std::string>{"Shop.zpd", "Shop.zpt"}));
  EXPECT_EQ(OpenShop(dir_.Path())->PopupItems()->Count(), 2);
}

TEST_F(PopupSaveTest, AnIncompleteSaveLeavesTheOldFilesUntouched) {
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
  SavePopupInTreeOrder(*popup);
  EXPECT_EQ(OpenShop(dir_.Path())->Title(), "Renamed");
  EXPECT_EQ(FolderListing(dir_.Path()), (std::vector<std::string>{"Shop.ZPD", "Shop.ZPT"}));
}

// The popup's files are replaced by renaming the finished work files over
// them: never deleted first, never created or written in place.
TEST_F(PopupSaveTest, TheOldFilesAreReplacedOnlyByRename) {
  WritePopupFiles(dir_.Path(), "Shop", kShop, {{"  01", "Drinks"}, {"0101", "Tea"}});
  auto popup = OpenShop(dir_.Path());
  int watch = ::inotify_init1(IN_NONBLOCK);
  ASSERT_GE(watch, 0);
  ASSERT_GE(::inotify_add_watch(watch, dir_.Path().c_str(),
                                IN_CREATE | IN_DELETE | IN_MODIFY | IN_MOVED_FROM | IN_MOVED_TO),
            0);
  SavePopupInTreeOrder(*popup);
  std::map<std::string, uint32_t> events;  // by file name, every kind seen
  alignas(inotify_event) char buffer[1 << 16];
  for (ssize_t got; (got = ::read(watch, buffer, sizeof buffer)) > 0;) {
    for (ssize_t at = 0; at < got;) {
      const auto* event = reinterpret_cast<const inotify_event*>(buffer + at);
      if (event->len > 0) events[event->name] |= event->mask;
      at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
    }
  }
  ::close(watch);
  EXPECT_EQ(events["Shop.ZPT"], uint32_t{IN_MOVED_TO});
  EXPECT_EQ(events["Shop.ZPD"], uint32_t{IN_MOVED_TO});
}

// A child saves a large popup and is killed at a random moment; whatever the
// moment, each of the two files is the complete old or the complete new one.
TEST_F(PopupSaveTest, KillingASaveMidwayNeverLeavesAPartialFile) {
  std::vector<testing::Row> rows;
  for (int a = 1; a <= 60; ++a) {
    char top[5];
    std::snprintf(top, sizeof top, "  %02d", a);
    rows.push_back({top, "old"});
    for (int b = 1; b <= 60; ++b) {
      char child[5];
      std::snprintf(child, sizeof child, "%02d%02d", a, b);
      rows.push_back({child, "old"});
    }
  }
  WritePopupFiles(dir_.Path(), "Shop", kShop, rows);
  const std::string old_template = ReadBytes(dir_.File("Shop.ZPT"));
  const std::string old_data = ReadBytes(dir_.File("Shop.ZPD"));

  // One uninterrupted save gives the new files to compare with.
  TempDir reference;
  std::filesystem::copy(dir_.Path(), reference.Path(), std::filesystem::copy_options::recursive);
  auto change = [](PopupClass& popup) {
    popup.Title("New title");
    std::function<void(PopupItems&)> rename = [&](PopupItems& items) {
      for (const auto& item : items) {
        item->PopupValues()->Item(1)->Value("new");
        if (item->HasChildren()) rename(*item->Children());
      }
    };
    rename(*popup.PopupItems());
  };
  auto reference_popup = OpenShop(reference.Path());
  change(*reference_popup);
  auto started = std::chrono::steady_clock::now();
  SavePopupInTreeOrder(*reference_popup);
  // Kills land anywhere from the start of a save to a little past its end.
  auto save_time = std::chrono::duration_cast<std::chrono::microseconds>(
                       std::chrono::steady_clock::now() - started)
                       .count();
  const std::string new_template = ReadBytes(reference.File("Shop.ZPT"));
  const std::string new_data = ReadBytes(reference.File("Shop.ZPD"));
  ASSERT_NE(new_data, old_data);

  sigset_t wait_for;
  sigemptyset(&wait_for);
  sigaddset(&wait_for, SIGUSR1);
  ::sigprocmask(SIG_BLOCK, &wait_for, nullptr);  // the signal waits for sigtimedwait
  std::mt19937 random(20261121);
  int saw_old = 0, saw_new = 0;
  for (int attempt = 0; attempt < 20; ++attempt) {
    pid_t child = ::fork();
    if (child == 0) {
      auto popup = OpenShop(dir_.Path());
      change(*popup);
      ::kill(::getppid(), SIGUSR1);  // loaded; the save starts now
      SavePopupInTreeOrder(*popup);
      ::_exit(0);
    }
    timespec limit{30, 0};  // a child that dies before its save must not hang the test
    if (::sigtimedwait(&wait_for, nullptr, &limit) < 0) {
      ::kill(child, SIGKILL);
      ::waitpid(child, nullptr, 0);
      ADD_FAILURE() << "attempt " << attempt << ": the child never started its save";
      break;
    }
    ::usleep(static_cast<useconds_t>(
        std::uniform_int_distribution<int64_t>(0, save_time * 5 / 4 + 1)(random)));
    ::kill(child, SIGKILL);
    int status;
    ::waitpid(child, &status, 0);

    std::string template_now = ReadBytes(dir_.File("Shop.ZPT"));
    std::string data_now = ReadBytes(dir_.File("Shop.ZPD"));
    EXPECT_TRUE(template_now == old_template || template_now == new_template) << attempt;
    EXPECT_TRUE(data_now == old_data || data_now == new_data) << attempt;
    (data_now == new_data ? saw_new : saw_old)++;
    if (data_now != old_data || template_now != old_template) {  // start again from the old files
      testing::WriteBytes(dir_.File("Shop.ZPT"), old_template);
      testing::WriteBytes(dir_.File("Shop.ZPD"), old_data);
    }
  }
  ::sigprocmask(SIG_UNBLOCK, &wait_for, nullptr);
  EXPECT_GT(saw_old, 0);
  RecordProperty("old_after_kill", saw_old);
  RecordProperty("new_after_kill", saw_new);
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
