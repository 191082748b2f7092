// Progress: how long work reports how far it has got. The runtime drives it
// with a message, a value and a range; the editor shows a progress form, the
// command line a progress bar, tests record the calls.
#ifndef ZEPHYR_SUPPORT_PROGRESS_H_
#define ZEPHYR_SUPPORT_PROGRESS_H_

#include <cstdint>
#include <string>

namespace zephyr {

class Progress {
 public:
  virtual ~Progress() = default;

  // The indicator appears (modeless) and disappears again.
  virtual void Show() = 0;
  virtual void Unload() = 0;
  virtual void SetMessage(const std::string& message) = 0;
  virtual void SetMinimum(int32_t minimum) = 0;
  virtual void SetMaximum(int32_t maximum) = 0;
  // Called very often (once per item); implementations redraw sparingly.
  virtual void SetValue(int32_t value) = 0;
  // Lets pending user-interface events run so that the indicator repaints
  // during a long loop.
  virtual void ProcessEvents() {}
};

// Unloads the indicator when it goes out of scope, however the work ends.
class ProgressUnloader {
 public:
  explicit ProgressUnloader(Progress& progress) : progress_(progress) {}
  ~ProgressUnloader() { progress_.Unload(); }
  ProgressUnloader(const ProgressUnloader&) = delete;
  ProgressUnloader& operator=(const ProgressUnloader&) = delete;

 private:
  Progress& progress_;
};

// A Progress that shows nothing; the default where no indicator was given.
class NoProgress : public Progress {
 public:
  void Show() override {}
  void Unload() override {}
  void SetMessage(const std::string&) override {}
  void SetMinimum(int32_t) override {}
  void SetMaximum(int32_t) override {}
  void SetValue(int32_t) override {}
};

}  // namespace zephyr

#endif  // ZEPHYR_SUPPORT_PROGRESS_H_
