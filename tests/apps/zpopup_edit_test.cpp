// zpopup-edit's main window driven as a user drives it: its menus, its
// title's modified mark, the question before work is set aside, the recent
// list, the status bar and the recovery of a killed editor's edits.
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QSettings>
#include <QStandardPaths>
#include <QStatusBar>
#include <QTableView>
#include <QTest>
#include <QTimer>
#include <QTreeView>
#include <csignal>
#include <cstdio>
#include <functional>

#include "editor/editor_fixture.h"
#include "main_window.h"

using zephyr::apps::MainWindow;

namespace {

// Set in the environment of a child run: the popup it edits before it is killed.
constexpr const char* kEditAndWait = "ZPOPUP_EDIT_TEST_EDIT_AND_WAIT";

// Answers the next message box of the window with one of its buttons.
void AnswerNextBox(QMessageBox::StandardButton button, QString* text = nullptr) {
  zephyr::testing::WhenModal([button, text](QWidget* shown) {
    auto* box = qobject_cast<QMessageBox*>(shown);
    if (!box) qFatal("the modal dialog is no message box");
    if (text) *text = box->text();
    box->button(button)->click();
  });
}

// The same edits of Products, made by object name in the editor that is
// killed and in the one that shows what they must give: a deletion, a value
// typed, a move undone and redone, and a field deleted from the design.
void MakeEdits(MainWindow& window, zephyr::testing::ScriptedMessageBox& messages) {
  auto* editor = window.Editor();
  auto* outline = window.findChild<QTreeView*>("DataGrid");
  QAbstractItemModel* model = outline->model();
  QModelIndex title = model->index(0, 0);
  outline->setFocus();
  outline->setCurrentIndex(model->index(0, 0, model->index(0, 0, title)));  // Apples
  messages.answers = {zephyr::MessageAnswer::kYes};
  QTest::keyClick(outline, Qt::Key_Delete);

  QModelIndex bread = model->index(0, 1, model->index(1, 0, title));
  outline->setCurrentIndex(bread);
  QTest::keyClick(outline, Qt::Key_Return);
  auto* cell = qobject_cast<QLineEdit*>(QApplication::focusWidget());
  if (!cell) qFatal("no cell editor");
  cell->selectAll();
  QTest::keyClicks(cell, "Rye bread");
  QTest::keyClick(cell, Qt::Key_Return);
  QApplication::processEvents();  // as between a user's keys: the closed cell goes

  outline->setCurrentIndex(model->index(1, 0, title));  // Bakery
  editor->MoveItemUp();
  editor->undo();
  editor->redo();

  editor->ShowView(false);
  auto* fields = window.findChild<QTableView*>("grdFields");
  fields->setCurrentIndex(fields->model()->index(1, 0));  // Note
  messages.answers = {zephyr::MessageAnswer::kYes};
  window.findChild<QPushButton*>("cmdDeleteField")->click();
  editor->ShowView(true);
}

// The child's part: opens the popup, makes the edits, says so, and waits to
// be killed.
int EditAndWait(const QString& popup) {
  QStandardPaths::setTestModeEnabled(true);
  MainWindow window;
  auto messages = std::make_shared<zephyr::testing::ScriptedMessageBox>();
  window.Editor()->SetMessageBox(messages);
  window.Editor()->SetProgress(std::make_shared<zephyr::NoProgress>());
  window.show();
  if (!QTest::qWaitForWindowActive(&window) || !window.OpenNamed(popup)) return 2;
  MakeEdits(window, *messages);
  std::printf("edited\n");
  std::fflush(stdout);
  return QApplication::exec();
}

QAction* ActionNamed(QMenu* menu, const QString& start) {
  for (QAction* action : menu->actions()) {
    if (action->text().startsWith(start)) return action;
  }
  qFatal("no action %s", qPrintable(start));
}

}  // namespace

class ZpopupEditTest : public QObject {
  Q_OBJECT

 private:
  std::unique_ptr<zephyr::testing::TempDir> dir_;
  std::unique_ptr<MainWindow> window_;
  std::shared_ptr<zephyr::testing::ScriptedMessageBox> messages_;

  QTreeView* Outline() { return window_->findChild<QTreeView*>("DataGrid"); }
  QMenu* Menu(const char* name) { return window_->findChild<QMenu*>(name); }

 private slots:
  void initTestCase() {
    QStandardPaths::setTestModeEnabled(true);
    // Edits earlier runs left behind are not this run's.
    QDir(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + "/journal")
        .removeRecursively();
  }
  void init() {
    zephyr::testing::FailOnQtWarnings();
    dir_ = std::make_unique<zephyr::testing::TempDir>();
    zephyr::testing::WriteProducts(dir_->Path());
    QSettings().clear();  // no recent popups, geometry or colour of earlier runs
    window_ = std::make_unique<MainWindow>();
    messages_ = std::make_shared<zephyr::testing::ScriptedMessageBox>();
    window_->Editor()->SetMessageBox(messages_);
    window_->Editor()->SetProgress(std::make_shared<zephyr::NoProgress>());
    window_->show();
    QVERIFY(QTest::qWaitForWindowActive(window_.get()));
    QVERIFY(window_->OpenNamed(QString::fromStdString(dir_->File("Products"))));
  }
  void cleanup() {
    window_.reset();
    dir_.reset();
  }

  void closingAsksAboutWorkNoSaveHasWritten() {
    QVERIFY(!window_->isWindowModified());
    Outline()->setFocus();
    Outline()->setCurrentIndex(Outline()->model()->index(0, 0));
    QTest::keyClick(Outline(), Qt::Key_F1);  // an add: DataChanged stays false
    QVERIFY(window_->isWindowModified());

    QString asked;
    AnswerNextBox(QMessageBox::Cancel, &asked);
    QVERIFY(!window_->close());
    QCOMPARE(asked, QString("The popup has unsaved changes. Save them first?"));
    // Saving a design that fails its check writes nothing: the window stays.
    window_->Editor()->ShowView(false);
    window_->findChild<QLineEdit*>("txtTitle")->clear();
    AnswerNextBox(QMessageBox::Save);
    QVERIFY(!window_->close());
    QVERIFY(window_->isWindowModified());
    window_->findChild<QLineEdit*>("txtTitle")->setText("Stock");
    AnswerNextBox(QMessageBox::Save);
    QVERIFY(window_->close());
    QCOMPARE(window_->statusBar()->currentMessage(), QString("Saved Products"));
  }

  void recentListsAPopupOnceHoweverItIsNamed() {
    QVERIFY(window_->OpenNamed(QString::fromStdString(dir_->File("Products.ZPT"))));
    QDir::setCurrent(QString::fromStdString(dir_->Path()));
    QVERIFY(window_->OpenNamed("Products"));
    QVERIFY(window_->OpenNamed("Products.ZPD"));  // as a file manager passes the data file
    window_->Editor()->Popup()->Title("Changed");  // make a save write
    QVERIFY(window_->Editor()->SaveChanges(false));
    QCOMPARE(Menu("menuRecent")->actions().size(), 1);
  }

  // Edit > Undo and Redo name the command and answer their keys; the menu
  // shows the keys the outline takes; a command that raises is told, not thrown.
  void editMenuUndoesByNameAndKeyAndSurvivesARaisingCommand() {
    QMenu* edit = Menu("menuEdit");
    QAction* undo = ActionNamed(edit, "&Undo");
    QVERIFY(!undo->isEnabled());
    auto fruit = Outline()->model()->index(0, 0, Outline()->model()->index(0, 0));
    Outline()->setFocus();
    Outline()->setCurrentIndex(Outline()->model()->index(0, 0, fruit));  // Apples
    messages_->answers = {zephyr::MessageAnswer::kYes};
    QTest::keyClick(Outline(), Qt::Key_Delete);
    QCOMPARE(undo->text(), QString("&Undo Delete 'Apples'"));
    auto children = window_->Editor()->Popup()->PopupItems()->Item(zephyr::Variant(1))->Children();
    QCOMPARE(children->Count(), 1);
    QTest::keySequence(Outline(), QKeySequence(Qt::CTRL | Qt::Key_Z));
    QCOMPARE(children->Count(), 2);
    QCOMPARE(ActionNamed(edit, "&Redo")->text(), QString("&Redo Delete 'Apples'"));
    QTest::keySequence(Outline(), QKeySequence(Qt::CTRL | Qt::Key_Y));
    QCOMPARE(children->Count(), 1);
    QTest::keySequence(Outline(), QKeySequence(Qt::CTRL | Qt::Key_Z));
    QTest::keySequence(Outline(), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z));
    QCOMPARE(children->Count(), 1);

    QVERIFY(ActionNamed(edit, "&Paste")->text().endsWith("\tCtrl+V"));

    auto keys = std::make_shared<zephyr::testing::ScriptedKeyPrompt>();
    keys->answers = {"100"};  // cut to 10, the code of Fruit
    window_->Editor()->SetNewKeyPrompt(keys);
    window_->findChild<QComboBox*>("cboStep")->setEditText("90");
    Outline()->setCurrentIndex(fruit);
    ActionNamed(edit, "Add &Sibling")->trigger();
    QCOMPARE(messages_->shown.back().prompt.substr(0, 21), std::string("Run-time error '457':"));
    QCOMPARE(window_->Editor()->Popup()->PopupItems()->Count(), 2);
  }

  // The program's options: usage errors exit 2 and say what is wrong; a
  // picture of a popup that is not there is no picture.
  void optionsAndExitCodes_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("said");
    QTest::newRow("unknown option") << QStringList{"--bogus"} << 2 << "Unknown option 'bogus'";
    QTest::newRow("view") << QStringList{"--view", "sideways", "Products"} << 2
                          << "--view takes design or data";
    QTest::newRow("two popups") << QStringList{"Products", "Other"} << 2
                                << "give at most one POPUP";
    QTest::newRow("missing popup") << QStringList{"--screenshot", "shot.png", "Missing"} << 2
                                   << "no popup 'Missing'";
    QTest::newRow("version") << QStringList{"--version"} << 0 << "zpopup-edit ";
    QTest::newRow("picture") << QStringList{"--screenshot", "shot.png", "Products"} << 0 << "";
  }
  void optionsAndExitCodes() {
    QFETCH(QStringList, arguments);
    QFETCH(int, code);
    QFETCH(QString, said);
    QProcess program;
    program.setWorkingDirectory(QString::fromStdString(dir_->Path()));
    program.start(QStringLiteral(ZPOPUP_EDIT_PROGRAM), arguments);
    QVERIFY(program.waitForFinished(30000));
    QCOMPARE(program.exitCode(), code);
    QString output = program.readAllStandardOutput() + program.readAllStandardError();
    QVERIFY2(output.contains(said), qPrintable(output));
    if (arguments.contains("Products") && code == 0) {
      QVERIFY(QFile::exists(QString::fromStdString(dir_->File("shot.png"))));
    }
  }

  // An editor killed with edits unsaved: the next start offers them, and
  // the popup recovered saves exactly what those edits saved would have.
  void aKilledEditorsEditsAreRecoveredAtTheNextStart() {
    zephyr::testing::TempDir killed_dir;
    zephyr::testing::WriteProducts(killed_dir.Path());
    QProcess child;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(kEditAndWait, QString::fromStdString(killed_dir.File("Products")));
    child.setProcessEnvironment(environment);
    child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    child.start(QCoreApplication::applicationFilePath(), {});
    QVERIFY(child.waitForStarted());
    QByteArray said;
    QTRY_VERIFY_WITH_TIMEOUT((said += child.readAllStandardOutput()).contains("edited") ||
                                 child.state() != QProcess::Running,
                             30000);
    QCOMPARE(child.state(), QProcess::Running);
    ::kill(static_cast<pid_t>(child.processId()), SIGKILL);
    QVERIFY(child.waitForFinished());

    MakeEdits(*window_, *messages_);
    QVERIFY(window_->Editor()->SaveChanges(false));
    auto files = [](const zephyr::testing::TempDir& dir) {
      return zephyr::testing::ReadBytes(dir.File("Products.ZPT")) + "|" +
             zephyr::testing::ReadBytes(dir.File("Products.ZPD"));
    };
    const std::string expected = files(*dir_);
    QVERIFY(expected.find("Rye bread") != std::string::npos);

    MainWindow recovered;
    recovered.Editor()->SetMessageBox(messages_);
    recovered.show();
    QString asked;
    AnswerNextBox(QMessageBox::Yes, &asked);
    QVERIFY(recovered.OfferRecovery());
    QVERIFY2(asked.startsWith("Recover unsaved changes to Products from "), qPrintable(asked));
    QVERIFY2(!asked.contains("Someone else"), qPrintable(asked));  // nobody saved it since
    QVERIFY(recovered.isWindowModified());
    QVERIFY(recovered.Editor()->SaveChanges(false));
    QCOMPARE(files(killed_dir), expected);
    QVERIFY(zephyr::editor::PopupControlEdit::FindUnsavedEdits().empty());
  }
};

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  QApplication::setOrganizationName("ZephyrPopupTest");
  QApplication::setApplicationName("zpopup-edit-test");
  if (qEnvironmentVariableIsSet(kEditAndWait)) return EditAndWait(qEnvironmentVariable(kEditAndWait));
  ZpopupEditTest test;
  return QTest::qExec(&test, argc, argv);
}
#include "zpopup_edit_test.moc"
