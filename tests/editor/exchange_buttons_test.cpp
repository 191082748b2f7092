// The import and export buttons of the design view, clicked as a user clicks
// them, with frmLevels answered by typing into it.
#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QStandardPaths>
#include <QTableView>
#include <QTest>
#include <QTimer>
#include <filesystem>
#include <functional>

#include "editor_fixture.h"
#include "zephyr/excel/excel_import.h"

using zephyr::MessageAnswer;
using zephyr::editor::PopupControlEdit;

namespace {

// "key=text" of every item, in tree order.
QStringList Describe(const zephyr::PopupItems& items) {
  QStringList lines;
  for (const auto& item : items) {
    lines << QString::fromStdString(item->PopupKey() + "=" +
                                    item->PopupValues()->Item(zephyr::Variant(1))->Value());
    if (item->HasChildren()) lines << Describe(*item->Children());
  }
  return lines;
}

QStringList Questions(zephyr::PopupClass& popup) {
  QStringList questions;
  for (const auto& level : *popup.PopupLevels()) {
    questions << QString::fromStdString(level->Question().ToText());
  }
  return questions;
}

// A progress that fails when it is told one message.
class FailingProgress : public zephyr::NoProgress {
 public:
  explicit FailingProgress(std::string fatal) : fatal_(std::move(fatal)) {}
  void SetMessage(const std::string& message) override {
    if (message == fatal_) throw std::runtime_error("failed at " + message);
  }

 private:
  std::string fatal_;
};

const char* const kThreeLevels =
    "Key,Dept,Group,Item,Note\n101010,Food,Fruit,Apples,a\n101020,Food,Fruit,Pears,p\n";

}  // namespace

class ExchangeButtonsTest : public QObject, zephyr::testing::EditorFixture {
  Q_OBJECT

 private slots:
  void initTestCase() { QStandardPaths::setTestModeEnabled(true); }
  void init() {
    SetUpEditor();
    OpenProducts();
    ClickTab(0);  // the buttons sit in the design view
  }
  void cleanup() { TearDownEditor(); }

  void keylessSheetAsksForLevelsAndIsSavedFromTheDesignView() {
    zephyr::testing::WriteBytes(dir->File("sheet.csv"),
                                "Key,Group,Item,Note\n,Fruit,Apples,a\n,Fruit,Pears,p\n"
                                ",Bakery,Bread,b\n");
    const auto products = editor->Popup();
    dialog->answers = {dir->File("sheet.csv")};
    zephyr::testing::WhenModal([](QWidget* levels) {
      QCOMPARE(levels->objectName(), QString("frmLevels"));
      QCOMPARE(levels->windowTitle(), QString("Input Level Count"));
      auto* count = levels->findChild<QLineEdit*>("txtLevel");
      QTest::keyClicks(count, "two");
      QTest::mouseClick(levels->findChild<QPushButton*>("OKButton"), Qt::LeftButton);
      QVERIFY(levels->isVisible());  // a non-numeric count keeps the dialog open
      count->clear();
      QTest::keyClicks(count, "2");
      QTest::mouseClick(levels->findChild<QPushButton*>("OKButton"), Qt::LeftButton);
    });
    QTest::mouseClick(Child<QPushButton>("cmdImport"), Qt::LeftButton);
    QCOMPARE(Prompts(), std::vector<std::string>{zephyr::excel::kInvalidLevelCount});
    QVERIFY(editor->DataChanged());
    const QStringList imported = Describe(*editor->Popup()->PopupItems());
    QCOMPARE(imported.size(), 5);
    QVERIFY(imported.contains("  10=Fruit") && imported.contains("1020=Pears"));
    // The import is one command: undone, the popup it replaced is back.
    const auto made = editor->Popup();
    editor->undo();
    QVERIFY(editor->Popup() == products);
    editor->redo();
    QVERIFY(editor->Popup() == made);

    // Saved without visiting the data view, every imported item is written.
    editor->SaveChanges(false);
    zephyr::PopupClass reopened;
    reopened.PopupPath(dir->Path());
    reopened.DataSource("Products");
    reopened.OpenPopup();
    QCOMPARE(Describe(*reopened.PopupItems()), imported);

    // The picker opens where the last workbook was found.
    dialog->answers = {};
    QTest::mouseClick(Child<QPushButton>("cmdImport"), Qt::LeftButton);
    QCOMPARE(dialog->requests.back().initial_folder, dir->Path());
  }

  // With no spreadsheet program listening, Import says so as the component
  // does and offers a workbook file; Export goes to a file at once.
  void noRunningSpreadsheetFallsBackToFiles() {
#ifndef ZEPHYR_WITH_CALC
    QSKIP("built without LibreOffice's SDK: the editor uses workbook files only");
#endif
    qputenv("ZEPHYR_CALC_PIPE", "zephyr-nobody-listens");
    editor->UseRunningSpreadsheet(true);
    zephyr::testing::WriteBytes(dir->File("sheet.csv"),
                                "Key,Group,Note\n10,Fruit,f\n20,Bakery,b\n");
    messages->answers = {MessageAnswer::kOk, MessageAnswer::kOk, MessageAnswer::kYes,
                         MessageAnswer::kNo};
    dialog->answers = {dir->File("sheet.csv")};
    QTest::mouseClick(Child<QPushButton>("cmdImport"), Qt::LeftButton);
    const std::vector<std::string> prompts = Prompts();
    QVERIFY(prompts.size() >= 3);
    QVERIFY(prompts[0].rfind("ZephyrPopup could not detect a loaded copy of Microsoft Excel.", 0) ==
            0);
    QCOMPARE(prompts[2], std::string("Import from a workbook file instead?"));
    QCOMPARE(dialog->requests.back().title, std::string("Import From Excel"));
    QCOMPARE(editor->Popup()->Levels(), int16_t{1});  // the sheet's design, taken

    dialog->answers = {dir->File("out.xlsx")};
    QTest::mouseClick(Child<QPushButton>("cmdExport"), Qt::LeftButton);
    QCOMPARE(dialog->requests.back().title, std::string("Export To Excel"));
    QVERIFY(std::filesystem::exists(dir->File("out.xlsx")));
    qunsetenv("ZEPHYR_CALC_PIPE");
  }

  void differentStructureIsKeptReplacedOrLeftAlone_data() {
    QTest::addColumn<int>("answer");
    QTest::addColumn<QStringList>("questions");
    QTest::newRow("Yes keeps the popup's questions")
        << int(MessageAnswer::kYes) << QStringList({"Group", "Item", "Item"});
    QTest::newRow("No takes the sheet's headings")
        << int(MessageAnswer::kNo) << QStringList({"Dept", "Group", "Item"});
    QTest::newRow("Cancel changes nothing")
        << int(MessageAnswer::kCancel) << QStringList({"Group", "Item"});
  }
  void differentStructureIsKeptReplacedOrLeftAlone() {
    QFETCH(int, answer);
    QFETCH(QStringList, questions);
    const QStringList before = Describe(*editor->Popup()->PopupItems());
    zephyr::testing::WriteBytes(dir->File("three.csv"), kThreeLevels);
    dialog->answers = {dir->File("three.csv")};
    messages->answers = {static_cast<MessageAnswer>(answer)};
    QTest::mouseClick(Child<QPushButton>("cmdImport"), Qt::LeftButton);

    const zephyr::Message& question = messages->shown.front();
    QCOMPARE(question.title, std::string("Data Structure Differences Detected"));
    QCOMPARE(question.buttons, zephyr::MessageButtons::kYesNoCancel);
    QVERIFY(question.prompt.find("ZephyrPopup Levels: 2\r\nExcel Levels:   3") !=
            std::string::npos);
    QCOMPARE(Questions(*editor->Popup()), questions);
    QCOMPARE(Child<QTableView>("grdLevels")->model()->rowCount(), questions.size());
    bool cancelled = answer == int(MessageAnswer::kCancel);
    QCOMPARE(editor->DataChanged(), !cancelled);
    QCOMPARE(editor->Modified(), !cancelled);
    if (cancelled) {
      QCOMPARE(Describe(*editor->Popup()->PopupItems()), before);
    } else {
      QCOMPARE(Describe(*editor->Popup()->PopupItems()),
               QStringList({"    10=Food", "10  10=Fruit", "101010=Apples", "101020=Pears"}));
    }
  }

  void brokenSheetLeavesTheEditorAsItWas() {
    const QStringList before = Describe(*editor->Popup()->PopupItems());
    zephyr::testing::WriteBytes(dir->File("broken.csv"),
                                "Key,Group,Item,Note\n0101,A,B,x\n0102,A,C,y\n01,A,D,z\n");
    dialog->answers = {dir->File("broken.csv")};
    QTest::mouseClick(Child<QPushButton>("cmdImport"), Qt::LeftButton);
    QCOMPARE(messages->shown.size(), size_t{1});
    QVERIFY(messages->shown[0].prompt.starts_with("Invalid Key Length found. The Key in Row 3 "));
    QCOMPARE(Describe(*editor->Popup()->PopupItems()), before);
    QCOMPARE(Questions(*editor->Popup()), QStringList({"Group", "Item"}));
    QVERIFY(!editor->DataChanged());

    // An import that fails after it has begun to rebuild the popup.
    editor->SetProgress(std::make_shared<FailingProgress>("Copying Data to ZephyrPopup"));
    zephyr::testing::WriteBytes(dir->File("three.csv"), kThreeLevels);
    dialog->answers = {dir->File("three.csv")};
    messages->answers = {MessageAnswer::kNo};  // the sheet's structure
    QTest::mouseClick(Child<QPushButton>("cmdImport"), Qt::LeftButton);
    QVERIFY(Prompts().back().starts_with("An Unexpected error occured"));
    QCOMPARE(Describe(*editor->Popup()->PopupItems()), before);
    QCOMPARE(Questions(*editor->Popup()), QStringList({"Group", "Item"}));
    QCOMPARE(Child<QTableView>("grdLevels")->model()->rowCount(), 2);
    QVERIFY(!editor->Modified());
  }

  void exportedWorkbookComesBackThroughTheImport() {
    dialog->answers = {dir->File("products.xlsx")};
    QTest::mouseClick(Child<QPushButton>("cmdExport"), Qt::LeftButton);
    QCOMPARE(dialog->requests.back().filter, std::string("Excel Workbook (*.xlsx)|*.xlsx"));
    QCOMPARE(messages->shown.back().title, std::string("Export To Excel"));
    const std::string told = Prompts().back();
    QVERIFY(told.starts_with("Exported 3 rows to"));
    QVERIFY(told.find("cannot bring back") != std::string::npos);  // Fruit's own note

    // Imported from the data view, through the host's menu command.
    const QStringList exported = Describe(*editor->Popup()->PopupItems());
    ClickTab(1);
    dialog->answers = {dir->File("products.xlsx")};
    editor->ImportWorkbook();
    QCOMPARE(Describe(*editor->Popup()->PopupItems()), exported);
    QVERIFY(editor->DataChanged());
    QCOMPARE(Outline(), QStringList({"Products", "10", "10", "20", "20", "10"}));
    ClickTab(0);

    dialog->answers = {};  // cancelled: nothing more is told
    size_t told_before = messages->shown.size();
    QTest::mouseClick(Child<QPushButton>("cmdExport"), Qt::LeftButton);
    QCOMPARE(messages->shown.size(), told_before);
  }
};

QTEST_MAIN(ExchangeButtonsTest)
#include "exchange_buttons_test.moc"
