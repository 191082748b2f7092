// The data view of PopupControlEdit: in-place editing with its checks, the
// item tree operations, the clipboard and find, driven through the outline.
// A model tester watches the outline through every change.
#include <QAbstractItemModelTester>
#include <QComboBox>
#include <QLineEdit>
#include <QMimeData>
#include <QPrinter>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QToolButton>
#include <QUndoStack>
#include <random>

#include "editor_fixture.h"
#include "data_grid_model.h"
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
  // The pages of the outline printed to a PDF file, as text.
  QStringList PrintedPages() {
    QPrinter printer(QPrinter::HighResolution);
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(QString::fromStdString(dir->File("outline.pdf")));
    if (!editor->PrintPopupData(printer)) return {};
    QProcess text;
    text.start("pdftotext", {"-layout", printer.outputFileName(), "-"});
    if (!text.waitForFinished(30000)) return {};
    return QString::fromUtf8(text.readAllStandardOutput()).split('\f');
  }
  enum class Where { kAbove, kOn, kBelow };
  // Drags a row onto (or above, or below) another as the view sees it: the
  // drag enters, moves over the target and is dropped there.
  void Drag(const QModelIndex& from, const QModelIndex& to, Where where,
            Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    Grid()->setCurrentIndex(from);
    QRect place = Grid()->visualRect(to);
    QPoint point(place.center().x(), where == Where::kAbove   ? place.top() + 1
                                     : where == Where::kBelow ? place.bottom() - 1
                                                              : place.center().y());
    std::unique_ptr<QMimeData> data(Grid()->model()->mimeData({from}));
    Qt::DropAction action = modifiers & Qt::ControlModifier ? Qt::CopyAction : Qt::MoveAction;
    QWidget* target = Grid()->viewport();
    QDragEnterEvent enter(point, action, data.get(), Qt::LeftButton, modifiers);
    QApplication::sendEvent(target, &enter);
    QDragMoveEvent move(point, action, data.get(), Qt::LeftButton, modifiers);
    QApplication::sendEvent(target, &move);
    QDropEvent drop(point, action, data.get(), Qt::LeftButton, modifiers);
    QApplication::sendEvent(target, &drop);
    QApplication::processEvents();
  }
  QStringList SavedKeys(const char* table_file) {
    zephyr::dBase table;
    table.OpenFile(dir->File(table_file));
    Variant values = table.GetTableValues();
    table.CloseFile();
    QStringList keys;
    for (int32_t row = 1; row <= values.AsArray()->UBound(2); ++row) {
      keys << QString::fromStdString(values.AsArray()->At(1, row).ToText());
    }
    return keys;
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
    // Told in a real message box, which takes the keyboard while it shows:
    // the keyboard comes back to the outline.
    editor->SetMessageBox(nullptr);
    zephyr::testing::WhenModal([](QWidget* box) { QTest::keyClick(box, Qt::Key_Return); });
    Type(Row({"10", "20"}), "10");
    QTRY_VERIFY(editor->isActiveWindow());
    QCOMPARE(QApplication::focusWidget(), Grid());
    editor->SetMessageBox(messages);
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
    // A value wider than its column widens it.
    Type(Row({"10", "10"}, 1), "WWWWWWWWWW");
    QVERIFY(Grid()->columnWidth(1) > Grid()->fontMetrics().horizontalAdvance("WWWWWWWWWW"));
  }

  // Delete asks first (No by default) and leaves the row above current,
  // ready for the next key, as does doing it again; above the first item
  // stands the title row, which is never deleted.
  void deletingLeavesTheRowAboveCurrent() {
    Open();
    Grid()->setCurrentIndex(Row({"10", "20"}));  // Pears, under Apples
    messages->answers = {MessageAnswer::kNo};
    QTest::keyClick(Grid(), Qt::Key_Delete);
    QCOMPARE(messages->shown.back().title, std::string("Confirm Delete"));
    QCOMPARE(messages->shown.back().default_button, 2);
    QVERIFY(Row({"10", "20"}).isValid());
    messages->answers = {MessageAnswer::kYes};
    QTest::keyClick(Grid(), Qt::Key_Delete);
    QCOMPARE(Grid()->currentIndex().siblingAtColumn(0), Row({"10", "10"}));
    QVERIFY(Child<QPushButton>("cmdDelete")->isEnabled());
    editor->undo();
    editor->redo();
    QCOMPARE(Grid()->currentIndex().siblingAtColumn(0), Row({"10", "10"}));

    Grid()->setCurrentIndex(Row({"10"}));
    messages->answers = {MessageAnswer::kYes};
    QTest::mouseClick(Child<QPushButton>("cmdDelete"), Qt::LeftButton);
    QCOMPARE(Outline(), QStringList({"Products", "20", "10"}));
    QVERIFY(!Grid()->currentIndex().parent().isValid());
    QVERIFY(!Child<QPushButton>("cmdDelete")->isEnabled());
    QTest::keyClick(Grid(), Qt::Key_Delete);  // the title row stays
    QCOMPARE(editor->Popup()->PopupItems()->Count(), 1);
  }

  // The key step takes whole numbers from 1 to 99; anything else is told, and
  // the box keeps the focus.
  void theKeyStepTakesOneTo99() {
    Open();
    auto* step = Child<QComboBox>("cboStep");
    const std::string refused = "Invalid Key Step. Must be Numeric value between 1 and 99";
    for (const char* text : {"100", "0", "ab", "99", "1"}) {
      const size_t told = messages->shown.size();
      step->setFocus();
      step->setEditText(QString::fromLatin1(text));
      Grid()->setFocus();
      const bool allowed = std::string(text) == "99" || std::string(text) == "1";
      QCOMPARE(messages->shown.size() > told, !allowed);
      if (!allowed) {
        QCOMPARE(messages->shown.back().prompt, refused);
        QVERIFY2(step->hasFocus(), text);
      }
    }
    // A step that is no number, left in the box, fails the add as a type mismatch.
    step->setEditText("ab");
    Grid()->setCurrentIndex(Row({"10"}));
    QTest::keyClick(Grid(), Qt::Key_F2);
    QCOMPARE(Prompts().back().substr(0, 20), std::string("Run-time error '13':"));
    QCOMPARE(Item(Row({"10"}))->Children()->Count(), 2);
    QCOMPARE(keys->asked, 0);
  }

  // The one add that marks the popup changed is one the user cancelled: no
  // code was free at the step, and the key prompt was closed.
  void aCancelledAddMarksThePopupChanged() {
    Open();
    QVERIFY(!editor->DataChanged());
    Child<QComboBox>("cboStep")->setEditText("90");  // after 20 comes no code below 100
    Grid()->setCurrentIndex(Row({"10"}));
    QTest::keyClick(Grid(), Qt::Key_F2);  // a child of Fruit; the prompt is cancelled
    QCOMPARE(keys->asked, 1);
    QCOMPARE(editor->Popup()->PopupItems()->Item(Variant(std::string("  10")))->Children()->Count(), 2);
    QVERIFY(editor->DataChanged());
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

  // The add buttons and keys, and a menu entry that adds, copies or pastes,
  // while the runtime refuses each with a duplicate key: the user is told, the
  // popup and the outline stay as they were, and the host's call still raises.
  void aRaisingRuntimeNeverEndsTheHost() {
    const zephyr::testing::PopupDesign design{"Test", {"Group", "Item"}, {{"Name", 10}}};
    std::vector<zephyr::testing::Row> rows;
    for (const char* code : {"10", "20", "30", "40", "50", "60", "70", "80", "90"}) {
      rows.push_back({std::string("  ") + code, "Group"});
      rows.push_back({std::string("10") + code, "Item"});
    }
    zephyr::testing::WritePopupFiles(dir->Path(), "Full", design, rows);
    editor->OpenPopup(dir->Path(), "Full");
    Grid()->setFocus();
    // Every list is full for step 10: the code asked for, 100, is cut to 10.
    keys->answers.assign(64, "100");
    const QStringList outline = Outline();
    auto raised = [&](const char* what) {
      QVERIFY2(!messages->shown.empty(), what);
      QCOMPARE(messages->shown.back().prompt.substr(0, 21), std::string("Run-time error '457':"));
      messages->shown.clear();
      QCOMPARE(Outline(), outline);
    };
    const QPersistentModelIndex title = Grid()->model()->index(0, 0);
    for (const QPersistentModelIndex& row :
         {title, QPersistentModelIndex(Row({"10"})), QPersistentModelIndex(Row({"10", "10"}))}) {
      for (int level : {1, 2}) {
        Grid()->setCurrentIndex(row);
        auto* add = Child<QPushButton>(level == 1 ? "cmdAdd1" : "cmdAdd2");
        if (!add->isEnabled()) continue;
        QTest::mouseClick(add, Qt::LeftButton);
        raised("button");
        Grid()->setCurrentIndex(row);
        Grid()->setFocus();
        QTest::keyClick(Grid(), level == 1 ? Qt::Key_F1 : Qt::Key_F2);
        raised("F-key");
      }
    }
    for (const char* action : {"mnuAddChild", "mnucopywithchildren"}) {
      Grid()->setCurrentIndex(Row({"10"}));
      Child<QAction>(action)->trigger();
      raised(action);
    }
    Grid()->setCurrentIndex(Row({"20"}));
    QTest::keySequence(Grid(), QKeySequence::Copy);
    Child<QAction>("mnuPaste")->trigger();  // beside itself, under its own key
    raised("mnuPaste");
    QVERIFY_THROWS_EXCEPTION(zephyr::Error, editor->AddSibling());
    Grid()->setCurrentIndex(Row({"10"}));
    QVERIFY_THROWS_EXCEPTION(zephyr::Error, editor->AddChild());
    QVERIFY(messages->shown.empty());
  }

  // Paste takes only what this editor copied, and only beside items of its
  // level, where it puts a copy of the item with its branch after the current
  // item, coded from the key step; undoable.
  void pasteCopiesTheBranchOfThisEditorsCopyBesideItsLevel() {
    Open();
    auto pears = Item(Row({"10", "20"}));
    clipboard->text = std::to_string(pears->Identity());  // copied by somebody else
    Grid()->setCurrentIndex(Row({"10", "10"}));
    QVERIFY(!Child<QAction>("mnuPaste")->isEnabled());
    QTest::keySequence(Grid(), QKeySequence::Paste);
    editor->PasteItem();
    QCOMPARE(pears->Parent()->Children()->Count(), 2);
    QVERIFY(messages->shown.empty());

    Grid()->setCurrentIndex(Row({"10", "20"}));
    QTest::keySequence(Grid(), QKeySequence::Copy);
    QCOMPARE(clipboard->text, std::to_string(pears->Identity()));
    Grid()->setCurrentIndex(Row({"20"}));  // a group: not Pears' level
    QVERIFY(!Child<QAction>("mnuPaste")->isEnabled());
    editor->PasteItem();
    QVERIFY(!Row({"20", "20"}).isValid());
    Grid()->setCurrentIndex(Row({"20", "10"}));
    QVERIFY(Child<QAction>("mnuPaste")->isEnabled());
    QTest::keySequence(Grid(), QKeySequence::Paste);
    auto copy = Item(Row({"20", "20"}));  // after Bread, under Bakery's code
    QVERIFY(copy && copy != pears);
    QCOMPARE(copy->PopupKey(), std::string("2020"));
    QCOMPARE(copy->PopupValues()->Item(Variant(1))->Value(), std::string("Pears"));
    QCOMPARE(Grid()->currentIndex().siblingAtColumn(0), Row({"20", "20"}));

    // A group with its items, pasted after the last group.
    Grid()->setCurrentIndex(Row({"10"}));
    QTest::keySequence(Grid(), QKeySequence::Copy);
    Grid()->setCurrentIndex(Row({"20"}));
    QTest::keySequence(Grid(), QKeySequence::Paste);
    QCOMPARE(Item(Row({"30", "20"}))->PopupKey(), std::string("3020"));
    QCOMPARE(Outline(),
             QStringList({"Products", "10", "10", "20", "20", "10", "20", "30", "10", "20"}));
    editor->undo();
    editor->undo();
    QCOMPARE(Outline(), QStringList({"Products", "10", "10", "20", "20", "10"}));

    // Cut and paste moves the item itself, once.
    Grid()->setCurrentIndex(Row({"10", "20"}));
    QTest::keySequence(Grid(), QKeySequence::Cut);
    Grid()->setCurrentIndex(Row({"20", "10"}));
    QTest::keySequence(Grid(), QKeySequence::Paste);
    QCOMPARE(Item(Row({"20", "20"})), pears);
    QCOMPARE(pears->PopupKey(), std::string("2020"));
    QCOMPARE(Item(Row({"10"}))->Children()->Count(), 1);
    QVERIFY(!Child<QAction>("mnuPaste")->isEnabled());
    editor->undo();
    QCOMPARE(pears->PopupKey(), std::string("1020"));
    // A deleted item, kept alive for its undo, is pasted nowhere.
    Grid()->setCurrentIndex(Row({"10", "20"}));
    QTest::keySequence(Grid(), QKeySequence::Copy);
    messages->answers = {MessageAnswer::kYes};
    QTest::keyClick(Grid(), Qt::Key_Delete);
    Grid()->setCurrentIndex(Row({"10", "10"}));
    QVERIFY(!Child<QAction>("mnuPaste")->isEnabled());
  }

  // Moving trades codes with the neighbour, branches included; undo trades back.
  void movesTradeCodesWithTheNeighbour() {
    Open();
    auto pears = Item(Row({"10", "20"}));
    Grid()->setCurrentIndex(Row({"10", "20"}, 1));
    QTest::keyClick(Grid(), Qt::Key_Up, Qt::AltModifier | Qt::ShiftModifier);
    QCOMPARE(pears->PopupKey(), std::string("1010"));
    QCOMPARE(Item(Row({"10", "20"}))->PopupValues()->Item(Variant(1))->Value(),
             std::string("Apples"));
    QCOMPARE(Outline(), QStringList({"Products", "10", "10", "20", "20", "10"}));
    QCOMPARE(Grid()->currentIndex(), Row({"10", "10"}, 1));  // the moved item stays current
    QVERIFY(!Child<QAction>("mnuMoveUp")->isEnabled());      // the first of its siblings
    QVERIFY(Child<QAction>("mnuMoveDown")->isEnabled());

    auto fruit = Item(Row({"10"}));
    Grid()->setCurrentIndex(Row({"10"}));
    Child<QAction>("mnuMoveDown")->trigger();
    QCOMPARE(fruit->PopupKey(), std::string("  20"));
    QCOMPARE(pears->PopupKey(), std::string("2010"));
    QCOMPARE(Item(Row({"10", "10"}))->PopupValues()->Item(Variant(1))->Value(),
             std::string("Bread"));
    QCOMPARE(editor->UndoStack()->undoText(), QString("Move 'Fruit' Down"));
    editor->undo();
    editor->undo();
    QCOMPARE(pears->PopupKey(), std::string("1020"));
    QCOMPARE(Item(Row({"10", "10"}))->PopupValues()->Item(Variant(1))->Value(),
             std::string("Apples"));
    Grid()->setCurrentIndex(Grid()->model()->index(0, 0));
    QVERIFY(!Child<QAction>("mnuMoveUp")->isEnabled() &&
            !Child<QAction>("mnuMoveDown")->isEnabled());
  }

  // Indent makes the item the last child of its previous sibling, outdent the
  // next sibling of its parent; the code comes from the step, the branch
  // follows, a move below the popup's levels is refused; undo puts it back.
  void indentAndOutdentMoveTheBranchALevel() {
    Open();
    auto bakery = Item(Row({"20"}));
    auto bread = Item(Row({"20", "10"}));
    Grid()->setCurrentIndex(Row({"20"}));
    QTest::keyClick(Grid(), Qt::Key_Right, Qt::AltModifier | Qt::ShiftModifier);
    QCOMPARE(Prompts().back().substr(0, 50),
             std::string("The item cannot be indented: its branch would go b"));
    QCOMPARE(bakery->Level(), int16_t{1});

    Grid()->setCurrentIndex(Row({"20", "10"}));
    QTest::keyClick(Grid(), Qt::Key_Left, Qt::AltModifier | Qt::ShiftModifier);
    QCOMPARE(bread->PopupKey(), std::string("  30"));  // after Bakery, step 10
    QCOMPARE(bread->Level(), int16_t{1});
    QCOMPARE(Outline(), QStringList({"Products", "10", "10", "20", "20", "30"}));
    QCOMPARE(Grid()->currentIndex().siblingAtColumn(0), Row({"30"}));

    Grid()->setCurrentIndex(Row({"30"}));
    Child<QAction>("mnuIndent")->trigger();  // the last child of Bakery again
    QCOMPARE(bread->PopupKey(), std::string("2010"));
    QCOMPARE(bread->Parent(), bakery);
    editor->undo();
    editor->undo();
    QCOMPARE(bread->PopupKey(), std::string("2010"));
    QCOMPARE(bread->Parent(), bakery);
    QCOMPARE(Outline(), QStringList({"Products", "10", "10", "20", "20", "10"}));
    editor->redo();
    QCOMPARE(bread->PopupKey(), std::string("  30"));
  }

  // Dropped on an item, the dragged item becomes its last child; above or
  // below a row, its sibling, coded between its new neighbours; with Ctrl, a
  // copy of the branch. Each is one undoable command.
  void draggingMovesOrCopiesTheBranch() {
    Open();
    auto pears = Item(Row({"10", "20"}));
    auto fruit = Item(Row({"10"}));
    Drag(Row({"10", "20"}), Row({"20"}), Where::kOn);  // onto Bakery
    QCOMPARE(pears->PopupKey(), std::string("2020"));
    QCOMPARE(Outline(), QStringList({"Products", "10", "10", "20", "10", "20"}));
    keys->answers = {"05"};  // no room below 10 with step 10: asked
    Drag(Row({"20", "20"}), Row({"20", "10"}), Where::kAbove);  // before Bread
    QCOMPARE(pears->PopupKey(), std::string("2005"));
    QCOMPARE(Outline(), QStringList({"Products", "10", "10", "20", "05", "10"}));
    editor->undo();
    QCOMPARE(pears->PopupKey(), std::string("2020"));
    editor->undo();
    QCOMPARE(pears->PopupKey(), std::string("1020"));
    QCOMPARE(pears->Parent(), fruit);

    Drag(Row({"20"}), Row({"10"}), Where::kOn);  // a group under a group: too deep
    QCOMPARE(Prompts().back().substr(0, 42),
             std::string("The item cannot be moved there: its branch"));
    QCOMPARE(Outline(), QStringList({"Products", "10", "10", "20", "20", "10"}));

    Drag(Row({"20", "10"}), Row({"10"}), Where::kOn, Qt::ControlModifier);  // a copy of Bread
    QVERIFY(Row({"10", "30"}).isValid());
    QCOMPARE(Item(Row({"10", "30"}))->PopupValues()->Item(Variant(1))->Value(),
             std::string("Bread"));
    QVERIFY(Item(Row({"10", "30"})) != Item(Row({"20", "10"})));
    QCOMPARE(Item(Row({"10", "30"}))->Level(), int16_t{2});
    editor->undo();
    QVERIFY(!Row({"10", "30"}).isValid());
  }

  // The keyboard habits of a sheet and an outliner: a typed character starts
  // an edit with it, Left and Right move between cells, + - * fold, and the
  // find box hands the keyboard to its results.
  void gridKeysTypeMoveFoldAndFind() {
    Open();
    Grid()->setCurrentIndex(Row({"10", "10"}, 1));
    QTest::keyClicks(Grid(), "K");
    QTest::keyClicks(QApplication::focusWidget(), "iwi");  // the editor has the keyboard now
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    QApplication::processEvents();
    QCOMPARE(Item(Row({"10", "10"}))->PopupValues()->Item(Variant(1))->Value(),
             std::string("Kiwi"));

    Grid()->setCurrentIndex(Row({"10", "20"}, 1));
    QTest::keyClick(Grid(), Qt::Key_Left);
    QTest::keyClick(Grid(), Qt::Key_Left);  // no further, and not up to the parent
    QCOMPARE(Grid()->currentIndex(), Row({"10", "20"}, 0));
    QTest::keyClick(Grid(), Qt::Key_Right);
    QCOMPARE(Grid()->currentIndex(), Row({"10", "20"}, 1));

    Grid()->setCurrentIndex(Row({"10"}, 1));
    QTest::keyClick(Grid(), Qt::Key_Minus);
    QVERIFY(!Grid()->isExpanded(Row({"10"})));
    QTest::keyClick(Grid(), Qt::Key_Plus);
    QVERIFY(Grid()->isExpanded(Row({"10"})));
    Grid()->collapseAll();
    Grid()->setCurrentIndex(Grid()->model()->index(0, 0));
    QTest::keyClick(Grid(), Qt::Key_Asterisk);
    QVERIFY(Grid()->isExpanded(Row({"20"})));

    auto* find = Child<QLineEdit>("txtFind");
    find->setFocus();
    QTest::keyClicks(find, "bread");
    QTest::keyClick(find, Qt::Key_Down);
    QCOMPARE(QApplication::focusWidget(), Grid());
    QCOMPARE(Outline(), QStringList({"Products", "20", "10"}));
  }

  // The current cell has the selection's colour, and the rest of its row a tint.
  void theCurrentRowIsMarked() {
    Open();
    Grid()->setCurrentIndex(Row({"10", "10"}, 1));
    QApplication::processEvents();
    const QImage shown = Grid()->viewport()->grab().toImage();
    auto colour = [&](const QModelIndex& cell) {
      QRect place = Grid()->visualRect(cell);
      return shown.pixelColor(place.center().x() + place.width() / 4, place.center().y());
    };
    const QColor marked = colour(Row({"10", "10"}, 2));
    const QColor plain = colour(Row({"10", "20"}, 2));
    QVERIFY2(qAbs(marked.lightness() - plain.lightness()) >= 12, "the row's tint shows");
  }

  // A few hundred random edits of every undoable kind through the widget's
  // keys and menus: undoing them all saves the bytes saved before them, and
  // redoing them all the bytes saved after them.
  void undoAndRedoRestoreEveryEditExactly_data() {
    QTest::addColumn<unsigned>("seed");
    for (unsigned seed : {1u, 2u, 3u, 4u, 20261123u}) {
      QTest::addRow("seed %u", seed) << seed;
    }
  }
  void undoAndRedoRestoreEveryEditExactly() {
    QFETCH(unsigned, seed);
    // Three levels, codes 10 to 40, 10 to 30 and 10 to 30 below each parent.
    zephyr::testing::PopupDesign design;
    design.questions = {"Aisle", "Shelf", "Product"};
    design.fields = {{"Name", 12}, {"Note", 5}};
    std::vector<zephyr::testing::Row> rows;
    for (int a = 10; a <= 40; a += 10) {
      std::string top = std::to_string(a);
      rows.push_back({"    " + top, "Aisle " + top, "a"});
      for (int b = 10; b <= 30; b += 10) {
        std::string middle = top + "  " + std::to_string(b);
        rows.push_back({middle, "Shelf " + middle, "b"});
        for (int c = 10; c <= 30; c += 10) {
          std::string leaf = top + std::to_string(b) + std::to_string(c);
          rows.push_back({leaf, "Item " + leaf, "c"});
        }
      }
    }
    zephyr::testing::WritePopupFiles(dir->Path(), "Shop", design, rows);
    editor->OpenPopup(dir->Path(), "Shop");
    std::mt19937 random(seed);
    auto pick = [&](int count) {
      return static_cast<int>(random() % static_cast<unsigned>(count));
    };
    auto save = [&](const char* name) -> std::string {
      dialog->answers = {dir->File(std::string(name) + ".zpt")};
      if (!editor->SaveChanges(true)) return "not saved";
      return zephyr::testing::ReadBytes(dir->File(std::string(name) + ".ZPD")) +
             zephyr::testing::ReadBytes(dir->File(std::string(name) + ".ZPT"));
    };
    const std::string before = save("Before");
    auto* stack = editor->UndoStack();
    for (int step = 0; step < 300; ++step) {
      std::vector<QModelIndex> rows;
      for (QModelIndex row = Grid()->model()->index(0, 0); row.isValid();
           row = Grid()->indexBelow(row)) {
        rows.push_back(row);
      }
      QModelIndex row = rows[static_cast<size_t>(pick(static_cast<int>(rows.size())))];
      Grid()->setFocus();
      Grid()->setCurrentIndex(row);
      keys->answers = {std::to_string(10 + pick(90)), std::to_string(10 + pick(90))};
      messages->answers = {MessageAnswer::kYes};
      switch (pick(11)) {
        case 0:
          if (row.parent().isValid()) Type(row.siblingAtColumn(1), QString("v%1").arg(step));
          break;
        case 1:
          if (row.parent().isValid()) Type(row, QString::number(10 + pick(90)));
          break;
        case 2:
          QTest::keyClick(Grid(), Qt::Key_F1);
          break;
        case 3:
          QTest::keyClick(Grid(), Qt::Key_F2);
          break;
        case 4:
          Child<QAction>("mnuCopywithout")->trigger();
          break;
        case 5:
          Child<QAction>("mnucopywithchildren")->trigger();
          break;
        case 6:
          QTest::keySequence(Grid(), pick(2) ? QKeySequence::Copy : QKeySequence::Cut);
          break;
        case 7:
          QTest::keySequence(Grid(), QKeySequence::Paste);
          break;
        case 8: {
          const Qt::Key moves[] = {Qt::Key_Up, Qt::Key_Down, Qt::Key_Left, Qt::Key_Right};
          QTest::keyClick(Grid(), moves[pick(4)], Qt::AltModifier | Qt::ShiftModifier);
          break;
        }
        case 9: {
          const Where places[] = {Where::kAbove, Where::kOn, Where::kBelow};
          QModelIndex to = rows[static_cast<size_t>(pick(static_cast<int>(rows.size())))];
          if (row.parent().isValid()) {
            Drag(row, to, places[pick(3)], pick(2) ? Qt::ControlModifier : Qt::NoModifier);
          }
          break;
        }
        default:
          QTest::keyClick(Grid(), Qt::Key_Delete);
      }
      if (auto* open = qobject_cast<QLineEdit*>(QApplication::focusWidget())) {
        QTest::keyClick(open, Qt::Key_Escape);  // the value cell a key entry flows into
      }
    }
    QVERIFY(stack->count() > 100);
    const int edits = stack->index();
    const std::string after = save("After");
    for (int undone = 0; undone < edits; ++undone) editor->undo();
    QVERIFY(!stack->canUndo());
    QCOMPARE(save("Undone"), before);
    for (int redone = 0; redone < edits; ++redone) editor->redo();
    QCOMPARE(stack->index(), edits);
    QCOMPARE(save("Redone"), after);
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
    const QStringList pages = PrintedPages();
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

    QPrinter printer(QPrinter::HighResolution);
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(QString::fromStdString(dir->File("missing/outline.pdf")));
    QTest::ignoreMessage(QtWarningMsg, "QPainter::begin(): Returned false");
    QVERIFY(!editor->PrintPopupData(printer));
    QCOMPARE(Prompts().back(),
             std::string("Print Job Failed. Please make sure your printer is online and working."));
  }

  // Printed from the design view after a save there has changed the items:
  // the outline as the data view last showed it.
  void printingShowsWhatTheOutlineLastHeld() {
    Open();
    ClickTab(0);
    Child<QLineEdit>("txtTitle")->setText("Stock");
    SelectRow("grdFields", 2);
    QTest::mouseClick(Child<QToolButton>("cmdUp"), Qt::LeftButton);
    QVERIFY(editor->SaveChanges(false));
    QCOMPARE(editor->Popup()->PopupFields()->Item(Variant(2))->Name(), std::string("Note"));
    const QStringList pages = PrintedPages();
    QVERIFY(!pages.isEmpty());
    const QStringList lines = pages.front().split('\n');
    QVERIFY(lines[0].contains(QRegularExpression("Popup Code +Name +Note")));
    QVERIFY(lines[1].trimmed().startsWith("Products"));
    QVERIFY(lines.indexOf(QRegularExpression("^ +10 +Fruit +f *$")) > 0);
  }

  // A changed key leaves its row in place until the next Sort_Tree, and the
  // save writes the rows in the outline's order.
  void savingWritesTheRowsInOutlineOrder() {
    Open();
    Type(Row({"10", "20"}), "05");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    QCOMPARE(Outline(), QStringList({"Products", "10", "10", "05", "20", "10"}));
    dialog->answers = {dir->File("Saved.zpt"), dir->File("Sorted.zpt")};
    QVERIFY(editor->SaveChanges(true));
    QCOMPARE(SavedKeys("Saved.ZPD"), (QStringList{"  10", "1010", "1005", "  20", "2010"}));
    Grid()->setCurrentIndex(Row({"20", "10"}));
    QTest::keyClick(Grid(), Qt::Key_F2);  // an add sorts the whole outline
    QCOMPARE(Outline(), QStringList({"Products", "10", "05", "10", "20", "10", "20"}));
    QVERIFY(editor->SaveChanges(true));
    QCOMPARE(SavedKeys("Sorted.ZPD"),
             (QStringList{"  10", "1005", "1010", "  20", "2010", "2020"}));
  }
};

QTEST_MAIN(DataViewTest)
#include "data_view_test.moc"
