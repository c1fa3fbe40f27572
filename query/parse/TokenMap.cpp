#include "query/parse/TokenMap.h"

namespace kestra {
namespace {

bool IsSource(KeywordId keyword) {
  return keyword == kKwFrom || keyword == kKwJoin;
}

bool IsClause(KeywordId keyword) {
  return IsSource(keyword) || keyword == kKwSelect || keyword == kKwUpdate || keyword == kKwDelete;
}

}  // namespace

CTokenMap::CTokenMap(const TokenList& tokens)
    : m_partner(tokens.size(), kNowhere),
      m_groupEnd(tokens.size()),
      m_strayClose(tokens.size()),
      m_clauseBefore(tokens.size()),
      m_sourceBefore(tokens.size()),
      m_sourceOrEndFrom(tokens.size()) {
  std::vector<int32_t> open;
  for (int32_t q = 0; q < static_cast<int32_t>(tokens.size()); ++q) {
    const auto i = static_cast<size_t>(q);
    const KeywordId keyword = tokens[i].keyword;
    if (keyword == kKwOpen) {
      open.push_back(q);
    } else if (keyword == kKwClose && !open.empty()) {
      m_partner[i] = open.back();
      m_partner[static_cast<size_t>(open.back())] = q;
      open.pop_back();
    }
    // Where the walk goes on that does not stop here. Nothing stands outside of a parenthesis that
    // was never opened.
    const bool isOpenEnded = keyword == kKwClose && m_partner[i] == kNowhere;
    const std::ptrdiff_t next = keyword == kKwClose ? m_partner[i] - 1 : q - 1;
    const auto placeOf = [&](bool stops, const Places& places) {
      if (stops) return q;
      return static_cast<int32_t>(isOpenEnded ? kNowhere : At(places, next));
    };
    m_clauseBefore[i] = placeOf(IsClause(keyword), m_clauseBefore);
    m_sourceBefore[i] = placeOf(IsSource(keyword), m_sourceBefore);
  }
  FindGroups(tokens);
  for (size_t i = tokens.size(); i-- > 0;) {
    const KeywordId keyword = tokens[i].keyword;
    if (IsSource(keyword) || keyword == kKwWhere || keyword == kKwClose) {
      m_sourceOrEndFrom[i] = static_cast<int32_t>(i);
      continue;
    }
    const bool isOpenEnded = keyword == kKwOpen && m_partner[i] == kNowhere;
    const std::ptrdiff_t next =
        (keyword == kKwOpen ? m_partner[i] : static_cast<std::ptrdiff_t>(i)) + 1;
    m_sourceOrEndFrom[i] =
        static_cast<int32_t>(isOpenEnded ? kNowhere : At(m_sourceOrEndFrom, next));
  }
}

void CTokenMap::FindGroups(const TokenList& tokens) {
  const auto count = static_cast<int32_t>(tokens.size());
  int32_t stray = kNowhere;
  for (int32_t i = 0; i < count; ++i) {
    const auto at = static_cast<size_t>(i);
    if (tokens[at].keyword == kKwClose && m_partner[at] == kNowhere) stray = i;
    m_strayClose[at] = stray;
  }
  std::vector<int32_t> ends{count};
  for (int32_t i = count; i-- > 0;) {
    const auto at = static_cast<size_t>(i);
    const bool isInPair = m_partner[at] != kNowhere;
    if (isInPair && tokens[at].keyword == kKwOpen) ends.pop_back();
    m_groupEnd[at] = ends.back();
    if (isInPair && tokens[at].keyword == kKwClose) ends.push_back(i);
  }
}

bool CTokenMap::IsOnWayBack(std::ptrdiff_t p, std::ptrdiff_t q) const {
  return At(m_groupEnd, p) > q && At(m_strayClose, q) < p;
}

std::ptrdiff_t CTokenMap::ClauseBefore(std::ptrdiff_t q) const {
  return At(m_clauseBefore, q);
}
std::ptrdiff_t CTokenMap::SourceBefore(std::ptrdiff_t q) const {
  return At(m_sourceBefore, q);
}
std::ptrdiff_t CTokenMap::SourceOrEndFrom(std::ptrdiff_t q) const {
  return At(m_sourceOrEndFrom, q);
}
std::ptrdiff_t CTokenMap::Partner(std::ptrdiff_t q) const {
  return At(m_partner, q);
}

}  // namespace kestra
