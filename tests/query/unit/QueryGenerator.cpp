#include "tests/query/unit/QueryGenerator.h"

#include <algorithm>
#include <initializer_list>

namespace kestra::test {
namespace {

constexpr size_t kNever = 100000;

size_t Number(NonTerminal table) {
  return static_cast<size_t>(table);
}

bool IsColumnRule(const Rule& rule) {
  return rule.Length == 2 && rule.Symbols[1].Kind == SymbolKind::Predicate &&
         rule.Symbols[1].Number >= static_cast<uint8_t>(Predicate::NumberColumn);
}

bool OpensSource(const Rule& rule) {
  return rule.Length > 0 && rule.Symbols[0].Kind == SymbolKind::Keyword &&
         (rule.Symbols[0].Number == kKwSelect || rule.Symbols[0].Number == kKwUpdate ||
          rule.Symbols[0].Number == kKwDelete);
}

}  // namespace

CQueryGenerator::CQueryGenerator(uint32_t seed) : m_random(seed) {
  const auto& rules = TheGrammar().rules;
  m_leastLength.fill(kNever);
  m_ruleLength.assign(rules.size(), kNever);
  for (bool shrank = true; shrank;) {
    shrank = false;
    for (size_t i = 0; i < rules.size(); ++i) {
      size_t length = 0;
      for (size_t s = 0; s < rules[i].Length; ++s) {
        const Symbol symbol = rules[i].Symbols[s];
        length += symbol.Kind == SymbolKind::NonTerminal ? m_leastLength[symbol.Number] : 1;
      }
      if (length >= m_ruleLength[i]) continue;
      m_ruleLength[i] = length;
      size_t& least = m_leastLength[Number(rules[i].Table)];
      least = std::min(least, length);
      shrank = true;
    }
  }
}

size_t CQueryGenerator::Random(size_t count) {
  return m_random() % count;
}

// A column where no source is near never resolves; a few are made all the same.
bool CQueryGenerator::IsWanted(const Rule& rule) {
  return m_sourceDepth > 0 || !IsColumnRule(rule) || Random(20) == 0;
}

size_t CQueryGenerator::ChooseRule(NonTerminal table, size_t used) {
  const Grammar::Range range = TheGrammar().alternatives[Number(table)];
  size_t shortest = range.first;
  for (size_t i = range.first; i < range.first + range.count; ++i) {
    if (m_ruleLength[i] < m_ruleLength[shortest]) shortest = i;
  }
  // A name belongs to the source without alias more often than to another.
  if (table == NonTerminal::OptAlias && Random(3) != 0) return shortest;
  for (size_t attempt = 0; attempt < 8; ++attempt) {
    const size_t rule = range.first + Random(range.count);
    if (used + m_ruleLength[rule] <= m_limit && IsWanted(TheGrammar().rules[rule])) return rule;
  }
  return shortest;
}

void CQueryGenerator::Expand(NonTerminal table, std::vector<std::string>& tokens) {
  const Rule& rule = TheGrammar().rules[ChooseRule(table, tokens.size())];
  const bool opensSource = OpensSource(rule);
  m_sourceDepth += opensSource ? 1 : 0;
  for (size_t i = 0; i < rule.Length; ++i) {
    const Symbol symbol = rule.Symbols[i];
    if (symbol.Kind == SymbolKind::NonTerminal) {
      Expand(static_cast<NonTerminal>(symbol.Number), tokens);
    } else {
      tokens.push_back(TextOf(rule, i));
    }
  }
  m_sourceDepth -= opensSource ? 1 : 0;
}

std::string CQueryGenerator::TextOf(const Rule& rule, size_t symbol) {
  if (rule.Symbols[symbol].Kind == SymbolKind::Keyword) {
    return std::string(KeywordText(rule.Symbols[symbol].Number));
  }
  const auto predicate = static_cast<Predicate>(rule.Symbols[symbol].Number);
  const auto oneOf = [&](std::initializer_list<const char*> texts) {
    return std::string(texts.begin()[Random(texts.size())]);
  };
  if (predicate == Predicate::Identifier) {
    if (rule.Table == NonTerminal::Source) {
      return rule.Symbols[0].Number == static_cast<uint8_t>(Predicate::BuiltInSource)
                 ? oneOf({"FILE", "RegistryKey", "RegistryValue", "IniKey"})
                 : oneOf({"Row", "Row", "Row", "Row", "Row", "Row", "Part", "Entry"});
    }
    if (rule.Table == NonTerminal::Argument) return oneOf({"Text", "Size", "Mode", "First"});
    return oneOf({"a", "a", "b", "Action", "from_1"});
  }
  return PredicateText(predicate);
}

std::string CQueryGenerator::PredicateText(Predicate predicate) {
  static const std::vector<std::vector<const char*>> kTexts = {
      {},                                                         // Identifier
      {"0", "1", "7", "2147483646"},                              // IntegerLiteral
      {"'x'", "'it''s'", "''", "'1.2'", "'\\'", "'2006-01-31'"},  // StringLiteral
      {"'1.2'", "'3.4b'", "5"},                                   // VersionLiteral
      {"'2006-01-31'", "'2006-01-31 12:30:00'"},                  // DatimeLiteral
      {"Test", "Test", "Test", "Test", "Test", "Many"},           // ModuleName
      {"FILES", "REGISTRY", "INIFILES"},
      {"yy", "mm", "wk", "dd", "dw", "hh", "mi", "ss"},
      {"MIN", "MAX", "SUM"},
      {"MIN", "MAX"},
      {"+", "-"},
      {"*", "/"},
      {"=", "<>"},
      {"<", "<=", "=", ">=", ">", "<>"},
      {"Id", "Id", "Id", "Size", "Kind", "Flags", "Number"},  // NumberColumn
      {"Text", "Text", "Kind", "Flags", "Nothing", "Label"},  // StringColumn
      {"Release", "Other", "NoRelease"},
      {"Created", "NoTime"},
  };
  const auto& texts = kTexts[static_cast<size_t>(predicate)];
  return texts[Random(texts.size())];
}

std::vector<std::string> CQueryGenerator::Query(size_t tokenCount) {
  m_limit = tokenCount;
  std::vector<std::string> tokens;
  Expand(NonTerminal::Program, tokens);
  return tokens;
}

std::vector<std::string> CQueryGenerator::Damage(std::vector<std::string> tokens) {
  for (size_t times = Random(3) == 0 ? 2 : 1; times-- > 0 && !tokens.empty();) {
    const auto place = tokens.begin() + static_cast<std::ptrdiff_t>(Random(tokens.size()));
    switch (Random(4)) {
      case 0:
        tokens.erase(place);
        break;
      case 1:
        tokens.insert(place, std::string(*place));
        break;
      case 2:
        std::swap(*place, tokens[Random(tokens.size())]);
        break;
      default:
        *place =
            Random(2) == 0
                ? std::string(KeywordText(static_cast<KeywordId>(1 + Random(kKeywordCount - 1))))
                : PredicateText(static_cast<Predicate>(1 + Random(kPredicateCount - 1)));
        break;
    }
  }
  return tokens;
}

std::string CQueryGenerator::Join(const std::vector<std::string>& tokens) {
  std::string text;
  for (const std::string& token : tokens) text += token + ' ';
  return text;
}

}  // namespace kestra::test
