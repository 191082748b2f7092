// The body of the workbook reader fuzzers: arbitrary bytes opened as one
// format, every sheet read. Reading must end in a sheet or a WorkbookError;
// a crash, a hang, a sanitizer report or another exception is a finding.
#ifndef ZEPHYR_FUZZ_WORKBOOK_READ_EVERY_SHEET_H_
#define ZEPHYR_FUZZ_WORKBOOK_READ_EVERY_SHEET_H_

#include <cstddef>
#include <cstdint>
#include <string>

#include "zephyr/excel/workbook.h"

namespace zephyr::fuzzing {

inline void ReadEverySheet(const uint8_t* data, size_t size, excel::WorkbookFormat format,
                           const char* name) {
  try {
    auto workbook = excel::OpenWorkbookBytes(std::string(reinterpret_cast<const char*>(data), size),
                                             format, name);
    if (workbook->ActiveSheet() >= workbook->Sheets().size()) __builtin_trap();
    for (size_t i = 0; i < workbook->Sheets().size(); ++i) {
      try {
        workbook->ReadSheet(i);
      } catch (const excel::WorkbookError&) {
        // One bad sheet does not stop the others from being read.
      }
    }
  } catch (const excel::WorkbookError&) {
    // Rejecting damaged input with an error is the expected outcome.
  }
}

}  // namespace zephyr::fuzzing

#endif  // ZEPHYR_FUZZ_WORKBOOK_READ_EVERY_SHEET_H_
