#include "tests/query/unit/ScriptQueries.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "VLib/src/text/Text.h"

namespace kestra::test {
namespace {

void AddQueries(const std::string& place, const std::string& text,
                std::vector<ScriptQuery>& queries) {
  const std::vector<std::string> pieces = SplitQuoted(text, ';', '\'');
  if (pieces.empty()) queries.push_back({place, text});  // a quote that is not closed
  for (const std::string& piece : pieces) queries.push_back({place, piece});
}

void ReadScript(const std::filesystem::path& path, std::vector<ScriptQuery>& queries) {
  std::ifstream script(path);
  std::string text, place;
  size_t number = 0;
  const auto finish = [&] {
    if (!place.empty()) AddQueries(place, text, queries);
    place.clear();
    text.clear();
  };
  for (std::string line; std::getline(script, line);) {
    ++number;
    if (!line.starts_with('>')) {
      finish();
      continue;
    }
    if (place.empty()) {
      place = fmt::format("{}:{}", path.filename().string(), number);
    } else {
      text += '\n';
    }
    if (line.size() > 2) text += line.substr(2);
  }
  finish();
}

}  // namespace

std::vector<ScriptQuery> ReadScriptQueries(const std::string& directory) {
  std::vector<std::filesystem::path> paths;
  for (const auto& entry : std::filesystem::directory_iterator(directory)) {
    if (entry.path().extension() == ".test") paths.push_back(entry.path());
  }
  std::sort(paths.begin(), paths.end());
  std::vector<ScriptQuery> queries;
  for (const auto& path : paths) ReadScript(path, queries);
  return queries;
}

}  // namespace kestra::test
