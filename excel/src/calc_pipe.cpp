#include "zephyr/excel/calc_pipe.h"

#include <cstdlib>

namespace zephyr::excel {

std::string CalcPipeName() {
  const char* named = std::getenv("ZEPHYR_CALC_PIPE");
  return named && *named ? named : "zephyrpopup";
}

}  // namespace zephyr::excel
