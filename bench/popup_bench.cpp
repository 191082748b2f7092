// Opening and saving popups of up to a million items, and the original
// quadratic tree load as the baseline the linear loader is measured against.
//
// The popups have four levels and two companion fields of 40 and 20
// characters, with their records in random order.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "helpers/literal_loader.h"
#include "minimal_dbf.h"
#include "zephyr/runtime/popup_class.h"
#include "zephyr/runtime/popup_key.h"

namespace zephyr::bench {
namespace {

// Items per level below each parent; the product is close to the item count.
std::vector<int> Shape(int64_t items) {
  if (items >= 1'000'000) return {10, 30, 35, 95};  // 1,008,310 items
  if (items >= 100'000) return {10, 10, 10, 99};    // 101,110 items
  return {10, 10, 10, 9};                           // 10,110 items
}

// Generated popups are kept between runs so that a run measures reads of
// settled files, not files still being written back.
std::string Folder() {
  static const std::string folder = [] {
    auto path = std::filesystem::temp_directory_path() / "zephyr-bench-popups";
    std::filesystem::create_directories(path);
    return path.string();
  }();
  return folder;
}

// The record count in the header of an existing table, or -1.
int64_t RecordsOnDisk(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  unsigned char header[8] = {};
  if (!in.read(reinterpret_cast<char*>(header), sizeof header)) return -1;
  return header[4] | header[5] << 8 | header[6] << 16 | int64_t{header[7]} << 24;
}

std::string Text(std::mt19937& random, size_t length) {
  static const char kLetters[] = "abcdefghijklmnopqrstuvwxyz ";
  std::string text(length, ' ');
  size_t used = std::uniform_int_distribution<size_t>(length / 2, length)(random);
  for (size_t i = 0; i < used; ++i) text[i] = kLetters[random() % 27];
  return text;
}

// Writes the popup NAME (template and table) once and returns its item count.
int64_t MakePopup(const std::string& name, int64_t items) {
  std::string table = Folder() + "/" + name + ".ZPD";
  if (int64_t records = RecordsOnDisk(table); records > 0) return records;
  std::vector<int> shape = Shape(items);
  std::mt19937 random(42);
  std::vector<std::vector<std::string>> rows;
  std::vector<std::string> paths = {""};
  for (int count : shape) {
    std::vector<std::string> next;
    for (const std::string& parent : paths) {
      for (int code = 1; code <= count; ++code) {
        char own[3];
        std::snprintf(own, sizeof own, "%02d", code);
        next.push_back(parent + own);
        rows.push_back({FormatStoredKey(next.back(), 4), Text(random, 40), Text(random, 20)});
      }
    }
    paths = std::move(next);
  }
  std::shuffle(rows.begin(), rows.end(), random);
  MinimalWrite(Folder() + "/" + name + ".ZPD", {{"POPUP_CODE", 8}, {"FIELD2", 40}, {"FIELD3", 20}},
               rows);
  std::ofstream(Folder() + "/" + name + ".ZPT", std::ios::binary)
      << "\"Benchmark\"\r\n4\r\n2,\"A\"\r\n2,\"B\"\r\n2,\"C\"\r\n2,\"D\"\r\n2\r\n"
         "9,40,\"Description\"\r\n49,20,\"Note\"\r\n";
  // The table last, so that a run cut short leaves no table without its template.
  MinimalWrite(table, {{"POPUP_CODE", 8}, {"FIELD2", 40}, {"FIELD3", 20}}, rows);
  return static_cast<int64_t>(rows.size());
}

std::string PopupName(int64_t items) {
  return "P" + std::to_string(items);
}

int64_t ResidentBytes() {
  long pages = 0, resident = 0;
  std::ifstream("/proc/self/statm") >> pages >> resident;
  return resident * ::sysconf(_SC_PAGESIZE);
}

std::unique_ptr<PopupClass> Open(const std::string& name) {
  auto popup = std::make_unique<PopupClass>();
  popup->PopupPath(Folder());
  popup->DataSource(name);
  popup->OpenPopup();
  return popup;
}

void BM_OpenPopup(benchmark::State& state) {
  std::string name = PopupName(state.range(0));
  int64_t items = MakePopup(name, state.range(0));
  int64_t held = 0;
  for (auto _ : state) {
    int64_t before = ResidentBytes();
    auto popup = Open(name);
    held = ResidentBytes() - before;
    benchmark::DoNotOptimize(popup->PopupItems()->Count());
    state.PauseTiming();
    popup.reset();
    state.ResumeTiming();
  }
  state.counters["items"] = static_cast<double>(items);
  state.counters["bytes_per_item"] = static_cast<double>(held) / static_cast<double>(items);
  state.SetItemsProcessed(state.iterations() * items);
}

// The baseline: slicing every value of the same table into memory.
void BM_MinimalReadPopupTable(benchmark::State& state) {
  std::string name = PopupName(state.range(0));
  MakePopup(name, state.range(0));
  for (auto _ : state) {
    benchmark::DoNotOptimize(MinimalRead(Folder() + "/" + name + ".ZPD").size());
  }
}

void BM_SavePopup(benchmark::State& state) {
  std::string name = PopupName(state.range(0));
  int64_t items = MakePopup(name, state.range(0));
  auto popup = Open(name);
  popup->DataSource(name + "-saved");                 // saves beside the original
  for (auto _ : state) SavePopupInTreeOrder(*popup);  // flushes and renames too
  state.SetItemsProcessed(state.iterations() * items);
}

// The original loader on the sorted rows of an opened popup.
void BM_LiteralQuadraticLoad(benchmark::State& state) {
  std::string name = PopupName(state.range(0));
  MakePopup(name, state.range(0));
  auto popup = Open(name);
  VariantArray sorted = VariantArray::Table(3, popup->RowCount());
  for (int32_t row = 1; row <= popup->RowCount(); ++row) {
    for (int32_t column = 1; column <= 3; ++column)
      sorted.At(column, row) = popup->Values(column, row);
  }
  for (auto _ : state) {
    testing::LiteralLoader literal(&sorted, 4, {"A", "B", "C", "D"});
    std::vector<testing::Node> top;
    literal.LoadTopLevel(top);
    benchmark::DoNotOptimize(top.size());
  }
}

BENCHMARK(BM_OpenPopup)->Arg(10'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MinimalReadPopupTable)->Arg(10'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SavePopup)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LiteralQuadraticLoad)->Arg(10'000)->Unit(benchmark::kMillisecond)->Iterations(1);

}  // namespace
}  // namespace zephyr::bench

BENCHMARK_MAIN();
