// frmNewKeyDialog: the modal dialog that asks for an item's code when the key
// step leaves no room, and the NewKeyPrompt that shows it.
#ifndef ZEPHYR_EDITOR_NEW_KEY_DIALOG_H_
#define ZEPHYR_EDITOR_NEW_KEY_DIALOG_H_

#include <QDialog>
#include <functional>
#include <memory>
#include <string>

#include "zephyr/editor/new_key_prompt.h"
#include "zephyr/support/message_box.h"

class QLabel;
class QLineEdit;
class QPushButton;

namespace zephyr::editor {

class NewKeyDialog : public QDialog {
  Q_OBJECT

 public:
  NewKeyDialog(std::shared_ptr<MessageBox> messages, QWidget* parent = nullptr);

  // "-1" until OK accepts a code; a blank or non-numeric entry is told and
  // the dialog stays open. One digit is padded to two.
  const std::string& NewKey() const { return new_key_; }

 private:
  void OkClicked();

  std::shared_ptr<MessageBox> messages_;
  std::string new_key_;
  QLabel* lblInvalidKey;
  QLineEdit* txtNewKey;
  QPushButton* OKButton;
  QPushButton* CancelButton;
};

// Shows a fresh NewKeyDialog for every question.
class DialogNewKeyPrompt : public NewKeyPrompt {
 public:
  // messages answers the message box in use when the dialog opens.
  DialogNewKeyPrompt(QWidget* owner, std::function<std::shared_ptr<MessageBox>()> messages)
      : owner_(owner), messages_(std::move(messages)) {}
  std::string AskNewKey() override;

 private:
  QWidget* owner_;
  std::function<std::shared_ptr<MessageBox>()> messages_;
};

}  // namespace zephyr::editor

#endif  // ZEPHYR_EDITOR_NEW_KEY_DIALOG_H_
