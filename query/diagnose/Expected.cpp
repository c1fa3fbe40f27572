#include "query/diagnose/Expected.h"

#include <algorithm>
#include <span>

#include "VLib/src/text/Text.h"
#include "query/diagnose/Wording.h"

namespace kestra {
namespace {

struct PredicateWords {
  Predicate predicate;
  std::vector<std::string> words;
};

// How the terminals that are functions are called; columns and names are told in words of their
// own.
const std::vector<PredicateWords>& WordsOfPredicates() {
  using P = Predicate;
  static const auto* pWords = new std::vector<PredicateWords>{
      {P::ModuleName, {"a module name"}},
      {P::BuiltInSource, {"FILES", "REGISTRY", "INIFILES"}},
      {P::DatePartName, {"a part of a date (yy, mm, wk, dd, dw, hh, mi, ss)"}},
      {P::NumberAggregate, {"MIN", "MAX", "SUM"}},
      {P::OrderAggregate, {"MIN", "MAX"}},
      {P::AddOperator, {"+", "-"}},
      {P::MulOperator, {"*", "/"}},
      {P::EqualityOperator, {"=", "<>"}},
      {P::CompareOperator, {"<", "<=", "=", ">=", ">", "<>"}},
      {P::IntegerLiteral, {"a number"}},
      {P::StringLiteral, {"text in quotes"}},
      {P::VersionLiteral, {"a version in quotes"}},
      {P::DatimeLiteral, {"a date in quotes"}},
  };
  return *pWords;
}

void AddOnce(std::vector<std::string>& texts, std::string text) {
  if (std::find(texts.begin(), texts.end(), text) == texts.end()) texts.push_back(std::move(text));
}

bool IsFunction(KeywordId keyword) {
  switch (keyword) {
    case kKwRand:
    case kKwIsNull:
    case kKwConvert:
    case kKwLen:
    case kKwCharLength:
    case kKwDatePart:
    case kKwDateAdd:
    case kKwGetDate:
    case kKwCount:
    case kKwSubstring:
    case kKwRight:
    case kKwCallDll:
    case kKwCallDllV:
      return true;
    default:
      return false;
  }
}

bool IsOperator(std::string_view text) {
  for (const std::string_view mark : {"+", "-", "*", "/", "|", "^", "&", "<", "<=", "=", ">=", ">",
                                      "<>", "IS", "IN", "LIKE", "AND", "OR"}) {
    if (text == mark) return true;
  }
  return false;
}

const char* NameWords(NonTerminal table) {
  switch (table) {
    case NonTerminal::Source:
      return "a class name";
    case NonTerminal::ColumnList:
      return "a column name";
    case NonTerminal::Argument:
      return "a name before \"=\"";
    case NonTerminal::ProcedureDefinition:
      return "a name";
    default:
      return "an alias";
  }
}

}  // namespace

bool IsFunctionName(std::string_view word) {
  return IsFunction(FindKeyword(word)) || word == "MIN" || word == "MAX" || word == "SUM";
}

CExpected::CExpected(const CChart& chart, size_t position) : m_grammar(TheGrammar()) {
  std::vector<bool> known(m_grammar.rules.size() * kMaxSymbols);
  for (const ChartItem& item : chart.ItemsAt(position)) {
    const Rule& rule = m_grammar.rules[item.Rule];
    if (item.Dot == rule.Length) {
      m_hasEnd = m_hasEnd || (rule.Table == NonTerminal::Program && item.Origin == 0);
      continue;
    }
    const size_t index = item.Rule * kMaxSymbols + item.Dot;
    if (known[index]) continue;
    known[index] = true;
    Add(item.Rule, item.Dot);
  }
}

// What a rule waits for at a dot. A nonterminal there that can be empty needs no second look: the
// chart has the item behind it too.
void CExpected::Add(uint16_t rule, size_t dot) {
  const Symbol symbol = m_grammar.rules[rule].Symbols[dot];
  if (symbol.Kind == SymbolKind::NonTerminal) {
    AddFirstOf(symbol.Number);
    return;
  }
  const size_t terminal =
      symbol.Kind == SymbolKind::Keyword ? symbol.Number : kKeywordCount + symbol.Number;
  m_terminals.set(terminal);
  const auto isSame = [&](const Place& place) { return place.rule == rule && place.dot == dot; };
  if (std::none_of(m_places.begin(), m_places.end(), isSame)) {
    m_places.push_back({rule, static_cast<uint8_t>(dot)});
  }
}

// What a nonterminal can begin with. As deep as the grammar at most.
void CExpected::AddFirstOf(uint8_t table) {
  if (m_visited[table]) return;
  m_visited.set(table);
  const auto canBeEmpty = [&](Symbol symbol) {
    if (symbol.Kind != SymbolKind::NonTerminal) return false;
    const Grammar::Range range = m_grammar.alternatives[symbol.Number];
    for (size_t i = range.first; i < range.first + size_t{range.count}; ++i) {
      if (m_grammar.starts[i].canBeEmpty) return true;
    }
    return false;
  };
  const Grammar::Range range = m_grammar.alternatives[table];
  for (uint16_t i = range.first; i < range.first + range.count; ++i) {
    const Rule& rule = m_grammar.rules[i];
    for (size_t dot = 0; dot < rule.Length; ++dot) {
      Add(i, dot);
      if (!canBeEmpty(rule.Symbols[dot])) break;
    }
  }
}

bool CExpected::HasIn(NonTerminal table, Symbol terminal) const {
  return std::any_of(m_places.begin(), m_places.end(), [&](const Place& place) {
    const Rule& rule = m_grammar.rules[place.rule];
    const Symbol symbol = rule.Symbols[place.dot];
    return rule.Table == table && symbol.Kind == terminal.Kind && symbol.Number == terminal.Number;
  });
}

bool CExpected::IsOnlyAliasDot() const {
  return !m_hasEnd && m_terminals.count() == 1 && Has(kKwDot) &&
         std::all_of(m_places.begin(), m_places.end(), [&](const Place& place) {
           return m_grammar.rules[place.rule].Table != NonTerminal::Source;
         });
}

bool CExpected::HasColumn() const {
  return Has(Predicate::NumberColumn) || Has(Predicate::StringColumn) ||
         Has(Predicate::VersionColumn) || Has(Predicate::DatimeColumn);
}

std::vector<std::string> CExpected::Texts() const {
  std::vector<std::string> texts;
  for (size_t i = 1; i < kKeywordCount; ++i) {
    if (m_terminals[i]) AddOnce(texts, UpperCase(KeywordText(static_cast<KeywordId>(i))));
  }
  for (const PredicateWords& words : WordsOfPredicates()) {
    if (!Has(words.predicate)) continue;
    for (const std::string& word : words.words) AddOnce(texts, word);
  }
  const bool holds[] = {Has(Predicate::NumberColumn), Has(Predicate::StringColumn),
                        Has(Predicate::VersionColumn), Has(Predicate::DatimeColumn)};
  const char* const kinds[] = {"a number", "text", "a version", "a date"};
  if (std::all_of(std::begin(holds), std::end(holds), [](bool h) { return h; })) {
    AddOnce(texts, "a column");
  } else {
    for (size_t i = 0; i < std::size(kinds); ++i) {
      if (holds[i]) AddOnce(texts, std::string("a column that holds ") + kinds[i]);
    }
  }
  for (const Place& place : m_places) {
    const Rule& rule = m_grammar.rules[place.rule];
    const Symbol symbol = rule.Symbols[place.dot];
    const bool isName = symbol.Kind == SymbolKind::Predicate &&
                        symbol.Number == static_cast<uint8_t>(Predicate::Identifier);
    // Where a column may stand, its alias may too: nothing to tell.
    if (isName && !(rule.Table == NonTerminal::OptAlias && HasColumn())) {
      AddOnce(texts, NameWords(rule.Table));
    }
  }
  if (m_hasEnd) AddOnce(texts, "the end of the text");
  return texts;
}

std::string CExpected::Sentence() const {
  constexpr size_t kMost = 9;
  std::vector<std::string> words;
  size_t operators = 0;
  const std::vector<std::string> texts = Texts();
  for (const std::string& text : texts) operators += IsOperator(text) ? 1 : 0;
  const bool isColumn = HasColumn();
  for (const std::string& text : texts) {
    if (IsFunctionName(text)) {
      AddOnce(words, "a function");
    } else if (IsOperator(text) && operators > 2) {
      AddOnce(words, "an operator");
    } else if (text == "." && texts.size() > 1) {
      continue;  // the word before would be an alias then
    } else if ((text == "(" || text == "~") && isColumn) {
      continue;
    } else if (IsAsciiPunct(text[0])) {
      AddOnce(words, '"' + text + '"');
    } else {
      AddOnce(words, text);
    }
  }
  if (words.size() > kMost) {
    words.resize(kMost);
    words.push_back("something else");
  }
  return ListOf(words);
}

}  // namespace kestra
