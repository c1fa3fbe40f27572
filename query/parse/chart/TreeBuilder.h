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

  // A complete item of the set at a position.
  struct Derivation {
    ItemIndex item;
    uint32_t end;
  };
  struct Task {
    Derivation derivation;
    ParseNode* pParent;
    ParseSlot* pSlot;  // null for the top
  };

  const CoreItem& ItemOf(const Derivation& derivation) const {
    return m_sets.Core(derivation.end).Items()[derivation.item];
  }
  uint16_t OriginOf(const Derivation& derivation) const {
    return m_sets.Origin(derivation.end, ItemOf(derivation).Slot);
  }
  bool FindGoal(uint32_t tokenCount, Derivation& goal) const;
  bool FindChild(const Derivation& parent, uint8_t table, uint32_t end, Derivation& child) const;
  bool SkipPassThrough(Derivation& derivation) const;
  bool BuildNode(const Task& task);

  QueryContext& m_context;
  const Grammar& m_grammar;
  const CChartSets& m_sets;
  ParseTree& m_tree;
  std::vector<Task> m_tasks;
};

}  // namespace kestra
