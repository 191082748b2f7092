#include "cli_prompts.h"

#include <unistd.h>

#include <cstdio>
#include <iostream>
#include <string>

#include "zephyr/support/variant.h"

namespace zephyr::cli {

namespace {

bool CanAsk() {
  return ::isatty(STDIN_FILENO) == 1 && ::isatty(STDERR_FILENO) == 1;
}

// The message as terminal lines: CR LF pairs become line breaks.
std::string Lines(const std::string& text) {
  std::string lines;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') continue;
    lines.push_back(text[i]);
  }
  return lines;
}

}  // namespace

MessageAnswer TerminalMessageBox::Show(const Message& message) {
  bool question = message.buttons == MessageButtons::kYesNoCancel;
  if (question && preset_) return *preset_;  // answered by an option: nothing to show
  std::string title = message.title.empty() ? DefaultMessageTitle() : message.title;
  std::fprintf(stderr, "%s: %s\n", title.c_str(), Lines(message.prompt).c_str());
  if (!question) return MessageAnswer::kOk;
  if (!CanAsk()) {
    std::fputs("zpopup: no answer given (use --structure popup or --structure sheet)\n", stderr);
    return MessageAnswer::kCancel;
  }
  while (true) {
    std::fputs("[y]es / [n]o / [c]ancel? ", stderr);
    std::string answer;
    if (!std::getline(std::cin, answer)) return MessageAnswer::kCancel;
    if (answer == "y" || answer == "yes") return MessageAnswer::kYes;
    if (answer == "n" || answer == "no") return MessageAnswer::kNo;
    if (answer == "c" || answer == "cancel") return MessageAnswer::kCancel;
  }
}

int TerminalLevelPrompt::PromptForLevels() {
  if (preset_) return *preset_;
  if (!CanAsk()) {
    std::fprintf(stderr,
                 "%s: the sheet has no keys; how many question levels does it have? "
                 "(use --levels N)\n",
                 excel::kLevelPromptCaption);
    return -1;
  }
  while (true) {
    std::fprintf(stderr, "%s (empty to cancel): ", excel::kLevelPromptCaption);
    std::string answer;
    if (!std::getline(std::cin, answer) || answer.empty()) return -1;
    double count = 0;
    if (ParseNumber(answer, &count) && count >= 1 && count <= 99 &&
        count == static_cast<int>(count)) {
      return static_cast<int>(count);
    }
    std::fprintf(stderr, "%s\n", excel::kInvalidLevelCount);
  }
}

}  // namespace zephyr::cli
