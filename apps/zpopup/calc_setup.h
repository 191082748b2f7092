// zpopup calc-setup: makes LibreOffice Calc listen on the pipe the import and
// export reach it by, from its next start.
#ifndef ZEPHYR_APPS_ZPOPUP_CALC_SETUP_H_
#define ZEPHYR_APPS_ZPOPUP_CALC_SETUP_H_

#include "commands.h"

namespace zephyr::cli {

int CalcSetup(const Arguments& args);

extern const char* const kCalcSetupUsage;

}  // namespace zephyr::cli

#endif  // ZEPHYR_APPS_ZPOPUP_CALC_SETUP_H_
