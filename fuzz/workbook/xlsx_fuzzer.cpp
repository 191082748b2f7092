// Feeds arbitrary bytes to the xlsx reader.
#include "read_every_sheet.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  zephyr::fuzzing::ReadEverySheet(data, size, zephyr::excel::WorkbookFormat::kXlsx, "fuzz.xlsx");
  return 0;
}
