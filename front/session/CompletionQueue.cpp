#include "front/session/CompletionQueue.h"

namespace kestra {

void CCompletionQueue::Post(uint32_t queryId) {
  std::lock_guard lock(m_lock);
  if (m_isClosed) return;
  m_queryIds.push_back(queryId);
  m_event.Set();
  if (m_announce) m_announce(queryId);
}

std::optional<uint32_t> CCompletionQueue::Fetch() {
  std::lock_guard lock(m_lock);
  if (m_queryIds.empty()) return std::nullopt;
  const uint32_t queryId = m_queryIds.front();
  m_queryIds.erase(m_queryIds.begin());
  if (m_queryIds.empty()) m_event.Reset();
  return queryId;
}

void CCompletionQueue::RemoveUpTo(uint32_t lastQueryId) {
  std::lock_guard lock(m_lock);
  // Numbers go round after 2^32 queries, so the distance decides.
  std::erase_if(m_queryIds, [lastQueryId](uint32_t queryId) {
    return static_cast<int32_t>(queryId - lastQueryId) <= 0;
  });
  if (m_queryIds.empty()) m_event.Reset();
}

void CCompletionQueue::Close() {
  std::lock_guard lock(m_lock);
  m_isClosed = true;
  m_queryIds.clear();
  m_event.Reset();
}

}  // namespace kestra
