// What a statement that parses names: the aliases of its sources.
#include <fmt/format.h>

#include <algorithm>

#include "query/diagnose/Wording.h"
#include "query/diagnose/good/GoodText.h"

namespace kestra {

std::vector<const QuerySource*> CGoodText::SourcesBehind(size_t i) const {
  std::vector<const QuerySource*> sources;
  size_t end = i;
  // A query in parentheses ends with them; a text has one that is not, or statements.
  while (end < m_tokens.size() && m_depths[end] >= m_depths[i]) ++end;
  for (const QuerySource& source : m_sources) {
    const KeywordId keyword = KeywordAt(source.keyword);
    if (source.keyword <= i || source.keyword >= end) continue;
    if (m_depths[source.keyword] != m_depths[i]) continue;
    if (keyword == kKwFrom && !sources.empty()) break;
    if (keyword == kKwFrom || (keyword == kKwJoin && !sources.empty())) sources.push_back(&source);
  }
  return sources;
}

// The token is the alias of one of the sources, or it is said that it is not.
bool CGoodText::TestIsAlias(size_t i, const std::vector<const QuerySource*>& sources) {
  std::vector<std::string_view> aliases;
  for (const QuerySource* pSource : sources) {
    if (pSource->alias != kNoToken) aliases.push_back(m_tokens[pSource->alias].text);
  }
  const std::string_view alias = m_tokens[i].text;
  if (sources.empty() || std::find(aliases.begin(), aliases.end(), alias) != aliases.end()) {
    return false;
  }
  const auto suggestions = NearestNames(alias, aliases);
  return Say(i, IsAlwaysRun(*sources.front()),
             fmt::format("there is no alias {} here{}", InQuotes(alias), DidYouMean(suggestions)),
             suggestions);
}

bool CGoodText::TestStar(size_t select) {
  const auto sources = SourcesBehind(select);
  if (KeywordAt(select + 2) == kKwDot && KeywordAt(select + 3) == kKwStar) {
    return TestIsAlias(select + 1, sources);
  }
  if (KeywordAt(select + 1) != kKwStar || sources.size() < 2) return false;
  std::vector<std::string> instead;
  for (const QuerySource* pSource : sources) {
    if (pSource->alias == kNoToken) continue;
    instead.push_back(std::string(m_tokens[pSource->alias].text) + ".*");
  }
  return Say(select + 1, IsAlwaysRun(*sources.front()),
             "\"*\" of a join is that of one source: write " + ListOf(instead), instead);
}

bool CGoodText::TestChangedAlias(size_t keyword) {
  const KeywordId behind = KeywordAt(keyword + 2);
  const bool isAlias = KeywordAt(keyword) == kKwUpdate ? behind == kKwSet : behind == kKwFrom;
  return isAlias && TestIsAlias(keyword + 1, SourcesBehind(keyword));
}

bool CGoodText::TestJoinByParent(size_t attachedTo) {
  // child.ATTACHEDTO = parent.ITEMID
  if (attachedTo < 2 || KeywordAt(attachedTo - 1) != kKwDot) return false;
  const QuerySource* pRight = nullptr;
  for (const QuerySource& source : m_sources) {
    const bool isJoin = KeywordAt(source.keyword) == kKwJoin;
    if (isJoin && source.keyword < attachedTo) pRight = &source;
  }
  if (!pRight || pRight->alias == kNoToken) return false;
  const std::string_view right = m_tokens[pRight->alias].text;
  const std::string_view child = m_tokens[attachedTo - 2].text;
  if (child == right) return false;
  return Say(
      attachedTo - 2, IsAlwaysRun(*pRight),
      fmt::format("the source behind JOIN is the child: {}.ATTACHEDTO = {}.ITEMID", right, child),
      {});
}

}  // namespace kestra
