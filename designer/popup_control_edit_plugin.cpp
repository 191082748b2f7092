#include "popup_control_edit_plugin.h"

#include <QIcon>
#include <QPainter>
#include <QPixmap>

#include "zephyr/editor/popup_control_edit.h"

namespace zephyr::designer {

PopupControlEditPlugin::PopupControlEditPlugin(QObject* parent) : QObject(parent) {}

QString PopupControlEditPlugin::name() const {
  return QStringLiteral("zephyr::editor::PopupControlEdit");
}
QString PopupControlEditPlugin::group() const {
  return QStringLiteral("ZephyrPopup");
}
QString PopupControlEditPlugin::toolTip() const {
  return QStringLiteral("Popup editor");
}
QString PopupControlEditPlugin::whatsThis() const {
  return QStringLiteral(
      "An editor for one popup: its title, question levels and fields on the first tab, "
      "its item tree on the second. The host opens a popup with OpenPopup and saves it "
      "with SaveChanges.");
}
QString PopupControlEditPlugin::includeFile() const {
  return QStringLiteral("zephyr/editor/popup_control_edit.h");
}

// Two tabs over an indented outline, so the widget box entry reads as the
// editor's two views.
QIcon PopupControlEditPlugin::icon() const {
  QPixmap pixmap(22, 22);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  painter.setPen(QColor(60, 60, 60));
  painter.setBrush(Qt::white);
  painter.drawRect(1, 5, 19, 15);
  painter.drawRect(1, 1, 8, 4);
  painter.setBrush(QColor(200, 200, 200));
  painter.drawRect(9, 1, 8, 4);
  painter.drawLine(4, 9, 14, 9);
  painter.drawLine(7, 12, 17, 12);
  painter.drawLine(7, 15, 15, 15);
  return QIcon(pixmap);
}

bool PopupControlEditPlugin::isContainer() const {
  return false;
}

// The widget starts on an empty new popup; nothing is opened or asked until
// a host calls OpenPopup, which Designer never does.
QWidget* PopupControlEditPlugin::createWidget(QWidget* parent) {
  return new editor::PopupControlEdit(parent);
}

bool PopupControlEditPlugin::isInitialized() const {
  return initialized_;
}
void PopupControlEditPlugin::initialize(QDesignerFormEditorInterface*) {
  initialized_ = true;
}

QString PopupControlEditPlugin::domXml() const {
  return QStringLiteral(R"(<ui language="c++">
 <widget class="zephyr::editor::PopupControlEdit" name="popupControlEdit">
  <property name="geometry">
   <rect>
    <x>0</x>
    <y>0</y>
    <width>640</width>
    <height>400</height>
   </rect>
  </property>
 </widget>
</ui>
)");
}

}  // namespace zephyr::designer
