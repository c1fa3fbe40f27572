#include "platform/os/Thread.h"

#include <pthread.h>
#include <signal.h>
#include <sys/auxv.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <limits>

#include "platform/os/Event.h"

namespace kestra::os {
namespace {

// Shared by the handle and the thread, whichever lives longer.
struct ThreadState : CCounted<ThreadState> {
  std::function<void()> body;
  CEvent ended;
  std::atomic<uint32_t> id{0};
};

void* RunThread(void* pArgument) noexcept {
  const Ref<ThreadState> state = Ref<ThreadState>::Attach(static_cast<ThreadState*>(pArgument));
  state->id.store(CurrentThreadId());
  state->id.notify_all();
  {
    // What the body holds is let go before the thread counts as ended.
    const std::function<void()> body = std::move(state->body);
    body();
  }
  state->ended.Set();
  return nullptr;
}

class CPosixThread final : public CThreadHandle {
 public:
  CPosixThread(pthread_t thread, Ref<ThreadState> state)
      : m_thread(thread), m_state(std::move(state)) {}
  ~CPosixThread() override {
    if (!m_isJoined) pthread_detach(m_thread);
  }

  NativeHandle Native() const override { return m_state->ended.Native(); }
  uint32_t Id() const override {
    m_state->id.wait(0);
    return m_state->id.load();
  }
  bool Terminate() override { return false; }
  void Join() override {
    if (m_isJoined) return;
    pthread_join(m_thread, nullptr);
    m_isJoined = true;
  }

 private:
  pthread_t m_thread;
  Ref<ThreadState> m_state;
  bool m_isJoined = false;
};

class CThreadAttributes {
 public:
  explicit CThreadAttributes(size_t stackBytes) {
    pthread_attr_init(&m_attributes);
    if (stackBytes == 0) return;
    const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    const size_t least = std::max(stackBytes, static_cast<size_t>(PTHREAD_STACK_MIN));
    pthread_attr_setstacksize(&m_attributes, (least + page - 1) / page * page);
  }
  ~CThreadAttributes() { pthread_attr_destroy(&m_attributes); }
  CThreadAttributes(const CThreadAttributes&) = delete;
  CThreadAttributes& operator=(const CThreadAttributes&) = delete;
  const pthread_attr_t* get() const { return &m_attributes; }

 private:
  pthread_attr_t m_attributes;
};

// The same for the main thread, without reading all of /proc/self/maps as pthread_getattr_np does:
// its stack grows down from the program's name, which stands at the top of it (getauxval(3),
// AT_EXECFN), as far as RLIMIT_STACK says. 0 where the stack lies elsewhere.
uintptr_t MainStackEnd() {
  // The kernel keeps more than that free below the stack, whatever the limit was at the start.
  constexpr rlim_t kMost = rlim_t{64} << 20;
  const uintptr_t top = getauxval(AT_EXECFN);
  rlimit limit{};
  if (getpid() != gettid() || getrlimit(RLIMIT_STACK, &limit) != 0) return 0;
  const uintptr_t size = std::min(limit.rlim_cur, kMost);
  const auto here = reinterpret_cast<uintptr_t>(__builtin_frame_address(0));
  return here < top && top - here < size ? top - size : 0;
}

// The lowest usable address of the calling thread's stack; 0 when the system does not tell.
uintptr_t StackEnd() {
  if (const uintptr_t end = MainStackEnd()) return end;
  pthread_attr_t attributes;
  if (pthread_getattr_np(pthread_self(), &attributes) != 0) return 0;
  void* pLowest = nullptr;
  size_t size = 0;
  const bool isKnown = pthread_attr_getstack(&attributes, &pLowest, &size) == 0;
  pthread_attr_destroy(&attributes);
  return isKnown ? reinterpret_cast<uintptr_t>(pLowest) : 0;
}

}  // namespace

std::unique_ptr<CThreadHandle> StartThread(std::function<void()> body, size_t stackBytes) {
  Ref<ThreadState> state = MakeRef<ThreadState>();
  if (!state->ended.IsValid()) return nullptr;
  state->body = std::move(body);
  const CThreadAttributes attributes(stackBytes);
  // The host's signals are for the host's threads; a new thread inherits the mask.
  sigset_t all;
  sigset_t former;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &former);
  pthread_t thread{};
  ThreadState* const pArgument = Ref<ThreadState>(state).Detach();
  const int status = pthread_create(&thread, attributes.get(), RunThread, pArgument);
  pthread_sigmask(SIG_SETMASK, &former, nullptr);
  if (status != 0) {
    pArgument->Release();
    return nullptr;
  }
  return std::make_unique<CPosixThread>(thread, std::move(state));
}

uint32_t CurrentThreadId() {
  // The one thread of a forked child has a number of its own.
  thread_local uint32_t id = 0;
  [[maybe_unused]] static const int isKept = pthread_atfork(nullptr, nullptr, [] { id = 0; });
  if (id == 0) id = static_cast<uint32_t>(gettid());
  return id;
}

uint32_t OnlineProcessors() {
  return static_cast<uint32_t>(std::max(sysconf(_SC_NPROCESSORS_ONLN), 0L));
}

// The C library gives each thread an arena. A block that is freed stays in it as free room, unless
// it was so large that it was mapped by itself; then this did nothing (M_MMAP_THRESHOLD in
// mallopt(3)).
void WidenThreadHeap() {
  constexpr size_t kBytes = size_t{24} << 20;  // of the 64 MiB that a heap of an arena has at most
  void* volatile const pRoom = std::malloc(kBytes);  // volatile: the compiler drops such pairs
  std::free(pRoom);
}

size_t RemainingStack() {
  thread_local const uintptr_t end = StackEnd();
  const auto here = reinterpret_cast<uintptr_t>(__builtin_frame_address(0));
  if (end == 0) return std::numeric_limits<size_t>::max() / 2;
  return here > end ? here - end : 0;
}

}  // namespace kestra::os
