// A query on a thread of its own, for tests that cancel it.
#pragma once

#include <memory>
#include <string>

#include "platform/os/Clock.h"
#include "platform/os/Thread.h"
#include "query/Evaluate.h"

namespace kestra::test {

// How soon a cancelled query has to end.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr uint32_t kCancelMs = 2500;
#else
inline constexpr uint32_t kCancelMs = 250;
#endif
inline constexpr uint32_t kPatienceMs = 60000;  // for what only a fault keeps from ending

class CRunningQuery {
 public:
  // Without time limit; timeOut as EvaluateQuery takes it.
  CRunningQuery(Ref<DiagRoot> root, std::string text, Ref<QueryMessage> message,
                uint32_t timeOut = kNoTimeOut)
      : m_poMessage(std::move(message)),
        m_pThread(os::StartThread(
            [this, root = std::move(root), text = std::move(text), timeOut] {
              EvaluateQuery(m_value, text, root, timeOut, m_poMessage);
              m_endedAt = os::TickCount();
            },
            0)) {}
  ~CRunningQuery() { m_pThread->Join(); }
  CRunningQuery(const CRunningQuery&) = delete;
  CRunningQuery& operator=(const CRunningQuery&) = delete;

  bool EndsWithin(uint32_t milliseconds) const {
    if (os::WaitAny({m_pThread.get()}, milliseconds) != 0) return false;
    m_pThread->Join();  // what the thread wrote is seen from here on
    return true;
  }
  // Once it has ended.
  const Value& Result() const { return m_value; }
  const QueryMessage& Message() const { return *m_poMessage; }
  uint32_t EndedAt() const { return m_endedAt; }

 private:
  const Ref<QueryMessage> m_poMessage;
  Value m_value;           // written by the thread, read once it has ended
  uint32_t m_endedAt = 0;  // likewise
  std::unique_ptr<os::CThreadHandle> m_pThread;
};

}  // namespace kestra::test
