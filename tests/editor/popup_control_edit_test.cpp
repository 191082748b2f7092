// PopupControlEdit driven as a user drives it: by object name, with clicks
// and typing, and the dialogs answered by scripted interfaces.
#include "zephyr/editor/popup_control_edit.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <QAction>
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
#include <deque>
#include <optional>

#include "helpers/popup_files.h"
#include "helpers/recorders.h"
#include "helpers/temp_dir.h"
#include "zephyr/support/file_utils.h"

using zephyr::MessageAnswer;
using zephyr::editor::PopupControlEdit;
using zephyr::testing::ScriptedMessageBox;

namespace {

class ScriptedFileDialog : public zephyr::FileDialog {
 public:
  std::optional<std::string> ShowSave(const zephyr::SaveDialogRequest& request) override {
    requests.push_back(request);
    if (answers.empty()) return std::nullopt;
    auto answer = answers.front();
    answers.pop_front();
    return answer;
  }
  std::deque<std::optional<std::string>> answers;
  std::vector<zephyr::SaveDialogRequest> requests;
};

class ScriptedKeyPrompt : public zephyr::editor::NewKeyPrompt {
 public:
  std::string AskNewKey() override {
    ++asked;
    if (answers.empty()) return "-1";
    std::string answer = answers.front();
    answers.pop_front();
    return answer;
  }
  std::deque<std::string> answers;
  int asked = 0;
};

// Counts how often a widget was shown.
class ShowCounter : public QObject {
 public:
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() == QEvent::Show) ++shows;
    return false;
  }
  int shows = 0;
};

// Products: 2 levels, fields Name(10) and Note(5).
void WriteProducts(const std::string& folder) {
  zephyr::testing::PopupDesign design;
  design.title = "Products";
  design.questions = {"Group", "Item"};
  design.fields = {{"Name", 10}, {"Note", 5}};
  zephyr::testing::WritePopupFiles(folder, "Products", design,
                                   {{"  20", "Bakery", "b"},
                                    {"  10", "Fruit", "f"},
                                    {"1020", "Pears", "p"},
                                    {"1010", "Apples", "a"},
                                    {"2010", "Bread", "r"}});
}

}  // namespace

class PopupControlEditTest : public QObject {
  Q_OBJECT

 private:
  std::unique_ptr<zephyr::testing::TempDir> dir_;
  std::unique_ptr<PopupControlEdit> editor_;
  std::shared_ptr<ScriptedMessageBox> messages_;
  std::shared_ptr<ScriptedFileDialog> dialog_;
  std::shared_ptr<ScriptedKeyPrompt> keys_;

  template <typename T>
  T* Child(const char* name) {
    T* child = editor_->findChild<T*>(QString::fromLatin1(name));
    if (!child) qFatal("no child %s", name);
    return child;
  }
  QTabBar* Tabs() { return Child<QTabBar>("tbsZephyrPopup"); }
  void ClickTab(int index) {
    QTabBar* tabs = Tabs();
    QTest::mouseClick(tabs, Qt::LeftButton, {}, tabs->tabRect(index).center());
  }
  std::vector<std::string> Prompts() const {
    std::vector<std::string> prompts;
    for (const auto& message : messages_->shown) prompts.push_back(message.prompt);
    return prompts;
  }
  void OpenProducts() {
    WriteProducts(dir_->Path());
    editor_->OpenPopup(dir_->Path(), "Products");
  }
  void SelectRow(const char* grid, int grid_row) {
    auto* view = Child<QTableView>(grid);
    view->setCurrentIndex(view->model()->index(grid_row - 1, 0));
  }
  // Column 0 texts of the data view, depth first, title row first.
  QStringList Outline() {
    QStringList texts;
    auto* view = Child<QTreeView>("DataGrid");
    for (QModelIndex row = view->model()->index(0, 0); row.isValid(); row = view->indexBelow(row)) {
      texts << row.data().toString();
    }
    return texts;
  }

 private slots:
  void init() {
    dir_ = std::make_unique<zephyr::testing::TempDir>();
    editor_ = std::make_unique<PopupControlEdit>();
    messages_ = std::make_shared<ScriptedMessageBox>();
    dialog_ = std::make_shared<ScriptedFileDialog>();
    keys_ = std::make_shared<ScriptedKeyPrompt>();
    editor_->SetMessageBox(messages_);
    editor_->SetFileDialog(dialog_);
    editor_->SetProgress(std::make_shared<zephyr::NoProgress>());
    editor_->SetNewKeyPrompt(keys_);
    editor_->resize(800, 500);
    editor_->show();
    editor_->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(editor_.get()));
  }
  void cleanup() {
    editor_.reset();
    dir_.reset();
  }

  void opensIntoTheSortedDataViewAndReusesStoredNames() {
    QSignalSpy data_mode(editor_.get(), &PopupControlEdit::BeforeDataMode);
    OpenProducts();
    QCOMPARE(Tabs()->currentIndex(), 1);
    QVERIFY(editor_->DataMode());
    QVERIFY(Child<QWidget>("FraDataMode")->isVisible());
    QVERIFY(!Child<QWidget>("fraDesignMode")->isVisible());
    QVERIFY(data_mode.count() >= 1);
    QCOMPARE(Outline(), QStringList({"Products", "10", "10", "20", "20", "10"}));
    auto* grid = Child<QTreeView>("DataGrid");
    QCOMPARE(grid->model()->index(0, 0).data(Qt::UserRole).toInt(), 0);
    QVERIFY(!editor_->DataChanged());

    editor_->OpenPopup("", "");  // the stored folder and file again
    QCOMPARE(editor_->PopupTitle(), std::string("Products"));
    editor_->SourceFile("");
    editor_->OpenPopup("", "");  // no file: a new popup in the design view
    QCOMPARE(Tabs()->currentIndex(), 0);
    QVERIFY(Child<QWidget>("fraDesignMode")->isVisible());
  }

  void titleBoxRefusesDoubleQuotesAndMarksChanges() {
    OpenProducts();
    ClickTab(0);
    auto* title = Child<QLineEdit>("txtTitle");
    title->clear();
    QTest::keyClicks(title, "Stock");
    QCOMPARE(editor_->PopupTitle(), std::string("Stock"));
    QVERIFY(editor_->DataChanged());
    QTest::keyClicks(title, "\"");
    QCOMPARE(Prompts().back(), std::string("Double Quotes are not Permitted in Title"));
    QCOMPARE(editor_->PopupTitle(), std::string("Stock"));
  }

  void refusedSwitchNeverShowsTheDataView() {
    editor_->OpenPopup(dir_->Path(), "");  // a new popup: no title, no levels
    ShowCounter counter;
    Child<QWidget>("FraDataMode")->installEventFilter(&counter);
    ClickTab(1);
    QCOMPARE(Tabs()->currentIndex(), 0);
    QCOMPARE(counter.shows, 0);
    QCOMPARE(Prompts(), std::vector<std::string>{"Missing Title.  You must enter a Title"});
    QVERIFY(!editor_->DataMode());
  }

  void levelsStopAtEightAndOnlyTheDeepestGoes() {
    editor_->OpenPopup(dir_->Path(), "");
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
    messages_->answers = {MessageAnswer::kYes};
    SelectRow("grdLevels", 8);
    QTest::mouseClick(remove, Qt::LeftButton);
    QCOMPARE(messages_->shown.back().title, std::string("Delete Level? Level8"));
    QVERIFY(add->isEnabled());
    QCOMPARE(Child<QTableView>("grdLevels")->model()->rowCount(), 7);
  }

  void savedDesignMovesValuesAndReformatsKeys() {
    OpenProducts();
    ClickTab(0);
    // Move Note before Name, drop the second level.
    SelectRow("grdFields", 2);
    QTest::mouseClick(Child<QToolButton>("cmdUp"), Qt::LeftButton);
    messages_->answers = {MessageAnswer::kYes};
    SelectRow("grdLevels", 2);
    QTest::mouseClick(Child<QPushButton>("cmdDeleteLevels"), Qt::LeftButton);
    ClickTab(1);
    QCOMPARE(Tabs()->currentIndex(), 1);
    auto popup = editor_->Popup();
    QCOMPARE(popup->Levels(), int16_t{1});
    QCOMPARE(popup->PopupFields()->Item(zephyr::Variant(2))->Name(), std::string("Note"));
    auto fruit = popup->PopupItems()->Item(zephyr::Variant(1));
    QCOMPARE(fruit->PopupKey(), std::string("10"));
    QCOMPARE(fruit->Children()->Count(), 0);
    QCOMPARE(fruit->PopupValues()->Item(zephyr::Variant(1))->Value(), std::string("f"));
    QCOMPARE(fruit->PopupValues()->Item(zephyr::Variant(2))->Value(), std::string("Fruit"));
    QCOMPARE(Outline(), QStringList({"Products", "10", "20"}));
  }

  void saveAsChecksTheNameAndSavesInGridOrder() {
    OpenProducts();
    dialog_->answers = {dir_->File("bad&name.zpt"), dir_->File("Copy.zpt")};
    editor_->SaveChanges(true);
    QCOMPARE(Prompts(),
             std::vector<std::string>{"Invalid Filename. Filename contains invalid characters"});
    QCOMPARE(dialog_->requests.front().filter, std::string("Zephyr Popup File (*.zpt)|*.zpt"));
    QVERIFY(!editor_->DataChanged());

    PopupControlEdit reopened;
    reopened.SetProgress(std::make_shared<zephyr::NoProgress>());
    reopened.OpenPopup(dir_->Path(), "Copy");
    auto items = reopened.Popup()->PopupItems();
    QCOMPARE(items->Count(), 2);
    // Records were written in grid order, so the reload finds codes in order.
    QCOMPARE(items->Item(zephyr::Variant(1))->PopupKey(), std::string("  10"));
    QCOMPARE(items->Item(zephyr::Variant(1))->Children()->Item(zephyr::Variant(1))->PopupKey(),
             std::string("1010"));
  }

  void cancelledOrRefusedSaveChangesNothing() {
    OpenProducts();
    Child<QLineEdit>("txtTitle")->setText("Changed");
    QVERIFY(editor_->DataChanged());
    editor_->SaveChanges(true);  // the dialog is cancelled
    QVERIFY(editor_->DataChanged());
    QVERIFY(messages_->shown.empty());

    // A target that exists but cannot be opened, even by the superuser.
    std::string blocked = dir_->File("Blocked.zpt");
    int sock = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::snprintf(address.sun_path, sizeof(address.sun_path), "%s", blocked.c_str());
    QCOMPARE(::bind(sock, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    dialog_->answers = {blocked};
    editor_->SaveChanges(true);
    ::close(sock);
    QCOMPARE(Prompts().back().substr(0, 38), std::string("You do not have File Access to the fil"));
    QVERIFY(editor_->DataChanged());
    QVERIFY(!zephyr::PathExists(dir_->File("Blocked.ZPD")));
  }

  void addButtonsAndFKeysAddWithGeneratedCodes() {
    OpenProducts();
    auto* grid = Child<QTreeView>("DataGrid");
    grid->setFocus();
    grid->setCurrentIndex(grid->model()->index(0, 0));  // the title row
    QVERIFY(!Child<QPushButton>("cmdAdd2")->isEnabled());
    QTest::keyClick(grid, Qt::Key_F1);  // a top-level item after the last: 20 + 10
    auto added = editor_->Popup()->PopupItems()->Item(zephyr::Variant(3));
    QCOMPARE(added->PopupKey(), std::string("  30"));
    QCOMPARE(added->PopupValues()->Item(zephyr::Variant(1))->Value(), std::string("<.Undefined.>"));
    QCOMPARE(Outline().mid(0, 7), QStringList({"Products", "10", "10", "20", "20", "10", "30"}));
    QVERIFY(Child<QPushButton>("cmdAdd2")->isEnabled());  // the new row is current

    // Inserting after 10 when 20 follows, with step 10, leaves no room: asked.
    QModelIndex fruit = grid->model()->index(0, 0, grid->model()->index(0, 0));
    grid->setCurrentIndex(grid->model()->index(0, 0, fruit));
    keys_->answers = {"10", "15"};  // a used code makes every later answer used
    editor_->AddSibling();
    QCOMPARE(keys_->asked, 3);
    QCOMPARE(editor_->Popup()->PopupItems()->Item(zephyr::Variant(1))->Children()->Count(), 2);
    QVERIFY(editor_->DataChanged());  // only the cancelled add marks it
  }

  void editBackColorIsPersistedOnlyWhenSet() {
    zephyr::editor::PropertyBag bag;
    editor_->WriteProperties(bag);
    QVERIFY(!bag.Contains(zephyr::editor::kEditBackColorProperty));
    editor_->setProperty("EditBackColor", 0x0000FFu);
    editor_->WriteProperties(bag);
    PopupControlEdit other;
    other.ReadProperties(bag);
    QCOMPARE(other.EditBackColor(), 0x0000FFu);
  }
};

QTEST_MAIN(PopupControlEditTest)
#include "popup_control_edit_test.moc"
