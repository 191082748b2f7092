// The data view of PopupControlEdit: in-place editing with its checks, the
// item tree operations, the clipboard and find, driven through the outline.
// A model tester watches the outline through every change.
#include <QAbstractItemModelTester>
#include <QLineEdit>
#include <QPrinter>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>

#include "editor_fixture.h"
#include "zephyr/editor/data_grid_model.h"
#include "zephyr/editor/new_key_dialog.h"
#include "zephyr/table/dbase.h"

using zephyr::MessageAnswer;
using zephyr::Variant;

class DataViewTest : public QObject, zephyr::testing::EditorFixture {
  Q_OBJECT

 private:
  void Open() {
    OpenProducts();
    new QAbstractItemModelTester(
        Grid()->model(), QAbstractItemModelTester::FailureReportingMode::QtTest, editor.get());
    Grid()->setFocus();
  }
  // Types into a cell as a user does: select it, Enter, text, Enter.
  void Type(const QModelIndex& cell, const QString& text) {
    Grid()->setCurrentIndex(cell);
    QTest::keyClick(Grid(), Qt::Key_Return);
    auto* line = qobject_cast<QLineEdit*>(QApplication::focusWidget());
    QVERIFY(line);
    line->selectAll();
    QTest::keyClicks(line, text);
    QTest::keyClick(line, Qt::Key_Return);
    QApplication::processEvents();
  }
  std::shared_ptr<zephyr::PopupItem> Item(const QModelIndex& row) {
    return zephyr::FindItemByIdentity(row.siblingAtColumn(0).data(Qt::UserRole).toInt());
  }

 private slots:
  void init() { SetUpEditor(); }
  void cleanup() { TearDownEditor(); }

  void aTypedKeyIsPaddedAndRekeysTheBranch() {
    Open();
    auto fruit = Item(Row({"10"}));
    Type(Row({"10"}), "5a");
    QCOMPARE(Prompts(), std::vector<std::string>{"Popup Record Key must be numeric"});
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    Type(Row({"10"}), "5");
    QCOMPARE(fruit->PopupKey(), std::string("  05"));
    QCOMPARE(fruit->Children()->Item(Variant(1))->PopupKey(), std::string("0510"));
    QModelIndex rekeyed = Row({"05"});
    QVERIFY(rekeyed.data(zephyr::editor::DataGridModel::kKeyChangedRole).toBool());
    QVERIFY(editor->DataChanged());
    // Key entry flows on into the first value.
    QApplication::processEvents();
    QCOMPARE(Grid()->currentIndex(), rekeyed.siblingAtColumn(1));
    QVERIFY(qobject_cast<QLineEdit*>(QApplication::focusWidget()));
  }

  void aSiblingsKeyIsRefusedButAnotherParentsIsNot() {
    Open();
    Type(Row({"10", "20"}), "10");
    QCOMPARE(Prompts(), std::vector<std::string>{"Key already Exists. Please enter a unique key."});
    QCOMPARE(Item(Row({"10", "20"}))->PopupKey(), std::string("1020"));
    Type(Row({"20", "10"}), "20");  // 20 is free under Bakery
    QCOMPARE(Item(Row({"20", "20"}))->PopupKey(), std::string("2020"));
    QCOMPARE(Prompts().size(), size_t{1});
  }

  void valuesAreCheckedAndCutToTheFieldLength() {
    Open();
    Type(Row({"10", "10"}, 2), "x\"y");
    QCOMPARE(Prompts(), std::vector<std::string>{"Data Entries cannot contain Double Quotes"});
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    Type(Row({"10", "10"}, 2), "toolongnote");
    QCOMPARE(Item(Row({"10", "10"}))->PopupValues()->Item(Variant(2))->Value(),
             std::string("toolo"));
  }

  void deletingTheFirstItemSelectsTheTitleRow() {
    Open();
    Grid()->setCurrentIndex(Row({"10"}));
    messages->answers = {MessageAnswer::kNo};
    QTest::keyClick(Grid(), Qt::Key_Delete);
    QCOMPARE(messages->shown.back().title, std::string("Confirm Delete"));
    QCOMPARE(messages->shown.back().default_button, 2);
    QCOMPARE(editor->Popup()->PopupItems()->Count(), 2);
    messages->answers = {MessageAnswer::kYes};
    QTest::mouseClick(Child<QPushButton>("cmdDelete"), Qt::LeftButton);
    QCOMPARE(editor->Popup()->PopupItems()->Count(), 1);
    QCOMPARE(Outline(), QStringList({"Products", "20", "10"}));
    QCOMPARE(Grid()->currentIndex().row(), 0);
    QVERIFY(!Grid()->currentIndex().parent().isValid());
    QVERIFY(!Child<QPushButton>("cmdDelete")->isEnabled());
    QTest::keyClick(Grid(), Qt::Key_Delete);  // the title row stays
    QCOMPARE(editor->Popup()->PopupItems()->Count(), 1);
  }

  void fKeysWalkUpToTheirLevel() {
    Open();
    Grid()->setCurrentIndex(Row({"20", "10"}));
    QTest::keyClick(Grid(), Qt::Key_F3);  // two levels: no third button
    QCOMPARE(editor->Popup()->PopupItems()->Count(), 2);
    QTest::keyClick(Grid(), Qt::Key_F1);  // up to Bakery, then a new top-level item
    QCOMPARE(editor->Popup()->PopupItems()->Count(), 3);
    QCOMPARE(Item(Grid()->currentIndex())->PopupKey(), std::string("  30"));
    QTest::keyClick(Grid(), Qt::Key_F2);  // its first child
    QCOMPARE(Item(Grid()->currentIndex())->PopupKey(), std::string("3010"));
  }

  void copyWithChildrenClonesAndRekeysTheBranch() {
    Open();
    Grid()->setCurrentIndex(Row({"10"}));
    Child<QAction>("mnucopywithchildren")->trigger();
    auto copy = Item(Row({"30"}));
    QVERIFY(copy);
    QCOMPARE(copy->PopupValues()->Item(Variant(1))->Value(), std::string("Fruit"));
    QCOMPARE(copy->Children()->Count(), 2);
    QCOMPARE(Item(Row({"30", "20"}))->PopupKey(), std::string("3020"));
    QCOMPARE(Item(Row({"30", "20"}))->PopupValues()->Item(Variant(1))->Value(),
             std::string("Pears"));
    // Copy without children makes a fresh sibling.
    Grid()->setCurrentIndex(Row({"30", "10"}));
    keys->answers = {"15"};  // step 10 leaves no room between 10 and 20
    Child<QAction>("mnuCopywithout")->trigger();
    QCOMPARE(Item(Row({"30", "15"}))->PopupValues()->Item(Variant(1))->Value(),
             std::string("<.Undefined.>"));
  }

  void copyPutsTheIdentityOnTheClipboardAndPasteAddsBesideIt() {
    Open();
    auto apples = Item(Row({"10", "10"}));
    Grid()->setCurrentIndex(Row({"10", "10"}));
    QTest::keySequence(Grid(), QKeySequence::Copy);
    QCOMPARE(clipboard->text, std::to_string(apples->Identity()));
    // The copy lands under its own key beside itself: the collection refuses.
    QTest::keySequence(Grid(), QKeySequence::Paste);
    QCOMPARE(Prompts().back().substr(0, 21), std::string("Run-time error '457':"));
    QCOMPARE(apples->Parent()->Children()->Count(), 2);
    // Once re-keyed, its old collection key is free again.
    Type(Row({"10", "10"}), "30");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    Grid()->setFocus();
    QTest::keySequence(Grid(), QKeySequence::Paste);
    QCOMPARE(apples->Parent()->Children()->Count(), 3);
  }

  void findShowsMatchesWithTheirAncestors() {
    Open();
    auto* find = Child<QLineEdit>("txtFind");
    QTest::keyClicks(find, "pear");
    QTRY_COMPARE(Outline(), QStringList({"Products", "10", "20"}));
    Type(Row({"10", "20"}, 1), "Nashi");  // editing works on the filtered outline
    QCOMPARE(Item(Row({"10", "20"}))->PopupValues()->Item(Variant(1))->Value(),
             std::string("Nashi"));
    find->clear();
    QTRY_COMPARE(Outline().size(), 6);
  }

  void newKeyDialogPadsAndRefusesBlankOrNonNumericCodes() {
    zephyr::editor::NewKeyDialog dialog(messages);
    auto* code = dialog.findChild<QLineEdit*>("txtNewKey");
    auto* ok = dialog.findChild<QPushButton*>("OKButton");
    QCOMPARE(dialog.windowTitle(), QString("Invalid Key Step"));
    QCOMPARE(dialog.NewKey(), std::string("-1"));
    for (const char* refused : {"  ", "a1"}) {
      code->setText(refused);
      QTest::mouseClick(ok, Qt::LeftButton);
    }
    QCOMPARE(Prompts(), (std::vector<std::string>{
                            "Key cannot be blank. Please enter a unique number between 1-99",
                            "Key must be a numeric. Please enter a unique number between 1-99"}));
    QCOMPARE(dialog.NewKey(), std::string("-1"));
    code->setText("7");
    QTest::mouseClick(ok, Qt::LeftButton);
    QCOMPARE(dialog.NewKey(), std::string("07"));
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
  }

  void printingRepeatsHeadingsOnEveryPageAndIndentsItems() {
    // A hundred rows: more than a page holds.
    zephyr::testing::PopupDesign design;
    design.title = "Long";
    design.questions = {"Group", "Item"};
    design.fields = {{"Name", 10}};
    std::vector<zephyr::testing::Row> rows{{"  10", "Group"}};
    for (int code = 1; code <= 99; ++code) {
      char key[5];
      std::snprintf(key, sizeof key, "10%02d", code);
      rows.push_back({key, "Item " + std::to_string(code)});
    }
    zephyr::testing::WritePopupFiles(dir->Path(), "Long", design, rows);
    editor->OpenPopup(dir->Path(), "Long");
    QPrinter printer(QPrinter::HighResolution);
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(QString::fromStdString(dir->File("outline.pdf")));
    QVERIFY(editor->PrintPopupData(printer));
    QProcess text;
    text.start("pdftotext", {"-layout", printer.outputFileName(), "-"});
    QVERIFY(text.waitForFinished(30000));
    const QStringList pages = QString::fromUtf8(text.readAllStandardOutput()).split('\f');
    QVERIFY(pages.size() >= 3);  // two pages and what follows the last form feed
    for (int page = 0; page + 1 < pages.size(); ++page) {
      QVERIFY(pages[page].trimmed().startsWith("Popup Code"));
      QVERIFY(pages[page].contains(QStringLiteral("Page %1 of").arg(page + 1)));
    }
    const QStringList lines = pages[0].split('\n');
    QVERIFY(lines[1].startsWith("Long"));
    QVERIFY(lines.indexOf(QRegularExpression("^ {2,}10 +Group *$")) > 0);
    // Items sit deeper than their group.
    int item = lines.indexOf(QRegularExpression("^ +01 +Item 1 *$"));
    QVERIFY(item > 0);
    QVERIFY(lines[item].indexOf("01") > lines[2].indexOf("10"));
    QVERIFY(messages->shown.empty());

    printer.setOutputFileName(QString::fromStdString(dir->File("missing/outline.pdf")));
    QVERIFY(!editor->PrintPopupData(printer));
    QCOMPARE(Prompts().back(),
             std::string("Print Job Failed. Please make sure your printer is online and working."));
  }

  void savingWritesTheRowsInOutlineOrder() {
    Open();
    Type(Row({"10", "20"}), "05");  // now before Apples in the outline
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    dialog->answers = {dir->File("Saved.zpt")};
    editor->SaveChanges(true);
    QVERIFY(!editor->DataChanged());
    zephyr::dBase table;
    table.OpenFile(dir->File("Saved.ZPD"));
    Variant values = table.GetTableValues();
    table.CloseFile();
    std::vector<std::string> keys;
    for (int32_t row = 1; row <= values.AsArray()->UBound(2); ++row) {
      keys.push_back(values.AsArray()->At(1, row).ToText());
    }
    QCOMPARE(keys, (std::vector<std::string>{"  10", "1005", "1010", "  20", "2010"}));
  }
};

QTEST_MAIN(DataViewTest)
#include "data_view_test.moc"
