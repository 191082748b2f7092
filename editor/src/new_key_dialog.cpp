#include "zephyr/editor/new_key_dialog.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "design_list_models.h"
#include "prompt_dialog.h"
#include "zephyr/support/debug_log.h"
#include "zephyr/support/text.h"
#include "zephyr/support/variant.h"

namespace zephyr::editor {

namespace {

constexpr const char* kDialogModule = "frmNewKeyDialog";

}  // namespace

NewKeyDialog::NewKeyDialog(std::shared_ptr<MessageBox> messages, QWidget* parent)
    : QDialog(parent), messages_(std::move(messages)), new_key_(kCancelledNewKey) {
  DebugLog(kDialogModule, "Form_Load", "");
  PromptControls controls = BuildPromptDialog(
      this, "frmNewKeyDialog", QStringLiteral("Invalid Key Step"),
      QStringLiteral("Please enter key position for New Data Field:"), "txtNewKey");
  lblInvalidKey = controls.label;
  txtNewKey = controls.entry;
  OKButton = controls.ok;
  CancelButton = controls.cancel;
  connect(OKButton, &QPushButton::clicked, this, [this]() { OkClicked(); });
  connect(CancelButton, &QPushButton::clicked, this, &QDialog::reject);
}

void NewKeyDialog::OkClicked() {
  DebugLog(kDialogModule, "OKButton_Click", "");
  std::string text = ToUtf8(txtNewKey->text());
  Message message;
  if (Trim(text).empty()) {
    message.prompt = "Key cannot be blank. Please enter a unique number between 1-99";
    messages_->Show(message);
    return;
  }
  double number = 0;
  if (!ParseNumber(text, &number)) {
    message.prompt = "Key must be a numeric. Please enter a unique number between 1-99";
    messages_->Show(message);
    return;
  }
  if (text.size() < 2) {
    text = "0" + text;
    txtNewKey->setText(ToQString(text));
  }
  new_key_ = text;
  accept();
}

std::string DialogNewKeyPrompt::AskNewKey() {
  NewKeyDialog dialog(messages_(), owner_);
  dialog.exec();
  return dialog.NewKey();
}

}  // namespace zephyr::editor
