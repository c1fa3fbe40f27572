// Work that is done once for all threads, and that a cancel may cut short.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

#include "platform/base/SystemError.h"
#include "platform/os/CurrentTermination.h"

namespace kestra::image {

// All methods may be called from any thread.
class CLoadOnce {
 public:
  // Does the work, a function that answers an error, unless it was done before; its answer is kept.
  // A work that answers kErrorCancelled or throws counts as not done, and the next who asks does
  // it. Who finds another thread at it waits for that one, no longer than until its own work is
  // terminated (kErrorCancelled). What the work wrote is seen by all who are given its answer.
  template <class Work>
  SystemError Run(Work work) {
    std::unique_lock lock(m_lock);
    while (m_state == State::Running) {
      if (os::IsWorkTerminated()) return kErrorCancelled;
      m_ended.wait_for(lock, std::chrono::milliseconds(20));
    }
    if (m_state == State::Done) return m_answer;
    m_state = State::Running;
    lock.unlock();
    SystemError answer = kErrorCancelled;
    try {
      answer = work();
    } catch (...) {
      End(kErrorCancelled);
      throw;
    }
    End(answer);
    return answer;
  }

 private:
  enum class State { Open, Running, Done };

  void End(SystemError answer) {
    {
      std::lock_guard guard(m_lock);
      m_state = answer == kErrorCancelled ? State::Open : State::Done;
      m_answer = answer;
    }
    m_ended.notify_all();
  }

  std::mutex m_lock;  // guards the next two
  State m_state = State::Open;
  SystemError m_answer = kErrorSuccess;
  std::condition_variable m_ended;
};

}  // namespace kestra::image
