// Diagnostic logging to the optional diagnostic server "ZephyrDebug60.Application"
// on the D-Bus session bus. Every procedure reports "Start", "Finish" and
// progress texts; a developer runs zephyr-debug to watch them.
//
// The first call that finds no server switches logging off for the rest of
// the process, so a user who runs no server pays for one failed attach and then
// a single integer test per call. Once a server has been reached, every call
// looks for it again, so a restarted server picks up where it left off.
// No error ever leaves DebugLog.
#ifndef ZEPHYR_SUPPORT_DEBUG_LOG_H_
#define ZEPHYR_SUPPORT_DEBUG_LOG_H_

#include <atomic>
#include <cstdint>
#include <string_view>

#include "zephyr/support/variant.h"

namespace zephyr {

// The bus name, interface and object of the diagnostic server.
inline constexpr const char* kDebugServerName = "ZephyrDebug60.Application";
inline constexpr const char* kDebugServerPath = "/";
inline constexpr const char* kDebugServerMethod = "Send";

namespace debug_log_internal {
// 0 not yet known, 1 a server was reached at least once, -1 none was found.
extern std::atomic<int16_t> g_state;
void Send(std::string_view module, std::string_view procedure, const Variant& message) noexcept;
}  // namespace debug_log_internal

// True unless logging has been switched off; guards costly message building.
inline bool DebugLogEnabled() {
  return debug_log_internal::g_state.load(std::memory_order_relaxed) != -1;
}

// Sends (application, module, procedure, message as text) to the server.
template <typename Message>
inline void DebugLog(std::string_view module, std::string_view procedure, Message&& message) {
  if (!DebugLogEnabled()) return;
  debug_log_internal::Send(module, procedure, Variant(std::forward<Message>(message)));
}

// The latch state (0, 1 or -1) and the number of attach attempts so far.
int16_t DebugLogState();
uint64_t DebugLogAttachAttempts();
// Puts the latch back to "not yet known" and drops the bus connection; for
// tests that exercise the latch in one process.
void ResetDebugLogForTesting();

}  // namespace zephyr

#endif  // ZEPHYR_SUPPORT_DEBUG_LOG_H_
