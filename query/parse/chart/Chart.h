// The chart parser: an Earley recogniser, and the building of the tree from its chart.
//
// The grammar is ambiguous on purpose, and ambiguity is settled by the order in which items were
// found: at every level the first item wins. That order follows from the order of the rules and
// from the depth-first closure (SetClosure.h), so both are part of the language. What is done here
// for speed changes neither: predictions that cannot match are left out, and a step that was done
// before, in this text or in an earlier one, is not worked out again but remembered
// (ChartMemory.h).
//
// Time and memory grow with the number of tokens; nothing recurses on the text.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "query/QueryContext.h"
#include "query/parse/ParseTree.h"
#include "query/parse/chart/ChartMemory.h"
#include "query/parse/chart/ChartSets.h"
#include "query/parse/chart/SetClosure.h"

namespace kestra {

// A rule, how much of it is matched, and where it began.
struct ChartItem {
  uint16_t Rule;    // index into Grammar::rules
  uint16_t Origin;  // position where the rule began
  uint8_t Dot;      // symbols matched already
};

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
  std::vector<ChartItem> ItemsAt(size_t position) const;

 private:
  // A set whose rules began in more places than this is worked out each time: following an edge
  // compares them all.
  static constexpr size_t kMostSlots = 32;

  ChartStepKey NextKey() const;
  void MakeNextSet();
  bool FollowGuess(const ChartStepKey& key);
  bool Follow(uint32_t edge);
  bool FindOrigins(const ChartEdge& edge);
  void WorkOut(const ChartStepKey& key);

  QueryContext& m_context;
  const size_t m_tokenCount;
  CBorrowedChartMemory m_memory;  // the sets refer to its cores
  CChartSets& m_sets;             // in the memory
  CSetClosure m_closure;
  // Of the set that an edge leads to, and how many these are.
  std::array<uint16_t, kMostSlots> m_origins;
  size_t m_originCount = 0;
  uint32_t m_lastEdge = CChartMemory::kNoEdge;  // that was taken
};

// The tree of a query's tokens; false when there is none.
bool ParseTokens(QueryContext& context, ParseTree& tree);

}  // namespace kestra
