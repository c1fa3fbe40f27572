// Our side of a comparison: a root with the modules of the tests and one of items with five
// properties, and queries over it.
#pragma once

#include <cstdint>
#include <string>

#include "query/Evaluate.h"

namespace kestra::bench {

// One thread at a time. An Error of a query is thrown as std::runtime_error.
class CEngine {
 public:
  CEngine();

  // Parses and binds without running. Gives 0 for a text that parses.
  int64_t Parse(const std::string& text);
  // The value of a query; it stays until the next call.
  const Value& Run(const std::string& text);
  // The one number that a query gives.
  int64_t Number(const std::string& text);

 private:
  Ref<DiagRoot> m_root;
  Value m_value;
};

// Five(Count=n).Item: Id, Name, Path, Size, LastWriteTime of n items, which are filled as modules
// fill theirs. FiveName and FivePath give the texts of one, for whoever holds the same data.
std::string FiveName(uint32_t number);
std::string FivePath(uint32_t number);
constexpr uint32_t FiveSize(uint32_t number) {
  return number * 7 % 100000;
}
constexpr uint32_t FiveTime(uint32_t number) {
  return 1700000000 + number;
}

}  // namespace kestra::bench
