// Random query texts, made by walking the grammar table, and random damage to them. The same seed
// gives the same texts on every system.
#pragma once

#include <array>
#include <random>
#include <string>
#include <vector>

#include "query/parse/Grammar.h"

namespace kestra::test {

class CQueryGenerator {
 public:
  explicit CQueryGenerator(uint32_t seed);

  // The tokens of a text that the table allows, about so many. Whether it parses is up to the
  // predicates: a column has to belong to a source.
  std::vector<std::string> Query(size_t tokenCount);
  // One or two tokens dropped, doubled, moved or replaced.
  std::vector<std::string> Damage(std::vector<std::string> tokens);
  static std::string Join(const std::vector<std::string>& tokens);

 private:
  size_t Random(size_t count);
  void Expand(NonTerminal table, std::vector<std::string>& tokens);
  size_t ChooseRule(NonTerminal table, size_t used);
  bool IsWanted(const Rule& rule);
  std::string TextOf(const Rule& rule, size_t symbol);
  std::string PredicateText(Predicate predicate);

  std::mt19937 m_random;
  std::array<size_t, kNonTerminalCount> m_leastLength{};
  std::vector<size_t> m_ruleLength;  // by rule: the tokens of its shortest text
  size_t m_limit = 0;
  size_t m_sourceDepth = 0;  // statements with a source around the present place
};

}  // namespace kestra::test
