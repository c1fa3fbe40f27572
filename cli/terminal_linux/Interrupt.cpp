#include "cli/Interrupt.h"

#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace kestra::cli {
namespace {

// What the handler may touch; lock-free, so it may (signal-safety(7)).
std::atomic<CCancellation*> g_pCancellation{nullptr};

void CancelOnInterrupt(int) {
  const int saved = errno;
  if (CCancellation* pCancellation = g_pCancellation) pCancellation->Cancel();
  errno = saved;
}

}  // namespace

CCancellation::CCancellation() : m_event(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

CCancellation::~CCancellation() {
  if (m_event != kNone) close(static_cast<int>(m_event));
}

void CCancellation::Cancel() {
  m_wasCancelled = true;
  if (m_event == kNone) return;
  const uint64_t one = 1;
  // Nothing can be done about a failure here; who waits looks at the mark as well.
  [[maybe_unused]] const ssize_t written = write(static_cast<int>(m_event), &one, sizeof(one));
}

struct CInterruptScope::State {
  struct sigaction former {};
};

CInterruptScope::CInterruptScope(CCancellation& cancellation, Second second) : m_pState(nullptr) {
  struct sigaction former {};
  if (sigaction(SIGINT, nullptr, &former) != 0 || former.sa_handler == SIG_IGN) return;
  if (!cancellation.Event() && second == Second::EndsTheProcess) return;
  g_pCancellation = &cancellation;
  struct sigaction action {};
  action.sa_handler = CancelOnInterrupt;
  action.sa_flags = SA_RESTART;
  if (second == Second::EndsTheProcess) action.sa_flags |= static_cast<int>(SA_RESETHAND);
  if (sigaction(SIGINT, &action, nullptr) == 0) m_pState = new State{former};
}

CInterruptScope::~CInterruptScope() {
  if (m_pState) sigaction(SIGINT, &m_pState->former, nullptr);
  g_pCancellation = nullptr;
  delete m_pState;
}

struct CSignalShield::State {
  sigset_t former;
};

CSignalShield::CSignalShield() : m_pState(new State{}) {
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &m_pState->former);
}

CSignalShield::~CSignalShield() {
  pthread_sigmask(SIG_SETMASK, &m_pState->former, nullptr);
  delete m_pState;
}

}  // namespace kestra::cli
