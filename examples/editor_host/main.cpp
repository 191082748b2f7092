// A main window with the popup editor as its central widget: the smallest
// host of the editor library.
//   editor_host [--check] [FOLDER/NAME]
// --check opens the popup, prints its title and quits; run it with
// QT_QPA_PLATFORM=offscreen where there is no display.
#include <QApplication>
#include <QCloseEvent>
#include <QMainWindow>
#include <QMessageBox>
#include <QStringList>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>

#include "zephyr/editor/popup_control_edit.h"
#include "zephyr/support/errors.h"
#include "zephyr/support/message_box.h"

namespace {

// Closing asks about work no save has written.
class HostWindow : public QMainWindow {
 public:
  zephyr::editor::PopupControlEdit* editor = nullptr;

 protected:
  void closeEvent(QCloseEvent* event) override {
    if (!editor->Modified()) return event->accept();
    auto answer = QMessageBox::warning(
        this, QStringLiteral("Unsaved Changes"),
        QStringLiteral("The popup has unsaved changes. Save them first?"),
        QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, QMessageBox::Save);
    bool may_close = answer == QMessageBox::Discard;
    if (answer == QMessageBox::Save) {
      try {
        may_close = editor->SaveChanges(false);
      } catch (const zephyr::Error& error) {
        editor->ReportError(error);
      }
    }
    may_close ? event->accept() : event->ignore();
  }
};

}  // namespace

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  QStringList args = QApplication::arguments();
  args.removeFirst();
  const bool check = args.removeAll("--check") > 0;
  if (args.size() > 1) {
    std::cerr << "usage: editor_host [--check] [FOLDER/NAME]\n";
    return 2;
  }

  HostWindow window;
  auto* editor = new zephyr::editor::PopupControlEdit(&window);
  window.editor = editor;
  window.setCentralWidget(editor);
  // A modal dialog would wait for ever without a user.
  if (check) editor->SetMessageBox(std::make_shared<zephyr::StderrMessageBox>());

  std::string folder;
  std::string base_name;
  if (!args.isEmpty()) {
    const std::filesystem::path name(args.first().toStdString());
    folder = name.parent_path().string();
    base_name = name.filename().string();
  }
  try {
    editor->OpenPopup(folder, base_name);
  } catch (const zephyr::Error& error) {
    std::cerr << "editor_host: " << error.Description() << "\n";
    return 1;
  }
  window.setWindowTitle(QString::fromStdString(editor->PopupTitle()));
  window.resize(900, 600);
  window.show();

  if (check) {
    QApplication::processEvents();
    std::cout << editor->PopupTitle() << "\n";
    return 0;
  }
  return app.exec();
}
