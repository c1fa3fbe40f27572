// What a query tells besides its value.
#pragma once

#include <string>
#include <vector>

namespace kestra {

enum class FillSource {
  Machine = 0,    // the module was filled for this query
  Memory = 1,     // it was filled before
  CacheFile = 2,  // its content was read from the cache
};

struct SourceReport {
  std::string moduleName;
  std::string arguments;  // those that differ from their defaults: "Levels=2,Path='a'"
  FillSource fill = FillSource::Machine;
};

struct QueryReport {
  // For SELECT x, y FROM ...: what each value of a row is called. The name of the parameter, or the
  // expression as it is written; with the alias where two would be equal. Empty for every other
  // form.
  std::vector<std::string> columns;
  // The modules that the query read, each with where its content came from when the query first
  // asked for it.
  std::vector<SourceReport> sources;
};

}  // namespace kestra
