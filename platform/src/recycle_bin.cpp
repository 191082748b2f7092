#include "zephyr/platform/recycle_bin.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

namespace zephyr::platform {

bool RecycleFiles(const std::vector<std::string>& paths) {
  bool all = true;
  try {
    // Qt makes the home trash only inside an existing data folder, which a
    // fresh account may not have yet.
    QDir().mkpath(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation));
  } catch (...) {
  }
  for (const std::string& path : paths) {
    try {
      if (path.empty() || !QFile::moveToTrash(QString::fromStdString(path))) all = false;
    } catch (...) {
      all = false;
    }
  }
  return all;
}

}  // namespace zephyr::platform
