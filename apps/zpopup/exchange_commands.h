// The commands that move popups to and from workbooks.
#ifndef ZEPHYR_APPS_ZPOPUP_EXCHANGE_COMMANDS_H_
#define ZEPHYR_APPS_ZPOPUP_EXCHANGE_COMMANDS_H_

#include "commands.h"

namespace zephyr::cli {

int Import(const Arguments& args);
int Export(const Arguments& args);

extern const char* const kImportUsage;
extern const char* const kExportUsage;

}  // namespace zephyr::cli

#endif  // ZEPHYR_APPS_ZPOPUP_EXCHANGE_COMMANDS_H_
