#include "front/session/CompletionQueue.h"

namespace kestra {

void CCompletionQueue::Post(uint32_t queryId) {
  std::lock_guard lock(m_lock);
  if (m_isClosed) return;
  m_queryIds.push_back(queryId);
  m_event.Set();
}

std::optional<uint32_t> CCompletionQueue::Fetch() {
  std::lock_guard lock(m_lock);
  if (m_queryIds.empty()) return std::nullopt;
  const uint32_t queryId = m_queryIds.front();
  m_queryIds.pop_front();
  if (m_queryIds.empty()) m_event.Reset();
  return queryId;
}

void CCompletionQueue::RemoveAll() {
  std::lock_guard lock(m_lock);
  m_queryIds.clear();
  m_event.Reset();
}

void CCompletionQueue::Close() {
  std::lock_guard lock(m_lock);
  m_isClosed = true;
  m_queryIds.clear();
  m_event.Reset();
}

}  // namespace kestra
