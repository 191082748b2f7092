#include "zephyr/support/file_dialog.h"

#include "zephyr/support/debug_log.h"

namespace zephyr {

bool ShowSave(FileDialog& dialog, std::string& file_name, const FileDialogRequest& request) {
  DebugLog("mComdlg", "ShowSave", "");
  std::optional<std::string> chosen;
  try {
    chosen = dialog.ShowSave(request);
  } catch (...) {
    return false;  // a dialog that fails counts as cancelled
  }
  if (!chosen) return false;
  file_name = *chosen;
  return true;
}

}  // namespace zephyr
