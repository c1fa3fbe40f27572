#include "query/parse/Predicates.h"

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
  return FindClass(context.RootClass.get(), token) != nullptr;
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

bool IsColumn(Predicate predicate) {
  return predicate == Predicate::NumberColumn || predicate == Predicate::StringColumn ||
         predicate == Predicate::VersionColumn || predicate == Predicate::DatimeColumn;
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

CPredicateCache::Verdicts& CPredicateCache::At(size_t position) {
  if (m_verdicts.empty()) m_verdicts.resize(m_context.Tokens.size());
  return m_verdicts[position];
}

bool CPredicateCache::Fits(Predicate predicate, size_t position) {
  const uint32_t bit = 1u << static_cast<uint32_t>(predicate);
  if (At(position).known & bit) return (At(position).fits & bit) != 0;
  const Token& token = m_context.Tokens[position];
  bool fits = false;
  if (IsLiteral(predicate)) {
    Value scratch;
    fits = ReadLiteral(predicate, token.text, scratch);
  } else if (IsColumn(predicate)) {
    const DiagParamDef* const pDef = Column(position).pDef;
    fits = IsColumnOf(predicate, pDef) ||
           (m_assumesColumns && !pDef && token.keyword == kNoKeyword && IsIdentifier(token));
  } else {
    fits = IsWord(predicate, m_context, token);
    if (m_assumesColumns && predicate == Predicate::Identifier && IsClauseWord(token.keyword)) {
      fits = false;
    }
  }
  At(position).known |= bit;
  if (fits) At(position).fits |= bit;
  return fits;
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
