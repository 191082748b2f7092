// FileDialog: how the component asks the user for a file to save under or to
// read. The editor shows the desktop's dialogs, tests answer with scripted names.
#ifndef ZEPHYR_SUPPORT_FILE_DIALOG_H_
#define ZEPHYR_SUPPORT_FILE_DIALOG_H_

#include <optional>
#include <string>

namespace zephyr {

struct FileDialogRequest {
  std::string title;
  // Pairs of description and pattern, every part ended by "|":
  // "Zephyr Popup File (*.zpt)|*.zpt".
  std::string filter;
  std::string initial_folder;
  // The name proposed in the dialog's name box.
  std::string file_name;
  // Appended when the user types a name without an extension; may be empty.
  // Save dialogs only.
  std::string default_extension;
  // Centre the dialog on its owner rather than where the desktop puts it.
  bool centre = false;
};

class FileDialog {
 public:
  virtual ~FileDialog() = default;
  // The full path the user confirmed, or nothing when the dialog was cancelled
  // or could not be shown.
  virtual std::optional<std::string> ShowSave(const FileDialogRequest& request) = 0;
  // The full path of an existing file the user picked, or nothing when the
  // dialog was cancelled or could not be shown.
  virtual std::optional<std::string> ShowOpen(const FileDialogRequest& request) = 0;
};

// Logs the request and runs the dialog; on confirmation stores the chosen
// path in file_name and answers true, otherwise leaves it and answers false.
bool ShowSave(FileDialog& dialog, std::string& file_name, const FileDialogRequest& request);

}  // namespace zephyr

#endif  // ZEPHYR_SUPPORT_FILE_DIALOG_H_
