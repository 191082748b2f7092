// Importing a 100,000-row keyed sheet (3 levels, 2 companion columns) from
// .xlsx, split into reading the workbook, the sheet checks and the whole
// import (which also builds the tree and saves the popup); the same import
// from a running Calc over its pipe; and the literal quadratic checks on
// 5,000 rows as the baseline of the hashing ones.
#include <benchmark/benchmark.h>
#include <stdlib.h>
#include <xlsxwriter.h>

#include <cstdio>
#include <filesystem>
#include <map>
#include <string>

#include "literal_scans.h"
#ifdef ZEPHYR_WITH_CALC
#include "helpers/headless_office.h"
#include "zephyr/excel/running_calc.h"
#endif
#include "sheet_scans.h"
#include "zephyr/excel/excel_import.h"
#include "zephyr/excel/workbook.h"

namespace zephyr::bench {
namespace {

std::string Folder() {
  static const std::string folder = [] {
    std::string path = (std::filesystem::temp_directory_path() / "zephyr-import-XXXXXX").string();
    if (!::mkdtemp(path.data())) std::abort();
    return path;
  }();
  return folder;
}

// A keyed sheet of `rows` leaves under 3 levels, written once per size.
std::string MakeSheet(int rows) {
  static std::map<int, std::string> made;
  if (auto found = made.find(rows); found != made.end()) return found->second;
  std::string path = Folder() + "/sheet" + std::to_string(rows) + ".xlsx";
  lxw_workbook* book = workbook_new(path.c_str());
  lxw_worksheet* sheet = workbook_add_worksheet(book, "Data");
  const char* headings[] = {"Key", "Group", "Family", "Item", "Description", "Price"};
  for (int c = 0; c < 6; ++c) worksheet_write_string(sheet, 0, c, headings[c], nullptr);
  for (int i = 0; i < rows; ++i) {
    int a = i / (99 * 99) + 1, b = i / 99 % 99 + 1, c = i % 99 + 1;
    char key[16], group[24], family[32], item[24], description[40], price[24];
    std::snprintf(key, sizeof key, "%02d%02d%02d", a, b, c);
    std::snprintf(group, sizeof group, "Group %d", a);
    std::snprintf(family, sizeof family, "Family %d-%d", a, b);
    std::snprintf(item, sizeof item, "Item %d", i + 1);
    std::snprintf(description, sizeof description, "Description of item %d", i + 1);
    std::snprintf(price, sizeof price, "%d.%02d", i % 100, i % 97);
    lxw_row_t row = static_cast<lxw_row_t>(i + 1);
    const char* cells[] = {key, group, family, item, description, price};
    for (int column = 0; column < 6; ++column) {
      worksheet_write_string(sheet, row, static_cast<lxw_col_t>(column), cells[column], nullptr);
    }
  }
  workbook_close(book);
  return made[rows] = path;
}

excel::ExcelArray ToArray(const excel::Sheet& sheet) {
  excel::ExcelArray array(6);
  for (const auto& row : sheet.rows) {
    std::vector<std::string> cells;
    for (const auto& cell : row.cells) cells.push_back(cell.text);
    array.AddRow(std::move(cells));
  }
  return array;
}

void BM_ReadWorkbook(benchmark::State& state) {
  std::string path = MakeSheet(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    auto book = excel::OpenWorkbook(path);
    benchmark::DoNotOptimize(book->ReadSheet(book->ActiveSheet()).rows.size());
  }
}

void BM_SheetChecks(benchmark::State& state) {
  auto book = excel::OpenWorkbook(MakeSheet(static_cast<int>(state.range(0))));
  excel::ExcelArray array = ToArray(book->ReadSheet(book->ActiveSheet()));
  for (auto _ : state) {
    benchmark::DoNotOptimize(excel::FirstRepeatedKeyRow(array));
    benchmark::DoNotOptimize(excel::FirstIdenticalRows(array));
  }
}

void BM_LiteralSheetChecks(benchmark::State& state) {
  auto book = excel::OpenWorkbook(MakeSheet(static_cast<int>(state.range(0))));
  excel::ExcelArray array = ToArray(book->ReadSheet(book->ActiveSheet()));
  for (auto _ : state) {
    benchmark::DoNotOptimize(LiteralRepeatedKey(array));
    benchmark::DoNotOptimize(LiteralIdenticalRows(array));
  }
}

class Answers : public MessageBox, public excel::LevelPrompt {
 public:
  MessageAnswer Show(const Message&) override { return MessageAnswer::kNo; }
  int PromptForLevels() override { return -1; }
};

// Imports the source into a new popup "name" once per iteration, saving it.
void ImportEachTime(benchmark::State& state, const excel::SheetSource& source, const char* name) {
  Answers answers;
  NoProgress progress;
  excel::ImportUi ui{answers, progress, answers};
  for (auto _ : state) {
    PopupClass popup;
    popup.PopupPath(Folder());
    popup.DataSource(name);
    if (excel::ImportFromWorkbook(popup, source, ui) != excel::ImportOutcome::kImported) {
      state.SkipWithError("the import failed");
    }
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_WholeImport(benchmark::State& state) {
  ImportEachTime(state, excel::SheetSource::File(MakeSheet(static_cast<int>(state.range(0)))),
                 "Imported");
}

#ifdef ZEPHYR_WITH_CALC
// The same sheet shown in a running Calc, imported over the pipe: against
// BM_WholeImport, which reads it from the .xlsx file.
void BM_WholeImportFromCalc(benchmark::State& state) {
  static testing::HeadlessOffice office;
  if (!office.Started()) {
    state.SkipWithError("no LibreOffice to run");
    return;
  }
  office.CloseAll();
  office.Show(MakeSheet(static_cast<int>(state.range(0))), 0);
  ImportEachTime(state, excel::RunningCalc(office.Pipe()), "FromCalc");
}
BENCHMARK(BM_WholeImportFromCalc)->Arg(100'000)->Unit(benchmark::kMillisecond);
#endif

BENCHMARK(BM_ReadWorkbook)->Arg(100'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SheetChecks)->Arg(5'000)->Arg(100'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LiteralSheetChecks)->Arg(5'000)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(BM_WholeImport)->Arg(100'000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace zephyr::bench

BENCHMARK_MAIN();
