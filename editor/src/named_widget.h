// Named: gives a control the name the component gives it, as its objectName.
#ifndef ZEPHYR_EDITOR_NAMED_WIDGET_H_
#define ZEPHYR_EDITOR_NAMED_WIDGET_H_

#include <QString>

namespace zephyr::editor {

template <typename Widget>
Widget* Named(Widget* widget, const char* name) {
  widget->setObjectName(QString::fromLatin1(name));
  return widget;
}

}  // namespace zephyr::editor

#endif  // ZEPHYR_EDITOR_NAMED_WIDGET_H_
