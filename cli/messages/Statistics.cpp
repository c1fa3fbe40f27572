#include "cli/messages/Statistics.h"

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cstdio>
#include <set>
#include <string>
#include <vector>

#include "cli/Terminal.h"
#include "cli/messages/Counts.h"
#include "cli/render/Width.h"

namespace kestra::cli {
namespace {

constexpr int32_t kMostProblems = 10;

void Tell(const std::string& line) {
  std::fprintf(stderr, "kestra: %s\n", Printable(line).c_str());
}

std::vector<kestra_source_info> ReadSources(kestra_session* session) {
  std::vector<kestra_source_info> sources;
  const int32_t count = Ask<int32_t>(kestra_session_source_count, session);
  for (int32_t i = 0; i < count; ++i) {
    kestra_source_info info{};
    info.struct_size = sizeof info;
    Check(kestra_session_source(session, i, &info));
    sources.push_back(info);
  }
  return sources;
}

// A built-in source has its path for an argument, and is no module.
bool IsModule(const kestra_source_info& source) {
  return std::string_view(source.name).find('.') == std::string_view::npos;
}

void TellStates(const std::vector<kestra_source_info>& sources) {
  std::set<std::string> told;
  for (const kestra_source_info& source : sources) {
    if (source.state == KESTRA_MODULE_READY || !told.insert(source.name).second) continue;
    const std::string name =
        (IsModule(source) ? "the module " : "the source ") + std::string(source.name);
    if (source.state == KESTRA_MODULE_NOT_BUILT)
      Tell(name + " is declared and not built yet: it shows nothing");
    else
      Tell(name + " shows nothing: this machine has none of what it is about");
  }
}

std::string Milliseconds(uint64_t microseconds) {
  std::array<char, 40> text{};
  std::snprintf(text.data(), text.size(), "%" PRIu64 ".%" PRIu64 " ms", microseconds / 1000,
                microseconds % 1000 / 100);
  return text.data();
}

// Of such content the problems are only counted.
bool IsFromBefore(const kestra_source_info& source) {
  return source.fill != KESTRA_FILL_MACHINE;
}

std::string Things(uint64_t count) {
  return Grouped(count) + (count == 1 ? " thing" : " things");
}

std::string OriginOf(const kestra_source_info& source) {
  if (!IsModule(source)) return "read from the machine";
  switch (source.fill) {
    case KESTRA_FILL_MEMORY:
      return "from memory, " + std::to_string(source.age_seconds) + " s old";
    case KESTRA_FILL_CACHE_FILE:
      return "from the cache, " + std::to_string(source.age_seconds) + " s old";
    default:
      return "filled from the machine";
  }
}

void TellSource(const kestra_source_info& source) {
  std::string line = source.name;
  if (*source.arguments != '\0') line += '(' + std::string(source.arguments) + ')';
  line += ": ";
  if (source.is_filled) {
    line += OriginOf(source) + ", " + Grouped(source.rows_seen) + " rows seen, " +
            Grouped(source.rows_kept) + " kept";
  } else {
    line += source.is_cut_short ? "not filled" : "could not be read";
  }
  line += ", " + Milliseconds(source.microseconds);
  if (source.is_cut_short) line += ", cut short";
  if (IsFromBefore(source) && source.problem_count > 0)
    line += ", " + Things(static_cast<uint64_t>(source.problem_count)) + " could not be read then";
  Tell(line);
}

// As many as are left of the most that are told. The number of those that are not.
uint64_t TellProblems(kestra_session* session, int32_t number, const kestra_source_info& source,
                      int32_t& left) {
  int32_t told = 0;
  for (; told < source.problem_count && left > 0; ++told, --left) {
    const char* subject = nullptr;
    const char* reason = nullptr;
    if (kestra_session_source_problem(session, number, told, &subject, &reason) != KESTRA_OK) break;
    Tell("could not be read: " + std::string(subject) + ": " + reason);
  }
  return IsFromBefore(source) ? 0 : static_cast<uint64_t>(source.problem_count - told);
}

void TellTotals(kestra_session* session, kestra_value* value) {
  uint64_t parse = 0, total = 0;
  Check(kestra_session_query_times(session, &parse, &total));
  std::string rows = "no result";
  if (Is(kestra_value_is_vector, value)) {
    const auto values = Take<CValuesHandle>(kestra_value_as_vector, value);
    const auto count = static_cast<uint64_t>(Ask<int32_t>(kestra_values_count, values.get()));
    rows = Grouped(count) + (count == 1 ? " row" : " rows");
  } else if (!Is(kestra_value_is_error, value)) {
    rows = "one value";
  }
  Tell(rows + ", parsed in " + Milliseconds(parse) + ", " + Milliseconds(total) + " in all");
}

// A property that could not be read shows as one that is not set; an item does not show at all.
void TellThatItemsMayBeMissing(const std::vector<kestra_source_info>& sources,
                               const Settings& settings) {
  uint64_t count = 0;
  for (const kestra_source_info& source : sources)
    count += static_cast<uint64_t>(source.hiding_count);
  if (count == 0) return;
  Tell(Things(count) + " could not be read; " +
       (settings.place == Place::Shell ? ".timing on" : "--stats") + " tells");
}

}  // namespace

void TellWhatHappened(kestra_session* session, kestra_value* value, const Settings& settings) {
  const std::vector<kestra_source_info> sources = ReadSources(session);
  TellStates(sources);
  if (!settings.showStatistics) {
    if (IsTerminal(Stream::Error)) TellThatItemsMayBeMissing(sources, settings);
    return;
  }
  int32_t left = kMostProblems;
  uint64_t untold = 0;
  for (size_t i = 0; i < sources.size(); ++i) {
    TellSource(sources[i]);
    untold += TellProblems(session, static_cast<int32_t>(i), sources[i], left);
  }
  if (untold > 0) Tell("and " + Grouped(untold) + " more could not be read");
  TellTotals(session, value);
}

}  // namespace kestra::cli
