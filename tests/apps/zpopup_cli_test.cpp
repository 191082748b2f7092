// The zpopup command run in process: how it reads its options, what it says
// and the exit code it ends with (0 success, 1 problems found, 2 usage errors
// or unreadable input).
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "helpers/popup_files.h"
#include "helpers/temp_dir.h"
#include "run.h"
#include "usage_error.h"

namespace zephyr::cli {
namespace {

struct Outcome {
  int code;
  std::string out, err;
};

Outcome Zpopup(const Arguments& args) {
  ::testing::internal::CaptureStdout();
  ::testing::internal::CaptureStderr();
  int code = Main(args);
  std::fflush(stdout);
  std::fflush(stderr);
  std::string out = ::testing::internal::GetCapturedStdout();
  return {code, out, ::testing::internal::GetCapturedStderr()};
}

std::string Joined(const Arguments& args) {
  std::string joined;
  for (const auto& arg : args) joined += " " + arg;
  return joined;
}

class ZpopupCliTest : public ::testing::Test {
 protected:
  void SetUp() override {
    testing::WriteProducts(dir_.Path());
    testing::WriteBytes(dir_.File("nokeys.csv"), "Group,Item,Name\r\nFruit,Apples,Red\r\n");
  }
  std::string Products() const { return dir_.File("Products"); }
  std::string Sheet() const { return dir_.File("nokeys.csv"); }
  testing::TempDir dir_;
};

TEST_F(ZpopupCliTest, UsageErrorsExitTwoAndSayWhatIsWrong) {
  const struct {
    Arguments args;
    std::string said;
  } cases[] = {
      {{}, "zpopup: no command given"},
      {{"frobnicate"}, "zpopup: unknown command 'frobnicate'"},
      {{"help", "frobnicate"}, "zpopup: no command 'frobnicate'"},
      {{"info"}, "zpopup: info takes one POPUP"},
      {{"info", Products(), "--bogus"}, "zpopup: unknown option --bogus"},
      {{"export", Products(), "x.csv", "--verbose=yes"}, "zpopup: --verbose takes no value"},
      {{"new", dir_.File("New"), "--title"}, "zpopup: --title needs a value"},
      {{"new", dir_.File("New"), "--title", "T"}, "zpopup: new needs at least one --level"},
      {{"new", dir_.File("New"), "--title", "T", "--level", "Q", "--field", "Price"},
       "zpopup: --field takes NAME:LENGTH, not 'Price'"},
      {{"import", Sheet(), dir_.File("New"), "--levels", "100"},
       "zpopup: --levels takes a whole number from 1 to 99, not '100'"},
      {{"import", Sheet(), dir_.File("New"), "--levels", "0"},
       "zpopup: --levels takes a whole number from 1 to 99, not '0'"},
      {{"import", Sheet(), dir_.File("New"), "--levels", "2.5"},
       "zpopup: --levels takes a whole number from 1 to 99, not '2.5'"},
      {{"import", Sheet(), Products(), "--structure", "both"},
       "zpopup: --structure takes popup or sheet, not 'both'"},
      {{"info", dir_.File("Missing")}, "no popup '"},
  };
  for (const auto& one : cases) {
    Outcome run = Zpopup(one.args);
    EXPECT_EQ(run.code, kUsageError) << Joined(one.args);
    EXPECT_NE(run.err.find(one.said), std::string::npos) << Joined(one.args) << "\n" << run.err;
  }
  EXPECT_FALSE(std::filesystem::exists(dir_.File("New.ZPT")));  // nothing was made
}

TEST_F(ZpopupCliTest, SuccessAndProblemsFoundHaveTheirOwnCodes) {
  EXPECT_EQ(Zpopup({"--version"}).code, kSuccess);
  Outcome help = Zpopup({"help", "import"});
  EXPECT_EQ(help.code, kSuccess);
  EXPECT_EQ(help.out.rfind("usage: zpopup import WORKBOOK POPUP", 0), 0u);
  EXPECT_EQ(Zpopup({"info", Products(), "-h"}).out, Zpopup({"help", "info"}).out);

  Outcome info = Zpopup({"info", dir_.File("products.zpt")});  // any letter case names it
  EXPECT_EQ(info.code, kSuccess);
  EXPECT_EQ(info.out.rfind("Title: ", 0), 0u);

  // A leaf above the deepest level cannot come back by import: written, and said.
  testing::WritePopupFiles(dir_.Path(), "Short", {"Short", {"Group", "Item"}, {{"Name", 10}}},
                           {{"  10", "Fruit"}, {"1010", "Apples"}, {"  20", "Empty group"}});
  Outcome exported = Zpopup({"export", dir_.File("Short"), dir_.File("short.csv")});
  EXPECT_EQ(exported.code, kProblemsFound) << exported.err;
  EXPECT_NE(exported.err.find("items cannot come back by import (--verbose lists them)"),
            std::string::npos)
      << exported.err;
  EXPECT_TRUE(std::filesystem::exists(dir_.File("short.csv")));

  // A sheet without keys, no --levels and nobody at a terminal to ask.
  Outcome asked = Zpopup({"import", Sheet(), dir_.File("New")});
  EXPECT_EQ(asked.code, kProblemsFound) << asked.err;
}

}  // namespace
}  // namespace zephyr::cli
