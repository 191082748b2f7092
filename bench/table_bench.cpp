// Full reads, record-at-a-time writes and sorting of tables with columns
// C(6), C(40), C(20), against shapelib and the minimal reader/writer.
// At the end the ratios the engine is judged by are printed.
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <shapefil.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <numeric>
#include <random>
#include <set>

#include "minimal_dbf.h"
#include "zephyr/table/dbase.h"

namespace zephyr::bench {
namespace {

const std::vector<MinimalColumn> kColumns = {{"CODE", 6}, {"NAME", 40}, {"NOTE", 20}};

using Rows = std::vector<std::vector<std::string>>;

// Distinct six-digit keys in random order, names and notes of varying length.
Rows MakeRows(size_t count) {
  std::mt19937 random(42);
  std::vector<uint32_t> keys(count);
  std::iota(keys.begin(), keys.end(), 0u);
  std::shuffle(keys.begin(), keys.end(), random);
  static const std::string letters = "abcdefghijklmnopqrstuvwxyz ABCDEFGHIJKLMNOPQRSTUVWXYZ";
  auto text = [&](size_t min, size_t max) {
    std::string value(min + random() % (max - min + 1), ' ');
    for (char& c : value) c = letters[random() % letters.size()];
    return value;
  };
  Rows rows(count);
  for (size_t r = 0; r < count; ++r) {
    char key[16];
    std::snprintf(key, sizeof key, "%06u", keys[r]);
    rows[r] = {key, text(10, 40), text(0, 20)};
  }
  return rows;
}

// One folder of data files for the whole run, removed at exit.
class Workspace {
 public:
  Workspace() {
    std::string pattern = (std::filesystem::temp_directory_path() / "zephyr-bench-XXXXXX").string();
    folder_ = ::mkdtemp(pattern.data()) ? pattern : "/tmp";
  }
  ~Workspace() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  std::string File(const std::string& name) const { return folder_ + "/" + name; }

  const Rows& RowsOf(size_t count) {
    auto& rows = rows_[count];
    if (rows.empty()) rows = MakeRows(count);
    return rows;
  }

  // A table of count records written by the minimal writer.
  std::string Table(size_t count) {
    std::string path = File("read-" + std::to_string(count) + ".dbf");
    if (!std::filesystem::exists(path)) MinimalWrite(path, kColumns, RowsOf(count));
    return path;
  }

 private:
  std::string folder_;
  std::map<size_t, Rows> rows_;
};

Workspace& Space() {
  static Workspace workspace;
  return workspace;
}

size_t HeapInUse() {
  return mallinfo2().uordblks + mallinfo2().hblkhd;
}

Variant EngineRead(const std::string& path) {
  dBase table;
  table.OpenFile(path);
  Variant values = table.GetTableValues();
  table.CloseFile();
  return values;
}

// The heap that the values of one read hold, per record, measured once
// outside the timed runs.
template <typename Read>
void ReportBytesPerRecord(benchmark::State& state, Read read) {
  size_t before = HeapInUse();
  auto values = read();
  state.counters["bytes_per_record"] =
      static_cast<double>(HeapInUse() - before) / static_cast<double>(state.range(0));
}

void BM_ReadEngine(benchmark::State& state) {
  std::string path = Space().Table(static_cast<size_t>(state.range(0)));
  ReportBytesPerRecord(state, [&] { return EngineRead(path); });
  for (auto _ : state) benchmark::DoNotOptimize(EngineRead(path));
}

void BM_ReadMinimal(benchmark::State& state) {
  std::string path = Space().Table(static_cast<size_t>(state.range(0)));
  ReportBytesPerRecord(state, [&] { return MinimalRead(path); });
  for (auto _ : state) benchmark::DoNotOptimize(MinimalRead(path));
}

void BM_ReadShapelib(benchmark::State& state) {
  std::string path = Space().Table(static_cast<size_t>(state.range(0)));
  for (auto _ : state) {
    DBFHandle handle = DBFOpen(path.c_str(), "rb");
    int records = DBFGetRecordCount(handle);
    int fields = DBFGetFieldCount(handle);
    for (int r = 0; r < records; ++r) {
      for (int f = 0; f < fields; ++f)
        benchmark::DoNotOptimize(DBFReadStringAttribute(handle, r, f));
    }
    DBFClose(handle);
  }
}

void BM_WriteEngine(benchmark::State& state) {
  const Rows& rows = Space().RowsOf(static_cast<size_t>(state.range(0)));
  std::string path = Space().File("write-engine.dbf");
  for (auto _ : state) {
    dBase table;
    for (const auto& column : kColumns) table.Fields()->Add(column.name, "C", column.length, 0, 0);
    table.OpenMode(dBase::kCreate);
    table.OpenFile(path);
    for (const auto& row : rows) {
      table.InitRecord();
      table.Value(1, row[0]);
      table.Value(2, row[1]);
      table.Value(3, row[2]);
      table.PutRecord(0);
    }
    table.CloseFile();
  }
}

void BM_WriteShapelib(benchmark::State& state) {
  const Rows& rows = Space().RowsOf(static_cast<size_t>(state.range(0)));
  std::string path = Space().File("write-shapelib.dbf");
  for (auto _ : state) {
    DBFHandle handle = DBFCreate(path.c_str());
    for (const auto& column : kColumns) {
      DBFAddField(handle, column.name.c_str(), FTString, column.length, 0);
    }
    for (int r = 0; r < static_cast<int>(rows.size()); ++r) {
      for (int f = 0; f < 3; ++f) DBFWriteStringAttribute(handle, r, f, rows[r][f].c_str());
    }
    DBFClose(handle);
  }
}

void BM_WriteMinimal(benchmark::State& state) {
  const Rows& rows = Space().RowsOf(static_cast<size_t>(state.range(0)));
  std::string path = Space().File("write-minimal.dbf");
  for (auto _ : state) MinimalWrite(path, kColumns, rows);
}

void BM_SortDistinctKeys(benchmark::State& state) {
  dBase reader;
  reader.OpenFile(Space().Table(static_cast<size_t>(state.range(0))));
  const Variant shuffled = reader.GetTableValues();
  reader.CloseFile();
  dBase table;
  for (auto _ : state) {
    state.PauseTiming();
    Variant values = shuffled;
    state.ResumeTiming();
    table.SortTableValues(values, 1, false);
    benchmark::DoNotOptimize(values);
  }
}

BENCHMARK(BM_ReadEngine)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReadMinimal)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReadShapelib)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_WriteEngine)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_WriteShapelib)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_WriteMinimal)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SortDistinctKeys)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

// Prints the usual table, then the ratios of this run.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    // CPU time (user and system) of the median run when repeated: the machine
    // may be busy with other work, which inflates wall-clock times at random.
    for (const Run& run : runs) {
      if (run.error_occurred) continue;
      bool median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
      std::string name = run.run_name.str();
      if (median || (run.run_type == Run::RT_Iteration && !medians_.count(name))) {
        seconds_[name] = run.GetAdjustedCPUTime() / 1000.0;
      }
      if (median) medians_.insert(name);
    }
  }

  void Finalize() override {
    ConsoleReporter::Finalize();
    std::printf("\nRatios (CPU time / CPU time):\n");
    for (const char* size : {"100000", "1000000"}) {
      Ratio("full read, engine / minimal reader", "BM_ReadEngine", "BM_ReadMinimal", size);
      Ratio("full read, shapelib / engine", "BM_ReadShapelib", "BM_ReadEngine", size);
      Ratio("write, shapelib / engine", "BM_WriteShapelib", "BM_WriteEngine", size);
      Ratio("write, engine / minimal writer", "BM_WriteEngine", "BM_WriteMinimal", size);
    }
  }

 private:
  void Ratio(const char* what, const std::string& a, const std::string& b, const char* size) {
    auto first = seconds_.find(a + "/" + size);
    auto second = seconds_.find(b + "/" + size);
    if (first == seconds_.end() || second == seconds_.end()) return;
    std::printf("  %-36s %8s records: %7.3f s / %7.3f s = %5.2f\n", what, size, first->second,
                second->second, first->second / second->second);
  }

  std::map<std::string, double> seconds_;
  std::set<std::string> medians_;
};

}  // namespace
}  // namespace zephyr::bench

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  zephyr::bench::RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  return 0;
}
