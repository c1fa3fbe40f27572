// The second half of the parser: the tree, out of the item sets.
#pragma once

#include <cstdint>
#include <vector>

#include "query/parse/ParseTree.h"
#include "query/parse/chart/ChartSets.h"

namespace kestra {

class CTreeBuilder {
 public:
  CTreeBuilder(QueryContext& context, const CChartSets& sets, ParseTree& tree);

  // False if the sets hold no tree for so many tokens.
  bool Run(size_t tokenCount);

 private:
  using ItemIndex = CChartCore::ItemIndex;

  // A complete item of the set at a position, in one word: halves that are written apart and read
  // together soon after make the processor wait.
  class Derivation {
   public:
    Derivation() = default;
    Derivation(ItemIndex item, size_t end) : m_word(uint64_t{end} << 32 | item) {}
    ItemIndex Item() const { return static_cast<ItemIndex>(m_word); }
    uint32_t End() const { return static_cast<uint32_t>(m_word >> 32); }

   private:
    uint64_t m_word;
  };
  struct Task {
    Derivation derivation;
    ParseNode* pParent;
    ParseSlot* pSlot;  // null for the top
  };

  const CoreItem& ItemOf(const Derivation& derivation) const {
    return m_sets.Core(derivation.End()).Items()[derivation.Item()];
  }
  uint16_t OriginOf(const Derivation& derivation) const {
    return m_sets.Origin(derivation.End(), ItemOf(derivation).Slot);
  }
  bool FindGoal(size_t tokenCount, Derivation& goal) const;
  bool FindChild(const Derivation& parent, uint8_t table, uint32_t end, Derivation& child) const;
  bool SkipPassThrough(Derivation& derivation) const;
  bool BuildNode(Derivation derivation, ParseNode* pParent, ParseSlot* pSlot);

  QueryContext& m_context;
  const Grammar& m_grammar;
  const CChartSets& m_sets;
  ParseTree& m_tree;
  std::vector<Task> m_tasks;
};

}  // namespace kestra
