// PopupControlEdit driven as a user drives it: by object name, with clicks
// and typing, and the dialogs answered by scripted interfaces.
#include "zephyr/editor/popup_control_edit.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QSignalSpy>
#include <QTabBar>
#include <QTableView>
#include <QTest>
#include <QToolButton>
#include <QTreeView>
#include <QUndoStack>

#include "editor_fixture.h"
#include "zephyr/support/file_utils.h"

using zephyr::MessageAnswer;
using zephyr::editor::PopupControlEdit;

namespace {

// Counts how often a widget was shown.
class ShowCounter : public QObject {
 public:
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() == QEvent::Show) ++shows;
    return false;
  }
  int shows = 0;
};

}  // namespace

class PopupControlEditTest : public QObject, zephyr::testing::EditorFixture {
  Q_OBJECT

 private slots:
  void init() { SetUpEditor(); }
  void cleanup() { TearDownEditor(); }

  void opensIntoTheSortedDataViewAndReusesStoredNames() {
    QSignalSpy data_mode(editor.get(), &PopupControlEdit::BeforeDataMode);
    OpenProducts();
    QCOMPARE(Tabs()->currentIndex(), 1);
    QVERIFY(Child<QWidget>("FraDataMode")->isVisible());
    QVERIFY(data_mode.count() >= 1);
    QCOMPARE(Outline(), QStringList({"Products", "10", "10", "20", "20", "10"}));
    QVERIFY(!editor->DataChanged());

    editor->OpenPopup("", "");  // the stored folder and file again
    QCOMPARE(editor->PopupTitle(), std::string("Products"));
    editor->SourceFile("");
    editor->OpenPopup("", "");  // no file: a new popup in the design view
    QCOMPARE(Tabs()->currentIndex(), 0);
    QVERIFY(Child<QWidget>("fraDesignMode")->isVisible());
  }

  void titleBoxRefusesDoubleQuotesAndMarksChanges() {
    OpenProducts();
    ClickTab(0);
    auto* title = Child<QLineEdit>("txtTitle");
    title->clear();
    QTest::keyClicks(title, "Stock");
    QCOMPARE(editor->PopupTitle(), std::string("Stock"));
    QVERIFY(editor->DataChanged());
    QTest::keyClicks(title, "\"");
    QCOMPARE(Prompts().back(), std::string("Double Quotes are not Permitted in Title"));
    QCOMPARE(editor->PopupTitle(), std::string("Stock"));
  }

  void refusedSwitchNeverShowsTheDataView() {
    editor->OpenPopup(dir->Path(), "");  // a new popup: no title, no levels
    ShowCounter counter;
    Child<QWidget>("FraDataMode")->installEventFilter(&counter);
    ClickTab(1);
    QCOMPARE(Tabs()->currentIndex(), 0);
    QCOMPARE(counter.shows, 0);
    QCOMPARE(Prompts(), std::vector<std::string>{"Missing Title.  You must enter a Title"});
    QVERIFY(!editor->DataMode());
  }

  void levelsStopAtEightAndOnlyTheDeepestGoes() {
    editor->OpenPopup(dir->Path(), "");
    auto* add = Child<QPushButton>("cmdAddLevels");
    auto* remove = Child<QPushButton>("cmdDeleteLevels");
    for (int i = 1; i <= 8; ++i) {
      QVERIFY(add->isEnabled());
      QTest::mouseClick(add, Qt::LeftButton);
      QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("Level%1").arg(i));
      QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    }
    QVERIFY(!add->isEnabled());
    SelectRow("grdLevels", 2);
    QVERIFY(!remove->isEnabled());
    SelectRow("grdLevels", 8);
    QVERIFY(remove->isEnabled());
    messages->answers = {MessageAnswer::kYes};
    SelectRow("grdLevels", 8);
    QTest::mouseClick(remove, Qt::LeftButton);
    QCOMPARE(messages->shown.back().title, std::string("Delete Level? Level8"));
    QVERIFY(add->isEnabled());
    QCOMPARE(Child<QTableView>("grdLevels")->model()->rowCount(), 7);
  }

  void savedDesignMovesValuesAndReformatsKeys() {
    OpenProducts();
    ClickTab(0);
    // Move Note before Name, drop the second level.
    SelectRow("grdFields", 2);
    QTest::mouseClick(Child<QToolButton>("cmdUp"), Qt::LeftButton);
    messages->answers = {MessageAnswer::kYes};
    SelectRow("grdLevels", 2);
    QTest::mouseClick(Child<QPushButton>("cmdDeleteLevels"), Qt::LeftButton);
    ClickTab(1);
    QCOMPARE(Tabs()->currentIndex(), 1);
    auto popup = editor->Popup();
    QCOMPARE(popup->Levels(), int16_t{1});
    QCOMPARE(popup->PopupFields()->Item(zephyr::Variant(2))->Name(), std::string("Note"));
    auto fruit = popup->PopupItems()->Item(zephyr::Variant(1));
    QCOMPARE(fruit->PopupKey(), std::string("10"));
    QCOMPARE(fruit->Children()->Count(), 0);
    QCOMPARE(fruit->PopupValues()->Item(zephyr::Variant(1))->Value(), std::string("f"));
    QCOMPARE(fruit->PopupValues()->Item(zephyr::Variant(2))->Value(), std::string("Fruit"));
    QCOMPARE(Outline(), QStringList({"Products", "10", "20"}));
  }

  // The history spans both views: a design applied to the items undoes back
  // to the edits it applied, shown in the design view, and every undo ends
  // where the popup was opened; redoing ends where the edits left it.
  void designChangesUndoAndRedoAcrossViews() {
    OpenProducts();
    auto save = [&](const std::string& name) {
      dialog->answers = {dir->File(name + ".zpt")};
      if (!editor->SaveChanges(true)) return std::string("not saved");
      return zephyr::testing::ReadBytes(dir->File(name + ".ZPD")) +
             zephyr::testing::ReadBytes(dir->File(name + ".ZPT"));
    };
    const std::string opened = save("Opened");
    Grid()->setCurrentIndex(Row({"20", "10"}));
    messages->answers = {MessageAnswer::kYes};
    QTest::keyClick(Grid(), Qt::Key_Delete);
    ClickTab(0);
    SelectRow("grdFields", 2);
    QTest::mouseClick(Child<QToolButton>("cmdUp"), Qt::LeftButton);
    messages->answers = {MessageAnswer::kYes};
    SelectRow("grdLevels", 2);
    QTest::mouseClick(Child<QPushButton>("cmdDeleteLevels"), Qt::LeftButton);
    QTest::keyClicks(Child<QLineEdit>("txtTitle"), " Shop");
    ClickTab(1);
    const std::string edited = save("Edited");
    QUndoStack* stack = editor->UndoStack();
    QCOMPARE(stack->undoText(), QString("Apply Design"));

    editor->undo();
    QCOMPARE(Tabs()->currentIndex(), 0);
    QCOMPARE(editor->Popup()->Levels(), int16_t{2});
    QCOMPARE(Child<QTableView>("grdLevels")->model()->rowCount(), 1);  // still edited
    QCOMPARE(stack->undoText(), QString("Change Title"));
    editor->undo();
    QCOMPARE(Child<QLineEdit>("txtTitle")->text(), QString("Products"));
    editor->undo();
    QCOMPARE(Child<QTableView>("grdLevels")->model()->rowCount(), 2);
    editor->undo();
    QCOMPARE(Child<QTableView>("grdFields")->model()->index(0, 0).data().toString(),
             QString("Name"));
    editor->undo();
    QCOMPARE(Tabs()->currentIndex(), 1);
    QVERIFY(Row({"20", "10"}).isValid());
    QVERIFY(!stack->canUndo());
    QCOMPARE(save("Undone"), opened);

    while (stack->canRedo()) editor->redo();
    QCOMPARE(Tabs()->currentIndex(), 0);
    QCOMPARE(save("Redone"), edited);
    ClickTab(1);
    QCOMPARE(Outline(), QStringList({"Products Shop", "10", "20"}));
  }

  // Two editors on one popup: a save over the other's save asks first, and
  // each answer does what it says.
  void aSaveOverAnotherEditorsSaveAsksFirst() {
    OpenProducts();
    auto files = [&](const std::string& name) {
      return zephyr::testing::ReadBytes(dir->File(name + ".ZPT")) +
             zephyr::testing::ReadBytes(dir->File(name + ".ZPD"));
    };
    PopupControlEdit other;
    auto other_messages = std::make_shared<zephyr::testing::ScriptedMessageBox>();
    auto other_dialog = std::make_shared<zephyr::testing::ScriptedFileDialog>();
    other.SetMessageBox(other_messages);
    other.SetFileDialog(other_dialog);
    other.SetProgress(std::make_shared<zephyr::NoProgress>());
    other_messages->answers = {MessageAnswer::kNo};  // the first editor has it open
    other.OpenPopup(dir->Path(), "Products");
    QCOMPARE(other_messages->shown.back().button_texts,
             (std::vector<std::string>{"Open Read-Only", "Open Anyway", "Cancel"}));
    other.Popup()->Title("Theirs");
    QVERIFY(other.SaveChanges(false));
    const std::string theirs = files("Products");

    editor->Popup()->Title("Mine");
    messages->answers = {MessageAnswer::kCancel};
    QVERIFY(!editor->SaveChanges(false));
    QCOMPARE(messages->shown.back().title, std::string("Popup Changed on Disk"));
    QCOMPARE(messages->shown.back().button_texts,
             (std::vector<std::string>{"Overwrite", "Save As...", "Cancel"}));
    QCOMPARE(files("Products"), theirs);

    messages->answers = {MessageAnswer::kYes};
    QVERIFY(editor->SaveChanges(false));
    const std::string mine = files("Products");
    QVERIFY(mine != theirs && mine.find("Mine") != std::string::npos);
    const size_t asked = messages->shown.size();
    QVERIFY(editor->SaveChanges(false));  // its own save is no change
    QCOMPARE(messages->shown.size(), asked);

    other_messages->answers = {MessageAnswer::kNo};
    other_dialog->answers = {dir->File("Theirs.zpt")};
    QVERIFY(other.SaveChanges(false));
    QCOMPARE(files("Products"), mine);
    QVERIFY(files("Theirs").find("Theirs") != std::string::npos);
  }

  // The editor watches its popup: another program's save offers a reload when
  // nothing here is unsaved, and otherwise tells the host that a save will ask.
  void anotherProgramsSaveOffersAReloadOrMarksTheWork() {
    OpenProducts();
    QSignalSpy marked(editor.get(), &PopupControlEdit::changedOnDiskChanged);
    auto save_elsewhere = [&](const char* title) {
      zephyr::PopupClass other;
      other.PopupPath(dir->Path());
      other.DataSource("Products");
      other.OpenPopup();
      other.Title(title);
      zephyr::SavePopupInTreeOrder(other);
    };
    messages->answers = {MessageAnswer::kYes};
    save_elsewhere("Reloaded");
    QTRY_COMPARE(editor->Popup()->Title(), std::string("Reloaded"));
    QCOMPARE(messages->shown.back().title, std::string("Popup Changed on Disk"));
    QVERIFY(!editor->ChangedOnDisk());

    Grid()->setCurrentIndex(Grid()->model()->index(0, 0));
    QTest::keyClick(Grid(), Qt::Key_F1);
    QVERIFY(editor->Modified());
    const size_t asked = messages->shown.size();
    save_elsewhere("Again");
    QTRY_COMPARE(marked.count(), 1);
    QCOMPARE(marked.back().at(0).toBool(), true);
    QCOMPARE(messages->shown.size(), asked);  // unsaved work: no question now
    QVERIFY(editor->ChangedOnDisk());
  }

  // The rows' order in the saved table is data_view_test's business.
  void saveAsRefusesAnInvalidNameAndAsksAgain() {
    OpenProducts();
    dialog->answers = {dir->File("bad&name.zpt"), dir->File("Copy.zpt")};
    editor->SaveChanges(true);
    QCOMPARE(Prompts(),
             std::vector<std::string>{"Invalid Filename. Filename contains invalid characters"});
    QCOMPARE(dialog->requests.front().filter, std::string("Zephyr Popup File (*.zpt)|*.zpt"));
    QVERIFY(!editor->DataChanged());
    QVERIFY(zephyr::PathExists(dir->File("Copy.ZPD")));
    // The popup is saved under its new name; the control keeps the names it was given.
    QCOMPARE(editor->Popup()->DataSource(), std::string("Copy"));
    QCOMPARE(editor->SourceFile(), std::string("Products"));
  }

  // Unsaved work: every change sets it, only a save that wrote clears it;
  // DataChanged keeps the component's rules beside it.
  void unsavedWorkIsClearedOnlyByASaveThatWrote() {
    OpenProducts();
    QSignalSpy modified(editor.get(), &PopupControlEdit::modifiedChanged);
    QVERIFY(!editor->Modified());
    auto* grid = Child<QTreeView>("DataGrid");
    grid->setFocus();
    grid->setCurrentIndex(grid->model()->index(0, 0));
    QTest::keyClick(grid, Qt::Key_F1);
    QVERIFY(editor->Modified());
    QVERIFY(!editor->DataChanged());  // a successful add leaves the flag alone
    QCOMPARE(modified.count(), 1);

    QVERIFY(!editor->SaveChanges(true));  // the dialog is cancelled
    QVERIFY(editor->Modified());
    ClickTab(0);
    Child<QLineEdit>("txtTitle")->clear();
    QVERIFY(!editor->SaveChanges(false));  // the design fails Validate: nothing written
    QCOMPARE(Prompts().back(), std::string("Missing Title.  You must enter a Title"));
    QVERIFY(!editor->DataChanged());  // the component clears it all the same
    QVERIFY(editor->Modified());
    QTest::keyClicks(Child<QLineEdit>("txtTitle"), "Stock");
    QVERIFY(editor->SaveChanges(false));
    QVERIFY(!editor->Modified());
    QCOMPARE(modified.count(), 2);

    // Design edits count too, a level typed and a field moved.
    SelectRow("grdFields", 2);
    QTest::mouseClick(Child<QToolButton>("cmdUp"), Qt::LeftButton);
    QVERIFY(editor->Modified());
  }

  // A popup whose template reads but whose table is damaged: the error
  // reaches the host and the editor keeps the popup it had.
  void aFailedOpenLeavesTheEditorAsItWas() {
    OpenProducts();
    const QStringList outline = Outline();
    zephyr::testing::PopupDesign design;
    design.questions = {"Group", "Item"};
    design.fields = {{"Name", 10}, {"Note", 5}};
    zephyr::testing::WritePopupFiles(dir->Path(), "Damaged", design, {{"  10", "x", "y"}});
    zephyr::testing::WriteBytes(dir->File("Damaged.ZPD"), "no table at all");
    QVERIFY_THROWS_EXCEPTION(zephyr::Error, editor->OpenPopup(dir->Path(), "Damaged"));
    QCOMPARE(editor->PopupTitle(), std::string("Products"));
    QCOMPARE(editor->SourceFile(), std::string("Products"));
    QCOMPARE(Outline(), outline);
    QVERIFY(editor->SaveChanges(false));
    QCOMPARE(zephyr::testing::ReadBytes(dir->File("Damaged.ZPD")), std::string("no table at all"));
    zephyr::PopupClass saved;
    saved.PopupPath(dir->Path());
    saved.DataSource("Products");
    saved.OpenPopup();
    QCOMPARE(saved.PopupItems()->Count(), 2);
  }

  // A new field's length starts empty and must be typed; zero is refused.
  void aNewFieldNeedsALength() {
    editor->OpenPopup(dir->Path(), "");
    Child<QLineEdit>("txtTitle")->setText("Pets");
    QTest::mouseClick(Child<QPushButton>("cmdAddLevels"), Qt::LeftButton);
    QTest::keyClicks(QApplication::focusWidget(), "Animal");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    QTest::mouseClick(Child<QPushButton>("cmdAddField"), Qt::LeftButton);
    QTest::keyClicks(QApplication::focusWidget(), "Price");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    auto* fields = Child<QTableView>("grdFields");
    QCOMPARE(fields->model()->index(0, 1).data().toString(), QString());
    ClickTab(1);
    QCOMPARE(Prompts().back(), std::string("Fields Length must be numeric"));
    fields->model()->setData(fields->model()->index(0, 1), "0");
    ClickTab(1);
    QCOMPARE(Prompts().back(), std::string("Fields Length must be at least 1"));
    QCOMPARE(Tabs()->currentIndex(), 0);
  }

  // A switch of views shows one view at a time: the window never grows to
  // hold both, and a step that is none of the list's falls back to 10.
  void switchingViewsKeepsTheSizeAndResetsAStrangeStep() {
    OpenProducts();
    editor->resize(700, 400);
    Child<QComboBox>("cboStep")->setEditText("15");
    ClickTab(0);
    ClickTab(1);
    QApplication::processEvents();
    QCOMPARE(editor->height(), 400);
    QCOMPARE(Child<QComboBox>("cboStep")->currentText(), QString("10"));
  }

  void cancelledOrRefusedSaveChangesNothing() {
    OpenProducts();
    Child<QLineEdit>("txtTitle")->setText("Changed");
    QVERIFY(editor->DataChanged());
    editor->SaveChanges(true);  // the dialog is cancelled
    QVERIFY(editor->DataChanged());
    QVERIFY(messages->shown.empty());

    // A target that exists but cannot be opened, even by the superuser.
    std::string blocked = dir->File("Blocked.zpt");
    int sock = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::snprintf(address.sun_path, sizeof(address.sun_path), "%s", blocked.c_str());
    QCOMPARE(::bind(sock, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    dialog->answers = {blocked};
    editor->SaveChanges(true);
    ::close(sock);
    QCOMPARE(Prompts().back().substr(0, 38), std::string("You do not have File Access to the fil"));
    QVERIFY(editor->DataChanged());
    QVERIFY(!zephyr::PathExists(dir->File("Blocked.ZPD")));
  }

  void addButtonsAndFKeysAddWithGeneratedCodes() {
    OpenProducts();
    auto* grid = Child<QTreeView>("DataGrid");
    grid->setFocus();
    grid->setCurrentIndex(grid->model()->index(0, 0));  // the title row
    QVERIFY(!Child<QPushButton>("cmdAdd2")->isEnabled());
    QTest::keyClick(grid, Qt::Key_F1);  // a top-level item after the last: 20 + 10
    auto added = editor->Popup()->PopupItems()->Item(zephyr::Variant(3));
    QCOMPARE(added->PopupKey(), std::string("  30"));
    QCOMPARE(added->PopupValues()->Item(zephyr::Variant(1))->Value(), std::string("<.Undefined.>"));
    QCOMPARE(Outline().mid(0, 7), QStringList({"Products", "10", "10", "20", "20", "10", "30"}));
    QVERIFY(Child<QPushButton>("cmdAdd2")->isEnabled());  // the new row is current

    // Inserting after 10 when 20 follows, with step 10, leaves no room: asked.
    QModelIndex fruit = grid->model()->index(0, 0, grid->model()->index(0, 0));
    grid->setCurrentIndex(grid->model()->index(0, 0, fruit));
    keys->answers = {"10", "15"};  // a used code makes every later answer used
    editor->AddSibling();
    QCOMPARE(keys->asked, 3);
    QCOMPARE(editor->Popup()->PopupItems()->Item(zephyr::Variant(1))->Children()->Count(), 2);
    QVERIFY(editor->DataChanged());  // only the cancelled add marks it
  }

  void keyboardAloneBuildsAPopupFromNothing() {
    editor->OpenPopup(dir->Path(), "");
    auto key = [](int code, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
      QTest::keyClick(QApplication::focusWidget(), static_cast<Qt::Key>(code), modifiers);
      QApplication::processEvents();  // editors commit on the next turn of the loop
    };
    auto type = [](const char* text) { QTest::keyClicks(QApplication::focusWidget(), text); };
    type("Pets");
    for (int i = 0; i < 2; ++i) key(Qt::Key_Tab);  // the levels grid, its Add button
    key(Qt::Key_Space);
    type("Animal");
    key(Qt::Key_Return);
    for (int i = 0; i < 3; ++i) key(Qt::Key_Tab);  // Add, the fields grid, its Add
    key(Qt::Key_Space);
    type("Price");
    key(Qt::Key_Tab);  // on to the length
    type("8");
    key(Qt::Key_Return);
    key(Qt::Key_PageDown, Qt::ControlModifier);  // to the data view
    key(Qt::Key_F1);
    key(Qt::Key_Return);
    type("Dog");
    key(Qt::Key_Return);
    dialog->answers = {dir->File("pets.zpt")};
    editor->SaveChanges(false);
    QVERIFY(messages->shown.empty());

    zephyr::PopupClass saved;
    saved.PopupPath(dir->Path());
    saved.DataSource("pets");
    saved.OpenPopup();
    QCOMPARE(saved.Title(), std::string("Pets"));
    QCOMPARE(saved.Levels(), int16_t{1});
    QCOMPARE(saved.PopupFields()->Item(zephyr::Variant(2))->FieldLength(), int16_t{8});
    auto dog = saved.PopupItems()->Item(zephyr::Variant(1));
    QCOMPARE(dog->PopupValues()->Item(zephyr::Variant(1))->Value(), std::string("Dog"));
  }

  void editBackColorIsPersistedOnlyWhenNotTheDefault() {
    zephyr::editor::PropertyBag bag;
    editor->WriteProperties(bag);
    QVERIFY(!bag.Contains(zephyr::editor::kEditBackColorProperty));
    const uint default_color = editor->EditBackColor();
    editor->setProperty("EditBackColor", 0x0000FFu);
    editor->WriteProperties(bag);
    PopupControlEdit other;
    other.ReadProperties(bag);
    QCOMPARE(other.EditBackColor(), 0x0000FFu);
    editor->EditBackColor(default_color);  // back to the default: nothing stored
    editor->WriteProperties(bag);
    QVERIFY(!bag.Contains(zephyr::editor::kEditBackColorProperty));
  }
};

QTEST_MAIN(PopupControlEditTest)
#include "popup_control_edit_test.moc"
