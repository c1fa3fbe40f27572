#include "query/parse/Predicates.h"

#include <bit>
#include <initializer_list>

#include "VLib/src/text/Text.h"
#include "VLib/src/text/VersionNumber.h"
#include "query/parse/Literals.h"

namespace kestra {
namespace {

bool IsOneOf(std::string_view token, std::initializer_list<std::string_view> words) {
  for (const std::string_view word : words) {
    if (EqualsNoCase(token, word)) return true;
  }
  return false;
}

bool IsIdentifier(const Token& token) {
  if (!IsAsciiLetter(token.text[0]) && token.text[0] != '_') return false;
  return token.keyword != kKwAttachedTo && token.keyword != kKwItemId && token.keyword != kKwSelect;
}

// Words that begin a part of a statement, which whoever is still writing means as such.
bool IsClauseWord(KeywordId keyword) {
  return keyword == kKwFrom || keyword == kKwJoin || keyword == kKwOn || keyword == kKwWhere ||
         keyword == kKwSet || keyword == kKwValues || keyword == kKwAnd || keyword == kKwOr;
}

// Also true of an item class: the source is refused later, when it is run.
bool IsModuleName(const QueryContext& context, std::string_view token) {
  return FindModuleClass(context.RootClass.get(), token) != nullptr;
}

bool IsColumnOf(Predicate predicate, const DiagParamDef* pDef) {
  if (!pDef) return false;
  switch (predicate) {
    case Predicate::NumberColumn:
      return pDef->HoldsNumber();
    case Predicate::StringColumn:
      return pDef->HoldsText() && pDef->Type != ParamType::Version;
    case Predicate::VersionColumn:
      return pDef->Type == ParamType::Version;
    default:
      return pDef->Type == ParamType::Datime;
  }
}

// The literals, whose value is not the token itself.
bool ReadLiteral(Predicate predicate, std::string_view token, Value& out) {
  switch (predicate) {
    case Predicate::IntegerLiteral:
      return ReadIntegerLiteral(token, out);
    case Predicate::StringLiteral:
      return ReadStringLiteral(token, out);
    case Predicate::VersionLiteral:
      return ReadVersionLiteral(token, out);
    default:
      return ReadDatimeLiteral(token, out);
  }
}

bool IsWord(Predicate predicate, const QueryContext& context, const Token& token) {
  const std::string_view text = token.text;
  switch (predicate) {
    case Predicate::Identifier:
      return IsIdentifier(token);
    case Predicate::ModuleName:
      return IsModuleName(context, text);
    case Predicate::BuiltInSource:
      return IsOneOf(text, {"FILES", "REGISTRY", "INIFILES"});
    case Predicate::DatePartName:
      return IsOneOf(text, {"yy", "mm", "wk", "dd", "dw", "hh", "mi", "ss"});
    case Predicate::NumberAggregate:
      return IsOneOf(text, {"MIN", "MAX", "SUM"});
    case Predicate::OrderAggregate:
      return IsOneOf(text, {"MIN", "MAX"});
    case Predicate::AddOperator:
      return IsOneOf(text, {"+", "-"});
    case Predicate::MulOperator:
      return IsOneOf(text, {"*", "/"});
    case Predicate::EqualityOperator:
      return IsOneOf(text, {"=", "<>"});
    case Predicate::CompareOperator:
      return IsOneOf(text, {"<", "<=", "=", ">=", ">", "<>"});
    default:
      return false;
  }
}

bool IsLiteral(Predicate predicate) {
  return predicate == Predicate::IntegerLiteral || predicate == Predicate::StringLiteral ||
         predicate == Predicate::VersionLiteral || predicate == Predicate::DatimeLiteral;
}

constexpr uint32_t Bits(std::initializer_list<Predicate> predicates) {
  uint32_t bits = 0;
  for (const Predicate predicate : predicates) bits |= PredicateBit(predicate);
  return bits;
}

constexpr uint32_t kColumns = Bits({Predicate::NumberColumn, Predicate::StringColumn,
                                    Predicate::VersionColumn, Predicate::DatimeColumn});

bool IsColumn(Predicate predicate) {
  return (kColumns & PredicateBit(predicate)) != 0;
}

// What a token can be at most that begins so. A module of a plug-in may have any name.
uint32_t PossibleFor(char first) {
  if (first == '\'') {
    return Bits({Predicate::StringLiteral, Predicate::VersionLiteral, Predicate::DatimeLiteral,
                 Predicate::ModuleName});
  }
  if (IsAsciiDigit(first)) {
    return kColumns |
           Bits({Predicate::IntegerLiteral, Predicate::VersionLiteral, Predicate::ModuleName});
  }
  if (IsAsciiLetter(first) || first == '_') {
    return kColumns |
           Bits({Predicate::Identifier, Predicate::ModuleName, Predicate::BuiltInSource,
                 Predicate::DatePartName, Predicate::NumberAggregate, Predicate::OrderAggregate});
  }
  return Bits({Predicate::AddOperator, Predicate::MulOperator, Predicate::EqualityOperator,
               Predicate::CompareOperator, Predicate::ModuleName});
}

bool IsLiteralToken(Predicate predicate, std::string_view token) {
  switch (predicate) {
    case Predicate::StringLiteral:
      return IsStringLiteral(token);
    case Predicate::VersionLiteral:
      return IsVersionLiteral(token);
    default: {
      Value scratch;
      return ReadLiteral(predicate, token, scratch);
    }
  }
}

}  // namespace

bool RunPredicate(Predicate predicate, Value& out, QueryContext& context, size_t position) {
  if (position < context.Tokens.size()) {
    const std::string_view text = context.Tokens[position].text;
    if (IsLiteral(predicate)) {
      if (ReadLiteral(predicate, text, out)) return true;
    } else if (context.Predicates->Fits(predicate, position)) {
      out.SetString(std::string(text));
      return true;
    }
  }
  out.SetError();
  return false;
}

bool CPredicateCache::Test(Predicate predicate, size_t position) {
  const Token& token = m_context.Tokens[position];
  if (IsLiteral(predicate)) return IsLiteralToken(predicate, token.text);
  if (IsColumn(predicate)) {
    const DiagParamDef* const pDef = Column(position).pDef;
    return IsColumnOf(predicate, pDef) ||
           (m_assumesColumns && !pDef && token.keyword == kNoKeyword && IsIdentifier(token));
  }
  if (m_assumesColumns && predicate == Predicate::Identifier && IsClauseWord(token.keyword)) {
    return false;
  }
  return IsWord(predicate, m_context, token);
}

void CPredicateCache::Learn(uint32_t predicates, size_t position) {
  uint32_t fits = 0;
  const uint32_t possible = PossibleFor(m_context.Tokens[position].text[0]);
  for (uint32_t left = predicates & possible; left != 0; left &= left - 1) {
    const auto predicate = static_cast<Predicate>(std::countr_zero(left));
    if (Test(predicate, position)) fits |= PredicateBit(predicate);
  }
  At(position).known |= predicates;
  At(position).fits |= fits;
}

const ColumnBinding& CPredicateCache::Column(size_t position) {
  Verdicts& verdicts = At(position);
  if (verdicts.column == 0) {
    m_columns.push_back(Search().Resolve(position));
    verdicts.column = static_cast<uint32_t>(m_columns.size());
  }
  return m_columns[verdicts.column - 1];
}

CColumnSearch& CPredicateCache::Search() {
  if (!m_pSearch) m_pSearch = std::make_unique<CColumnSearch>(m_context);
  return *m_pSearch;
}

}  // namespace kestra
