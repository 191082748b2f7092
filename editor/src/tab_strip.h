// TabStrip: a tab bar whose switch the owner may refuse before it happens.
// A refused switch never changes the current tab, so the view it would have
// shown is never shown.
#ifndef ZEPHYR_EDITOR_TAB_STRIP_H_
#define ZEPHYR_EDITOR_TAB_STRIP_H_

#include <QTabBar>
#include <functional>

namespace zephyr::editor {

class TabStrip : public QTabBar {
  Q_OBJECT

 public:
  explicit TabStrip(QWidget* parent = nullptr);

  // Asked with the 0-based tab about to be selected; true refuses the switch.
  void SetBeforeClick(std::function<bool(int)> before_click) {
    before_click_ = std::move(before_click);
  }
  // Selects a tab as a click would, asking before_click first.
  void SelectTab(int index);

 protected:
  void mousePressEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;

 private:
  bool Refused(int index);

  std::function<bool(int)> before_click_;
};

}  // namespace zephyr::editor

#endif  // ZEPHYR_EDITOR_TAB_STRIP_H_
