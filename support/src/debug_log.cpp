#include "zephyr/support/debug_log.h"

#include <dbus/dbus.h>
#include <errno.h>

#include <cstdlib>
#include <mutex>
#include <string>

namespace zephyr {

namespace debug_log_internal {
std::atomic<int16_t> g_state{0};
}  // namespace debug_log_internal

namespace {

std::atomic<uint64_t> g_attach_attempts{0};

// D-Bus strings must be valid UTF-8; anything else would be refused, so
// malformed bytes are replaced by "?".
std::string ValidUtf8(std::string_view text) {
  std::string result(text);
  if (dbus_validate_utf8(result.c_str(), nullptr)) return result;
  std::string cleaned;
  for (char c : result) cleaned.push_back(static_cast<unsigned char>(c) < 0x80 ? c : '?');
  return cleaned;
}

// A private connection to the session bus, opened on demand and reopened
// when the bus went away. It never starts a bus: without a session bus
// address there is no server.
class SessionBus {
 public:
  ~SessionBus() { Drop(); }

  DBusConnection* Connection() {
    if (connection_ && dbus_connection_get_is_connected(connection_)) return connection_;
    Drop();
    const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    if (!address || !*address) return nullptr;
    DBusError error;
    dbus_error_init(&error);
    connection_ = dbus_connection_open_private(address, &error);
    if (!connection_) {
      dbus_error_free(&error);
      return nullptr;
    }
    dbus_connection_set_exit_on_disconnect(connection_, FALSE);
    if (!dbus_bus_register(connection_, &error)) {
      dbus_error_free(&error);
      Drop();
    }
    return connection_;
  }

  void Drop() {
    if (!connection_) return;
    dbus_connection_close(connection_);
    dbus_connection_unref(connection_);
    connection_ = nullptr;
  }

 private:
  DBusConnection* connection_ = nullptr;
};

std::mutex g_bus_mutex;
SessionBus g_bus;

// Attaching means the server's name has an owner right now.
bool ServerRunning(DBusConnection* connection) {
  DBusError error;
  dbus_error_init(&error);
  bool owned = dbus_bus_name_has_owner(connection, kDebugServerName, &error);
  dbus_error_free(&error);
  return owned;
}

void CallSend(DBusConnection* connection, std::string_view module, std::string_view procedure,
              const std::string& message) {
  DBusMessage* call = dbus_message_new_method_call(kDebugServerName, kDebugServerPath,
                                                   kDebugServerName, kDebugServerMethod);
  if (!call) return;
  std::string fields[4] = {ValidUtf8(program_invocation_short_name), ValidUtf8(module),
                           ValidUtf8(procedure), ValidUtf8(message)};
  const char* pointers[4] = {fields[0].c_str(), fields[1].c_str(), fields[2].c_str(),
                             fields[3].c_str()};
  if (dbus_message_append_args(call, DBUS_TYPE_STRING, &pointers[0], DBUS_TYPE_STRING, &pointers[1],
                               DBUS_TYPE_STRING, &pointers[2], DBUS_TYPE_STRING, &pointers[3],
                               DBUS_TYPE_INVALID)) {
    dbus_message_set_no_reply(call, TRUE);
    dbus_connection_send(connection, call, nullptr);
    dbus_connection_flush(connection);
  }
  dbus_message_unref(call);
}

}  // namespace

namespace debug_log_internal {

void Send(std::string_view module, std::string_view procedure, const Variant& message) noexcept {
  try {
    std::lock_guard lock(g_bus_mutex);
    if (g_state.load(std::memory_order_relaxed) == -1) return;
    g_attach_attempts.fetch_add(1, std::memory_order_relaxed);
    DBusConnection* connection = g_bus.Connection();
    if (!connection || !ServerRunning(connection)) {
      int16_t unknown = 0;
      g_state.compare_exchange_strong(unknown, -1);
      return;
    }
    g_state.store(1, std::memory_order_relaxed);
    CallSend(connection, module, procedure, message.ToText());
  } catch (...) {
    // Logging never disturbs the caller.
  }
}

}  // namespace debug_log_internal

int16_t DebugLogState() {
  return debug_log_internal::g_state.load(std::memory_order_relaxed);
}

uint64_t DebugLogAttachAttempts() {
  return g_attach_attempts.load(std::memory_order_relaxed);
}

void ResetDebugLogForTesting() {
  std::lock_guard lock(g_bus_mutex);
  g_bus.Drop();
  debug_log_internal::g_state.store(0, std::memory_order_relaxed);
  g_attach_attempts.store(0, std::memory_order_relaxed);
}

}  // namespace zephyr
