#include "zephyr/support/message_box.h"

#include <errno.h>

#include <cstdio>

namespace zephyr {

std::string DefaultMessageTitle() {
  return program_invocation_short_name;
}

MessageAnswer StderrMessageBox::Show(const Message& message) {
  std::string title = message.title.empty() ? DefaultMessageTitle() : message.title;
  std::fprintf(stderr, "%s: %s\n", title.c_str(), message.prompt.c_str());
  switch (message.buttons) {
    case MessageButtons::kYesNoCancel:
    case MessageButtons::kYesNo:
      return MessageAnswer::kYes;
    default:
      return MessageAnswer::kOk;
  }
}

}  // namespace zephyr
