// The engine beside SQLite in one program, in turns. Each thing that was measured is a line of JSON
// on the standard output, for bench/compare.
//
//   kestra_bench_pairs [--quick] [--only NAME...]     the pairs of Works.cpp
//   kestra_bench_pairs --growth parse|scan|join       how time grows
//   kestra_bench_pairs --memory tree|looked-at|structs --count N
//   kestra_bench_pairs --list                         the names
#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "bench/pairs/Growth.h"
#include "bench/pairs/Memory.h"
#include "bench/pairs/Works.h"

namespace kestra::bench {
namespace {

using Json = nlohmann::ordered_json;

void Print(const Json& line) {
  std::puts(line.dump().c_str());
  std::fflush(stdout);
}

// Nanoseconds per unit.
Json Times(const std::vector<Elapsed>& rounds, double Elapsed::*pClock, uint32_t units) {
  Json times = Json::array();
  for (const Elapsed& round : rounds) times.push_back(round.*pClock / units);
  return times;
}

void RunWork(const Work& work, bool isQuick) {
  const Series series = MeasureInTurns(work.make(), isQuick ? 5 : 15, isQuick ? 5 : 20);
  Print({{"name", work.pName},
         {"title", work.title},
         {"unit", work.pUnit},
         {"units", work.units},
         {"at_most", work.atMost},
         {"aim", work.aim},
         {"our_answer", series.ourAnswer},
         {"peer_answer", series.peerAnswer},
         {"ours", Times(series.ours, &Elapsed::wall, work.units)},
         {"peer", Times(series.peer, &Elapsed::wall, work.units)},
         {"ours_processor", Times(series.ours, &Elapsed::processor, work.units)},
         {"peer_processor", Times(series.peer, &Elapsed::processor, work.units)}});
}

void RunWorks(bool isQuick, const std::vector<std::string>& only) {
  for (const Work& work : AllWorks(isQuick)) {
    const bool isWanted =
        only.empty() || std::find(only.begin(), only.end(), work.pName) != only.end();
    if (isWanted) RunWork(work, isQuick);
  }
}

void TellPoint(const GrowthPoint& point) {
  Print({{"work", point.work},
         {"unit", point.pUnit},
         {"size", point.size},
         {"nanoseconds", point.nanoseconds},
         {"bytes", point.bytes},
         {"refusal", point.refusal}});
}

void TellMemory(const std::string& what, uint32_t count) {
  const double bytes =
      what == "structs" ? StructBytes(count) : TreeBytes(count, what == "looked-at");
  Print({{"what", what}, {"count", count}, {"bytes", bytes}});
}

int Run(int argc, char** argv) {
  CLI::App app("Measures the engine beside SQLite");
  bool isQuick = false;
  bool isList = false;
  std::vector<std::string> only;
  std::string growth;
  std::string memory;
  uint32_t count = 1000000;
  app.add_flag("--quick", isQuick);
  app.add_flag("--list", isList);
  app.add_option("--only", only);
  app.add_option("--growth", growth)->check(CLI::IsMember({"parse", "scan", "join"}));
  app.add_option("--memory", memory)->check(CLI::IsMember({"tree", "looked-at", "structs"}));
  app.add_option("--count", count)->check(CLI::Range(1u, 100000000u));
  CLI11_PARSE(app, argc, argv);
  if (isList) {
    for (const Work& work : AllWorks(isQuick)) std::puts(work.pName);
  } else if (!growth.empty()) {
    MeasureGrowth(growth, isQuick, TellPoint);
  } else if (!memory.empty()) {
    TellMemory(memory, count);
  } else {
    RunWorks(isQuick, only);
  }
  return 0;
}

}  // namespace
}  // namespace kestra::bench

int main(int argc, char** argv) {
  try {
    return kestra::bench::Run(argc, argv);
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "kestra_bench_pairs: %s\n", problem.what());
    return 1;
  }
}
