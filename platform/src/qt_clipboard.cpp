#include "zephyr/platform/qt_clipboard.h"

#include <QClipboard>
#include <QGuiApplication>

namespace zephyr::platform {

namespace {

QClipboard* DesktopClipboard() {
  if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance())) return nullptr;
  return QGuiApplication::clipboard();
}

}  // namespace

std::string QtClipboard::Text() const {
  QClipboard* clipboard = DesktopClipboard();
  return clipboard ? clipboard->text().toStdString() : std::string();
}

void QtClipboard::SetText(const std::string& text) {
  if (QClipboard* clipboard = DesktopClipboard()) {
    clipboard->setText(QString::fromStdString(text));
  }
}

}  // namespace zephyr::platform
