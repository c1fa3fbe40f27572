// Queries over Data, made at random: joins, filters and sub-selects, with conditions of every kind.
#pragma once

#include <random>
#include <string>
#include <vector>

namespace kestra::test {

class CRowQueries {
 public:
  explicit CRowQueries(uint32_t seed) : m_random(seed) {}
  std::string Next();

 private:
  size_t Pick(size_t count) { return static_cast<size_t>(m_random() % count); }
  template <size_t count>
  std::string Of(const char* const (&words)[count]) {
    return words[Pick(count)];
  }
  std::string Source();  // now and then the same as before
  std::string Alias();   // of a source that is there; now and then none, or one that is not yet
  std::string Number(int depth);
  std::string Text(int depth);
  std::string Datime();
  std::string Equality();
  std::string Comparison();
  std::string Condition(int depth);
  std::string Joins(int sources);
  std::string Where();
  std::string Scalar();  // a sub-select of a number
  std::string Filter();

  std::mt19937 m_random;
  std::vector<std::string> m_aliases;
  std::string m_lastSource;
};

}  // namespace kestra::test
