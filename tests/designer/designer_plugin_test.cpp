// The plugin is used through its interface only, as Designer uses it; the
// test does not link the editor, so a plugin that misses it fails to load.
#include <QMetaProperty>
#include <QPluginLoader>
#include <QtTest>
#include <QtUiPlugin/QDesignerCustomWidgetInterface>
#include <memory>

class DesignerPluginTest : public QObject {
  Q_OBJECT

 private slots:
  void LoadsAndCreatesAnEditorWithAnEditableBackColor() {
    QPluginLoader loader(QStringLiteral(ZEPHYR_DESIGNER_PLUGIN));
    auto* plugin = qobject_cast<QDesignerCustomWidgetInterface*>(loader.instance());
    QVERIFY2(plugin, qPrintable(loader.errorString()));
    plugin->initialize(nullptr);
    QCOMPARE(plugin->group(), QStringLiteral("ZephyrPopup"));

    QWidget form;
    std::unique_ptr<QWidget> widget(plugin->createWidget(&form));
    QVERIFY(widget);
    QCOMPARE(widget->parentWidget(), &form);
    const QMetaObject* meta = widget->metaObject();
    QMetaProperty color = meta->property(meta->indexOfProperty("EditBackColor"));
    QVERIFY(color.isValid() && color.isDesignable() && color.isWritable());
  }
};

QTEST_MAIN(DesignerPluginTest)
#include "designer_plugin_test.moc"
