#include "VLib/src/threads/LeaveBehind.h"

#include <exception>
#include <utility>

#include "VLib/src/threads/TerminationLook.h"
#include "VLib/src/threads/Thread.h"
#include "platform/os/Apartment.h"

namespace kestra {
namespace {

// Owned by the thread and by the caller, whichever lives longer.
class CCallThread final : public CVThread {
 public:
  explicit CCallThread(std::function<void()> call) : m_call(std::move(call)) {}

  os::CEvent Returned;
  std::exception_ptr Thrown;  // for the caller, once Returned is signalled

 protected:
  void Run() override {
    const os::CApartmentScope apartment;  // a plug-in may want it; one without gets along
    {
      // What the call holds is let go before it counts as returned.
      const std::function<void()> call = std::move(m_call);
      try {
        call();
      } catch (...) {
        Thrown = std::current_exception();
      }
    }
    Returned.Set();
  }

 private:
  std::function<void()> m_call;
};

}  // namespace

bool CallOrLeave(std::function<void()> call, const os::CWaitable* pTermination) {
  if (!pTermination) {
    call();
    return true;
  }
  if (CTerminationLook(pTermination).IsOverNow()) return false;
  const auto thread = MakeRef<CCallThread>(call);
  if (!thread->Returned.IsValid() || !thread->Start()) {
    call();
    return true;
  }
  // From here on the call is the thread's alone.
  call = nullptr;
  // The thread is not stopped when it is left behind: that could end it by force in the middle of
  // whatever it is calling.
  if (os::WaitAny({&thread->Returned, pTermination}, os::kInfinite) != 0) return false;
  if (thread->Thrown) std::rethrow_exception(std::exchange(thread->Thrown, nullptr));
  return true;
}

}  // namespace kestra
