#include "bench/pairs/Timing.h"

#include <algorithm>
#include <cmath>
#include <ctime>

namespace kestra::bench {
namespace {

constexpr double kMostRepeats = 100000;
constexpr double kLongestSeries = 30e9;  // after that fewer rounds have to do
constexpr uint32_t kFewestRounds = 3;

double Nanoseconds(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
}

Elapsed Now() {
  return {Nanoseconds(CLOCK_MONOTONIC), Nanoseconds(CLOCK_PROCESS_CPUTIME_ID)};
}

// A measured piece with how often a round does it.
class CRepeated {
 public:
  CRepeated(const Piece& piece, double atLeastMs) : m_piece(piece) {
    m_answer = m_piece();  // the first run fills what is filled once
    const CStopwatch watch;
    m_piece();
    m_once = std::max(watch.Read().processor, 1.0);
    m_repeats = std::clamp(std::ceil(atLeastMs * 1e6 / m_once), 1.0, kMostRepeats);
  }

  Elapsed Round() const {
    const CStopwatch watch;
    for (double i = 0; i < m_repeats; ++i) m_piece();
    const Elapsed all = watch.Read();
    return {all.wall / m_repeats, all.processor / m_repeats};
  }
  int64_t Answer() const { return m_answer; }
  double RoundLength() const { return m_once * m_repeats; }

 private:
  const Piece& m_piece;
  int64_t m_answer = 0;
  double m_once = 0;
  double m_repeats = 1;
};

}  // namespace

CStopwatch::CStopwatch() : m_start(Now()) {}

Elapsed CStopwatch::Read() const {
  const Elapsed now = Now();
  return {now.wall - m_start.wall, now.processor - m_start.processor};
}

Series MeasureInTurns(const Pair& pair, uint32_t rounds, double atLeastMs) {
  const CRepeated ours(pair.ours, atLeastMs);
  const CRepeated peer(pair.peer, atLeastMs);
  Series series{.ourAnswer = ours.Answer(), .peerAnswer = peer.Answer()};
  const double length = ours.RoundLength() + peer.RoundLength();
  for (uint32_t i = 0; i < rounds; ++i) {
    if (i >= kFewestRounds && i * length > kLongestSeries) break;
    if (i % 2 == 0) series.ours.push_back(ours.Round());
    series.peer.push_back(peer.Round());
    if (i % 2 != 0) series.ours.push_back(ours.Round());
  }
  return series;
}

Elapsed MeasureBest(const Piece& piece, uint32_t rounds) {
  Elapsed best{INFINITY, INFINITY};
  for (uint32_t i = 0; i < rounds; ++i) {
    const CStopwatch watch;
    piece();
    const Elapsed now = watch.Read();
    if (now.processor < best.processor) best = now;
  }
  return best;
}

}  // namespace kestra::bench
