#include "platform/linux/os/process/ChildReaper.h"

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <mutex>
#include <new>
#include <vector>

#include "platform/os/Clock.h"
#include "platform/os/Event.h"
#include "platform/os/Thread.h"

namespace kestra::os {
namespace {

// Between two tries of what the system refuses at present.
constexpr uint32_t kMomentMs = 100;

// True when the child is no more: reaped now, or by somebody else.
bool TryReap(const CUniqueFd& pidFd) {
  siginfo_t info{};
  const int result = waitid(P_PIDFD, static_cast<id_t>(pidFd.get()), &info, WEXITED | WNOHANG);
  return result == 0 ? info.si_pid != 0 : errno != EINTR;
}

// One thread for all children, there only as long as there are any.
class CReaper {
 public:
  void Add(CUniqueFd pidFd) {
    std::lock_guard guard(m_lock);
    // A forked child has neither the thread nor any right to wait for its parent's children.
    if (m_runner != getpid()) m_children.clear();
    m_children.push_back(std::move(pidFd));
    if (m_runner == getpid()) {
      m_changed.Set();
      return;
    }
    // Without a thread the children stay until the next one is added.
    if (StartThread([this] { Run(); }, 0)) m_runner = getpid();
  }

 private:
  void Run() noexcept {
    while (SweepAndWait()) {
    }
  }

  // False when no child is left.
  bool SweepAndWait() noexcept {
    try {
      std::vector<pollfd> polls = Sweep();
      if (polls.empty()) return false;
      // Fails where the host lowers its limit of descriptors below their number, for one.
      if (poll(polls.data(), polls.size(), -1) < 0 && errno != EINTR) Sleep(kMomentMs);
    } catch (const std::bad_alloc&) {
      Sleep(kMomentMs);
    }
    return true;
  }

  // Reaps whom it can. Gives what to wait for; nothing when no child is left and the thread ends.
  std::vector<pollfd> Sweep() {
    std::lock_guard guard(m_lock);
    m_changed.Reset();
    std::erase_if(m_children, TryReap);
    std::vector<pollfd> polls;
    if (m_children.empty()) {
      m_runner = -1;
      return polls;
    }
    polls.push_back({static_cast<int>(m_changed.Native()), POLLIN, 0});
    for (const CUniqueFd& child : m_children) polls.push_back({child.get(), POLLIN, 0});
    return polls;
  }

  std::mutex m_lock;  // guards the two below
  std::vector<CUniqueFd> m_children;
  pid_t m_runner = -1;  // the process that the thread runs in; -1 when there is none
  CEvent m_changed;
};

}  // namespace

void ReapWhenEnded(CUniqueFd pidFd) noexcept {
  if (TryReap(pidFd)) return;
  try {
    // Never destroyed: its thread may run to the very end of the process.
    static CReaper* const pReaper = new CReaper;
    pReaper->Add(std::move(pidFd));
  } catch (const std::exception&) {
    // Called by a destructor, which has nobody to tell.
  }
}

}  // namespace kestra::os
