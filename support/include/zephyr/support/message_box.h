// MessageBox: how the component tells the user something or asks a question.
// The editor answers with a dialog, the command line on the terminal, tests
// with scripted answers.
#ifndef ZEPHYR_SUPPORT_MESSAGE_BOX_H_
#define ZEPHYR_SUPPORT_MESSAGE_BOX_H_

#include <string>
#include <vector>

namespace zephyr {

enum class MessageButtons { kOk, kOkHelp, kYesNoCancel, kYesNo, kOkCancel };
enum class MessageAnswer { kOk, kCancel, kYes, kNo, kHelp };
enum class MessageIcon { kNone, kCritical, kQuestion, kExclamation, kInformation };

struct Message {
  std::string prompt;
  MessageButtons buttons = MessageButtons::kOk;
  // Empty for the default title, the application's name.
  std::string title;
  MessageIcon icon = MessageIcon::kNone;
  // The 1-based button that Enter presses (2 is No in Yes/No).
  int default_button = 1;
  // The help file and topic a Help button opens, if any.
  std::string help_file;
  int help_context = 0;
  // Texts for the buttons, in their order, where the standard ones (Yes, No,
  // Cancel) would not say what they do; the answers stay the standard ones.
  std::vector<std::string> button_texts;
};

class MessageBox {
 public:
  virtual ~MessageBox() = default;
  virtual MessageAnswer Show(const Message& message) = 0;
};

// Writes the message to standard error and answers the first button (OK or
// Yes); the default for programs without a user interface.
class StderrMessageBox : public MessageBox {
 public:
  MessageAnswer Show(const Message& message) override;
};

// The title a message box shows when none was given: the program's name.
std::string DefaultMessageTitle();

}  // namespace zephyr

#endif  // ZEPHYR_SUPPORT_MESSAGE_BOX_H_
