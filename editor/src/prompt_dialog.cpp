#include "prompt_dialog.h"

#include <QDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace zephyr::editor {

PromptControls BuildPromptDialog(QDialog* dialog, const char* name, const QString& caption,
                                 const QString& label, const char* entry_name) {
  dialog->setObjectName(QString::fromLatin1(name));
  dialog->setWindowTitle(caption);
  dialog->setModal(true);
  PromptControls controls{new QLabel(label, dialog), new QLineEdit(dialog),
                          new QPushButton(QStringLiteral("OK"), dialog),
                          new QPushButton(QStringLiteral("Cancel"), dialog)};
  controls.label->setObjectName(QStringLiteral("lblInvalidKey"));
  controls.entry->setObjectName(QString::fromLatin1(entry_name));
  controls.ok->setObjectName(QStringLiteral("OKButton"));
  controls.ok->setDefault(true);
  controls.cancel->setObjectName(QStringLiteral("CancelButton"));
  auto* layout = new QVBoxLayout(dialog);
  layout->addWidget(controls.label);
  layout->addWidget(controls.entry);
  auto* buttons = new QHBoxLayout();
  buttons->addStretch();
  buttons->addWidget(controls.ok);
  buttons->addWidget(controls.cancel);
  layout->addLayout(buttons);
  return controls;
}

}  // namespace zephyr::editor
