// The plugin is used through its interface only, as Designer uses it; the
// test does not link the editor, so a plugin that misses it fails to load.
#include <QApplication>
#include <QMetaProperty>
#include <QPluginLoader>
#include <QXmlStreamReader>
#include <QtTest>
#include <QtUiPlugin/QDesignerCustomWidgetInterface>
#include <memory>

class DesignerPluginTest : public QObject {
  Q_OBJECT

 private slots:
  void initTestCase() {
    QPluginLoader loader(QStringLiteral(ZEPHYR_DESIGNER_PLUGIN));
    plugin_ = qobject_cast<QDesignerCustomWidgetInterface*>(loader.instance());
    QVERIFY2(plugin_, qPrintable(loader.errorString()));
    plugin_->initialize(nullptr);
  }

  void DomXmlNamesTheClassAndAnObjectName() {
    QCOMPARE(plugin_->group(), QStringLiteral("ZephyrPopup"));
    QXmlStreamReader xml(plugin_->domXml());
    while (xml.readNextStartElement() && xml.name() != QStringLiteral("widget")) {
    }
    QVERIFY2(!xml.hasError(), qPrintable(xml.errorString()));
    QCOMPARE(xml.attributes().value("class").toString(), plugin_->name());
    QVERIFY(!xml.attributes().value("name").isEmpty());
  }

  void CreatesAnEditorWithAnEditableBackColor() {
    QWidget form;
    std::unique_ptr<QWidget> widget(plugin_->createWidget(&form));
    QVERIFY(widget);
    QVERIFY(widget->inherits(qPrintable(plugin_->name())));
    QCOMPARE(widget->parentWidget(), &form);
    for (QWidget* top : QApplication::topLevelWidgets()) QVERIFY(!top->isVisible());

    const QMetaObject* meta = widget->metaObject();
    QMetaProperty color = meta->property(meta->indexOfProperty("EditBackColor"));
    QVERIFY(color.isValid() && color.isDesignable() && color.isWritable());
    QVERIFY(widget->setProperty("EditBackColor", 0x00336699u));
    QCOMPARE(widget->property("EditBackColor").toUInt(), 0x00336699u);
  }

 private:
  QDesignerCustomWidgetInterface* plugin_ = nullptr;
};

QTEST_MAIN(DesignerPluginTest)
#include "designer_plugin_test.moc"
