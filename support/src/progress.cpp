#include "zephyr/support/progress.h"

namespace zephyr {

Progress& NoProgressIndicator() {
  static NoProgress none;
  return none;
}

}  // namespace zephyr
