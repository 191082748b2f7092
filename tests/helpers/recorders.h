// Test doubles for the user-facing interfaces: a Progress that records what
// it was told and a MessageBox that records messages and gives set answers.
#ifndef ZEPHYR_TESTS_HELPERS_RECORDERS_H_
#define ZEPHYR_TESTS_HELPERS_RECORDERS_H_

#include <deque>
#include <string>
#include <vector>

#include "zephyr/support/message_box.h"
#include "zephyr/support/progress.h"

namespace zephyr::testing {

class RecordingProgress : public Progress {
 public:
  void Show() override { shown = true, ++shows; }
  void Unload() override { shown = false, ++unloads; }
  void SetMessage(const std::string& text) override { message = text; }
  void SetMinimum(int32_t) override {}
  void SetMaximum(int32_t value) override { maximum = value; }
  void SetValue(int32_t value) override { this->value = value; }
  void ProcessEvents() override { ++events; }

  bool shown = false;
  int shows = 0, unloads = 0, events = 0;
  std::string message;
  int32_t maximum = -1, value = -1;
};

class ScriptedMessageBox : public MessageBox {
 public:
  MessageAnswer Show(const Message& message) override {
    shown.push_back(message);
    if (answers.empty()) return MessageAnswer::kOk;
    MessageAnswer answer = answers.front();
    answers.pop_front();
    return answer;
  }

  std::vector<Message> shown;
  std::deque<MessageAnswer> answers;
};

}  // namespace zephyr::testing

#endif  // ZEPHYR_TESTS_HELPERS_RECORDERS_H_
