// FormProgress: the editor's Progress, a ProgressForm centred over an owner
// window. Show() creates the form and Unload() destroys it; the message,
// range and value set at any time (before Show() too) are what the form
// shows. Calls after Unload() only update the remembered state.
//
// SetValue is called once per item, so it touches the bar only when the
// filled part would change by at least a pixel, and it and ProcessEvents let
// the form repaint (events excluding user input) at most every 50 ms.
#ifndef ZEPHYR_PLATFORM_FORM_PROGRESS_H_
#define ZEPHYR_PLATFORM_FORM_PROGRESS_H_

#include <QElapsedTimer>
#include <QPointer>
#include <QWidget>
#include <cstdint>
#include <string>

#include "zephyr/platform/progress_form.h"
#include "zephyr/support/progress.h"

namespace zephyr::platform {

class FormProgress : public Progress {
 public:
  // The owner may be null (the form is centred on the screen) and may be
  // destroyed before this object.
  explicit FormProgress(QWidget* owner = nullptr) : owner_(owner) {}
  ~FormProgress() override;
  FormProgress(const FormProgress&) = delete;
  FormProgress& operator=(const FormProgress&) = delete;

  QWidget* Owner() const { return owner_; }
  void SetOwner(QWidget* owner) { owner_ = owner; }
  // The form while shown, else null.
  ProgressForm* Form() const { return form_; }

  void Show() override;
  void Unload() override;
  void SetMessage(const std::string& message) override;
  void SetMinimum(int32_t minimum) override;
  void SetMaximum(int32_t maximum) override;
  void SetValue(int32_t value) override;
  void ProcessEvents() override;

 private:
  void ApplyRange();
  // Runs pending non-input events when the last run is 50 ms ago.
  void Repaint();

  QPointer<QWidget> owner_;
  QPointer<ProgressForm> form_;
  QString message_;
  int32_t minimum_ = 0;
  int32_t maximum_ = 100;
  int32_t value_ = 0;
  // The value the bar shows.
  int32_t shown_value_ = 0;
  QElapsedTimer since_repaint_;
};

}  // namespace zephyr::platform

#endif  // ZEPHYR_PLATFORM_FORM_PROGRESS_H_
