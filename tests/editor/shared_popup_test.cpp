// Several editors on one popup: the lock beside it, the question a second
// editor asks, the read-only mode and the takeover of a dead editor's lock.
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTreeView>
#include <filesystem>

#include "editor_fixture.h"
#include "zephyr/support/lock_file.h"

using zephyr::LockFile;
using zephyr::LockOwner;
using zephyr::MessageAnswer;

class SharedPopupTest : public QObject, public zephyr::testing::EditorFixture {
  Q_OBJECT

  std::string Template() const { return dir->File("Products.ZPT"); }
  // Another editor, alive on this host (process 1 always is), has it open.
  void LockedElsewhere() {
    zephyr::testing::WriteBytes(LockFile::PathFor(Template()),
                                "Ann Other,ann," + LockOwner::Current().host +
                                    ",01.02.2026 10:00,zpopup-edit:1;\n");
  }
  std::string Files() {
    return zephyr::testing::ReadBytes(dir->File("Products.ZPT")) +
           zephyr::testing::ReadBytes(dir->File("Products.ZPD"));
  }

 private slots:
  void init() { SetUpEditor(); }
  void cleanup() { TearDownEditor(); }

  void theLockNamesThisEditorWhileItHasThePopupOpen() {
    OpenProducts();
    auto owner = LockFile::Read(Template());
    QVERIFY(owner && owner->IsThisProcess());
    QVERIFY(messages->shown.empty());
    editor->SourceFile("");
    editor->OpenPopup("", "");  // a new popup: the old one is let go
    QVERIFY(!std::filesystem::exists(LockFile::PathFor(Template())));
    editor->OpenPopup(dir->Path(), "Products");
    editor.reset();
    QVERIFY(!std::filesystem::exists(LockFile::PathFor(Template())));
  }

  void aDeadEditorsLockIsTakenOverWithoutAsking() {
    zephyr::testing::WriteProducts(dir->Path());
    LockOwner gone = LockOwner::Current();
    gone.pid = 0x3FFFFF;  // above the kernel's largest process number: no such process
    zephyr::testing::WriteBytes(LockFile::PathFor(Template()), gone.Format() + "\n");
    QVERIFY(editor->OpenPopup(dir->Path(), "Products"));
    QVERIFY(messages->shown.empty());
    QVERIFY(LockFile::Read(Template())->IsThisProcess());
    QVERIFY(!editor->ReadOnly());
  }

  void cancelLeavesTheEditorAsItWas() {
    zephyr::testing::WriteProducts(dir->Path());
    LockedElsewhere();
    messages->answers = {MessageAnswer::kCancel};
    QVERIFY(!editor->OpenPopup(dir->Path(), "Products"));
    const std::string asked = "Opened by Ann Other on " + LockOwner::Current().host +
                              " since 01.02.2026 10:00.";
    QCOMPARE(messages->shown.back().prompt.substr(0, asked.size()), asked);
    QCOMPARE(messages->shown.back().title, std::string("Popup In Use"));
    QCOMPARE(editor->Popup()->DataSource(), std::string());
  }

  // Read-only: nothing changes the popup, whichever way it is tried; Save As
  // keeps a copy, which is this editor's own to change.
  void readOnlyChangesNothingUntilSavedAsACopy() {
    zephyr::testing::WriteProducts(dir->Path());
    LockedElsewhere();
    const std::string lock_line = zephyr::testing::ReadBytes(LockFile::PathFor(Template()));
    messages->answers = {MessageAnswer::kYes};
    QVERIFY(editor->OpenPopup(dir->Path(), "Products"));
    QVERIFY(editor->ReadOnly());
    QCOMPARE(zephyr::testing::ReadBytes(LockFile::PathFor(Template())), lock_line);

    QModelIndex apples = Row({"10", "10"}, 1);
    QVERIFY(!(Grid()->model()->flags(apples) & Qt::ItemIsEditable));
    Grid()->setCurrentIndex(apples);
    for (const char* button : {"cmdAdd1", "cmdAdd2", "cmdDelete"}) {
      QVERIFY2(!Child<QPushButton>(button)->isEnabled(), button);
    }
    QTest::keyClick(Grid(), Qt::Key_F2);
    QTest::keyClick(Grid(), Qt::Key_Delete);
    QVERIFY_THROWS_EXCEPTION(std::runtime_error, editor->AddChild());
    editor->MoveItemDown();
    editor->PasteItem();
    QVERIFY(!editor->SaveChanges(false));
    QVERIFY(messages->shown.back().prompt.find("is open read-only") != std::string::npos);
    QVERIFY(!editor->Modified());
    QCOMPARE(Outline(), QStringList({"Products", "10", "10", "20", "20", "10"}));

    editor->ShowView(false);
    QVERIFY(Child<QLineEdit>("txtTitle")->isReadOnly());
    QVERIFY(!Child<QPushButton>("cmdAddField")->isEnabled());
    QVERIFY(!Child<QPushButton>("cmdImport")->isEnabled());

    const std::string before = Files();
    dialog->answers = {dir->File("Mine.zpt")};
    QVERIFY(editor->SaveChanges(true));
    QCOMPARE(Files(), before);
    QVERIFY(!editor->ReadOnly());
    QVERIFY(Child<QPushButton>("cmdAddField")->isEnabled());
    QVERIFY(LockFile::Read(dir->File("Mine.ZPT"))->IsThisProcess());
    QCOMPARE(zephyr::testing::ReadBytes(LockFile::PathFor(Template())), lock_line);
  }
};

QTEST_MAIN(SharedPopupTest)
#include "shared_popup_test.moc"
