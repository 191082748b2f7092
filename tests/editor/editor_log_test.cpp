// The procedures the editor reports to the diagnostic server, watched over a
// session bus of its own: the lines the component has always sent, as many as
// it sent them, and none it never sent.
#include <QAction>
#include <QPushButton>
#include <QToolButton>

#include "editor_fixture.h"
#include "helpers/debug_server.h"
#include "zephyr/support/debug_log.h"

using zephyr::MessageAnswer;

namespace {

// Module, procedure and message of a server line (its time and sender left out).
QString Sent(const std::vector<std::string>& line) {
  return QString::fromStdString(line[2] + "|" + line[3] + "|" + line[4]);
}

}  // namespace

class EditorLogTest : public QObject, zephyr::testing::EditorFixture {
  Q_OBJECT

 private:
  // The lines sent since the last call, up to a marker sent now.
  QStringList SentSinceLastCall() {
    const std::string marker = "marker " + std::to_string(++markers_);
    zephyr::DebugLog("Test", "Marker", marker);
    QStringList sent;
    size_t scanned = seen_;
    for (int attempt = 0; attempt < 100; ++attempt) {
      auto lines = server_->Lines(scanned + 1, std::chrono::milliseconds(50));
      for (; scanned < lines.size(); ++scanned) {
        if (lines[scanned].size() < 5) continue;
        if (lines[scanned][4] == marker) {
          seen_ = scanned + 1;
          return sent;
        }
        sent << Sent(lines[scanned]);
      }
    }
    qFatal("the marker never reached the server");
  }
  static int Count(const QStringList& sent, const QString& line) {
    return static_cast<int>(sent.count(line));
  }

  std::unique_ptr<zephyr::testing::DebugServer> server_;
  size_t seen_ = 0;
  int markers_ = 0;

 private slots:
  void initTestCase() {
    server_ = std::make_unique<zephyr::testing::DebugServer>(ZEPHYR_DEBUG_SERVER);
    QVERIFY(server_->Ready());
    zephyr::ResetDebugLogForTesting();
  }
  void cleanupTestCase() {
    TearDownEditor();
    server_.reset();
    zephyr::ResetDebugLogForTesting();
  }

  void logsEachProcedureAsOftenAsItRuns() {
    SentSinceLastCall();
    SetUpEditor();
    // Construction reports itself only: no template is loaded yet.
    QCOMPARE(SentSinceLastCall(), QStringList{"PopupControl|UserControl_Initialize|V6.1.273"});

    OpenProducts();
    Grid()->setFocus();
    Grid()->setCurrentIndex(Grid()->model()->index(0, 0));
    SentSinceLastCall();
    QTest::keyClick(Grid(), Qt::Key_F1);  // 30, a new top-level item
    QStringList sent = SentSinceLastCall();
    QVERIFY(sent.indexOf("PopupEditControl|Sort_Tree|Start") >
            sent.indexOf("PopupEditControl|AddChild|Start"));

    // A copy of Fruit (10, 20 under it) and of the copy's first child.
    Grid()->setCurrentIndex(Row({"10"}));
    Child<QAction>("mnucopywithchildren")->trigger();
    sent = SentSinceLastCall();
    QCOMPARE(Count(sent, "PopupEditControl|Add2GridCopy|Start"), 1);
    QCOMPARE(Count(sent, "PopupEditControl|Sort_Tree|Start"), 1);

    // Once for the top level, then once for each item with children: Fruit,
    // Bakery and the copy.
    editor->LevelChangeKeyFormat(editor->Popup()->PopupItems());
    QCOMPARE(Count(SentSinceLastCall(), "PopupEditControl|LevelChangeKeyFormat|Start"), 4);

    // Once for the top level, then once for the children of each of the nine
    // items, leaves included.
    ClickTab(0);
    SelectRow("grdFields", 2);
    QTest::mouseClick(Child<QToolButton>("cmdUp"), Qt::LeftButton);
    ClickTab(1);
    QCOMPARE(Count(SentSinceLastCall(), "PopupEditControl|ReOrderFields|Start"), 10);
  }
};

QTEST_MAIN(EditorLogTest)
#include "editor_log_test.moc"
