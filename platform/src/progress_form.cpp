#include "zephyr/platform/progress_form.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QHBoxLayout>
#include <QStyle>
#include <QVBoxLayout>

#include "zephyr/support/debug_log.h"

namespace zephyr::platform {

namespace {

// QProgressBar expands %p, %v and %m in its caption; a word joiner after the
// "%" shows the message as it is.
QString LiteralCaption(QString message) {
  static const QString kWordJoiner(QChar(0x2060));
  for (qsizetype i = message.indexOf('%'); i >= 0 && i + 1 < message.size();
       i = message.indexOf('%', i + 1)) {
    QChar next = message[i + 1];
    if (next == 'p' || next == 'v' || next == 'm') message.insert(i + 1, kWordJoiner);
  }
  return message;
}

}  // namespace

ProgressForm::ProgressForm(QWidget* parent) : QWidget(parent, Qt::Tool) {
  DebugLog("frmPacifierZephyr", "Form_Load", "");
  setObjectName(QStringLiteral("frmPacifierZephyr"));
  setWindowTitle(QCoreApplication::applicationName());

  image_ = new QLabel(this);
  image_->setObjectName(QStringLiteral("Image1"));
  image_->setPixmap(style()->standardIcon(QStyle::SP_BrowserReload, nullptr, this).pixmap(32, 32));

  app_name_ = new QLabel(QCoreApplication::applicationName(), this);
  app_name_->setObjectName(QStringLiteral("lblAppName"));

  pacifier_ = new QProgressBar(this);
  pacifier_->setObjectName(QStringLiteral("zephyrPacifier"));
  pacifier_->setTextVisible(true);
  pacifier_->setFormat(QString());
  pacifier_->setMinimumWidth(260);

  auto* text = new QVBoxLayout;
  text->addWidget(app_name_);
  text->addWidget(pacifier_);
  auto* layout = new QHBoxLayout(this);
  layout->addWidget(image_, 0, Qt::AlignTop);
  layout->addLayout(text, 1);
  setFixedSize(sizeHint());
}

void ProgressForm::SetMessage(const QString& message) {
  pacifier_->setFormat(LiteralCaption(message));
}

void ProgressForm::closeEvent(QCloseEvent* event) {
  // Only the program ends the work the form reports on.
  if (event->spontaneous()) {
    event->ignore();
    return;
  }
  QWidget::closeEvent(event);
}

}  // namespace zephyr::platform
