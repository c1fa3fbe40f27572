// An item set of the chart without its place in the text: which rules are how far, in the order in
// which that was found. Where a rule began is a slot, a number that stands for a position; the
// positions themselves are kept by set (ChartSets.h). Texts are full of places that look alike, so
// a few hundred cores serve all queries.
//
// A core does not change once it is made; any thread may read it.
#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <vector>

#include "query/parse/Grammar.h"

namespace kestra {

struct CoreItem {
  uint16_t Rule;  // index into Grammar::rules
  uint16_t Slot;  // stands for the position where the rule began; 0 is the set's own
  uint8_t Dot;    // symbols matched already
  bool operator==(const CoreItem&) const = default;
};

class CChartCore {
 public:
  using ItemIndex = uint32_t;
  static constexpr ItemIndex kNone = 0xFFFFFFFF;

  CChartCore(std::vector<CoreItem> items, uint16_t slotCount, uint32_t id);

  uint32_t Id() const { return m_id; }
  size_t SlotCount() const { return m_slotCount; }
  const std::vector<CoreItem>& Items() const { return m_items; }
  size_t Bytes() const;

  // The items that wait for a nonterminal, in order.
  ItemIndex FirstWaiting(size_t table) const { return m_firstWaiting[table]; }
  // The items that are complete, by their rule's nonterminal, in order.
  ItemIndex FirstComplete(size_t table) const { return m_firstComplete[table]; }
  // The next one behind any of those.
  ItemIndex Next(ItemIndex item) const { return m_next[item]; }

  // Where the tree goes on below a complete item whose rule only hands on the value of its one
  // symbol: down to the first rule that does more. The item itself if it does, or if that cannot
  // be told from the core alone.
  ItemIndex Below(ItemIndex item) const { return m_below[item]; }

  // The items that wait for a terminal, in order, and which terminals these are.
  const std::vector<ItemIndex>& Scannable() const { return m_scannable; }
  bool WaitsForKeyword(KeywordId keyword) const { return m_keywords[keyword]; }
  uint32_t WaitingPredicates() const { return m_predicates; }

  // Calls test with each slot where a rule of this set began, until it answers true.
  template <class Test>
  bool AnySlotOf(uint16_t rule, Test&& test) const {
    for (ItemIndex i = m_firstOfRule[rule]; i != kNone; i = m_ruleSlots[i].next) {
      if (test(m_ruleSlots[i].slot)) return true;
    }
    return false;
  }

 private:
  struct RuleSlot {
    uint16_t slot;
    ItemIndex next;  // another one of the same rule
  };
  using Heads = std::array<ItemIndex, kNonTerminalCount>;

  void IndexItem(ItemIndex index, Heads& lastWaiting, Heads& lastComplete);
  ItemIndex OneBelow(ItemIndex item) const;
  void Chain(Heads& first, Heads& last, size_t table, ItemIndex index);

  const std::vector<CoreItem> m_items;
  const uint16_t m_slotCount;
  const uint32_t m_id;
  Heads m_firstWaiting;
  Heads m_firstComplete;
  std::vector<ItemIndex> m_next;
  std::vector<ItemIndex> m_below;
  std::vector<ItemIndex> m_scannable;
  std::bitset<kKeywordCount> m_keywords;
  uint32_t m_predicates = 0;
  std::vector<ItemIndex> m_firstOfRule;  // by rule; into the next list
  std::vector<RuleSlot> m_ruleSlots;
};

}  // namespace kestra
