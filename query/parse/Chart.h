// The chart parser: an Earley recogniser, and the building of the tree from its chart.
//
// The grammar is ambiguous on purpose, and ambiguity is settled by the order in which items were
// found: at every level the first item wins. That order follows from the order of the rules and
// from the depth-first closure, so both are part of the language. What is done here for speed
// (predictions that cannot match are left out, sets are indexed by next symbol, duplicates are
// found by hash) changes neither.
//
// Time and memory grow with the number of tokens; nothing recurses on the text.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "query/QueryContext.h"
#include "query/parse/Grammar.h"
#include "query/parse/ParseTree.h"

namespace kestra {

// A rule, how much of it is matched, and where it began.
struct ChartItem {
  uint16_t Rule;    // index into Grammar::rules
  uint16_t Origin;  // position where the rule began
  uint8_t Dot;      // symbols matched already
  bool operator==(const ChartItem&) const = default;
};
static_assert(sizeof(ChartItem) <= 8);

class CChart {
 public:
  explicit CChart(QueryContext& context) : CChart(context, context.Tokens.size()) {}
  // For the first so many tokens, as if the text ended there; what stands behind them is still seen
  // by the search for columns.
  CChart(QueryContext& context, size_t tokenCount);
  // Recognises the tokens and builds the tree. False for a text that has no parse. A cancelled
  // query has none.
  bool Parse(ParseTree& tree);
  // The first half of it, for one who only wants to know how far it goes.
  void Recognise();

  // After recognition: the token that nothing could make use of; the number of tokens if there was
  // none.
  size_t StopPosition() const;
  // The items in front of a token, up to the one where recognition stopped. Predictions that cannot
  // match that token are left out.
  std::span<const ChartItem> ItemsAt(size_t position) const;

 private:
  using ItemIndex = uint32_t;
  static constexpr ItemIndex kNone = 0xFFFFFFFF;
  using Waiting = std::array<ItemIndex, kNonTerminalCount>;

  struct Frame {
    ItemIndex item;
    ItemIndex last;  // completing: the waiting item that was looked at last
    uint16_t next;   // predicting: the alternative to try next
    bool isCompleting;
  };
  struct BuildTask {
    ItemIndex item;
    uint32_t end;
    ParseNode* pParent;
    ParseSlot* pSlot;
  };

  const Rule& RuleOf(ItemIndex item) const { return m_grammar.rules[m_items[item].Rule]; }
  Symbol NextSymbol(const ChartItem& item) const {
    return m_grammar.rules[item.Rule].Symbols[item.Dot];
  }
  bool IsComplete(const ChartItem& item) const {
    return item.Dot == m_grammar.rules[item.Rule].Length;
  }
  size_t SetBegin(size_t set) const { return m_setBegin[set]; }
  size_t SetEnd(size_t set) const {
    return set + 1 < m_setBegin.size() ? m_setBegin[set + 1] : m_items.size();
  }

  void BeginSet(size_t set);
  void ScanInto(size_t set);
  ItemIndex Append(ChartItem item);
  bool AppendIfNew(ChartItem item);
  void Close(ItemIndex first);
  void PushFrame(ItemIndex item);
  bool StepCompleter(Frame& frame, ChartItem& found);
  bool StepPredictor(Frame& frame, ChartItem& found);
  bool CanStart(uint16_t rule);
  bool TerminalFits(Symbol symbol, size_t position);

  ItemIndex FindGoal() const;
  ItemIndex FindChild(const ChartItem& item, uint8_t table, size_t end) const;
  bool SetHolds(size_t set, uint16_t rule, uint16_t origin) const;
  bool SkipPassThrough(ItemIndex& item, uint32_t& end) const;
  bool BuildNode(const BuildTask& task, ParseTree& tree, std::vector<BuildTask>& tasks);

  QueryContext& m_context;
  const Grammar& m_grammar;
  const size_t m_tokenCount;
  std::vector<ChartItem> m_items;  // all sets, one behind the other
  std::vector<ItemIndex>
      m_nextWaiting;  // by item: the next one of its set with the same next symbol
  std::vector<size_t> m_setBegin;
  std::vector<Waiting> m_waiting;  // by set: the first item that waits for each nonterminal
  Waiting m_lastWaiting;           // the same for the last item of the present set
  std::array<bool, kNonTerminalCount> m_isEmptyDone;  // derived empty in the present set
  std::vector<ItemIndex> m_hash;                      // items of the present set
  size_t m_present = 0;
  std::vector<Frame> m_frames;
};

// The tree of a query's tokens; false when there is none.
bool ParseTokens(QueryContext& context, ParseTree& tree);

}  // namespace kestra
