// The editor widget at scale, shown offscreen: opening a popup until the
// outline is filled, sorted and expanded (against PopupClass::OpenPopup alone
// in the same run), the memory the outline adds per item, single edits in a
// 100,000-item tree, and saving in outline order (against saving through
// PopupClass alone), and printing the outline to PDF (against writing the same
// lines to a PDF one after another), and undoing and redoing edits in a
// million-item tree (against the edits themselves), each with the journal of
// unsaved edits off (argument 0) and on (1).
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <QApplication>
#include <QLineEdit>
#include <QPainter>
#include <QPrinter>
#include <QStandardPaths>
#include <QTest>
#include <QTreeView>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "zephyr/editor/popup_control_edit.h"
#include "zephyr/runtime/popup_key.h"

namespace zephyr::bench {
namespace {

// Items per level below each parent: 10,110, 101,110 and 1,008,310 items in
// four levels.
std::vector<int> Shape(int64_t items) {
  if (items >= 1'000'000) return {10, 30, 35, 95};
  if (items <= 10'000) return {10, 10, 10, 9};
  return {10, 10, 10, 99};
}

std::string Folder() {
  static const std::string folder = [] {
    auto path = std::filesystem::temp_directory_path() / "zephyr-bench-editor";
    std::filesystem::create_directories(path);
    return path.string();
  }();
  return folder;
}

std::string NameOf(int64_t items) {
  return "E" + std::to_string(items);
}

void AddLevel(PopupClass& popup, const std::shared_ptr<PopupItem>& parent, const std::string& path,
              const std::vector<int>& shape, size_t depth) {
  for (int code = 1; code <= shape[depth]; ++code) {
    std::string compact = path + (code < 10 ? "0" : "") + std::to_string(code);
    auto item = popup.AddItem(parent, FormatStoredKey(compact, 4),
                              {"Item " + compact, "note " + std::to_string(code)});
    if (depth + 1 < shape.size()) AddLevel(popup, item, compact, shape, depth + 1);
  }
}

// Writes the popup once; later runs reuse it.
std::string MakePopup(int64_t items) {
  std::string name = NameOf(items);
  if (std::filesystem::exists(Folder() + "/" + name + ".ZPD")) return name;
  PopupClass popup;
  popup.PopupPath(Folder());
  popup.DataSource(name);
  popup.Title("Benchmark");
  popup.ReplaceLevels({{Variant("A"), 1}, {Variant("B"), 2}, {Variant("C"), 3}, {Variant("D"), 4}});
  popup.ReplaceFields({{"Description", 40, 0, 1}, {"Note", 20, 0, 2}});
  AddLevel(popup, nullptr, "", Shape(items), 0);
  SavePopupInTreeOrder(popup);
  return name;
}

// Bytes allocated and not yet freed: exact, unlike the resident size, which
// reused pages hide.
int64_t HeapBytes() {
  struct mallinfo2 info = ::mallinfo2();
  return static_cast<int64_t>(info.uordblks + info.hblkhd);
}

// A benchmark never waits for a person: a code question counts and cancels.
class CancellingKeyPrompt : public editor::NewKeyPrompt {
 public:
  std::string AskNewKey() override {
    ++asked;
    return editor::kCancelledNewKey;
  }
  int asked = 0;
};

std::unique_ptr<editor::PopupControlEdit> ShownEditor() {
  auto editor = std::make_unique<editor::PopupControlEdit>();
  editor->SetProgress(std::make_shared<NoProgress>());
  // Answers every question with its first button: Yes to deleting.
  editor->SetMessageBox(std::make_shared<StderrMessageBox>());
  editor->SetNewKeyPrompt(std::make_shared<CancellingKeyPrompt>());
  editor->resize(900, 600);
  editor->show();
  editor->activateWindow();
  if (!QTest::qWaitForWindowActive(editor.get())) qFatal("the editor never became active");
  return editor;
}

// The baseline: the popup's own load.
void BM_PopupClassOpen(benchmark::State& state) {
  std::string name = MakePopup(state.range(0));
  int64_t held = 0, items = 0;
  for (auto _ : state) {
    int64_t before = HeapBytes();
    PopupClass popup;
    popup.PopupPath(Folder());
    popup.DataSource(name);
    popup.OpenPopup();
    held = HeapBytes() - before;
    state.PauseTiming();
    items = CountItemsInTree(*popup.PopupItems());
    state.ResumeTiming();
  }
  state.counters["items"] = static_cast<double>(items);
  state.counters["bytes_per_item"] = static_cast<double>(held) / static_cast<double>(items);
}

// Open until the outline is filled, sorted, expanded and painted once.
void BM_EditorOpen(benchmark::State& state) {
  std::string name = MakePopup(state.range(0));
  int64_t held = 0, items = 0;
  for (auto _ : state) {
    auto editor = ShownEditor();
    int64_t before = HeapBytes();
    editor->OpenPopup(Folder(), name);
    QApplication::processEvents();
    held = HeapBytes() - before;
    state.PauseTiming();
    items = CountItemsInTree(*editor->Popup()->PopupItems());
    editor.reset();
    state.ResumeTiming();
  }
  state.counters["items"] = static_cast<double>(items);
  // Compare with BM_PopupClassOpen's bytes_per_item: the difference is the outline's.
  state.counters["bytes_per_item"] = static_cast<double>(held) / static_cast<double>(items);
}

class EditFixture : public benchmark::Fixture {
 public:
  void SetUp(const benchmark::State&) override {
    editor = ShownEditor();
    editor->OpenPopup(Folder(), MakePopup(100'000));
    grid = editor->findChild<QTreeView*>("DataGrid");
    grid->setFocus();
  }
  void TearDown(const benchmark::State&) override { editor.reset(); }

  // The last of a set of level-3 siblings (codes 01..10) deep in the tree,
  // with 99 children of its own.
  QModelIndex DeepRow() {
    QAbstractItemModel* model = grid->model();
    QModelIndex row = model->index(0, 0);
    row = model->index(5, 0, row);
    row = model->index(5, 0, row);
    return model->index(9, 0, row);
  }
  // Deletes the row an add just made, so that every add finds the same room.
  void DeleteAdded() { editor->DeleteCurrentItem(); }

  std::unique_ptr<editor::PopupControlEdit> editor;
  QTreeView* grid = nullptr;
};

BENCHMARK_DEFINE_F(EditFixture, AddChild)(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    grid->setCurrentIndex(DeepRow().parent());  // a level-2 item with ten children
    state.ResumeTiming();
    editor->AddChild();
    state.PauseTiming();
    DeleteAdded();
    state.ResumeTiming();
  }
}

BENCHMARK_DEFINE_F(EditFixture, AddSibling)(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    grid->setCurrentIndex(DeepRow());
    state.ResumeTiming();
    editor->AddSibling();
    state.PauseTiming();
    DeleteAdded();
    state.ResumeTiming();
  }
}

// Typing a new code into a key cell: the check, ModifyKey and the re-sort.
BENCHMARK_DEFINE_F(EditFixture, KeyChange)(benchmark::State& state) {
  int code = 0;
  for (auto _ : state) {
    state.PauseTiming();
    QModelIndex row = DeepRow();
    grid->setCurrentIndex(row);
    char typed[3];
    std::snprintf(typed, sizeof typed, "%02d", 50 + (code++ % 40));
    state.ResumeTiming();
    QTest::keyClick(grid, Qt::Key_Return);
    auto* line = qobject_cast<QLineEdit*>(QApplication::focusWidget());
    if (!line) {
      state.SkipWithError("no editor opened");
      break;
    }
    line->setText(typed);
    QTest::keyClick(line, Qt::Key_Return);
    state.PauseTiming();
    // Leave the value cell the key entry flows into.
    QApplication::processEvents();
    if (auto* value = qobject_cast<QLineEdit*>(QApplication::focusWidget())) {
      QTest::keyClick(value, Qt::Key_Escape);
    }
    state.ResumeTiming();
  }
}

// Undo and redo in a popup of a million items, each against the edit it
// undoes in the same run: a deleted branch of 100,830 items (the first
// top-level item) and a typed value. Argument 1 keeps the journal of unsaved
// edits, which writes each change to disk.
class MillionFixture : public benchmark::Fixture {
 public:
  void SetUp(const benchmark::State& state) override {
    editor = ShownEditor();
    editor->KeepUnsavedEdits(state.range(0) != 0);
    editor->OpenPopup(Folder(), MakePopup(1'000'000));
    grid = editor->findChild<QTreeView*>("DataGrid");
    grid->setFocus();
    QApplication::processEvents();
  }
  void TearDown(const benchmark::State&) override { editor.reset(); }

  QModelIndex FirstBranch() { return grid->model()->index(0, 0, grid->model()->index(0, 0)); }
  void DeleteFirstBranch() {
    grid->setCurrentIndex(FirstBranch());
    editor->DeleteCurrentItem();  // the message box answers Yes
    QApplication::processEvents();
  }
  // Types a value into the description of the first branch's first item.
  void TypeValue(const QString& text) {
    QModelIndex cell = grid->model()->index(0, 1, FirstBranch());
    grid->setCurrentIndex(cell);
    QTest::keyClick(grid, Qt::Key_Return);
    auto* line = qobject_cast<QLineEdit*>(QApplication::focusWidget());
    if (!line) qFatal("no editor opened");
    line->setText(text);
    QTest::keyClick(line, Qt::Key_Return);
    QApplication::processEvents();
    grid->setFocus();
  }
  void Undo() {
    editor->undo();
    QApplication::processEvents();
  }
  void Redo() {
    editor->redo();
    QApplication::processEvents();
  }

  std::unique_ptr<editor::PopupControlEdit> editor;
  QTreeView* grid = nullptr;
};

BENCHMARK_DEFINE_F(MillionFixture, DeleteBranch)(benchmark::State& state) {
  for (auto _ : state) {
    DeleteFirstBranch();
    state.PauseTiming();
    Undo();
    state.ResumeTiming();
  }
}

BENCHMARK_DEFINE_F(MillionFixture, UndoDeleteBranch)(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    DeleteFirstBranch();
    state.ResumeTiming();
    Undo();
  }
}

BENCHMARK_DEFINE_F(MillionFixture, RedoDeleteBranch)(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    DeleteFirstBranch();
    Undo();
    state.ResumeTiming();
    Redo();
    state.PauseTiming();
    Undo();
    state.ResumeTiming();
  }
}

BENCHMARK_DEFINE_F(MillionFixture, TypeValue)(benchmark::State& state) {
  int typed = 0;
  for (auto _ : state) {
    TypeValue(QStringLiteral("value %1").arg(++typed));
    state.PauseTiming();
    Undo();
    state.ResumeTiming();
  }
}

BENCHMARK_DEFINE_F(MillionFixture, UndoTypeValue)(benchmark::State& state) {
  int typed = 0;
  for (auto _ : state) {
    state.PauseTiming();
    TypeValue(QStringLiteral("value %1").arg(++typed));
    state.ResumeTiming();
    Undo();
  }
}

void BM_EditorSaveData(benchmark::State& state) {
  auto editor = ShownEditor();
  editor->OpenPopup(Folder(), MakePopup(state.range(0)));
  editor->Popup()->DataSource(NameOf(state.range(0)) + "-editor");
  for (auto _ : state) editor->SaveData();
}

void BM_PopupClassSave(benchmark::State& state) {
  PopupClass popup;
  popup.PopupPath(Folder());
  popup.DataSource(MakePopup(state.range(0)));
  popup.OpenPopup();
  popup.DataSource(NameOf(state.range(0)) + "-class");
  for (auto _ : state) SavePopupInTreeOrder(popup);
}

std::unique_ptr<QPrinter> PdfPrinter() {
  auto printer = std::make_unique<QPrinter>(QPrinter::HighResolution);
  printer->setOutputFormat(QPrinter::PdfFormat);
  printer->setOutputFileName(QString::fromStdString(Folder() + "/outline.pdf"));
  return printer;
}

// The whole outline printed: layout, headings on every page, page numbers.
void BM_PrintPdf(benchmark::State& state) {
  auto editor = ShownEditor();
  editor->OpenPopup(Folder(), MakePopup(state.range(0)));
  for (auto _ : state) {
    auto printer = PdfPrinter();
    if (!editor->PrintPopupData(*printer)) state.SkipWithError("printing failed");
  }
  state.counters["items"] = static_cast<double>(CountItemsInTree(*editor->Popup()->PopupItems()));
}

// The baseline: each row's texts drawn as one line, a new page when one is full.
void BM_PlainPdf(benchmark::State& state) {
  auto editor = ShownEditor();
  editor->OpenPopup(Folder(), MakePopup(state.range(0)));
  auto* grid = editor->findChild<QTreeView*>("DataGrid");
  QStringList lines;
  for (QModelIndex row = grid->model()->index(0, 0); row.isValid(); row = grid->indexBelow(row)) {
    lines << row.data().toString() + QLatin1Char(' ') + row.siblingAtColumn(1).data().toString() +
                 QLatin1Char(' ') + row.siblingAtColumn(2).data().toString();
  }
  for (auto _ : state) {
    auto printer = PdfPrinter();
    QPainter painter(printer.get());
    const int line = painter.fontMetrics().height();
    const int bottom = painter.viewport().height();
    int y = line;
    for (const QString& text : lines) {
      if (y > bottom) {
        printer->newPage();
        y = line;
      }
      painter.drawText(0, y, text);
      y += line;
    }
  }
}

BENCHMARK(BM_PopupClassOpen)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_EditorOpen)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK_REGISTER_F(EditFixture, AddChild)->Unit(benchmark::kMillisecond)->Iterations(20);
BENCHMARK_REGISTER_F(EditFixture, AddSibling)->Unit(benchmark::kMillisecond)->Iterations(20);
BENCHMARK_REGISTER_F(EditFixture, KeyChange)->Unit(benchmark::kMillisecond)->Iterations(20);
BENCHMARK_REGISTER_F(MillionFixture, DeleteBranch)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK_REGISTER_F(MillionFixture, UndoDeleteBranch)
    ->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)
    ->Iterations(3);
BENCHMARK_REGISTER_F(MillionFixture, RedoDeleteBranch)
    ->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)
    ->Iterations(3);
BENCHMARK_REGISTER_F(MillionFixture, TypeValue)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->Iterations(10);
BENCHMARK_REGISTER_F(MillionFixture, UndoTypeValue)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->Iterations(10);
BENCHMARK(BM_PopupClassSave)->Arg(100'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_EditorSaveData)->Arg(100'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PlainPdf)->Arg(10'000)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_PrintPdf)->Arg(10'000)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace
}  // namespace zephyr::bench

int main(int argc, char** argv) {
  if (!std::getenv("QT_QPA_PLATFORM")) setenv("QT_QPA_PLATFORM", "offscreen", 1);
  QApplication app(argc, argv);
  QStandardPaths::setTestModeEnabled(true);  // journals away from the user's own
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
