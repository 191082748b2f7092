// The diagnostic server, zephyr-debug, run for a test on the session bus the
// test runs under (CTest gives each such test a bus of its own with
// dbus-run-session), and the lines it prints.
#ifndef ZEPHYR_TESTS_HELPERS_DEBUG_SERVER_H_
#define ZEPHYR_TESTS_HELPERS_DEBUG_SERVER_H_

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

namespace zephyr::testing {

class DebugServer {
 public:
  // Starts the server program and waits until it owns its bus name.
  explicit DebugServer(const std::string& program);
  ~DebugServer();  // stops the server
  DebugServer(const DebugServer&) = delete;
  DebugServer& operator=(const DebugServer&) = delete;

  bool Ready() const { return ready_; }
  // Waits for at least `count` lines in all (or the timeout) and returns every
  // line received so far, each split at its tabs.
  std::vector<std::vector<std::string>> Lines(
      size_t count, std::chrono::milliseconds timeout = std::chrono::seconds(5));
  void Stop();

 private:
  void ReadAvailable(std::chrono::milliseconds wait);

  pid_t pid_ = -1;
  int output_ = -1;
  bool ready_ = false;
  std::string pending_;
  std::vector<std::vector<std::string>> lines_;
};

}  // namespace zephyr::testing

#endif  // ZEPHYR_TESTS_HELPERS_DEBUG_SERVER_H_
