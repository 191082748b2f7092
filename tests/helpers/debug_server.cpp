#include "helpers/debug_server.h"

#include <dbus/dbus.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>

namespace zephyr::testing {

namespace {

void StopProcess(pid_t pid) {
  if (pid <= 0) return;
  ::kill(pid, SIGTERM);
  int status;
  for (int i = 0; i < 100; ++i) {
    if (::waitpid(pid, &status, WNOHANG) == pid) return;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  ::kill(pid, SIGKILL);
  ::waitpid(pid, &status, 0);
}

// Starts argv with its stdout on a pipe; returns the pid and the read end.
pid_t Spawn(const std::vector<std::string>& argv, int* read_end) {
  int fds[2];
  if (::pipe(fds) != 0) return -1;
  pid_t pid = ::fork();
  if (pid == 0) {
    ::dup2(fds[1], STDOUT_FILENO);
    ::close(fds[0]);
    ::close(fds[1]);
    int null = ::open("/dev/null", O_WRONLY);
    if (null >= 0) ::dup2(null, STDERR_FILENO);
    std::vector<char*> args;
    for (const auto& arg : argv) args.push_back(const_cast<char*>(arg.c_str()));
    args.push_back(nullptr);
    ::execvp(args[0], args.data());
    ::_exit(127);
  }
  ::close(fds[1]);
  *read_end = fds[0];
  return pid;
}

// True when a bus name has an owner on the session bus.
bool NameHasOwner(const std::string& name) {
  DBusError error;
  dbus_error_init(&error);
  DBusConnection* connection = dbus_bus_get_private(DBUS_BUS_SESSION, &error);
  if (!connection) {
    dbus_error_free(&error);
    return false;
  }
  bool owned = dbus_bus_name_has_owner(connection, name.c_str(), &error);
  dbus_error_free(&error);
  dbus_connection_close(connection);
  dbus_connection_unref(connection);
  return owned;
}

}  // namespace

DebugServer::DebugServer(const std::string& program) {
  pid_ = Spawn({program}, &output_);
  for (int i = 0; i < 250 && pid_ > 0; ++i) {
    if (NameHasOwner("ZephyrDebug60.Application")) {
      ready_ = true;
      break;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
}

DebugServer::~DebugServer() {
  Stop();
}

void DebugServer::Stop() {
  StopProcess(pid_);
  pid_ = -1;
  if (output_ >= 0) {
    ReadAvailable(std::chrono::milliseconds(0));
    ::close(output_);
  }
  output_ = -1;
}

void DebugServer::ReadAvailable(std::chrono::milliseconds wait) {
  pollfd waiting{output_, POLLIN, 0};
  char buffer[4096];
  while (::poll(&waiting, 1, static_cast<int>(wait.count())) > 0) {
    ssize_t got = ::read(output_, buffer, sizeof buffer);
    if (got <= 0) break;
    pending_.append(buffer, static_cast<size_t>(got));
    wait = std::chrono::milliseconds(0);
  }
  size_t end;
  while ((end = pending_.find('\n')) != std::string::npos) {
    std::string line = pending_.substr(0, end);
    pending_.erase(0, end + 1);
    std::vector<std::string> fields;
    size_t start = 0, tab;
    while ((tab = line.find('\t', start)) != std::string::npos) {
      fields.push_back(line.substr(start, tab - start));
      start = tab + 1;
    }
    fields.push_back(line.substr(start));
    lines_.push_back(std::move(fields));
  }
}

std::vector<std::vector<std::string>> DebugServer::Lines(size_t count,
                                                         std::chrono::milliseconds timeout) {
  auto deadline = std::chrono::steady_clock::now() + timeout;
  while (output_ >= 0 && lines_.size() < count && std::chrono::steady_clock::now() < deadline) {
    ReadAvailable(std::chrono::milliseconds(50));
  }
  return lines_;
}

}  // namespace zephyr::testing
