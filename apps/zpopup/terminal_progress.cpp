#include "terminal_progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace zephyr::cli {

namespace {
constexpr int kBarWidth = 30;
}  // namespace

TerminalProgress::TerminalProgress() : enabled_(::isatty(STDERR_FILENO) == 1) {}

void TerminalProgress::Show() {
  started_ = true;
  shown_ = enabled_;
  drawn_percent_ = -1;
  Draw();
}

void TerminalProgress::Unload() {
  if (!shown_) return;
  std::fputs("\r\033[K", stderr);
  std::fflush(stderr);
  shown_ = false;
}

void TerminalProgress::SetMessage(const std::string& message) {
  message_ = message;
  drawn_percent_ = -1;
  Draw();
}

void TerminalProgress::SetMinimum(int32_t minimum) {
  minimum_ = minimum;
  Draw();
}

void TerminalProgress::SetMaximum(int32_t maximum) {
  maximum_ = maximum;
  Draw();
}

void TerminalProgress::SetValue(int32_t value) {
  value_ = value;
  Draw();
}

void TerminalProgress::Draw() {
  if (!shown_) return;
  int64_t span = std::max<int64_t>(1, int64_t{maximum_} - minimum_);
  int64_t done = std::clamp<int64_t>(int64_t{value_} - minimum_, 0, span);
  int percent = static_cast<int>(done * 100 / span);
  if (percent == drawn_percent_) return;
  drawn_percent_ = percent;
  int filled = percent * kBarWidth / 100;
  std::fprintf(stderr, "\r\033[K%s [%.*s%*s] %3d%%", message_.c_str(), filled,
               "##############################", kBarWidth - filled, "", percent);
  std::fflush(stderr);
}

}  // namespace zephyr::cli
