// The editor's session without a window: unsaved work follows the history
// and the changes outside it, and the host hears of each change once.
#include "editor_session.h"

#include <QTest>
#include <QUndoCommand>
#include <QUndoStack>
#include <vector>

#include "helpers/recorders.h"

using zephyr::editor::EditorSession;

namespace {

EditorSession::Services Telling(std::shared_ptr<zephyr::MessageBox> messages) {
  EditorSession::Services services;
  services.messages = std::move(messages);
  return services;
}

}  // namespace

class EditorSessionTest : public QObject {
  Q_OBJECT

 private slots:
  void unsavedWorkFollowsTheHistoryAndChangesOutsideIt() {
    QObject owner;
    std::vector<bool> told;
    EditorSession::Observer observer;
    observer.modified = [&](bool modified) { told.push_back(modified); };
    EditorSession session(&owner, Telling(std::make_shared<zephyr::testing::ScriptedMessageBox>()),
                          observer);
    QVERIFY(!session.IsModified());
    session.Record(new QUndoCommand(QStringLiteral("first")));
    QVERIFY(session.IsModified());
    session.History().undo();
    QVERIFY(!session.IsModified());  // back where the opening left it
    session.History().redo();
    session.MarkSaved();
    QVERIFY(!session.IsModified());
    session.History().undo();
    QVERIFY(session.IsModified());  // the saved files hold the edit
    session.ClearHistory();
    QVERIFY(session.IsModified());  // an emptied history leaves its work unsaved
    session.StartHistory();
    QVERIFY(!session.IsModified());
    session.MarkModified();
    QVERIFY(session.IsModified());
    QCOMPARE(told, (std::vector<bool>{true, false, true, false, true, false, true}));
  }

  void anotherPopupForgetsTheCopiedItemAndKeepsTheServices() {
    QObject owner;
    auto messages = std::make_shared<zephyr::testing::ScriptedMessageBox>();
    std::vector<bool> flags;
    EditorSession::Observer observer;
    observer.data_changed = [&](bool changed) { flags.push_back(changed); };
    EditorSession session(&owner, Telling(messages), observer);
    session.SetCopied(42, true);
    session.SetPopup(std::make_shared<zephyr::PopupClass>());
    QCOMPARE(session.CopiedIdentity(), 0);
    session.Tell("Hello");
    QCOMPARE(messages->shown.back().prompt, std::string("Hello"));
    session.SetDataChanged(true);
    session.SetDataChanged(true);
    session.SetDataChanged(false);
    QCOMPARE(flags, (std::vector<bool>{true, false}));
  }
};

QTEST_GUILESS_MAIN(EditorSessionTest)
#include "editor_session_test.moc"
