// The zpopup command: its arguments (without the program's name) in, its
// exit code out (see commands.h); what it says goes to standard output and
// standard error.
#ifndef ZEPHYR_APPS_ZPOPUP_RUN_H_
#define ZEPHYR_APPS_ZPOPUP_RUN_H_

#include "commands.h"

namespace zephyr::cli {

int Main(Arguments args);

}  // namespace zephyr::cli

#endif  // ZEPHYR_APPS_ZPOPUP_RUN_H_
