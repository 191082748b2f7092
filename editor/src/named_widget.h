// Named, NamedAction: give a control or a menu entry the name the component
// gives it, as its objectName.
#ifndef ZEPHYR_EDITOR_NAMED_WIDGET_H_
#define ZEPHYR_EDITOR_NAMED_WIDGET_H_

#include <QAction>
#include <QMenu>
#include <QString>

namespace zephyr::editor {

template <typename Widget>
Widget* Named(Widget* widget, const char* name) {
  widget->setObjectName(QString::fromLatin1(name));
  return widget;
}

// Adds an action named as the component names it to a menu.
inline QAction* NamedAction(QMenu* menu, const char* name, const char* caption) {
  QAction* action = menu->addAction(QString::fromLatin1(caption));
  action->setObjectName(QString::fromLatin1(name));
  return action;
}

}  // namespace zephyr::editor

#endif  // ZEPHYR_EDITOR_NAMED_WIDGET_H_
