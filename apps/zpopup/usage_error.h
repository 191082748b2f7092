// A usage error of a command: RunCommand prints the message, then the
// command's usage, and exits 2.
#ifndef ZEPHYR_APPS_ZPOPUP_USAGE_ERROR_H_
#define ZEPHYR_APPS_ZPOPUP_USAGE_ERROR_H_

#include <string>

namespace zephyr::cli {

struct UsageError {
  std::string message;
};

}  // namespace zephyr::cli

#endif  // ZEPHYR_APPS_ZPOPUP_USAGE_ERROR_H_
