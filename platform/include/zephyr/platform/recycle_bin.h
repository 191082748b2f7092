// RecycleFiles: moves files to the user's trash, from where they can be
// restored, rather than deleting them.
#ifndef ZEPHYR_PLATFORM_RECYCLE_BIN_H_
#define ZEPHYR_PLATFORM_RECYCLE_BIN_H_

#include <string>
#include <vector>

namespace zephyr::platform {

// Tries every path (UTF-8) in turn. True when all were moved (so for an empty
// list), false when any was not, a missing file included. Never throws.
bool RecycleFiles(const std::vector<std::string>& paths);

}  // namespace zephyr::platform

#endif  // ZEPHYR_PLATFORM_RECYCLE_BIN_H_
