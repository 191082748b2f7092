// The zpopup commands. Each takes its arguments (after the command name) and
// returns the exit code: 0 success, 1 the command ran and found problems,
// 2 usage errors or unreadable input. Errors of the component propagate.
#ifndef ZEPHYR_APPS_ZPOPUP_COMMANDS_H_
#define ZEPHYR_APPS_ZPOPUP_COMMANDS_H_

#include <memory>
#include <string>
#include <vector>

#include "popup_name.h"
#include "terminal_progress.h"

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

// Reads a POPUP argument; a folder that holds no such popup is a FileError.
PopupName ParsePopup(const std::string& argument);

// Opens a popup that must exist, with a progress bar while it loads; a
// missing popup raises file not found. Errors come as FileErrors.
std::unique_ptr<PopupClass> OpenExisting(const PopupName& name);

// Opens the popup that `name` was applied to, whose progress goes to
// `progress`. An error comes as a FileError for the file being read: the
// table once progress has started for it, else the template.
void OpenPopupFiles(PopupClass& popup, const PopupName& name, const TerminalProgress& progress);

// Runs a command: its usage for --help, a usage error's message and the usage
// on standard error (exit 2), otherwise the command's own exit code.
int RunCommand(const Command& command, const Arguments& args);

}  // namespace zephyr::cli

#endif  // ZEPHYR_APPS_ZPOPUP_COMMANDS_H_
