// Two processes share one table without locks and see each other's appends
// through the header that every write re-reads.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "helpers/temp_dir.h"
#include "table_test_util.h"
#include "zephyr/table/dbase.h"

namespace zephyr {
namespace {

constexpr int kTurns = 25;

// Record n holds the number n - 1 in a column of 4.
std::string Stored(int number) {
  std::string text = std::to_string(number);
  return text + std::string(4 - text.size(), ' ');
}

// One side of the exchange: waits for its turn, checks that it sees every
// record so far, appends its own, and passes the turn on. Returns false on
// the first surprise.
bool TakeTurns(const std::string& path, bool first, int read_fd, int write_fd) {
  dBase table;
  table.OpenMode(dBase::kReadWrite);
  table.OpenFile(path);
  for (int turn = first ? 0 : 1; turn < 2 * kTurns; turn += 2) {
    char token;
    if (turn > 0 && ::read(read_fd, &token, 1) != 1) return false;
    Variant values = table.GetTableValues();
    int32_t seen = values.IsArray() ? values.AsArray()->UBound(2) : 0;
    if (seen != turn) return false;
    if (seen > 0 && values.AsArray()->At(1, seen).ToText() != Stored(turn - 1)) {
      return false;
    }
    table.InitRecord();
    table.Value(1, std::to_string(turn));
    table.PutRecord(0);
    if (table.RecordNo() != turn + 1) return false;
    if (::write(write_fd, "t", 1) != 1) return false;
  }
  table.CloseFile();
  return true;
}

TEST(SharedAccessTest, AppendsOfTwoProcessesInterleave) {
  testing::TempDir dir;
  std::string path = dir.File("shared.zpd");
  testing::CreateTable(path, {{"N", "C", 4}}, {});
  int to_child[2];
  int to_parent[2];
  ASSERT_EQ(::pipe(to_child), 0);
  ASSERT_EQ(::pipe(to_parent), 0);

  pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    bool ok = false;
    try {
      ok = TakeTurns(path, false, to_child[0], to_parent[1]);
    } catch (...) {
    }
    ::_exit(ok ? 0 : 1);
  }
  bool ok = TakeTurns(path, true, to_parent[0], to_child[1]);
  int status = 0;
  ::waitpid(child, &status, 0);
  for (int fd : {to_child[0], to_child[1], to_parent[0], to_parent[1]}) ::close(fd);
  EXPECT_TRUE(ok);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

}  // namespace
}  // namespace zephyr
