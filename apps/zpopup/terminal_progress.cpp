#include "terminal_progress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace zephyr::cli {

namespace {

constexpr int kBarWidth = 30;
constexpr std::chrono::milliseconds kQuietTime{500};

int TerminalColumns() {
  winsize size{};
  if (::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
  return 80;
}

}  // namespace

TerminalProgress::TerminalProgress() : enabled_(::isatty(STDERR_FILENO) == 1) {}

void TerminalProgress::Show() {
  started_ = true;
  shown_ = enabled_;
  shown_at_ = std::chrono::steady_clock::now();
  drawn_percent_ = -1;
  Draw();
}

void TerminalProgress::Unload() {
  if (!shown_) return;
  if (drawn_percent_ >= 0) std::fputs("\r\033[K", stderr);
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
  if (!shown_ || std::chrono::steady_clock::now() - shown_at_ < kQuietTime) return;
  int64_t span = std::max<int64_t>(1, int64_t{maximum_} - minimum_);
  int64_t done = std::clamp<int64_t>(int64_t{value_} - minimum_, 0, span);
  int percent = static_cast<int>(done * 100 / span);
  if (percent == drawn_percent_) return;
  drawn_percent_ = percent;
  // "LABEL [####      ]  42%" in one line short of the width, so that the
  // terminal never wraps it; a narrow terminal gets a shorter bar and label.
  int columns = TerminalColumns() - 1;
  int bar = std::clamp(columns - 8 - static_cast<int>(message_.size()), 10, kBarWidth);
  int label = std::max(0, std::min(static_cast<int>(message_.size()), columns - bar - 8));
  int filled = percent * bar / 100;
  std::fprintf(stderr, "\r\033[K%.*s [%.*s%*s] %3d%%", label, message_.c_str(), filled,
               "##############################", bar - filled, "", percent);
  std::fflush(stderr);
}

}  // namespace zephyr::cli
