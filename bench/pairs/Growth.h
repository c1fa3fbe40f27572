// How time grows with size: one table a kind of work.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace kestra::bench {

struct GrowthPoint {
  std::string work;   // "parse-list", "scan", "join", "join-sqlite"
  const char* pUnit;  // what size counts
  uint32_t size = 0;
  double nanoseconds = 0;  // best of the rounds, on the processor; of the whole
  double bytes = 0;        // of the heap, that the rows and what is kept beside them take
  std::string refusal{};   // why it was not measured; empty if it was
};

// Measures all sizes of the works of that name ("parse", "scan", "join"), and tells each point
// when it is known. A size that would take much longer than the one before allows is left out, and
// told with its refusal. isQuick: the smaller sizes only.
void MeasureGrowth(const std::string& name, bool isQuick,
                   const std::function<void(const GrowthPoint&)>& tell);

}  // namespace kestra::bench
