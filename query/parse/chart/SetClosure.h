// One step of the recogniser done in full: the item set behind a token, by scanning the set before
// it and by the depth-first closure of predictor and completer. What the step depended on is
// written down on the way, as an edge for the chart's memory.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "query/QueryContext.h"
#include "query/parse/chart/ChartMemory.h"
#include "query/parse/chart/ChartSets.h"

namespace kestra {

class CSetClosure {
 public:
  CSetClosure(QueryContext& context, const CChartSets& sets);

  // Makes the next set. key tells what is in front of it; tokenCount where the text ends.
  void Run(const ChartStepKey& key, size_t tokenCount);

  // What Run made, until the next one.
  const std::vector<CoreItem>& Items() const { return m_items; }
  const std::vector<uint16_t>& Origins() const { return m_origins; }  // by slot
  const std::vector<ChartStep>& Steps() const { return m_steps; }
  uint32_t Asked() const { return m_asked; }

 private:
  using ItemIndex = CChartCore::ItemIndex;
  using Waiting = std::array<ItemIndex, kNonTerminalCount>;
  static constexpr ItemIndex kNone = CChartCore::kNone;
  static constexpr uint16_t kNoSlot = 0xFFFF;

  struct Frame {
    ItemIndex item;
    ItemIndex last;  // completing: the waiting item that was looked at last
    uint16_t next;   // predicting: the alternative to try next
    bool isCompleting;
  };
  // The slot that a way to a position leads to.
  struct KnownWay {
    ChartStep::Kind kind;
    uint16_t slot;
    uint16_t index;
    uint16_t target;
  };

  void Clear(size_t set);
  void Start();
  void Scan(const ChartStepKey& key);
  bool CanStart(uint16_t rule);
  uint16_t SlotBy(ChartStep::Kind kind, uint16_t slot, uint16_t index);
  uint16_t SlotOf(uint16_t origin);
  ItemIndex Append(CoreItem item);
  void PutIntoHash(ItemIndex index);
  void AppendIfNew(CoreItem item);
  void PushFrame(ItemIndex item);
  void Close(ItemIndex first);
  bool StepCompleter(Frame& frame, CoreItem& found);
  bool StepPredictor(Frame& frame, CoreItem& found);

  QueryContext& m_context;
  const Grammar& m_grammar;
  const CChartSets& m_sets;
  size_t m_present = 0;
  bool m_isAtEnd = false;
  KeywordId m_lookahead = kNoKeyword;
  uint32_t m_asked = 0;
  std::vector<CoreItem> m_items;
  std::vector<ItemIndex> m_next;  // by item: the next one that waits for the same nonterminal
  Waiting m_firstWaiting;
  Waiting m_lastWaiting;
  std::array<bool, kNonTerminalCount> m_isEmptyDone;  // derived empty in the present set
  std::vector<ItemIndex> m_hash;
  std::vector<Frame> m_frames;
  std::vector<uint16_t> m_origins;
  std::vector<ChartStep> m_steps;
  std::vector<KnownWay> m_ways;
  std::vector<bool> m_isCoreKnown;  // by slot: its core is among the steps
};

}  // namespace kestra
