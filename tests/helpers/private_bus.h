// A private D-Bus session bus and a diagnostic server on it, for tests of
// the diagnostic logging. PrivateBus runs its own dbus-daemon and points
// DBUS_SESSION_BUS_ADDRESS at it; DebugServer runs zephyr-debug and collects
// the lines it prints.
#ifndef ZEPHYR_TESTS_HELPERS_PRIVATE_BUS_H_
#define ZEPHYR_TESTS_HELPERS_PRIVATE_BUS_H_

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

namespace zephyr::testing {

class PrivateBus {
 public:
  PrivateBus();   // starts the daemon and sets DBUS_SESSION_BUS_ADDRESS
  ~PrivateBus();  // stops it and restores the previous address
  PrivateBus(const PrivateBus&) = delete;
  PrivateBus& operator=(const PrivateBus&) = delete;

  bool Running() const { return pid_ > 0 && !address_.empty(); }
  // True when a bus name has an owner on this bus.
  bool NameHasOwner(const std::string& name) const;

 private:
  pid_t pid_ = -1;
  std::string address_;
  std::string previous_address_;
  bool had_previous_ = false;
};

class DebugServer {
 public:
  // Starts the server program and waits until it owns its bus name.
  explicit DebugServer(const PrivateBus& bus, const std::string& program);
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

#endif  // ZEPHYR_TESTS_HELPERS_PRIVATE_BUS_H_
