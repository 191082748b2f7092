// zpopup: create, inspect and check popups from the command line.
#include "run.h"

int main(int argc, char** argv) {
  return zephyr::cli::Main(zephyr::cli::Arguments(argv + 1, argv + argc));
}
