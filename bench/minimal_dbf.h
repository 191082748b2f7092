// The smallest possible dBase III reader and writer for character columns:
// the baselines the table engine's bulk read and record-at-a-time write are
// measured against. No checks, no code-page conversion.
#ifndef ZEPHYR_BENCH_MINIMAL_DBF_H_
#define ZEPHYR_BENCH_MINIMAL_DBF_H_

#include <string>
#include <vector>

namespace zephyr::bench {

struct MinimalColumn {
  std::string name;
  int length;
};

// Reads the whole file in one go and slices out every value of every record
// (deleted ones included) as a string, record by record.
std::vector<std::string> MinimalRead(const std::string& path);

// Builds the complete file (header, descriptors, records, end-of-file byte)
// in one buffer and writes it with one call.
void MinimalWrite(const std::string& path, const std::vector<MinimalColumn>& columns,
                  const std::vector<std::vector<std::string>>& rows);

}  // namespace zephyr::bench

#endif  // ZEPHYR_BENCH_MINIMAL_DBF_H_
