// How long the engine takes: parsing, and scanning items with a filter.
//
//   ninja -C build/linux kestra_bench && build/linux/bench/kestra_bench
//
// Parsing includes binding: the columns are looked up in the class tree. Times of a scan are for
// all items; items_per_second tells the rate.
#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <string>

#include "platform/machine/Machine.h"
#include "query/Evaluate.h"
#include "tests/query/support/TestModules.h"

namespace kestra {
namespace {

const Ref<DiagRoot>& Root() {
  static const Ref<DiagRoot> root = MakeRef<DiagRoot>("*", test::ModulesWithTests(), LiveMachine());
  return root;
}

// Parses a text without running it.
void Parse(benchmark::State& state, const std::string& text) {
  Value result;
  EvaluateQuery(result, text, Root(), 0, nullptr);
  if (!result.IsUndefined()) {
    state.SkipWithError("the text does not parse");
    return;
  }
  for (auto _ : state) {
    EvaluateQuery(result, text, Root(), 0, nullptr);
    benchmark::DoNotOptimize(result);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void ParseShort(benchmark::State& state) {
  Parse(state, "SELECT PID, ImageName FROM Processes.Process WHERE MemoryUsage > 1000");
}
BENCHMARK(ParseShort)->Unit(benchmark::kMicrosecond);

void ParseJoinWithSubSelect(benchmark::State& state) {
  Parse(state,
        "SELECT c.PID, c.ImageName, p.ImageName FROM Processes.Process c JOIN Processes.Process p "
        "ON c.ParentProcessID = p.PID WHERE c.MemoryUsage > (SELECT MIN(m.MemoryUsage) FROM "
        "Processes.Process m WHERE m.PID <> c.PID) AND p.ImageName LIKE 'a*'");
}
BENCHMARK(ParseJoinWithSubSelect)->Unit(benchmark::kMicrosecond);

void ParseStringList(benchmark::State& state) {
  std::string text;
  for (int64_t i = 0; i < state.range(0); ++i) {
    text += fmt::format("{}'string number {}'", i == 0 ? "" : ", ", i);
  }
  Parse(state, text);
}
BENCHMARK(ParseStringList)->Arg(1000)->Arg(10000)->Arg(30000)->Unit(benchmark::kMillisecond);

// A query over a module that is filled already.
void Scan(benchmark::State& state, const std::string& text) {
  Value result;
  EvaluateQuery(result, text, Root(), kNoTimeOut, nullptr);
  if (result.IsError()) {
    state.SkipWithError(result.asString().c_str());
    return;
  }
  for (auto _ : state) {
    EvaluateQuery(result, text, Root(), kNoTimeOut, nullptr);
    benchmark::DoNotOptimize(result);
  }
  state.SetItemsProcessed(state.iterations() * 1000000);
}

void FilterScanMillion(benchmark::State& state) {
  Scan(state, "SELECT COUNT(*) FROM Many(Count=1000000).Entry WHERE Group > 90 AND Name LIKE '*7'");
}
BENCHMARK(FilterScanMillion)->Unit(benchmark::kMillisecond);

void TwoColumnsMillion(benchmark::State& state) {
  Scan(state, "SELECT Id, Name FROM Many(Count=1000000).Entry");
}
BENCHMARK(TwoColumnsMillion)->Unit(benchmark::kMillisecond);

void EqualityJoin(benchmark::State& state) {
  Scan(state,
       "SELECT COUNT(*) FROM Many(Count=10000).Entry a JOIN Many(Count=10000).Entry b ON a.Id = "
       "b.Id");
}
BENCHMARK(EqualityJoin)->Unit(benchmark::kMicrosecond);

void CorrelatedSubSelect(benchmark::State& state) {
  Scan(state,
       "SELECT COUNT(*) FROM Many(Count=1000).Entry a WHERE a.Group = (SELECT b.Group FROM "
       "Many(Count=1000).Entry b WHERE b.Id = a.Id)");
}
BENCHMARK(CorrelatedSubSelect)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace kestra

BENCHMARK_MAIN();
