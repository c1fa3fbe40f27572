#include "VLib/src/threads/Thread.h"

#include <exception>

#include "VLib/src/log/Log.h"

namespace kestra {
namespace {

constexpr uint32_t kDestructorTimeOutMs = 10000;

// The calling thread's own object and stop event, where it is a thread of this class.
struct RunningThread {
  const CVThread* pObject = nullptr;
  Ref<os::CEvent> stopEvent;
};
// On the stack of the thread; null on threads of others.
thread_local const RunningThread* t_pRunning = nullptr;

bool HasEnded(const os::CThreadHandle& thread, uint32_t timeOutMs) {
  return os::WaitAny({&thread}, timeOutMs) == 0;
}

}  // namespace

// The thread holds a reference to its object, so none runs here, except where this is the thread's
// own last step or where a derived class was never counted.
CVThread::~CVThread() {
  Stop(kDestructorTimeOutMs);
}

bool CVThread::Start(size_t stackBytes) {
  std::lock_guard guard(m_lock);
  if (m_pThread) return false;
  auto stopEvent = MakeRef<os::CEvent>();
  if (!stopEvent->IsValid()) return false;
  const auto body = [self = Ref<CVThread>(this), stopEvent] {
    const RunningThread running{self.get(), stopEvent};
    t_pRunning = &running;
    try {
      self->Run();
    } catch (const std::exception& error) {
      g_Log.Error("CVThread - exception in a thread: %s", error.what());
    } catch (...) {
      g_Log.Error("CVThread - unknown exception in a thread");
    }
    t_pRunning = nullptr;
  };
  m_pThread = os::StartThread(body, stackBytes);
  if (!m_pThread) return false;
  m_pStopEvent = stopEvent;
  return true;
}

bool CVThread::Stop(uint32_t timeOutMs) {
  std::shared_ptr<os::CThreadHandle> thread;
  {
    std::lock_guard guard(m_lock);
    if (!m_pThread) return true;
    thread = m_pThread;
    m_pStopEvent->Set();
  }
  if (thread->Id() == os::CurrentThreadId()) return false;
  const bool hasEnded = HasEnded(*thread, timeOutMs);
  {
    std::lock_guard guard(m_lock);
    // Another Stop may have been faster, and a new thread may have been started since.
    if (m_pThread != thread) return hasEnded;
    m_pThread.reset();
  }
  // Without the lock, since both may take their time.
  if (hasEnded || thread->Terminate()) thread->Join();
  return hasEnded;
}

bool CVThread::IsRunning() const {
  std::lock_guard guard(m_lock);
  return m_pThread && !HasEnded(*m_pThread, 0);
}

uint32_t CVThread::ThreadId() const {
  std::lock_guard guard(m_lock);
  return m_pThread ? m_pThread->Id() : 0;
}

Ref<os::CEvent> CVThread::StopEvent() const {
  if (t_pRunning && t_pRunning->pObject == this) return t_pRunning->stopEvent;
  std::lock_guard guard(m_lock);
  return m_pStopEvent;
}

}  // namespace kestra
