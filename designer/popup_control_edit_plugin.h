// The Designer plugin of PopupControlEdit: what Designer shows in its widget
// box and the form it drops.
#ifndef ZEPHYR_DESIGNER_POPUP_CONTROL_EDIT_PLUGIN_H_
#define ZEPHYR_DESIGNER_POPUP_CONTROL_EDIT_PLUGIN_H_

#include <QObject>
#include <QtUiPlugin/QDesignerCustomWidgetInterface>

namespace zephyr::designer {

class PopupControlEditPlugin : public QObject, public QDesignerCustomWidgetInterface {
  Q_OBJECT
  Q_PLUGIN_METADATA(IID "org.qt-project.Qt.QDesignerCustomWidgetInterface")
  Q_INTERFACES(QDesignerCustomWidgetInterface)

 public:
  explicit PopupControlEditPlugin(QObject* parent = nullptr);

  QString name() const override;
  QString group() const override;
  QString toolTip() const override;
  QString whatsThis() const override;
  QString includeFile() const override;
  QIcon icon() const override;
  bool isContainer() const override;
  QWidget* createWidget(QWidget* parent) override;
  bool isInitialized() const override;
  void initialize(QDesignerFormEditorInterface* core) override;
  QString domXml() const override;

 private:
  bool initialized_ = false;
};

}  // namespace zephyr::designer

#endif  // ZEPHYR_DESIGNER_POPUP_CONTROL_EDIT_PLUGIN_H_
