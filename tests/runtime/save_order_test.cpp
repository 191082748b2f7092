// The order in which a save makes its work files durable and puts them in
// place, seen by standing in for fsync and rename: every work file reaches
// the disk before anything is replaced, the template replaces its file
// before the table does, and the folder reaches the disk after both, so
// that a machine that stops at any moment leaves the old popup or the new.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <filesystem>
#include <string>
#include <vector>

#include "helpers/popup_files.h"
#include "helpers/temp_dir.h"
#include "zephyr/runtime/popup_class.h"

namespace {

// While set, what the process syncs and renames, by file name ("." for a folder).
std::vector<std::string>* recorded = nullptr;

std::string NameOf(const std::string& path) {
  if (std::filesystem::is_directory(path)) return ".";
  return std::filesystem::path(path).filename().string();
}

template <typename Function>
Function* Next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" int fsync(int fd) {
  if (recorded) {
    char path[PATH_MAX] = {};
    std::string link = "/proc/self/fd/" + std::to_string(fd);
    ssize_t size = readlink(link.c_str(), path, sizeof path - 1);
    recorded->push_back("sync " + NameOf(std::string(path, size > 0 ? size : 0)));
  }
  static auto* real = Next<int(int)>("fsync");
  return real(fd);
}

extern "C" int rename(const char* from, const char* to) {
  if (recorded) recorded->push_back("rename " + NameOf(from) + " " + NameOf(to));
  static auto* real = Next<int(const char*, const char*)>("rename");
  return real(from, to);
}

namespace zephyr {
namespace {

TEST(SaveOrderTest, WorkFilesReachTheDiskBeforeTheyReplaceAnythingAndTheFolderLast) {
  testing::TempDir dir;
  testing::WriteProducts(dir.Path());
  PopupClass popup;
  popup.PopupPath(dir.Path() + "/");
  popup.DataSource("Products");
  popup.OpenPopup();
  popup.WriteTemplate();
  popup.SavePopup();
  for (const auto& item : *popup.PopupItems()) popup.WritePopupRecord(item);

  std::vector<std::string> seen;
  recorded = &seen;
  popup.SaveClose();
  recorded = nullptr;

  auto at = [&seen](const std::string& event) {
    return std::find(seen.begin(), seen.end(), event) - seen.begin();
  };
  const auto template_renamed = at("rename Products.bpt Products.ZPT");
  const auto table_renamed = at("rename Products.bpd Products.ZPD");
  ASSERT_LT(table_renamed, static_cast<std::ptrdiff_t>(seen.size()));
  EXPECT_LT(template_renamed, table_renamed);
  EXPECT_LT(at("sync Products.bpt"), template_renamed);
  EXPECT_LT(at("sync Products.bpd"), template_renamed);
  EXPECT_EQ(seen.back(), "sync .");
}

}  // namespace
}  // namespace zephyr
