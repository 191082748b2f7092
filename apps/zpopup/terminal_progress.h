// A progress bar on standard error: drawn only when standard error is a
// terminal and the work has lasted half a second, as one line that starts
// with its label and fits the terminal's width, redrawn only when its
// percentage changes.
#ifndef ZEPHYR_APPS_ZPOPUP_TERMINAL_PROGRESS_H_
#define ZEPHYR_APPS_ZPOPUP_TERMINAL_PROGRESS_H_

#include <chrono>

#include "zephyr/support/progress.h"

namespace zephyr::cli {

class TerminalProgress : public Progress {
 public:
  TerminalProgress();

  void Show() override;
  void Unload() override;
  void SetMessage(const std::string& message) override;
  void SetMinimum(int32_t minimum) override;
  void SetMaximum(int32_t maximum) override;
  void SetValue(int32_t value) override;

  // True once Show was called, drawn or not: opening a popup shows progress
  // when it has read the template and starts on the table.
  bool Started() const { return started_; }

 private:
  void Draw();

  bool enabled_;
  bool started_ = false;
  std::chrono::steady_clock::time_point shown_at_;
  bool shown_ = false;
  std::string message_;
  int32_t minimum_ = 0;
  int32_t maximum_ = 1;
  int32_t value_ = 0;
  int drawn_percent_ = -1;
};

}  // namespace zephyr::cli

#endif  // ZEPHYR_APPS_ZPOPUP_TERMINAL_PROGRESS_H_
