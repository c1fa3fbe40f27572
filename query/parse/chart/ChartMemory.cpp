#include "query/parse/chart/ChartMemory.h"

#include <algorithm>
#include <exception>
#include <mutex>
#include <utility>

namespace kestra {
namespace {

constexpr size_t kFirstIndexSize = 256;
// What is kept from text to text: one memory for each of so many threads that parse at once, of so
// many bytes at most. Common queries need some hundred kilobytes.
constexpr size_t kMostKept = 8;
constexpr size_t kMostBytes = size_t{4} << 20;

size_t Mix(size_t hash, uint64_t value) {
  return static_cast<size_t>((hash ^ value) * 0x9E3779B97F4A7C15u);
}

size_t HashOf(const ChartStepKey& key) {
  const size_t hash = Mix(0, key.Word());
  return hash ^ hash >> 32;
}

size_t HashOf(const std::vector<CoreItem>& items) {
  size_t hash = items.size();
  for (const CoreItem& item : items) {
    hash = Mix(hash ^ hash >> 32, uint64_t{item.Rule} << 32 | uint64_t{item.Slot} << 8 | item.Dot);
  }
  return hash;
}

struct KeptMemories {
  std::mutex mutex;
  std::vector<std::unique_ptr<CChartMemory>> memories;  // guarded by mutex
};

// Never destroyed: a thread may parse while the process ends.
KeptMemories& Kept() {
  static auto* const pKept = new KeptMemories;
  return *pKept;
}

std::unique_ptr<CChartMemory> TakeKept() {
  KeptMemories& kept = Kept();
  const std::lock_guard lock(kept.mutex);
  if (kept.memories.empty()) return nullptr;
  auto pMemory = std::move(kept.memories.back());
  kept.memories.pop_back();
  return pMemory;
}

}  // namespace

CChartMemory::CChartMemory() : m_index(kFirstIndexSize, kNoEdge) {
  m_cores.emplace_back(std::vector<CoreItem>(), uint16_t{1}, kStartCore);
  m_coresByHash.emplace(HashOf(std::vector<CoreItem>()), &m_cores.back());
}

const CChartCore& CChartMemory::Core(const std::vector<CoreItem>& items, uint16_t slotCount) {
  const size_t hash = HashOf(items);
  const auto [begin, end] = m_coresByHash.equal_range(hash);
  for (auto it = begin; it != end; ++it) {
    const CChartCore& core = *it->second;
    if (core.SlotCount() == slotCount && core.Items() == items) return core;
  }
  const CChartCore& core =
      m_cores.emplace_back(items, slotCount, static_cast<uint32_t>(m_cores.size()));
  m_coresByHash.emplace(hash, &core);
  m_bytes += core.Bytes();
  return core;
}

// Where the first edge of a key is, or would be.
size_t CChartMemory::PlaceOf(const ChartStepKey& key) const {
  const size_t mask = m_index.size() - 1;
  size_t place = HashOf(key) & mask;
  while (m_index[place] != kNoEdge && m_edges[m_index[place]].key != key) {
    place = (place + 1) & mask;
  }
  return place;
}

uint32_t CChartMemory::FindEdge(const ChartStepKey& key) const {
  return m_index[PlaceOf(key)];
}

void CChartMemory::GrowIndex() {
  std::vector<uint32_t> old(m_index.size() * 2, kNoEdge);
  old.swap(m_index);
  for (const uint32_t edge : old) {
    if (edge != kNoEdge) m_index[PlaceOf(m_edges[edge].key)] = edge;
  }
}

void CChartMemory::AddEdge(ChartEdge edge, std::span<const ChartStep> steps) {
  edge.firstStep = static_cast<uint32_t>(m_steps.size());
  edge.stepCount = static_cast<uint32_t>(steps.size());
  m_steps.insert(m_steps.end(), steps.begin(), steps.end());
  if (m_keyCount * 2 >= m_index.size()) GrowIndex();
  uint32_t& first = m_index[PlaceOf(edge.key)];
  if (first == kNoEdge) ++m_keyCount;
  edge.next = first;
  edge.follower = kNoEdge;
  m_edges.push_back(edge);
  first = static_cast<uint32_t>(m_edges.size() - 1);
  m_bytes += sizeof(edge) + steps.size_bytes();
}

CBorrowedChartMemory::CBorrowedChartMemory()
    : m_exceptions(std::uncaught_exceptions()), m_pMemory(TakeKept()) {
  if (!m_pMemory) m_pMemory = std::make_unique<CChartMemory>();
}

CBorrowedChartMemory::~CBorrowedChartMemory() {
  if (std::uncaught_exceptions() > m_exceptions || m_pMemory->Bytes() > kMostBytes) return;
  KeptMemories& kept = Kept();
  const std::lock_guard lock(kept.mutex);
  if (kept.memories.size() >= kMostKept) return;
  try {
    kept.memories.push_back(std::move(m_pMemory));
  } catch (const std::bad_alloc&) {
    // Then it is learned again.
  }
}

void CBorrowedChartMemory::ForgetAll() {
  while (TakeKept()) {
  }
}

}  // namespace kestra
