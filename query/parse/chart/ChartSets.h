// The item sets of one text: the core of each, and the positions that its slots stand for.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "query/parse/chart/ChartCore.h"

namespace kestra {

class CChartSets {
 public:
  // Empty again, for a text of so many tokens; what was allocated stays.
  void Clear(size_t tokenCount) {
    m_sets.clear();
    m_sets.reserve(tokenCount + 1);
    m_originCount = 0;
  }
  size_t Bytes() const {
    return m_sets.capacity() * sizeof(Set) + m_origins.capacity() * sizeof(uint16_t);
  }

  void Append(const CChartCore& core, std::span<const uint16_t> origins) {
    m_sets.push_back({&core, static_cast<uint32_t>(m_originCount)});
    const size_t end = m_originCount + origins.size();
    if (end > m_origins.size()) m_origins.resize(end * 2);
    for (const uint16_t origin : origins) m_origins[m_originCount++] = origin;
  }
  size_t Count() const { return m_sets.size(); }
  const CChartCore& Core(size_t set) const { return *m_sets[set].pCore; }
  uint16_t Origin(size_t set, size_t slot) const {
    return m_origins[m_sets[set].firstOrigin + slot];
  }

 private:
  struct Set {
    const CChartCore* pCore;
    uint32_t firstOrigin;  // 65536 sets of 65535 slots at most
  };
  std::vector<Set> m_sets;
  std::vector<uint16_t> m_origins;  // of all sets, one behind the other
  size_t m_originCount = 0;         // how many of these are in use
};

}  // namespace kestra
