// The zpopup commands. Each takes its arguments (after the command name) and
// returns the exit code: 0 success, 1 the command ran and found problems,
// 2 usage errors or unreadable input. Errors of the component propagate.
#ifndef ZEPHYR_APPS_ZPOPUP_COMMANDS_H_
#define ZEPHYR_APPS_ZPOPUP_COMMANDS_H_

#include <string>
#include <vector>

namespace zephyr::cli {

using Arguments = std::vector<std::string>;

inline constexpr int kSuccess = 0;
inline constexpr int kProblemsFound = 1;
inline constexpr int kUsageError = 2;

struct Command {
  const char* name;
  const char* summary;
  const char* usage;
  int (*run)(const Arguments& args);
};

// Every command, in the order the help lists them.
const std::vector<Command>& Commands();

// Runs a command: its usage for --help, a usage error's message and the usage
// on standard error (exit 2), otherwise the command's own exit code.
int RunCommand(const Command& command, const Arguments& args);

}  // namespace zephyr::cli

#endif  // ZEPHYR_APPS_ZPOPUP_COMMANDS_H_
