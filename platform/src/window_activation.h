// After a form of ours closes, the keyboard goes back to the window it stood
// over: some window managers (and the offscreen platform) leave no window
// active otherwise, and the user's next keys would go nowhere.
#ifndef ZEPHYR_PLATFORM_WINDOW_ACTIVATION_H_
#define ZEPHYR_PLATFORM_WINDOW_ACTIVATION_H_

#include <QWidget>

namespace zephyr::platform {

inline void ReactivateOwnerWindow(QWidget* owner) {
  if (!owner || !owner->isVisible()) return;
  owner->window()->activateWindow();
}

}  // namespace zephyr::platform

#endif  // ZEPHYR_PLATFORM_WINDOW_ACTIVATION_H_
