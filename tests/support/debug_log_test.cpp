// Diagnostic logging over a private session bus with the real zephyr-debug
// server, checking the four fields and the latch in both directions.
#include "zephyr/support/debug_log.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include "helpers/private_bus.h"

namespace zephyr {
namespace {

using testing::DebugServer;
using testing::PrivateBus;
using Line = std::vector<std::string>;

// Field 0 of a server line is the time; the rest are the four sent fields.
Line SentFields(const Line& line) {
  return Line(line.begin() + 1, line.end());
}

class DebugLogTest : public ::testing::Test {
 protected:
  void SetUp() override { ResetDebugLogForTesting(); }
  void TearDown() override { ResetDebugLogForTesting(); }
};

TEST_F(DebugLogTest, NoServerOnTheFirstCallSwitchesLoggingOffForGood) {
  PrivateBus bus;
  ASSERT_TRUE(bus.Running());
  DebugLog("mod", "proc", "first");
  EXPECT_EQ(DebugLogState(), -1);
  EXPECT_EQ(DebugLogAttachAttempts(), 1u);
  EXPECT_FALSE(DebugLogEnabled());

  DebugServer server(bus, ZEPHYR_DEBUG_SERVER);
  ASSERT_TRUE(server.Ready());
  DebugLog("mod", "proc", "second");
  DebugLog("mod", "proc", 3);
  EXPECT_EQ(DebugLogAttachAttempts(), 1u);  // no further attempts
  EXPECT_TRUE(server.Lines(1, std::chrono::milliseconds(300)).empty());
}

TEST_F(DebugLogTest, NoSessionBusCountsAsNoServerAndStartsNothing) {
  const char* saved = getenv("DBUS_SESSION_BUS_ADDRESS");
  std::string previous = saved ? saved : "";
  unsetenv("DBUS_SESSION_BUS_ADDRESS");
  DebugLog("mod", "proc", "message");
  EXPECT_EQ(DebugLogState(), -1);
  if (saved) setenv("DBUS_SESSION_BUS_ADDRESS", previous.c_str(), 1);
}

TEST_F(DebugLogTest, ServerReceivesTheFourFieldsOfEveryCall) {
  PrivateBus bus;
  DebugServer server(bus, ZEPHYR_DEBUG_SERVER);
  ASSERT_TRUE(server.Ready());
  DebugLog("mExcel", "ScanExcelData", std::string("Scanning Row: ") + "7");
  DebugLog("dBase Class", "Sort", 42);
  DebugLog("mGlobals", "isFileReadOnly", "");
  DebugLog("m", "p", "tab\there");
  auto lines = server.Lines(4);
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_EQ(SentFields(lines[0]),
            (Line{"debug_log_tests", "mExcel", "ScanExcelData", "Scanning Row: 7"}));
  EXPECT_EQ(SentFields(lines[1]), (Line{"debug_log_tests", "dBase Class", "Sort", "42"}));
  EXPECT_EQ(SentFields(lines[2]), (Line{"debug_log_tests", "mGlobals", "isFileReadOnly", ""}));
  EXPECT_EQ(lines[3].back(), "tab\\there");  // one line per message, whatever it holds
  EXPECT_EQ(DebugLogState(), 1);
}

TEST_F(DebugLogTest, AServerSeenOnceIsLookedForOnEveryCall) {
  PrivateBus bus;
  {
    DebugServer server(bus, ZEPHYR_DEBUG_SERVER);
    ASSERT_TRUE(server.Ready());
    DebugLog("m", "p", "while up");
    EXPECT_EQ(server.Lines(1).size(), 1u);
  }
  uint64_t before = DebugLogAttachAttempts();
  DebugLog("m", "p", "while down");
  DebugLog("m", "p", "while down");
  EXPECT_EQ(DebugLogAttachAttempts(), before + 2);
  EXPECT_EQ(DebugLogState(), 1);

  DebugServer restarted(bus, ZEPHYR_DEBUG_SERVER);
  ASSERT_TRUE(restarted.Ready());
  DebugLog("m", "p", "back again");
  auto lines = restarted.Lines(1);
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0].back(), "back again");
}

}  // namespace
}  // namespace zephyr
