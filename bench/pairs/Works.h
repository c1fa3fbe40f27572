// The pieces of work that are measured beside SQLite within one program.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "bench/pairs/Timing.h"

namespace kestra::bench {

struct Work {
  const char* pName;  // as --only takes it
  std::string title;  // for the table
  const char* pUnit;  // what the time is for: "query", "string", "row"
  uint32_t units;     // how many of them a run has
  double atMost;      // the ratio of times that must not be passed, and the one that is aimed at
  double aim;
  std::function<Pair()> make;  // sets both sides up; what they hold lives in the pair
};

// With isQuick a scan is over fewer rows.
std::vector<Work> AllWorks(bool isQuick);

}  // namespace kestra::bench
