// What a query tells besides its value.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "model/items/FillNotes.h"
#include "model/root/ModuleTable.h"

namespace kestra {

enum class FillSource {
  Machine = 0,    // it was filled for this query
  Memory = 1,     // it was filled before
  CacheFile = 2,  // its content was read from the cache
};

// One source of a query. It may be asked many times, by a sub-select for each row, say: what counts
// is then added up, and the rest is that of the first time.
struct SourceReport {
  std::string name;       // "Processes", "FILES.FILE"
  std::string arguments;  // those that differ from their defaults: "Levels=2,Path='a'"
  FillSource fill = FillSource::Machine;
  ModuleState state = ModuleState::Ready;
  bool isFilled = true;     // false: it could not be filled, and the query is an Error
  bool isCutShort = false;  // a time limit or a cancel ended the reading before its end
  uint32_t ageSeconds = 0;  // of content that was there before
  uint64_t rowsSeen = 0;    // items of the class that were looked at
  uint64_t rowsKept = 0;    // those that the WHERE let pass, or could not decide about yet
  uint64_t microseconds = 0;
  uint64_t problemCount = 0;
  uint64_t hidingCount = 0;  // those of them for which there may be items that are not seen
  std::vector<FillProblem> problems;  // at most CFillNotes::kMostKept
};

struct QueryReport {
  // For SELECT x, y FROM ...: what each value of a row is called. The name of the parameter, or the
  // expression as it is written; with the alias where two would be equal. Empty for every other
  // form.
  std::vector<std::string> columns;
  // In the order in which the query asked for them first.
  std::vector<SourceReport> sources;
  uint64_t parseMicroseconds = 0;  // until it was known what the text means
  uint64_t totalMicroseconds = 0;
};

}  // namespace kestra
