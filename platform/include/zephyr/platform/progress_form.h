// ProgressForm: the small modeless tool window that shows how far a long
// load has got: the application's name (lblAppName), an image (Image1) and
// a progress bar (zephyrPacifier) whose caption is the current message.
// The user cannot close it: a close from the window's close box or the
// window manager is refused. The program closes it with close() or by
// deleting it.
#ifndef ZEPHYR_PLATFORM_PROGRESS_FORM_H_
#define ZEPHYR_PLATFORM_PROGRESS_FORM_H_

#include <QLabel>
#include <QProgressBar>
#include <QString>
#include <QWidget>

namespace zephyr::platform {

class ProgressForm : public QWidget {
  Q_OBJECT

 public:
  // Object name "frmPacifierZephyr"; logs its Form_Load.
  explicit ProgressForm(QWidget* parent = nullptr);

  QLabel* AppName() const { return app_name_; }
  QLabel* Image() const { return image_; }
  QProgressBar* Pacifier() const { return pacifier_; }

  // The caption shown on the bar, exactly as given ("%p" is not expanded).
  void SetMessage(const QString& message);

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  QLabel* app_name_;
  QLabel* image_;
  QProgressBar* pacifier_;
};

}  // namespace zephyr::platform

#endif  // ZEPHYR_PLATFORM_PROGRESS_FORM_H_
