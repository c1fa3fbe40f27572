#include "platform/os/Thread.h"

#include <process.h>

#include <cstdint>

#include "platform/win32/base/Optional.h"
#include "platform/win32/os/NativeHandle.h"

namespace kestra::os {
namespace {

// A thread that was ended by force goes when the system lets it; one that is stuck in a driver may
// not go at all.
constexpr DWORD kMostJoinMs = 10'000;
constexpr DWORD kMsToComeBack = 200;
// At the stack's end: the guard page, and what the system keeps for the handling of an overflow.
constexpr size_t kStackKeptBySystem = 16 * 1024;

struct ThreadStart {
  std::function<void()> body;
  HMODULE module;  // a reference of the thread's own to the library that its code is in
};

// What the body holds is let go before the thread ends.
HMODULE RunBody(void* pArgument) {
  const std::unique_ptr<ThreadStart> start(static_cast<ThreadStart*>(pArgument));
  start->body();
  return start->module;
}

// A thread that was left behind may run when the host has let go of the library. The last reference
// is given back by a function that does not return here.
unsigned __stdcall RunThread(void* pArgument) noexcept {
  FreeLibraryAndExitThread(RunBody(pArgument), 0);
}

// Null, for which giving it back does nothing, if the system does not tell.
HMODULE OwnModule() {
  HMODULE module = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                     reinterpret_cast<const wchar_t*>(&RunThread), &module);
  return module;
}

// The thread's own handle is what is waited for, and not an event that the thread sets: when the
// process ends the system ends its threads where they are, and a wait for one must not hang then.
class CWinThread final : public CThreadHandle {
 public:
  void Started(uintptr_t thread, unsigned id) {
    m_thread = CUniqueHandle(reinterpret_cast<HANDLE>(thread));
    m_id = id;
  }

  NativeHandle Native() const override { return NativeOf(m_thread.get()); }
  uint32_t Id() const override { return m_id; }
  // The thread's reference to the library is lost with it, and so the library stays loaded:
  // whatever the thread held, locks among it, it holds for ever.
  bool Terminate() override {
    // A thread that is stuck in a call to a dead server may come back from it, and end by itself.
    CancelSynchronousIo(m_thread.get());
    if (WaitForSingleObject(m_thread.get(), kMsToComeBack) == WAIT_OBJECT_0) return true;
    return TerminateThread(m_thread.get(), 0) != FALSE;
  }
  void Join() override { WaitForSingleObject(m_thread.get(), kMostJoinMs); }

 private:
  CUniqueHandle m_thread;
  uint32_t m_id = 0;
};

// The lowest address of the calling thread's stack. It is asked each time: a host that uses fibers
// has several stacks on one thread.
uintptr_t StackEnd(const void* pHere) {
  static const auto pGetLimits =
      Optional<void WINAPI(PULONG_PTR, PULONG_PTR)>(L"kernel32.dll", "GetCurrentThreadStackLimits");
  if (pGetLimits) {
    ULONG_PTR low = 0;
    ULONG_PTR high = 0;
    pGetLimits(&low, &high);
    return low;
  }
  MEMORY_BASIC_INFORMATION region{};
  if (VirtualQuery(pHere, &region, sizeof region) == 0) return 0;
  return reinterpret_cast<uintptr_t>(region.AllocationBase);
}

}  // namespace

std::unique_ptr<CThreadHandle> StartThread(std::function<void()> body, size_t stackBytes) {
  if (stackBytes > UINT_MAX) return nullptr;
  auto handle = std::make_unique<CWinThread>();
  auto start = std::make_unique<ThreadStart>(ThreadStart{std::move(body), nullptr});
  start->module = OwnModule();
  unsigned id = 0;
  // Without the flag the size would be what is committed at once.
  const uintptr_t thread = _beginthreadex(nullptr, static_cast<unsigned>(stackBytes), RunThread,
                                          start.get(), STACK_SIZE_PARAM_IS_A_RESERVATION, &id);
  if (thread == 0) {
    if (start->module) FreeLibrary(start->module);
    return nullptr;
  }
  start.release();
  handle->Started(thread, id);
  return handle;
}

uint32_t CurrentThreadId() {
  return GetCurrentThreadId();
}

uint32_t OnlineProcessors() {
  // The older function sees at most the 64 of the process's own group.
  static const auto pCountActive =
      Optional<DWORD WINAPI(WORD)>(L"kernel32.dll", "GetActiveProcessorCount");
  constexpr WORD kAllGroups = 0xFFFF;
  const DWORD count = pCountActive ? pCountActive(kAllGroups) : 0;
  if (count != 0) return count;
  SYSTEM_INFO info{};
  GetSystemInfo(&info);
  return info.dwNumberOfProcessors;
}

void WidenThreadHeap() {}

size_t RemainingStack() {
  const void* const pHere = __builtin_frame_address(0);
  const uintptr_t end = StackEnd(pHere);
  if (end == 0) return SIZE_MAX / 2;
  const auto here = reinterpret_cast<uintptr_t>(pHere);
  return here > end + kStackKeptBySystem ? here - end - kStackKeptBySystem : 0;
}

}  // namespace kestra::os
