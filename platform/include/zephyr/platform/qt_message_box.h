// QtMessageBox: the editor's MessageBox, a modal QMessageBox over an owner
// window. The prompt is shown as plain text (never as markup), with "\r\n"
// and "\r" as line breaks; an empty title shows DefaultMessageTitle().
// default_button counts the buttons in the order of their names (Yes = 1,
// No = 2, Cancel = 3); out of range, the first is the default. Escape answers
// Cancel when there is one, else No, else OK; Help answers kHelp. Without a
// QApplication the message goes to standard error, as StderrMessageBox does.
#ifndef ZEPHYR_PLATFORM_QT_MESSAGE_BOX_H_
#define ZEPHYR_PLATFORM_QT_MESSAGE_BOX_H_

#include <QPointer>
#include <QWidget>

#include "zephyr/support/message_box.h"

namespace zephyr::platform {

class QtMessageBox : public MessageBox {
 public:
  // The owner may be null (the box is then a top-level window) and may be
  // destroyed before this object.
  explicit QtMessageBox(QWidget* owner = nullptr) : owner_(owner) {}

  QWidget* Owner() const { return owner_; }
  void SetOwner(QWidget* owner) { owner_ = owner; }

  // Blocks until the user answers.
  MessageAnswer Show(const Message& message) override;

 private:
  QPointer<QWidget> owner_;
};

}  // namespace zephyr::platform

#endif  // ZEPHYR_PLATFORM_QT_MESSAGE_BOX_H_
