// A thread that runs what a test gives it.
#pragma once

#include <atomic>
#include <functional>
#include <utility>

#include "VLib/src/threads/Thread.h"
#include "platform/os/Clock.h"

namespace kestra::test {

class CTestThread final : public CVThread {
 public:
  explicit CTestThread(std::function<void(CTestThread&)> body,
                       std::atomic<bool>* pDeleted = nullptr)
      : m_body(std::move(body)), m_pDeleted(pDeleted) {}
  ~CTestThread() override {
    if (m_pDeleted) *m_pDeleted = true;
  }

 protected:
  void Run() override { m_body(*this); }

 private:
  std::function<void(CTestThread&)> m_body;
  std::atomic<bool>* m_pDeleted;
};

inline bool WaitFor(const std::function<bool()>& condition) {
  for (int i = 0; i < 5000; ++i) {
    if (condition()) return true;
    os::Sleep(1);
  }
  return false;
}

}  // namespace kestra::test
