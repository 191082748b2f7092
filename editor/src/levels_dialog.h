// frmLevels: the modal dialog that asks how many question levels a sheet
// without keys holds, and the LevelPrompt of the import that shows it.
#ifndef ZEPHYR_EDITOR_LEVELS_DIALOG_H_
#define ZEPHYR_EDITOR_LEVELS_DIALOG_H_

#include <QDialog>
#include <memory>

#include "zephyr/excel/excel_import.h"
#include "zephyr/support/message_box.h"

class QLabel;
class QLineEdit;
class QPushButton;

namespace zephyr::editor {

class LevelsDialog : public QDialog {
  Q_OBJECT

 public:
  LevelsDialog(std::shared_ptr<MessageBox> messages, QWidget* parent = nullptr);

  // -1 until OK accepts a numeric entry; a non-numeric one is told and the
  // dialog stays open.
  int LevelCount() const { return level_count_; }

 private:
  void OkClicked();
  void CancelClicked();

  std::shared_ptr<MessageBox> messages_;
  int level_count_ = -1;
  QLabel* lblInvalidKey;
  QLineEdit* txtLevel;
  QPushButton* OKButton;
  QPushButton* CancelButton;
};

// Shows a fresh LevelsDialog for every question.
class DialogLevelPrompt : public excel::LevelPrompt {
 public:
  DialogLevelPrompt(QWidget* owner, std::shared_ptr<MessageBox> messages)
      : owner_(owner), messages_(std::move(messages)) {}
  int PromptForLevels() override;

 private:
  QWidget* owner_;
  std::shared_ptr<MessageBox> messages_;
};

}  // namespace zephyr::editor

#endif  // ZEPHYR_EDITOR_LEVELS_DIALOG_H_
