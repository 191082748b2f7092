// How the command line answers the import's questions: from options when
// given, by asking on the terminal otherwise, and by refusing (cancel) when
// there is no terminal to ask on.
#ifndef ZEPHYR_APPS_ZPOPUP_CLI_PROMPTS_H_
#define ZEPHYR_APPS_ZPOPUP_CLI_PROMPTS_H_

#include <optional>

#include "zephyr/excel/excel_import.h"
#include "zephyr/support/message_box.h"

namespace zephyr::cli {

// Prints messages on standard error; answers Yes/No/Cancel questions with
// the preset answer, else on the terminal, else Cancel.
class TerminalMessageBox : public MessageBox {
 public:
  explicit TerminalMessageBox(std::optional<MessageAnswer> preset) : preset_(preset) {}
  MessageAnswer Show(const Message& message) override;

 private:
  std::optional<MessageAnswer> preset_;
};

// The level count from --levels, else asked on the terminal, else -1.
class TerminalLevelPrompt : public excel::LevelPrompt {
 public:
  explicit TerminalLevelPrompt(std::optional<int> preset) : preset_(preset) {}
  int PromptForLevels() override;

 private:
  std::optional<int> preset_;
};

}  // namespace zephyr::cli

#endif  // ZEPHYR_APPS_ZPOPUP_CLI_PROMPTS_H_
