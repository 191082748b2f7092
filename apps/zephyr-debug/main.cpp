// zephyr-debug: the diagnostic server. It owns the bus name
// "ZephyrDebug60.Application" on the D-Bus session bus and prints every line
// the component sends: time, application, module, procedure and message,
// separated by tabs, one line each.
#include <dbus/dbus.h>
#include <sys/time.h>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string>

#include "zephyr/support/debug_log.h"

namespace {

volatile std::sig_atomic_t g_stop = 0;

void OnSignal(int) {
  g_stop = 1;
}

// Tabs and line breaks inside a field would break the one-line-per-message
// output, so they are written as \t, \r and \n.
std::string Escaped(const char* text) {
  std::string out;
  for (const char* p = text; *p; ++p) {
    switch (*p) {
      case '\t':
        out += "\\t";
        break;
      case '\n':
        out += "\\n";
        break;
      case '\r':
        out += "\\r";
        break;
      case '\\':
        out += "\\\\";
        break;
      default:
        out.push_back(*p);
    }
  }
  return out;
}

std::string Now() {
  timeval now;
  gettimeofday(&now, nullptr);
  tm local;
  localtime_r(&now.tv_sec, &local);
  char text[64];
  size_t length = std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
  std::snprintf(text + length, sizeof text - length, ".%03ld",
                static_cast<long>(now.tv_usec / 1000));
  return text;
}

DBusHandlerResult OnMessage(DBusConnection* connection, DBusMessage* message, void*) {
  if (!dbus_message_is_method_call(message, zephyr::kDebugServerName, zephyr::kDebugServerMethod)) {
    return DBUS_HANDLER_RESULT_NOT_YET_HANDLED;
  }
  const char* fields[4] = {};
  DBusError error;
  dbus_error_init(&error);
  DBusMessage* reply = nullptr;
  if (dbus_message_get_args(message, &error, DBUS_TYPE_STRING, &fields[0], DBUS_TYPE_STRING,
                            &fields[1], DBUS_TYPE_STRING, &fields[2], DBUS_TYPE_STRING, &fields[3],
                            DBUS_TYPE_INVALID)) {
    std::printf("%s\t%s\t%s\t%s\t%s\n", Now().c_str(), Escaped(fields[0]).c_str(),
                Escaped(fields[1]).c_str(), Escaped(fields[2]).c_str(), Escaped(fields[3]).c_str());
    std::fflush(stdout);
    reply = dbus_message_new_method_return(message);
  } else {
    reply =
        dbus_message_new_error(message, DBUS_ERROR_INVALID_ARGS,
                               "Send takes four strings: application, module, procedure, message");
    dbus_error_free(&error);
  }
  if (reply && !dbus_message_get_no_reply(message))
    dbus_connection_send(connection, reply, nullptr);
  if (reply) dbus_message_unref(reply);
  return DBUS_HANDLER_RESULT_HANDLED;
}

int Usage(FILE* out, int code) {
  std::fprintf(out,
               "usage: zephyr-debug\n\n"
               "Owns the bus name %s on the D-Bus session bus and prints every\n"
               "diagnostic line the Zephyr Popup components send, one per line:\n"
               "time, application, module, procedure, message (tab-separated).\n"
               "Stop it with Ctrl+C.\n",
               zephyr::kDebugServerName);
  return code;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 1) {
    bool help = std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0;
    return Usage(help ? stdout : stderr, help ? 0 : 2);
  }
  const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
  if (!address || !*address) {
    std::fprintf(stderr,
                 "zephyr-debug: no D-Bus session bus (DBUS_SESSION_BUS_ADDRESS is not set)\n");
    return 1;
  }
  DBusError error;
  dbus_error_init(&error);
  DBusConnection* connection = dbus_bus_get(DBUS_BUS_SESSION, &error);
  if (!connection) {
    std::fprintf(stderr, "zephyr-debug: cannot connect to the session bus: %s\n", error.message);
    dbus_error_free(&error);
    return 1;
  }
  dbus_connection_set_exit_on_disconnect(connection, FALSE);
  int owned = dbus_bus_request_name(connection, zephyr::kDebugServerName,
                                    DBUS_NAME_FLAG_DO_NOT_QUEUE, &error);
  if (owned != DBUS_REQUEST_NAME_REPLY_PRIMARY_OWNER) {
    std::fprintf(stderr, "zephyr-debug: cannot own the name %s: %s\n", zephyr::kDebugServerName,
                 dbus_error_is_set(&error) ? error.message : "another server owns it");
    dbus_error_free(&error);
    return 1;
  }
  DBusObjectPathVTable table = {};
  table.message_function = OnMessage;
  dbus_connection_register_object_path(connection, zephyr::kDebugServerPath, &table, nullptr);

  std::signal(SIGINT, OnSignal);
  std::signal(SIGTERM, OnSignal);
  std::fprintf(stderr, "zephyr-debug: listening as %s\n", zephyr::kDebugServerName);
  while (!g_stop && dbus_connection_read_write_dispatch(connection, 200)) {
  }
  dbus_connection_unref(connection);
  return 0;
}
