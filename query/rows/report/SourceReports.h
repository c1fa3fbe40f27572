// The entries of a query's report, one per source: found again when the source is asked again.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

#include "model/classes/Module.h"
#include "query/QueryReport.h"

namespace kestra {

struct QueryContext;

// One query's, on its thread. Entries are named by their place in the report, since a source may be
// asked while another one is walked.
class CSourceReports {
 public:
  explicit CSourceReports(QueryReport& report) : m_report(report) {}

  // The entry of a module, or of a built-in source with its path as it is written; isNew tells
  // whether it was made now. A query may ask for as many as it has rows: behind the first thousand
  // those of one name share an entry, whose arguments are "...".
  size_t Find(DiagModule& module, bool& isNew);
  size_t Find(std::string_view name, std::string arguments, bool& isNew);
  SourceReport& At(size_t index) { return m_report.sources[index]; }

 private:
  static constexpr size_t kMostOwnEntries = 1000;

  // A module is held, so that no other one has its address.
  struct Known {
    Ref<DiagModule> module;
    size_t index;
  };
  QueryReport& m_report;
  std::unordered_map<const DiagModule*, Known> m_modules;
  std::unordered_map<std::string, size_t> m_entries;  // by name and arguments
};

}  // namespace kestra
