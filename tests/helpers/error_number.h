// The number of the error a piece of code raises, or 0 when it raises none.
#ifndef ZEPHYR_TESTS_HELPERS_ERROR_NUMBER_H_
#define ZEPHYR_TESTS_HELPERS_ERROR_NUMBER_H_

#include <cstdint>

#include "zephyr/support/errors.h"

namespace zephyr::testing {

template <typename Body>
int32_t ErrorNumberOf(Body body) {
  try {
    body();
  } catch (const Error& error) {
    return error.Number();
  }
  return 0;
}

}  // namespace zephyr::testing

#endif  // ZEPHYR_TESTS_HELPERS_ERROR_NUMBER_H_
