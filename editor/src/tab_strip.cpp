#include "tab_strip.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>

namespace zephyr::editor {

TabStrip::TabStrip(QWidget* parent) : QTabBar(parent) {
  setDrawBase(true);
  setExpanding(false);
}

bool TabStrip::Refused(int index) {
  if (index < 0 || index == currentIndex()) return false;
  return before_click_ && before_click_(index);
}

void TabStrip::SelectTab(int index) {
  if (!Refused(index)) setCurrentIndex(index);
}

void TabStrip::mousePressEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton) {
    int index = tabAt(event->position().toPoint());
    if (Refused(index)) {
      event->accept();
      return;
    }
  }
  QTabBar::mousePressEvent(event);
}

void TabStrip::keyPressEvent(QKeyEvent* event) {
  int step = 0;
  if (event->key() == Qt::Key_Left) step = -1;
  if (event->key() == Qt::Key_Right) step = 1;
  int target = currentIndex() + step;
  if (step != 0 && target >= 0 && target < count()) {
    SelectTab(target);
    event->accept();
    return;
  }
  QTabBar::keyPressEvent(event);
}

void TabStrip::wheelEvent(QWheelEvent* event) {
  event->ignore();  // a wheel over the tabs must not switch views unasked
}

}  // namespace zephyr::editor
