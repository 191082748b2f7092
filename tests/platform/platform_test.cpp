#include <QtTest/qtestspontaneevent.h>

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>
#include <functional>

#include "zephyr/platform/form_progress.h"
#include "zephyr/platform/qt_file_dialog.h"
#include "zephyr/platform/qt_message_box.h"
#include "zephyr/platform/recycle_bin.h"

namespace zephyr::platform {

namespace {

// Runs `inspect` on the modal dialog once the event loop shows it, then
// dismisses it if still open so that a failed check cannot hang the test.
template <typename Dialog>
void WhenShown(std::function<void(Dialog*)> inspect) {
  QTimer::singleShot(0, [inspect] {
    auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
    if (dialog) inspect(dialog);
    QVERIFY2(dialog, "no modal dialog of the expected type");
    if (dialog && dialog->isVisible()) dialog->reject();
  });
}

bool WriteFile(const QString& path) {
  QFile file(path);
  return file.open(QIODevice::WriteOnly) && file.write("x") == 1;
}

using B = QMessageBox;
struct BoxCase {
  const char* name;
  MessageButtons buttons;
  const char* title;
  MessageIcon icon;
  int default_button;
  B::StandardButtons shown;
  B::Icon shown_icon;
  B::StandardButton shown_default;
  B::StandardButton press;  // NoButton: the Escape key
  MessageAnswer answer;
};
constexpr BoxCase kBoxCases[] = {
    {"yes no cancel", MessageButtons::kYesNoCancel, "Save?", MessageIcon::kQuestion, 2,
     B::Yes | B::No | B::Cancel, B::Question, B::No, B::Yes, MessageAnswer::kYes},
    {"escape in yes no", MessageButtons::kYesNo, "", MessageIcon::kExclamation, 1, B::Yes | B::No,
     B::Warning, B::Yes, B::NoButton, MessageAnswer::kNo},
    {"escape in ok cancel, default out of range", MessageButtons::kOkCancel, "",
     MessageIcon::kInformation, 9, B::Ok | B::Cancel, B::Information, B::Ok, B::NoButton,
     MessageAnswer::kCancel},
    {"help", MessageButtons::kOkHelp, "Help", MessageIcon::kCritical, 2, B::Ok | B::Help,
     B::Critical, B::Help, B::Help, MessageAnswer::kHelp},
    {"escape in ok", MessageButtons::kOk, "", MessageIcon::kNone, 1, B::Ok, B::NoIcon, B::Ok,
     B::NoButton, MessageAnswer::kOk},
};

}  // namespace

class PlatformTest : public QObject {
  Q_OBJECT

 private slots:
  // Each row: the buttons, icon and default shown, and the answer of the
  // button pressed or of Escape.
  void messageBoxShowsAndAnswers() {
    for (const BoxCase& c : kBoxCases) {
      QWidget owner;
      QtMessageBox message_box(&owner);
      WhenShown<QMessageBox>([&](QMessageBox* box) {
        QCOMPARE(box->parentWidget(), &owner);
        QCOMPARE(box->text(), QStringLiteral("Line one\nLine <b>two</b>"));
        QCOMPARE(box->textFormat(), Qt::PlainText);
        QCOMPARE(box->windowTitle().toStdString(), *c.title ? c.title : DefaultMessageTitle());
        QCOMPARE(box->standardButtons(), c.shown);
        QCOMPARE(box->icon(), c.shown_icon);
        QCOMPARE(box->defaultButton(), box->button(c.shown_default));
        if (c.press == QMessageBox::NoButton) {
          QTest::keyClick(box, Qt::Key_Escape);
        } else {
          box->button(c.press)->click();
        }
      });
      Message message{.prompt = "Line one\r\nLine <b>two</b>", .buttons = c.buttons,
                      .title = c.title, .icon = c.icon, .default_button = c.default_button,
                      .help_file = {}, .help_context = 0, .button_texts = {}};
      QVERIFY2(message_box.Show(message) == c.answer, c.name);
    }
  }

  // The typed name comes back with the default extension. Qt matches nothing
  // with patterns run together by semicolons, so they reach it with blanks
  // between.
  void fileDialogAsksForTheFileToSave() {
    QCOMPARE(ToQtNameFilters("Text (*.txt)|*.csv"), QStringList{"Text (*.txt) (*.csv)"});
    QTemporaryDir folder;
    FileDialogRequest request;
    request.title = "Save Popup As";
    request.filter = "Popups (*.zpt;*.zpd)|*.zpt;*.zpd|All|*.*|";
    request.initial_folder = folder.path().toStdString();
    request.file_name = "Products.zpt";
    request.default_extension = ".zpt";
    QWidget owner;
    QtFileDialog file_dialog(&owner);
    WhenShown<QFileDialog>([&](QFileDialog* dialog) {
      QCOMPARE(dialog->windowTitle(), QStringLiteral("Save Popup As"));
      QCOMPARE(dialog->acceptMode(), QFileDialog::AcceptSave);
      QCOMPARE(dialog->nameFilters(), (QStringList{"Popups (*.zpt *.zpd)", "All (*.*)"}));
      QCOMPARE(dialog->directory().absolutePath(), QDir(folder.path()).absolutePath());
      QVERIFY(!dialog->testOption(QFileDialog::DontConfirmOverwrite));
      dialog->selectFile(QStringLiteral("New"));
      static_cast<QDialog*>(dialog)->accept();  // protected in QFileDialog
    });
    QCOMPARE(file_dialog.ShowSave(request), folder.filePath("New.zpt").toStdString());
  }

  void progressFormShowsStateAndRefusesUserClose() {
    FormProgress progress(nullptr);
    progress.SetMessage("Reading %p");  // before Show: remembered, nothing shown
    progress.SetMaximum(40);
    progress.SetValue(10);

    progress.Show();
    QPointer<ProgressForm> form = progress.Form();
    QVERIFY(form && form->isVisible());
    auto* bar = form->findChild<QProgressBar*>("zephyrPacifier");
    QCOMPARE(bar->text().remove(QChar(0x2060)), QStringLiteral("Reading %p"));
    QCOMPARE(bar->maximum(), 40);
    QCOMPARE(bar->value(), 10);

    // The close box: the window manager's close arrives as a spontaneous event.
    QCloseEvent close;
    QSpontaneKeyEvent::setSpontaneous(&close);
    QCoreApplication::instance()->notify(form, &close);
    QVERIFY(!close.isAccepted());
    QVERIFY(form->isVisible());
    progress.Unload();
    QVERIFY(!form);
    progress.SetValue(3);  // after Unload: remembered only
  }

  void recycleMovesFilesToTheTrash() {
    QTemporaryDir home;
    QByteArray old_home = qgetenv("HOME"), old_data = qgetenv("XDG_DATA_HOME");
    auto restore = qScopeGuard([&] {
      qputenv("HOME", old_home);
      qputenv("XDG_DATA_HOME", old_data);
    });
    qputenv("HOME", home.path().toUtf8());
    qputenv("XDG_DATA_HOME", (home.path() + "/data").toUtf8());
    QDir(home.path()).mkpath("work");
    QString first = home.filePath("work/first.zpt"), second = home.filePath("work/second.zpd");
    QVERIFY(WriteFile(first) && WriteFile(second));

    QVERIFY(RecycleFiles({first.toStdString()}));
    QVERIFY(!QFile::exists(first));
    QVERIFY(QFile::exists(home.filePath("data/Trash/files/first.zpt")));
    // A missing file fails the call but does not stop the others.
    QVERIFY(!RecycleFiles({home.filePath("work/missing").toStdString(), second.toStdString()}));
    QVERIFY(QFile::exists(home.filePath("data/Trash/files/second.zpd")));
  }
};

}  // namespace zephyr::platform

QTEST_MAIN(zephyr::platform::PlatformTest)
#include "platform_test.moc"
