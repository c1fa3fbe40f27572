#include "query/parse/chart/ChartCore.h"

#include <utility>

namespace kestra {

CChartCore::CChartCore(std::vector<CoreItem> items, uint16_t slotCount, uint32_t id)
    : m_items(std::move(items)),
      m_slotCount(slotCount),
      m_id(id),
      m_next(m_items.size(), kNone),
      m_firstOfRule(TheGrammar().rules.size(), kNone) {
  m_firstWaiting.fill(kNone);
  m_firstComplete.fill(kNone);
  Heads lastWaiting, lastComplete;
  for (ItemIndex i = 0; i < m_items.size(); ++i) IndexItem(i, lastWaiting, lastComplete);
  for (ItemIndex i = 0; i < m_items.size(); ++i) {
    ItemIndex below = i;
    // The grammar has no circle of such rules, but nothing here need rely on that.
    for (size_t steps = 0; steps < m_items.size(); ++steps) {
      const ItemIndex next = OneBelow(below);
      if (next == kNone) break;
      below = next;
    }
    m_below.push_back(below);
  }
}

// The child of a rule of one symbol ends where the rule ends, and begins there too if it is the
// first of its kind and has the same slot. kNone for other rules, and if it has another slot.
CChartCore::ItemIndex CChartCore::OneBelow(ItemIndex index) const {
  const CoreItem& item = m_items[index];
  const Rule& rule = TheGrammar().rules[item.Rule];
  const Symbol symbol = rule.Symbols[0];
  const bool handsOn = item.Dot == rule.Length && rule.Length == 1 && rule.Action == FirstSymbol;
  if (!handsOn || symbol.Kind != SymbolKind::NonTerminal) return kNone;
  const ItemIndex child = m_firstComplete[symbol.Number];
  return child != kNone && m_items[child].Slot == item.Slot ? child : kNone;
}

void CChartCore::Chain(Heads& first, Heads& last, size_t table, ItemIndex index) {
  if (first[table] == kNone) {
    first[table] = index;
  } else {
    m_next[last[table]] = index;
  }
  last[table] = index;
}

void CChartCore::IndexItem(ItemIndex index, Heads& lastWaiting, Heads& lastComplete) {
  const CoreItem& item = m_items[index];
  const Rule& rule = TheGrammar().rules[item.Rule];
  const Symbol next = rule.Symbols[item.Dot];
  switch (next.Kind) {
    case SymbolKind::NonTerminal:
      Chain(m_firstWaiting, lastWaiting, next.Number, index);
      break;
    case SymbolKind::Keyword:
      m_scannable.push_back(index);
      m_keywords.set(next.Number);
      break;
    case SymbolKind::Predicate:
      m_scannable.push_back(index);
      m_predicates |= PredicateBit(static_cast<Predicate>(next.Number));
      break;
    case SymbolKind::End:
      Chain(m_firstComplete, lastComplete, static_cast<size_t>(rule.Table), index);
      break;
  }
  if (!AnySlotOf(item.Rule, [&](uint16_t slot) { return slot == item.Slot; })) {
    m_ruleSlots.push_back({item.Slot, m_firstOfRule[item.Rule]});
    m_firstOfRule[item.Rule] = static_cast<ItemIndex>(m_ruleSlots.size() - 1);
  }
}

size_t CChartCore::Bytes() const {
  return sizeof(*this) + m_items.capacity() * sizeof(CoreItem) +
         (m_next.capacity() + m_below.capacity() + m_scannable.capacity() +
          m_firstOfRule.capacity()) *
             sizeof(ItemIndex) +
         m_ruleSlots.capacity() * sizeof(RuleSlot);
}

}  // namespace kestra
