#include "levels_dialog.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <climits>
#include <cmath>

#include "design_list_models.h"
#include "prompt_dialog.h"
#include "zephyr/support/debug_log.h"
#include "zephyr/support/variant.h"

namespace zephyr::editor {

namespace {

constexpr const char* kDialogModule = "frmLevels";
// The cancel handler has always logged under this spelling.
constexpr const char* kCancelModule = "frmLevles";

// The whole number nearest the entry, halves to even, kept within int.
int ToLevelCount(double number) {
  double rounded = std::nearbyint(number);
  if (rounded >= INT_MAX) return INT_MAX;
  if (rounded <= INT_MIN) return INT_MIN;
  return static_cast<int>(rounded);
}

}  // namespace

LevelsDialog::LevelsDialog(std::shared_ptr<MessageBox> messages, QWidget* parent)
    : QDialog(parent), messages_(std::move(messages)) {
  DebugLog(kDialogModule, "Form_Load", "");
  PromptControls controls =
      BuildPromptDialog(this, "frmLevels", QString::fromLatin1(excel::kLevelPromptCaption),
                        QStringLiteral("No keys were found in the first column of the sheet.\n"
                                       "How many of its columns are question levels?"),
                        "txtLevel");
  lblInvalidKey = controls.label;
  txtLevel = controls.entry;
  OKButton = controls.ok;
  CancelButton = controls.cancel;
  connect(OKButton, &QPushButton::clicked, this, [this]() { OkClicked(); });
  connect(CancelButton, &QPushButton::clicked, this, [this]() { CancelClicked(); });
}

void LevelsDialog::OkClicked() {
  DebugLog(kDialogModule, "OKButton_Click", "");
  double number = 0;
  if (!ParseNumber(ToUtf8(txtLevel->text()), &number)) {
    Message message;
    message.prompt = excel::kInvalidLevelCount;
    messages_->Show(message);
    txtLevel->setFocus();
    return;
  }
  level_count_ = ToLevelCount(number);
  accept();
}

void LevelsDialog::CancelClicked() {
  DebugLog(kCancelModule, "CancelButton_Click", "");
  level_count_ = -1;
  reject();
}

int DialogLevelPrompt::PromptForLevels() {
  LevelsDialog dialog(messages_, owner_);
  dialog.exec();
  return dialog.LevelCount();
}

}  // namespace zephyr::editor
