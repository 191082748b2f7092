// NewKeyPrompt: how the editor asks for an item's two-digit code when the key
// step leaves no room between its siblings' codes.
#ifndef ZEPHYR_EDITOR_NEW_KEY_PROMPT_H_
#define ZEPHYR_EDITOR_NEW_KEY_PROMPT_H_

#include <string>

namespace zephyr::editor {

// The text standing for a cancelled question.
inline constexpr const char* kCancelledNewKey = "-1";

class NewKeyPrompt {
 public:
  virtual ~NewKeyPrompt() = default;
  // The code the user typed (one digit already padded to two), or "-1" when
  // the user cancelled.
  virtual std::string AskNewKey() = 0;
};

}  // namespace zephyr::editor

#endif  // ZEPHYR_EDITOR_NEW_KEY_PROMPT_H_
