#include "zephyr/support/file_utils.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "helpers/temp_dir.h"
#include "zephyr/support/codepage.h"
#include "zephyr/support/errors.h"

namespace zephyr {
namespace {

using testing::TempDir;
using Elements = std::vector<std::string>;

TEST(TextHelpersTest, SplitLineStripQuotesAndTrailingSlash) {
  EXPECT_EQ(SplitLine("a,b\tc"), (Elements{"a,b", "c"}));  // tabs win for the whole line
  EXPECT_EQ(SplitLine("5,20,\"Name\""), (Elements{"5", "20", "\"Name\""}));
  EXPECT_EQ(SplitLine("a,,b,"), (Elements{"a", "", "b", ""}));
  EXPECT_EQ(SplitLine(""), (Elements{""}));
  EXPECT_EQ(SplitLine("\t"), (Elements{"", ""}));
  // One enclosing pair of quotes goes, then blanks (only blanks) are trimmed.
  EXPECT_EQ(StripQuotes("\"Title\""), "Title");
  EXPECT_EQ(StripQuotes("\" padded \""), "padded");
  EXPECT_EQ(StripQuotes("\"\""), "");
  EXPECT_EQ(StripQuotes("\"open"), "\"open");
  EXPECT_EQ(StripQuotes("\"say \"hi\"\""), "say \"hi\"");
  EXPECT_EQ(StripQuotes("  plain \t "), "plain \t");
  EXPECT_EQ(StripQuotes("\""), "\"");
  EXPECT_EQ(WithTrailingSlash("/data"), "/data/");
  EXPECT_EQ(WithTrailingSlash("/data/"), "/data/");
  EXPECT_EQ(WithTrailingSlash(""), "./");
}

TEST(FileUtilsTest, ExistenceAndReadOnlyTests) {
  TempDir dir;
  std::string path = dir.File("a.ZPT");
  EXPECT_FALSE(PathExists(path));
  EXPECT_FALSE(isFileReadOnly(path));  // a new file may be written
  testing::WriteBytes(path, "x");
  EXPECT_TRUE(PathExists(path));
  EXPECT_TRUE(PathExists(dir.Path()));
  EXPECT_FALSE(PathExists(""));
  ::chmod(path.c_str(), 0444);
  EXPECT_FALSE(isFileReadOnly(path));  // readable counts as writable
  if (::geteuid() != 0) {
    ::chmod(path.c_str(), 0);
    EXPECT_TRUE(isFileReadOnly(path));
  }
}

TEST(FileTest, ReadsWritesAndFailuresNameTheFile) {
  TempDir dir;
  try {
    File::Open(dir.File("missing.ZPD"), File::Mode::kRead);
    FAIL() << "expected an error";
  } catch (const RuntimeError& error) {
    EXPECT_EQ(error.Number(), 53);
    EXPECT_NE(error.Description().find("missing.ZPD"), std::string::npos);
  }
  File file = File::Open(dir.File("data"), File::Mode::kCreate);
  file.WriteAt(4, "abc", 3);
  EXPECT_EQ(file.Size(), 7u);
  char buffer[16];
  EXPECT_EQ(file.ReadAt(4, buffer, sizeof buffer), 3u);
  EXPECT_EQ(std::string(buffer, 3), "abc");

  testing::WriteBytes(dir.File("t"), "\xE9t\xE9\r\n");  // whole files come from the code page
  File text = File::Open(dir.File("t"), File::Mode::kRead);
  EXPECT_EQ(ReadWholeFile(text, text.Size()), "été\r\n");
  EXPECT_EQ(ReadWholeFile(text, 0), "");
  EXPECT_EQ(ReadWholeFile(text, 100), "été\r\n");  // only what was read
}

}  // namespace
}  // namespace zephyr
