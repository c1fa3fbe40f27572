#include "query/diagnose/rules/FailedText.h"

#include <algorithm>

#include "VLib/src/text/Text.h"
#include "query/parse/Predicates.h"

namespace kestra {

CFailedText::CFailedText(QueryContext& context, const CChart& chart)
    : m_context(context),
      m_stop(chart.StopPosition()),
      m_expectedAtStop(chart, m_stop),
      m_position(PlaceToBlame(chart, m_expectedAtStop)),
      m_expected(chart, m_position),
      m_sources(ScanSources(context.Tokens, context.RootClass.get())) {}

size_t CFailedText::PlaceToBlame(const CChart& chart, const CExpected& atStop) {
  const size_t stop = chart.StopPosition();
  return stop > 0 && atStop.IsOnlyAliasDot() ? stop - 1 : stop;
}

std::string_view CFailedText::Text(size_t i) const {
  return i < Count() ? m_context.Tokens[i].text : std::string_view();
}

KeywordId CFailedText::KeywordAt(size_t i) const {
  return i < Count() ? m_context.Tokens[i].keyword : kNoKeyword;
}

bool CFailedText::Is(size_t i, std::string_view word) const {
  return i < Count() && EqualsNoCase(Text(i), word);
}

bool CFailedText::IsWord(size_t i) const {
  return i < Count() && (IsAsciiLetter(Text(i)[0]) || Text(i)[0] == '_');
}

bool CFailedText::IsInteger(size_t i) const {
  const std::string_view text = Text(i);
  return !text.empty() && std::all_of(text.begin(), text.end(), IsAsciiDigit);
}

bool CFailedText::IsString(size_t i) const {
  return i < Count() && Text(i)[0] == '\'';
}

bool CFailedText::IsClauseWord(size_t i) const {
  switch (KeywordAt(i)) {
    case kKwSelect:
    case kKwFrom:
    case kKwJoin:
    case kKwOn:
    case kKwWhere:
    case kKwAnd:
    case kKwOr:
    case kKwIs:
    case kKwIn:
    case kKwLike:
      return true;
    default:
      return false;
  }
}

bool CFailedText::IsComparison(size_t i) const {
  for (const char* pMark : {"=", "<>", "<", "<=", ">", ">=", "LIKE"}) {
    if (Is(i, pMark)) return true;
  }
  return KeywordAt(i) == kKwOpen && KeywordAt(i - 1) == kKwIn;
}

bool CFailedText::AreJoined(size_t first, size_t last) const {
  if (last >= Count()) return false;
  for (size_t i = first; i < last; ++i) {
    if (Text(i).data() + Text(i).size() != Text(i + 1).data()) return false;
  }
  return true;
}

bool CFailedText::IsBeforeOperand(size_t i) const {
  switch (KeywordAt(i)) {
    case kKwWhere:
    case kKwOn:
    case kKwAnd:
    case kKwOr:
    case kKwNot:
    case kKwOpen:
      return true;
    default:
      return false;
  }
}

size_t CFailedText::EndOfRunAt(size_t i) const {
  while (AreJoined(i, i + 1) && KeywordAt(i + 1) != kKwComma && KeywordAt(i + 1) != kKwOpen &&
         KeywordAt(i + 1) != kKwClose && !IsString(i + 1)) {
    ++i;
  }
  return i;
}

std::string_view CFailedText::RunAt(size_t i) const {
  const size_t last = EndOfRunAt(i), begin = OffsetOf(i);
  return std::string_view(Query()).substr(begin, OffsetOf(last) + Text(last).size() - begin);
}

size_t CFailedText::OffsetOf(size_t i) const {
  if (Count() == 0) return 0;
  if (i < Count()) return static_cast<size_t>(Text(i).data() - Query().data());
  return OffsetOf(Count() - 1) + Text(Count() - 1).size();
}

const QuerySource* CFailedText::SourceWithAliasAt(size_t i) const {
  for (const QuerySource& source : m_sources) {
    if (source.alias == i && i != kNoToken) return &source;
  }
  return nullptr;
}

const ColumnBinding& CFailedText::Column(size_t i) {
  return m_context.Predicates->Column(i);
}

std::vector<CColumnSearch::VisibleSource> CFailedText::SourcesFor(size_t i) {
  return m_context.Predicates->Search().SourcesFor(i);
}

bool CFailedText::IsUnknownName() {
  return IsWord(m_position) && m_expected.HasColumn() && KeywordAt(m_position + 1) != kKwOpen &&
         !Column(m_position).pDef;
}

bool CFailedText::Say(Finding& finding, size_t first, size_t last, std::string message,
                      std::vector<std::string> suggestions) const {
  finding.offset = OffsetOf(first);
  finding.length = first < Count() ? OffsetOf(last) + Text(last).size() - finding.offset : 0;
  finding.message = std::move(message);
  finding.suggestions = std::move(suggestions);
  return true;
}

}  // namespace kestra
