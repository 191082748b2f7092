// What the widget tests share: scripted dialogs, a small popup on disk and a
// widget shown offscreen with every question answered by a script.
#ifndef ZEPHYR_TESTS_EDITOR_EDITOR_FIXTURE_H_
#define ZEPHYR_TESTS_EDITOR_EDITOR_FIXTURE_H_

#include <QApplication>
#include <QRegularExpression>
#include <QTabBar>
#include <QTableView>
#include <QTest>
#include <QTimer>
#include <QTreeView>
#include <deque>
#include <functional>
#include <memory>
#include <optional>

#include "helpers/popup_files.h"
#include "helpers/recorders.h"
#include "helpers/temp_dir.h"
#include "zephyr/editor/popup_control_edit.h"

namespace zephyr::testing {

class ScriptedFileDialog : public FileDialog {
 public:
  std::optional<std::string> ShowSave(const FileDialogRequest& request) override {
    return Answer(request);
  }
  std::optional<std::string> ShowOpen(const FileDialogRequest& request) override {
    return Answer(request);
  }
  std::optional<std::string> Answer(const FileDialogRequest& request) {
    requests.push_back(request);
    if (answers.empty()) return std::nullopt;
    auto answer = answers.front();
    answers.pop_front();
    return answer;
  }
  std::deque<std::optional<std::string>> answers;
  std::vector<FileDialogRequest> requests;
};

class ScriptedKeyPrompt : public editor::NewKeyPrompt {
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

class ScriptedClipboard : public Clipboard {
 public:
  std::string Text() const override { return text; }
  void SetText(const std::string& value) override { text = value; }
  std::string text;
};

// Any Qt warning fails the running test; the offscreen platform's notes that
// it does not pass size hints or raise windows for a window system it does
// not have are no fault.
inline void FailOnQtWarnings() {
  QTest::failOnWarning(QRegularExpression(
      QStringLiteral("^(?!This plugin does not support (propagateSizeHints|raise)\\(\\))")));
}

// Runs `answer` on the next modal dialog, once it is shown (within five seconds).
inline void WhenModal(std::function<void(QWidget*)> answer) {
  auto* poll = new QTimer(QCoreApplication::instance());
  auto waited = std::make_shared<int>(0);
  QObject::connect(poll, &QTimer::timeout, [poll, waited, answer] {
    QWidget* dialog = QApplication::activeModalWidget();
    if (!dialog && ++*waited < 500) return;
    poll->deleteLater();
    poll->stop();
    if (!dialog) qFatal("no modal dialog was shown");
    answer(dialog);
  });
  poll->start(10);
}

class EditorFixture {
 protected:
  void SetUpEditor() {
    FailOnQtWarnings();
    dir = std::make_unique<TempDir>();
    editor = std::make_unique<editor::PopupControlEdit>();
    messages = std::make_shared<ScriptedMessageBox>();
    dialog = std::make_shared<ScriptedFileDialog>();
    keys = std::make_shared<ScriptedKeyPrompt>();
    clipboard = std::make_shared<ScriptedClipboard>();
    editor->SetMessageBox(messages);
    editor->SetFileDialog(dialog);
    editor->SetProgress(std::make_shared<NoProgress>());
    editor->SetNewKeyPrompt(keys);
    editor->SetClipboard(clipboard);
    // Workbook files only, whatever office runs on the machine; the running
    // spreadsheet's own test turns it on.
    editor->UseRunningSpreadsheet(false);
    editor->resize(800, 500);
    editor->show();
    editor->activateWindow();
    if (!QTest::qWaitForWindowActive(editor.get())) qFatal("the editor never became active");
  }
  void TearDownEditor() {
    editor.reset();
    dir.reset();
  }

  template <typename T>
  T* Child(const char* name) {
    T* child = editor->findChild<T*>(QString::fromLatin1(name));
    if (!child) qFatal("no child %s", name);
    return child;
  }
  QTabBar* Tabs() { return Child<QTabBar>("tbsZephyrPopup"); }
  QTreeView* Grid() { return Child<QTreeView>("DataGrid"); }
  void ClickTab(int index) {
    QTabBar* tabs = Tabs();
    QTest::mouseClick(tabs, Qt::LeftButton, {}, tabs->tabRect(index).center());
  }
  std::vector<std::string> Prompts() const {
    std::vector<std::string> prompts;
    for (const auto& message : messages->shown) prompts.push_back(message.prompt);
    return prompts;
  }
  void OpenProducts() {
    WriteProducts(dir->Path());
    editor->OpenPopup(dir->Path(), "Products");
  }
  void SelectRow(const char* grid, int grid_row) {
    auto* view = Child<QTableView>(grid);
    view->setCurrentIndex(view->model()->index(grid_row - 1, 0));
  }
  // The row whose column 0 path of texts from the title row down is `path`
  // ({"10", "20"}: code 20 under code 10), at the given column.
  QModelIndex Row(std::initializer_list<const char*> path, int column = 0) {
    QAbstractItemModel* model = Grid()->model();
    QModelIndex parent = model->index(0, 0);
    QModelIndex found;
    for (const char* code : path) {
      found = QModelIndex();
      for (int row = 0; row < model->rowCount(parent); ++row) {
        if (model->index(row, 0, parent).data().toString() == QLatin1String(code)) {
          found = model->index(row, 0, parent);
        }
      }
      if (!found.isValid()) return {};
      parent = found;
    }
    return found.siblingAtColumn(column);
  }
  // Column 0 texts of the visible outline, title row first.
  QStringList Outline() {
    QStringList texts;
    for (QModelIndex row = Grid()->model()->index(0, 0); row.isValid();
         row = Grid()->indexBelow(row)) {
      texts << row.data().toString();
    }
    return texts;
  }

  std::unique_ptr<TempDir> dir;
  std::unique_ptr<editor::PopupControlEdit> editor;
  std::shared_ptr<ScriptedMessageBox> messages;
  std::shared_ptr<ScriptedFileDialog> dialog;
  std::shared_ptr<ScriptedKeyPrompt> keys;
  std::shared_ptr<ScriptedClipboard> clipboard;
};

}  // namespace zephyr::testing

#endif  // ZEPHYR_TESTS_EDITOR_EDITOR_FIXTURE_H_
