// Opening and saving popups of 100,000 and a million items, each against
// the smallest program that does the same work with the same files,
// measured in the same iteration: the minimal reader keeps every value of
// the table, the minimal writer builds the whole table in one buffer and
// writes and flushes it at once. Counters give the time against that
// baseline (x_minimal), the peak memory per item of both, and for opening
// the time it takes to free the popup again. The original quadratic tree
// load is measured on a small popup.
//
// The popups have four levels and two companion fields of 40 and 20
// characters, with their records in random order. Every measurement starts
// with the allocator's free memory given back to the system, as in a fresh
// process, and the peak is the resident high-water mark above that start.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "literal_loader.h"
#include "minimal_dbf.h"
#include "zephyr/runtime/popup_class.h"
#include "zephyr/runtime/popup_key.h"

namespace zephyr::bench {
namespace {

using Rows = std::vector<std::vector<std::string>>;

const std::vector<MinimalColumn> kColumns = {{"POPUP_CODE", 8}, {"FIELD2", 40}, {"FIELD3", 20}};

// Items per level below each parent; the product is close to the item count.
std::vector<int> Shape(int64_t items) {
  if (items >= 1'000'000) return {10, 30, 35, 95};  // 1,008,310 items
  if (items >= 100'000) return {10, 10, 10, 99};    // 100,110 items
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

std::string Path(const std::string& name, const char* extension) {
  return Folder() + "/" + name + extension;
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

// The records of the popup of about `items` items, in random order.
Rows PopupRows(int64_t items) {
  std::mt19937 random(42);
  Rows rows;
  std::vector<std::string> paths = {""};
  for (int count : Shape(items)) {
    std::vector<std::string> next;
    for (const std::string& parent : paths) {
      for (int code = 1; code <= count; ++code) {
        std::string own = std::to_string(100 + code).substr(1);
        next.push_back(parent + own);
        rows.push_back({FormatStoredKey(next.back(), 4), Text(random, 40), Text(random, 20)});
      }
    }
    paths = std::move(next);
  }
  std::shuffle(rows.begin(), rows.end(), random);
  return rows;
}

std::string PopupName(int64_t items) {
  return "P" + std::to_string(items);
}

// Writes the popup NAME (template and table) once and returns its item count.
int64_t MakePopup(const std::string& name, int64_t items) {
  std::string table = Path(name, ".ZPD");
  if (int64_t records = RecordsOnDisk(table); records > 0) return records;
  Rows rows = PopupRows(items);
  std::ofstream(Path(name, ".ZPT"), std::ios::binary)
      << "\"Benchmark\"\r\n4\r\n2,\"A\"\r\n2,\"B\"\r\n2,\"C\"\r\n2,\"D\"\r\n2\r\n"
         "9,40,\"Description\"\r\n49,20,\"Note\"\r\n";
  // The table last, so that a run cut short leaves no table without its template.
  MinimalWrite(table, kColumns, rows);
  return static_cast<int64_t>(rows.size());
}

int64_t MemoryLine(const char* name) {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line)) {
    if (line.rfind(name, 0) == 0) return std::stoll(line.substr(std::strlen(name))) * 1024;
  }
  return 0;
}

// The time and peak memory of one piece of work, or of its runs together.
struct Measured {
  double seconds = 0;
  int64_t peak_bytes = 0;  // the high-water mark above the resident size before

  Measured& operator+=(const Measured& run) {
    seconds += run.seconds;
    peak_bytes = std::max(peak_bytes, run.peak_bytes);
    return *this;
  }
};

template <typename Work>
Measured Measure(Work&& work) {
  ::malloc_trim(0);
  std::ofstream("/proc/self/clear_refs") << "5";  // restarts the high-water mark
  int64_t before = MemoryLine("VmRSS:");
  auto start = std::chrono::steady_clock::now();
  work();
  double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  return {seconds, MemoryLine("VmHWM:") - before};
}

std::unique_ptr<PopupClass> Open(const std::string& name) {
  auto popup = std::make_unique<PopupClass>();
  popup->PopupPath(Folder());
  popup->DataSource(name);
  popup->OpenPopup();
  return popup;
}

// Counters over all iterations: times per iteration, the highest peaks.
void SetCounters(benchmark::State& state, int64_t items, const Measured& own,
                 const Measured& minimal) {
  const auto iterations = static_cast<double>(state.iterations());
  state.counters["items"] = static_cast<double>(items);
  state.counters["x_minimal"] = own.seconds / minimal.seconds;
  state.counters["minimal_ms"] = minimal.seconds * 1e3 / iterations;
  state.counters["bytes_per_item"] = static_cast<double>(own.peak_bytes) / items;
  state.counters["minimal_bytes_per_item"] = static_cast<double>(minimal.peak_bytes) / items;
}

void BM_OpenPopup(benchmark::State& state) {
  std::string name = PopupName(state.range(0));
  int64_t items = MakePopup(name, state.range(0));
  Measured own, minimal, teardown;
  for (auto _ : state) {
    minimal += Measure([&] { benchmark::DoNotOptimize(MinimalRead(Path(name, ".ZPD")).size()); });
    std::unique_ptr<PopupClass> popup;
    Measured open = Measure([&] { popup = Open(name); });
    own += open;
    teardown += Measure([&] { popup.reset(); });
    state.SetIterationTime(open.seconds);
  }
  SetCounters(state, items, own, minimal);
  state.counters["teardown_ms"] = teardown.seconds * 1e3 / static_cast<double>(state.iterations());
}

// Flushes a written file to the disk, as a save does.
void SyncFile(const std::string& path) {
  int fd = ::open(path.c_str(), O_RDONLY);
  ::fsync(fd);
  ::close(fd);
}

void BM_SavePopup(benchmark::State& state) {
  std::string name = PopupName(state.range(0));
  int64_t items = MakePopup(name, state.range(0));
  Rows rows = PopupRows(state.range(0));
  auto popup = Open(name);
  popup->DataSource(name + "-saved");  // saves beside the original
  Measured own, minimal;
  for (auto _ : state) {
    minimal += Measure([&] {
      MinimalWrite(Path(name, "-minimal.ZPD"), kColumns, rows);
      SyncFile(Path(name, "-minimal.ZPD"));
    });
    Measured save = Measure([&] { SavePopupInTreeOrder(*popup); });  // flushes and renames too
    own += save;
    state.SetIterationTime(save.seconds);
  }
  SetCounters(state, items, own, minimal);
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
    LiteralLoader literal(&sorted, 4, {"A", "B", "C", "D"});
    std::vector<Node> top;
    literal.LoadTopLevel(top);
    benchmark::DoNotOptimize(top.size());
  }
}

BENCHMARK(BM_OpenPopup)
    ->Arg(100'000)
    ->Arg(1'000'000)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(3);
BENCHMARK(BM_SavePopup)
    ->Arg(100'000)
    ->Arg(1'000'000)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(3);
BENCHMARK(BM_LiteralQuadraticLoad)->Arg(10'000)->Unit(benchmark::kMillisecond)->Iterations(1);

}  // namespace
}  // namespace zephyr::bench

BENCHMARK_MAIN();
