// Clocks, and two pieces of work measured in turns.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

namespace kestra::bench {

// What a piece of work took, in nanoseconds. Time on the processor is that of all threads of this
// program: what else the machine does adds nothing to it.
struct Elapsed {
  double wall = 0;
  double processor = 0;
};

class CStopwatch {
 public:
  CStopwatch();
  Elapsed Read() const;

 private:
  Elapsed m_start;
};

// Does a piece of work once, and gives a number that says what came out.
using Piece = std::function<int64_t()>;

struct Pair {
  Piece ours;
  Piece peer;
};

// The times of one run of each piece, round by round. The rounds are short, so that what disturbs
// one piece disturbs the other's round beside it too; which one goes first alternates.
struct Series {
  std::vector<Elapsed> ours{};
  std::vector<Elapsed> peer{};
  int64_t ourAnswer = 0;
  int64_t peerAnswer = 0;
};

// A run that takes less than atLeastMs is repeated within its round until it takes that long.
Series MeasureInTurns(const Pair& pair, uint32_t rounds, double atLeastMs);

// The best of the rounds, on the processor. For tables of growth, where all else is disturbance.
Elapsed MeasureBest(const Piece& piece, uint32_t rounds);

}  // namespace kestra::bench
