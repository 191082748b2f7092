// Tables that promise more than the file holds must fail with an error that
// names the file, never crash, hang or return garbage. Damage at random is
// fuzz/dbase_fuzzer.cpp's business.
#include <gtest/gtest.h>

#include "helpers/temp_dir.h"
#include "table_test_util.h"
#include "zephyr/support/errors.h"
#include "zephyr/table/dbase.h"

namespace zephyr {
namespace {

using testing::ReadBytes;
using testing::TempDir;
using testing::WriteBytes;

class DamagedFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    path_ = dir_.File("x.zpd");
    testing::CreateTable(
        path_, {{"K", "C", 2}, {"V", "C", 3}},
        {{"01", "a"}, {"02", "b"}, {"03", "c"}, {"04", "d"}, {"05", "e"}, {"06", "f"}});
    good_ = ReadBytes(path_);
  }

  // The description of the RuntimeError that f raises.
  template <typename F>
  std::string RuntimeErrorOf(F&& f) {
    try {
      f();
    } catch (const RuntimeError& error) {
      return error.Description();
    }
    ADD_FAILURE() << "no RuntimeError";
    return "";
  }

  TempDir dir_;
  std::string path_;
  std::string good_;  // 97 header bytes, six records of 6 bytes, 0x1A
};

TEST_F(DamagedFileTest, WhatTheFileDoesNotHoldIsNamedWithTheFile) {
  std::string more = good_;
  testing::PutLe32(&more, 4, 10);
  std::string huge = good_;  // with record length zero
  testing::PutLe32(&huge, 4, 0xFFFFFFFF);
  testing::PutLe16(&huge, 10, 0);
  std::string descriptors = good_.substr(0, 97);
  testing::PutLe16(&descriptors, 8, 8456);  // 263 descriptors, the file holds 2
  const struct {
    std::string bytes;
    bool opens;  // fails only when the records are read
    std::string message;
  } cases[] = {
      {more, true, "record 7 of '" + path_ + "' lies beyond the end of the file"},
      {good_.substr(0, good_.size() - 3), true, "record 6 of '" + path_ + "'"},  // cut short
      {huge, true, path_},
      {descriptors, false, "field descriptor 3 of '" + path_ + "' is cut short"},
      {good_.substr(0, 20), false, "header of '" + path_},
  };
  for (const auto& c : cases) {
    WriteBytes(path_, c.bytes);
    dBase table;
    std::string error = RuntimeErrorOf([&] {
      table.OpenFile(path_);
      if (c.opens) table.GetTableValues();
    });
    EXPECT_NE(error.find(c.message), std::string::npos) << error;
    if (!c.opens) {
      EXPECT_FALSE(table.FileExists());
    }
  }
}

}  // namespace
}  // namespace zephyr
