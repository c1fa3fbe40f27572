// The queries of the query scripts, as a corpus for tests of the parser.
#pragma once

#include <string>
#include <vector>

namespace kestra::test {

struct ScriptQuery {
  std::string place;  // "joins.test:12"
  std::string text;
};

// Every query of every script in the directory, in a fixed order. A line with several queries
// gives several.
std::vector<ScriptQuery> ReadScriptQueries(const std::string& directory);

}  // namespace kestra::test
