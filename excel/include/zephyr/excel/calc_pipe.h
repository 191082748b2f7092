// The named pipe a running LibreOffice Calc listens on for imports and
// exports: $ZEPHYR_CALC_PIPE, else "zephyrpopup".
#ifndef ZEPHYR_EXCEL_CALC_PIPE_H_
#define ZEPHYR_EXCEL_CALC_PIPE_H_

#include <string>

namespace zephyr::excel {

std::string CalcPipeName();

}  // namespace zephyr::excel

#endif  // ZEPHYR_EXCEL_CALC_PIPE_H_
