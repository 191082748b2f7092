// QtClipboard: the editor's Clipboard, the desktop clipboard of
// QGuiApplication. Without a QGuiApplication it reads empty and ignores
// writes.
#ifndef ZEPHYR_PLATFORM_QT_CLIPBOARD_H_
#define ZEPHYR_PLATFORM_QT_CLIPBOARD_H_

#include "zephyr/support/clipboard.h"

namespace zephyr::platform {

class QtClipboard : public Clipboard {
 public:
  std::string Text() const override;
  void SetText(const std::string& text) override;
};

}  // namespace zephyr::platform

#endif  // ZEPHYR_PLATFORM_QT_CLIPBOARD_H_
