// Diagnostic logging over the test's own session bus with the real
// zephyr-debug server: the latch that no server at the first call sets, and the four
// fields of a delivered message.
#include "zephyr/support/debug_log.h"

#include <gtest/gtest.h>

#include "helpers/debug_server.h"

namespace zephyr {
namespace {

using testing::DebugServer;
using Line = std::vector<std::string>;

class DebugLogTest : public ::testing::Test {
 protected:
  void SetUp() override { ResetDebugLogForTesting(); }
  void TearDown() override { ResetDebugLogForTesting(); }
};

TEST_F(DebugLogTest, NoServerOnTheFirstCallSwitchesLoggingOffForGood) {
  DebugLog("mod", "proc", "first");
  EXPECT_EQ(DebugLogState(), -1);
  EXPECT_FALSE(DebugLogEnabled());

  DebugServer server(ZEPHYR_DEBUG_SERVER);
  ASSERT_TRUE(server.Ready());
  DebugLog("mod", "proc", "second");
  EXPECT_EQ(DebugLogAttachAttempts(), 1u);  // no further attempts
  EXPECT_TRUE(server.Lines(1, std::chrono::milliseconds(300)).empty());
}

TEST_F(DebugLogTest, ServerReceivesTheFourFields) {
  DebugServer server(ZEPHYR_DEBUG_SERVER);
  ASSERT_TRUE(server.Ready());
  DebugLog("dBase Class", "Sort", "tab\there");
  auto lines = server.Lines(1);
  ASSERT_EQ(lines.size(), 1u);
  // Field 0 is the time the server received it; a tab cannot split a field.
  EXPECT_EQ(Line(lines[0].begin() + 1, lines[0].end()),
            (Line{"debug_log_tests", "dBase Class", "Sort", "tab\\there"}));
  EXPECT_EQ(DebugLogState(), 1);
}

}  // namespace
}  // namespace zephyr
