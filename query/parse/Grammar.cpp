#include "query/parse/Grammar.h"

#include <array>

namespace kestra {
namespace {

size_t TerminalNumber(Symbol symbol) {
  return symbol.Kind == SymbolKind::Keyword ? symbol.Number : kKeywordCount + symbol.Number;
}

struct NonTerminalStart {
  TerminalSet terminals;
  bool canBeEmpty = false;
};
using NonTerminalStarts = std::array<NonTerminalStart, kNonTerminalCount>;

// What the symbols of a rule can begin with, by what is known of the nonterminals so far.
NonTerminalStart StartOf(const Rule& rule, const NonTerminalStarts& starts) {
  NonTerminalStart start;
  for (size_t i = 0; i < rule.Length; ++i) {
    const Symbol symbol = rule.Symbols[i];
    if (symbol.Kind != SymbolKind::NonTerminal) {
      start.terminals.set(TerminalNumber(symbol));
      return start;
    }
    start.terminals |= starts[symbol.Number].terminals;
    if (!starts[symbol.Number].canBeEmpty) return start;
  }
  start.canBeEmpty = true;
  return start;
}

// Repeats until nothing grows.
NonTerminalStarts FindStarts(const std::vector<Rule>& rules) {
  NonTerminalStarts starts;
  for (bool grew = true; grew;) {
    grew = false;
    for (const Rule& rule : rules) {
      NonTerminalStart& known = starts[static_cast<size_t>(rule.Table)];
      const NonTerminalStart found = StartOf(rule, starts);
      const TerminalSet joined = known.terminals | found.terminals;
      const bool canBeEmpty = known.canBeEmpty || found.canBeEmpty;
      grew = grew || joined != known.terminals || canBeEmpty != known.canBeEmpty;
      known = {joined, canBeEmpty};
    }
  }
  return starts;
}

Grammar MakeGrammar() {
  Grammar grammar;
  for (const Rule& row : GrammarTable()) {
    Rule rule = row;
    while (rule.Symbols[rule.Length].Kind != SymbolKind::End) ++rule.Length;
    Grammar::Range& range = grammar.alternatives[static_cast<size_t>(rule.Table)];
    if (range.count++ == 0) range.first = static_cast<uint16_t>(grammar.rules.size());
    grammar.rules.push_back(rule);
  }
  const NonTerminalStarts starts = FindStarts(grammar.rules);
  for (const Rule& rule : grammar.rules) {
    const NonTerminalStart found = StartOf(rule, starts);
    Grammar::Start start;
    start.canBeEmpty = found.canBeEmpty;
    for (size_t i = 0; i < kKeywordCount; ++i) start.keywords[i] = found.terminals[i];
    for (size_t i = 0; i < kPredicateCount; ++i) {
      if (found.terminals[kKeywordCount + i]) start.predicates |= 1u << i;
    }
    grammar.starts.push_back(start);
  }
  return grammar;
}

}  // namespace

const Grammar& TheGrammar() {
  static const auto* pGrammar = new Grammar(MakeGrammar());
  return *pGrammar;
}

}  // namespace kestra
