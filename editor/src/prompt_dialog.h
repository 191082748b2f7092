// The shape the editor's small question dialogs share: a label, one entry
// line, and OK and Cancel at the bottom right, named as the forms name them.
#ifndef ZEPHYR_EDITOR_PROMPT_DIALOG_H_
#define ZEPHYR_EDITOR_PROMPT_DIALOG_H_

#include <QString>

class QDialog;
class QLabel;
class QLineEdit;
class QPushButton;

namespace zephyr::editor {

struct PromptControls {
  QLabel* label;        // "lblInvalidKey"
  QLineEdit* entry;     // named by the caller
  QPushButton* ok;      // "OKButton", the default button
  QPushButton* cancel;  // "CancelButton"
};

// Makes the dialog modal with this caption and lays out its controls.
PromptControls BuildPromptDialog(QDialog* dialog, const char* name, const QString& caption,
                                 const QString& label, const char* entry_name);

}  // namespace zephyr::editor

#endif  // ZEPHYR_EDITOR_PROMPT_DIALOG_H_
