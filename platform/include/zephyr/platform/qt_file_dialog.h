// QtFileDialog: the editor's FileDialog, Qt's own file dialogs (never the
// desktop's native one, which can be neither centred nor driven by tests).
// It asks before overwriting an existing file and appends the default
// extension to a name typed without one.
#ifndef ZEPHYR_PLATFORM_QT_FILE_DIALOG_H_
#define ZEPHYR_PLATFORM_QT_FILE_DIALOG_H_

#include <QPointer>
#include <QStringList>
#include <QWidget>
#include <string_view>

#include "zephyr/support/file_dialog.h"

namespace zephyr::platform {

class QtFileDialog : public FileDialog {
 public:
  // The owner may be null and may be destroyed before this object.
  explicit QtFileDialog(QWidget* owner = nullptr) : owner_(owner) {}

  QWidget* Owner() const { return owner_; }
  void SetOwner(QWidget* owner) { owner_ = owner; }

  // The absolute path the user confirmed; nothing on cancel or without a
  // QApplication.
  std::optional<std::string> ShowSave(const FileDialogRequest& request) override;
  std::optional<std::string> ShowOpen(const FileDialogRequest& request) override;

 private:
  std::optional<std::string> Run(const FileDialogRequest& request, bool save);

  QPointer<QWidget> owner_;
};

// Converts "|"-separated description and pattern pairs to Qt name filters,
// one per pair: "Text (*.txt)|*.txt|All (*.*)|*.*" gives "Text (*.txt)" and
// "All (*.*)". A description that does not already end with its patterns in
// parentheses gets them appended; patterns separated by ";" are joined by
// spaces. A trailing description without a pattern is dropped.
QStringList ToQtNameFilters(std::string_view filter);

}  // namespace zephyr::platform

#endif  // ZEPHYR_PLATFORM_QT_FILE_DIALOG_H_
