#include "zephyr/platform/form_progress.h"

#include <QApplication>
#include <QScreen>
#include <algorithm>

#include "window_activation.h"

namespace zephyr::platform {

namespace {

constexpr qint64 kRepaintIntervalMs = 50;

}  // namespace

FormProgress::~FormProgress() {
  delete form_;
}

void FormProgress::Show() {
  if (!qobject_cast<QApplication*>(QCoreApplication::instance())) return;
  if (!form_) {
    form_ = new ProgressForm(owner_);
    form_->SetMessage(message_);
    ApplyRange();
    QRect frame = form_->frameGeometry();
    if (owner_) {
      frame.moveCenter(owner_->mapToGlobal(owner_->rect().center()));
    } else if (QScreen* screen = QGuiApplication::primaryScreen()) {
      frame.moveCenter(screen->availableGeometry().center());
    }
    form_->move(frame.topLeft());
  }
  form_->show();
  form_->raise();
  // Paint it now: the work that follows may not let events run for a while.
  since_repaint_.start();
  QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

void FormProgress::Unload() {
  if (!form_) return;
  delete form_;
  ReactivateOwnerWindow(owner_);
}

void FormProgress::SetMessage(const std::string& message) {
  message_ = QString::fromStdString(message);
  if (!form_) return;
  form_->SetMessage(message_);
  Repaint();
}

// The range follows QProgressBar: a minimum above the maximum raises the
// maximum, and the other way round.
void FormProgress::SetMinimum(int32_t minimum) {
  minimum_ = minimum;
  maximum_ = std::max(maximum_, minimum);
  ApplyRange();
}

void FormProgress::SetMaximum(int32_t maximum) {
  maximum_ = maximum;
  minimum_ = std::min(minimum_, maximum);
  ApplyRange();
}

void FormProgress::ApplyRange() {
  if (!form_) return;
  shown_value_ = std::clamp(value_, minimum_, maximum_);
  form_->Pacifier()->setRange(minimum_, maximum_);
  form_->Pacifier()->setValue(shown_value_);
  Repaint();
}

void FormProgress::SetValue(int32_t value) {
  value_ = value;
  if (!form_) return;
  int32_t shown = std::clamp(value, minimum_, maximum_);
  if (shown == shown_value_) return;
  QProgressBar* bar = form_->Pacifier();
  int64_t span = int64_t{maximum_} - minimum_;
  int64_t width = std::max(bar->width(), 1);
  if (span > width && shown != minimum_ && shown != maximum_) {
    // The filled part would keep its length: leave the bar alone.
    if ((shown - int64_t{minimum_}) * width / span ==
        (shown_value_ - int64_t{minimum_}) * width / span) {
      return;
    }
  }
  shown_value_ = shown;
  bar->setValue(shown);
  Repaint();
}

void FormProgress::ProcessEvents() {
  if (form_) Repaint();
}

void FormProgress::Repaint() {
  if (since_repaint_.isValid() && since_repaint_.elapsed() < kRepaintIntervalMs) return;
  since_repaint_.start();
  QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

}  // namespace zephyr::platform
