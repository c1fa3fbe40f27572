#include "query/parse/chart/Chart.h"

#include <algorithm>

#include "query/parse/Predicates.h"
#include "query/parse/chart/TreeBuilder.h"

namespace kestra {
CChart::CChart(QueryContext& context, size_t tokenCount)
    : m_context(context),
      m_tokenCount(tokenCount),
      m_sets(m_memory->Sets()),
      m_closure(context, m_sets) {
  m_sets.Clear(tokenCount);
}

// What the next set follows from, before earlier sets are looked at.
ChartStepKey CChart::NextKey() const {
  const size_t set = m_sets.Count();
  const KeywordId lookahead =
      set < m_tokenCount ? m_context.Tokens[set].keyword : ChartStepKey::kEnd;
  if (set == 0) return {CChartMemory::kStartCore, kNoKeyword, 0, lookahead};
  const CChartCore& previous = m_sets.Core(set - 1);
  const KeywordId token = m_context.Tokens[set - 1].keyword;
  const KeywordId keyword = previous.WaitsForKeyword(token) ? token : kNoKeyword;
  const uint32_t predicates = previous.WaitingPredicates();
  const uint32_t fits = predicates == 0 ? 0 : m_context.Predicates->FitsOf(predicates, set - 1);
  return {previous.Id(), keyword, fits, lookahead};
}

// Finds where the edge's rules began. False if the sets before are not what it was made for.
bool CChart::FindOrigins(const ChartEdge& edge) {
  m_origins[0] = static_cast<uint16_t>(m_sets.Count());
  m_originCount = 1;
  for (const ChartStep& step : m_memory->Steps(edge)) {
    if (step.kind == ChartStep::Kind::Core) {
      if (m_sets.Core(m_origins[step.slot]).Id() != step.target) return false;
      continue;
    }
    const bool isPrevious = step.kind == ChartStep::Kind::Previous;
    const size_t set = isPrevious ? m_sets.Count() - 1 : m_origins[step.slot];
    const uint16_t origin = m_sets.Origin(set, step.index);
    if (step.target < m_originCount) {
      if (m_origins[step.target] != origin) return false;
      continue;
    }
    // Two that were apart must not have become one.
    const auto end = m_origins.begin() + m_originCount;
    if (std::find(m_origins.begin(), end, origin) != end) return false;
    m_origins[m_originCount++] = origin;
  }
  return true;
}

bool CChart::Follow(uint32_t index) {
  const ChartEdge& edge = m_memory->Edge(index);
  const size_t set = m_sets.Count();
  if (edge.asked != 0 && m_context.Predicates->FitsOf(edge.asked, set) != edge.fits) return false;
  if (!FindOrigins(edge)) return false;
  m_sets.Append(*edge.pCore, std::span(m_origins).first(m_originCount));
  if (m_lastEdge != CChartMemory::kNoEdge) m_memory->SetFollower(m_lastEdge, index);
  m_lastEdge = index;
  return true;
}

// Texts repeat themselves, so the edge is often the one that came here last.
bool CChart::FollowGuess(const ChartStepKey& key) {
  if (m_lastEdge == CChartMemory::kNoEdge) return false;
  const uint32_t guess = m_memory->Edge(m_lastEdge).follower;
  return guess != CChartMemory::kNoEdge && m_memory->Edge(guess).key == key && Follow(guess);
}

void CChart::WorkOut(const ChartStepKey& key) {
  m_closure.Run(key, m_tokenCount);
  const auto slotCount = static_cast<uint16_t>(m_closure.Origins().size());
  const CChartCore& core = m_memory->Core(m_closure.Items(), slotCount);
  if (slotCount <= kMostSlots) {
    const uint32_t asked = m_closure.Asked();
    const uint32_t fits = asked == 0 ? 0 : m_context.Predicates->FitsOf(asked, m_sets.Count());
    m_memory->AddEdge({key, asked, fits, 0, 0, &core, 0, 0}, m_closure.Steps());
  }
  m_lastEdge = CChartMemory::kNoEdge;
  m_sets.Append(core, m_closure.Origins());
}

void CChart::MakeNextSet() {
  const ChartStepKey key = NextKey();
  if (FollowGuess(key)) return;
  for (uint32_t i = m_memory->FindEdge(key); i != CChartMemory::kNoEdge;
       i = m_memory->Edge(i).next) {
    if (Follow(i)) return;
  }
  WorkOut(key);
}

void CChart::Recognise() {
  for (size_t set = 0; set <= m_tokenCount; ++set) {
    MakeNextSet();
    // Nothing can follow an empty set.
    if (m_sets.Core(set).Items().empty() || m_context.IsCancelled()) return;
  }
}

size_t CChart::StopPosition() const {
  const size_t last = m_sets.Count() - 1;
  return last > 0 && m_sets.Core(last).Items().empty() ? last - 1 : last;
}

std::vector<ChartItem> CChart::ItemsAt(size_t position) const {
  std::vector<ChartItem> items;
  if (position >= m_sets.Count()) return items;
  for (const CoreItem& item : m_sets.Core(position).Items()) {
    items.push_back({item.Rule, m_sets.Origin(position, item.Slot), item.Dot});
  }
  return items;
}

bool CChart::Parse(ParseTree& tree) {
  Recognise();
  return CTreeBuilder(m_context, m_sets, tree).Run(m_tokenCount);
}

bool ParseTokens(QueryContext& context, ParseTree& tree) {
  return CChart(context).Parse(tree);
}

}  // namespace kestra
