#include "zephyr/support/lock_file.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <regex>

#include "helpers/temp_dir.h"

namespace zephyr {
namespace {

TEST(LockFileTest, LinesRoundTripWithEscapesAndReadOfficeLocks) {
  LockOwner owner{"Smith, Jo; \\ team", "jo", "desk-7", "23.11.2026 09:05", 4321};
  EXPECT_EQ(owner.Format(), "Smith\\, Jo\\; \\\\ team,jo,desk-7,23.11.2026 09:05,zpopup-edit:4321;");
  auto parsed = LockOwner::Parse(owner.Format());
  ASSERT_TRUE(parsed);
  EXPECT_EQ(parsed->full_name, owner.full_name);
  EXPECT_EQ(parsed->pid, 4321);
  EXPECT_EQ(parsed->Describe(), "Opened by Smith, Jo; \\ team on desk-7 since 23.11.2026 09:05");

  // An office program's own lock: no process to check, never stale.
  auto office = LockOwner::Parse(",ann,other-host,01.02.2026 10:00,file:///home/ann/.config/x;");
  ASSERT_TRUE(office);
  EXPECT_EQ(office->Describe(), "Opened by ann on other-host since 01.02.2026 10:00");
  EXPECT_EQ(office->pid, 0);
  EXPECT_FALSE(office->IsStale());

  EXPECT_FALSE(LockOwner::Parse("a,b,c;"));
  EXPECT_FALSE(LockOwner::Parse("a,b,c,d,e"));  // never ended
}

TEST(LockFileTest, TakenLockNamesThisProcessAndGoesWithItsHolder) {
  testing::TempDir dir;
  const std::string popup = dir.File("Products.ZPT");
  EXPECT_EQ(LockFile::PathFor(popup), dir.File(".~lock.Products.ZPT#"));
  {
    LockFile lock = LockFile::Take(popup);
    std::string line = testing::ReadBytes(lock.Path());
    EXPECT_TRUE(std::regex_match(
        line, std::regex("[^,]*,[^,]+,[^,]+,\\d\\d\\.\\d\\d\\.\\d{4} \\d\\d:\\d\\d,zpopup-edit:" +
                         std::to_string(getpid()) + ";\n")))
        << line;
    auto owner = LockFile::Read(popup);
    ASSERT_TRUE(owner);
    EXPECT_TRUE(owner->IsThisProcess());
    EXPECT_FALSE(owner->IsStale());
  }
  EXPECT_FALSE(std::filesystem::exists(LockFile::PathFor(popup)));

  // Another editor that took the lock over keeps it when the first lets go.
  LockFile first = LockFile::Take(popup);
  testing::WriteBytes(first.Path(), ",ann,host,01.02.2026 10:00,zpopup-edit:1;\n");
  first.Release();
  EXPECT_TRUE(std::filesystem::exists(LockFile::PathFor(popup)));
}

TEST(LockFileTest, ALockWhoseProcessIsGoneIsStale) {
  pid_t child = fork();
  if (child == 0) _exit(0);
  waitpid(child, nullptr, 0);
  LockOwner gone = LockOwner::Current();
  gone.pid = child;
  EXPECT_TRUE(gone.IsStale());
  gone.host = "another-host";  // there it cannot be checked
  EXPECT_FALSE(gone.IsStale());
  EXPECT_FALSE(LockOwner::Current().IsStale());
}

}  // namespace
}  // namespace zephyr
