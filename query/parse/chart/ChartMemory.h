// What the chart parser remembers from text to text: the cores that it met, and how it came from
// one to the next.
//
// A step of the parser makes the item set behind a token out of the sets before it. It depends on
// the core of the last set, on what the token is, on what the next one is (predictions that cannot
// match it are left out), and on the cores of the sets where rules began that are completed there.
// An edge is such a step written down: for which tokens, what must be true of the sets before, the
// core that comes out, and where its slots' positions are found. Taking an edge gives exactly what
// the step would give.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <span>
#include <unordered_map>
#include <vector>

#include "query/parse/chart/ChartCore.h"
#include "query/parse/chart/ChartSets.h"

namespace kestra {

// How a slot's position is found, or what must hold of one that is known.
struct ChartStep {
  enum class Kind : uint8_t {
    Previous,  // the origin of slot index in the previous set is that of slot target
    Core,      // the set where slot begins has the core target
    Through,   // the origin of slot index in the set where slot begins is that of slot target
  };
  Kind kind;
  uint16_t slot;
  uint16_t index;
  uint32_t target;  // a slot that no step before has named is new
};

// What a set is made from, as far as it can be told before looking at earlier sets, in one word: it
// is made and compared for every token.
class ChartStepKey {
 public:
  // In place of a keyword: the text ends there.
  static constexpr KeywordId kEnd = 0xFF;

  // The core of the previous set; the token, if that core waits for its keyword; those of the
  // predicates that the core waits for which the token fits; and the token behind.
  ChartStepKey(uint32_t core, KeywordId keyword, uint32_t fits, KeywordId lookahead)
      : m_word(uint64_t{core} << (kFitsShift + kPredicateCount) | uint64_t{fits} << kFitsShift |
               uint64_t{keyword} << 8 | lookahead) {}

  uint64_t Word() const { return m_word; }
  uint32_t Fits() const {
    return static_cast<uint32_t>(m_word >> kFitsShift) & ((1u << kPredicateCount) - 1);
  }
  KeywordId Token() const { return static_cast<KeywordId>(m_word >> 8); }
  KeywordId Lookahead() const { return static_cast<KeywordId>(m_word); }
  bool operator==(const ChartStepKey&) const = default;

 private:
  static constexpr unsigned kFitsShift = 16;
  // Room for more cores than a text has tokens, and than a memory is kept with.
  static_assert(kFitsShift + kPredicateCount + 24 <= 64);

  uint64_t m_word;
};

struct ChartEdge {
  ChartStepKey key;
  uint32_t asked;  // predicates that were asked about the token behind
  uint32_t fits;   // those of them that it fits
  uint32_t firstStep;
  uint32_t stepCount;
  const CChartCore* pCore;
  uint32_t next;      // another edge of the same key
  uint32_t follower;  // the edge that was taken behind this one last; a guess
};

// For one thread at a time.
class CChartMemory {
 public:
  static constexpr uint32_t kNoEdge = 0xFFFFFFFF;
  // Of the set before the first.
  static constexpr uint32_t kStartCore = 0;

  CChartMemory();

  const CChartCore& StartCore() const { return m_cores.front(); }
  // The core with these items, made now if it is not known.
  const CChartCore& Core(const std::vector<CoreItem>& items, uint16_t slotCount);
  // The first edge of a key.
  uint32_t FindEdge(const ChartStepKey& key) const;
  const ChartEdge& Edge(uint32_t edge) const { return m_edges[edge]; }
  void SetFollower(uint32_t edge, uint32_t follower) { m_edges[edge].follower = follower; }
  std::span<const ChartStep> Steps(const ChartEdge& edge) const {
    return std::span(m_steps).subspan(edge.firstStep, edge.stepCount);
  }
  // Its place in lists is filled in here.
  void AddEdge(ChartEdge edge, std::span<const ChartStep> steps);

  // The sets of the present text, whose room is kept with the rest.
  CChartSets& Sets() { return m_sets; }

  size_t Bytes() const { return m_bytes + m_sets.Bytes(); }

 private:
  size_t PlaceOf(const ChartStepKey& key) const;
  void GrowIndex();

  std::deque<CChartCore> m_cores;
  std::unordered_multimap<size_t, const CChartCore*> m_coresByHash;
  std::vector<ChartEdge> m_edges;
  std::vector<ChartStep> m_steps;
  std::vector<uint32_t> m_index;  // first edges by the hash of their key; a power of two
  CChartSets m_sets;
  size_t m_keyCount = 0;
  size_t m_bytes = 0;
};

// A memory out of a few that the process keeps, for the time of one text; any thread. Given back
// when this goes, unless it has grown too big or an exception ends that time: what
// was being written down then may be incomplete.
class CBorrowedChartMemory {
 public:
  CBorrowedChartMemory();
  ~CBorrowedChartMemory();
  CBorrowedChartMemory(const CBorrowedChartMemory&) = delete;
  CBorrowedChartMemory& operator=(const CBorrowedChartMemory&) = delete;

  CChartMemory* operator->() const { return m_pMemory.get(); }

  // Frees all that is kept, for a test that counts.
  static void ForgetAll();

 private:
  const int m_exceptions;  // in flight when this was made
  std::unique_ptr<CChartMemory> m_pMemory;
};

}  // namespace kestra
