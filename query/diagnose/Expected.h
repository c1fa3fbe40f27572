// What may stand in a place of a text: the terminals that the chart's items wait for there.
#pragma once

#include <bitset>
#include <string>
#include <string_view>
#include <vector>

#include "query/parse/chart/Chart.h"

namespace kestra {

// Whether a word, in capitals, is the name of a function of the language.
bool IsFunctionName(std::string_view word);

class CExpected {
 public:
  // For the place in front of the token at a position, which recognition has reached.
  CExpected(const CChart& chart, size_t position);

  bool Has(Keyword keyword) const { return m_terminals[keyword]; }
  bool Has(Predicate predicate) const {
    return m_terminals[kKeywordCount + static_cast<size_t>(predicate)];
  }
  // Whether a rule of that nonterminal waits for the terminal.
  bool HasIn(NonTerminal table, Symbol terminal) const;
  // Whether the text may end here.
  bool HasEnd() const { return m_hasEnd; }
  // Whether nothing but the dot behind an alias is waited for: then the name before was taken for
  // an alias because it was nothing else.
  bool IsOnlyAliasDot() const;
  // Whether anything that holds a value is waited for, so that a column would fit if its type did.
  bool HasColumn() const;

  // Every word and mark as it is written, then the kinds of things, each once.
  std::vector<std::string> Texts() const;
  // The same for a sentence: functions and operators in one word each, and not too many.
  std::string Sentence() const;

 private:
  struct Place {
    uint16_t rule;
    uint8_t dot;
  };
  void Add(uint16_t rule, size_t dot);
  void AddFirstOf(uint8_t table);

  const Grammar& m_grammar;
  std::bitset<kTerminalCount> m_terminals;
  std::bitset<kNonTerminalCount> m_visited;
  std::vector<Place> m_places;  // where the terminals stand, each once
  bool m_hasEnd = false;
};

}  // namespace kestra
