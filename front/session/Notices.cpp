#include "front/session/Notices.h"

#include "VLib/src/log/Log.h"

namespace kestra {

void CNotices::Add(const std::string& text) {
  g_Log.Error("%s", text.c_str());  // a log keeps errors alone unless it is told otherwise
  std::lock_guard lock(m_lock);
  if (m_waiting.size() < kMostWaiting) m_waiting.push_back(text);
}

bool CNotices::Take(std::string& text) {
  std::lock_guard lock(m_lock);
  if (m_waiting.empty()) return false;
  text = std::move(m_waiting.front());
  m_waiting.pop_front();
  return true;
}

}  // namespace kestra
