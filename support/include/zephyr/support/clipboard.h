// Clipboard: the text the user copied, as the editor's Copy and Paste see it.
// The desktop clipboard in the editor; a plain string in tests.
#ifndef ZEPHYR_SUPPORT_CLIPBOARD_H_
#define ZEPHYR_SUPPORT_CLIPBOARD_H_

#include <string>

namespace zephyr {

class Clipboard {
 public:
  virtual ~Clipboard() = default;
  // The clipboard's text (UTF-8); empty when it holds no text.
  virtual std::string Text() const = 0;
  virtual void SetText(const std::string& text) = 0;
};

}  // namespace zephyr

#endif  // ZEPHYR_SUPPORT_CLIPBOARD_H_
