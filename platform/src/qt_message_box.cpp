#include "zephyr/platform/qt_message_box.h"

#include <QAbstractButton>
#include <QApplication>
#include <QIcon>
#include <QMessageBox>
#include <QPushButton>
#include <vector>

#include "window_activation.h"

namespace zephyr::platform {

namespace {

std::vector<QMessageBox::StandardButton> ButtonsOf(MessageButtons buttons) {
  switch (buttons) {
    case MessageButtons::kOkHelp:
      return {QMessageBox::Ok, QMessageBox::Help};
    case MessageButtons::kYesNoCancel:
      return {QMessageBox::Yes, QMessageBox::No, QMessageBox::Cancel};
    case MessageButtons::kYesNo:
      return {QMessageBox::Yes, QMessageBox::No};
    case MessageButtons::kOkCancel:
      return {QMessageBox::Ok, QMessageBox::Cancel};
    case MessageButtons::kOk:
      break;
  }
  return {QMessageBox::Ok};
}

QMessageBox::Icon IconOf(MessageIcon icon) {
  switch (icon) {
    case MessageIcon::kCritical:
      return QMessageBox::Critical;
    case MessageIcon::kQuestion:
      return QMessageBox::Question;
    case MessageIcon::kExclamation:
      return QMessageBox::Warning;
    case MessageIcon::kInformation:
      return QMessageBox::Information;
    case MessageIcon::kNone:
      break;
  }
  return QMessageBox::NoIcon;
}

QMessageBox::StandardButton EscapeButtonOf(
    const std::vector<QMessageBox::StandardButton>& buttons) {
  for (auto wanted : {QMessageBox::Cancel, QMessageBox::No}) {
    for (auto button : buttons) {
      if (button == wanted) return button;
    }
  }
  return QMessageBox::Ok;
}

MessageAnswer AnswerOf(QMessageBox::StandardButton button) {
  switch (button) {
    case QMessageBox::Cancel:
      return MessageAnswer::kCancel;
    case QMessageBox::Yes:
      return MessageAnswer::kYes;
    case QMessageBox::No:
      return MessageAnswer::kNo;
    case QMessageBox::Help:
      return MessageAnswer::kHelp;
    default:
      return MessageAnswer::kOk;
  }
}

}  // namespace

MessageAnswer QtMessageBox::Show(const Message& message) {
  if (!qobject_cast<QApplication*>(QCoreApplication::instance())) {
    return StderrMessageBox().Show(message);
  }
  QString text = QString::fromStdString(message.prompt);
  text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
  text.replace(QLatin1Char('\r'), QLatin1Char('\n'));
  const std::string& title = message.title.empty() ? DefaultMessageTitle() : message.title;

  QMessageBox box(owner_);
  box.setTextFormat(Qt::PlainText);  // a prompt is never markup
  box.setText(text);
  box.setWindowTitle(QString::fromStdString(title));
  box.setIcon(IconOf(message.icon));
  std::vector<QMessageBox::StandardButton> buttons = ButtonsOf(message.buttons);
  for (size_t i = 0; i < buttons.size(); ++i) {
    QPushButton* added = box.addButton(buttons[i]);
    if (i < message.button_texts.size()) {
      // A button named for what it does loses the standard button's icon,
      // which would say Yes or No.
      added->setText(QString::fromStdString(message.button_texts[i]));
      added->setIcon(QIcon());
    }
  }
  size_t default_index =
      message.default_button >= 1 && static_cast<size_t>(message.default_button) <= buttons.size()
          ? static_cast<size_t>(message.default_button) - 1
          : 0;
  box.setDefaultButton(buttons[default_index]);
  QMessageBox::StandardButton escape = EscapeButtonOf(buttons);
  box.setEscapeButton(escape);

  box.exec();
  ReactivateOwnerWindow(owner_);
  QAbstractButton* clicked = box.clickedButton();
  return AnswerOf(clicked ? box.standardButton(clicked) : escape);
}

}  // namespace zephyr::platform
