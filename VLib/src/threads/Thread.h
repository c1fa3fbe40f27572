// CVThread: the one thread class.
//
//   class CWorker : public CVThread { void Run() override { ... look at StopEvent() ... } };
//   auto worker = MakeRef<CWorker>();
//   worker->Start();
//   ...
//   worker->Stop(10000);
//
// The running thread holds a reference to its object, so the object outlives it. An owner calls
// Stop before it drops its reference. Run looks at StopEvent() at its own points; nothing else
// interrupts it. Where the system can end a thread by force (Windows), Stop does so after its
// time-out. Where it cannot (Linux), the thread is left behind: it keeps its references, and the
// object goes on as if it had ended.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>

#include "platform/base/Ref.h"
#include "platform/os/Event.h"
#include "platform/os/Thread.h"

namespace kestra {

class CVThread : public CCounted<CVThread> {
 public:
  CVThread() = default;
  virtual ~CVThread();
  CVThread(const CVThread&) = delete;
  CVThread& operator=(const CVThread&) = delete;

  // Starts Run on a thread of its own with a fresh stop event. False if the thread exists already
  // or could not be made.
  bool Start(size_t stackBytes = 0);
  // Sets the stop event and waits; see above for a thread that does not end in time. True if it
  // ended by itself. From any thread, also when nothing runs; called by the thread itself it only
  // sets the event and answers false. A thread that ended by itself exists until it is stopped.
  bool Stop(uint32_t timeOutMs);
  bool IsRunning() const;
  // 0 when there is no thread.
  uint32_t ThreadId() const;
  // The stop event of the present thread, null before the first Start. Run gets that of the thread
  // it is called on, also when that one was left behind and another one has been started since.
  Ref<os::CEvent> StopEvent() const;

 protected:
  // The thread's work. An exception that leaves it is logged and ends the thread.
  virtual void Run() = 0;

 private:
  mutable std::mutex m_lock;  // guards the two below
  std::shared_ptr<os::CThreadHandle> m_pThread;
  Ref<os::CEvent> m_pStopEvent;
};

}  // namespace kestra
