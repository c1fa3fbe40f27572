#include "VLib/src/threads/WorkTogether.h"

#include <algorithm>
#include <exception>
#include <vector>

#include "VLib/src/threads/Thread.h"

namespace kestra {
namespace {

// The work is the caller's, who waits for Ended.
class CHelper final : public CVThread {
 public:
  explicit CHelper(const std::function<void()>& work) : m_work(work) {}

  os::CEvent Ended;
  std::exception_ptr Thrown;  // for the caller, once Ended is signalled

 protected:
  void Run() override {
    try {
      os::WidenThreadHeap();
      m_work();
    } catch (...) {
      Thrown = std::current_exception();
    }
    Ended.Set();
  }

 private:
  const std::function<void()>& m_work;
};

}  // namespace

void WorkTogether(uint32_t helpers, const std::function<void()>& work) {
  std::vector<Ref<CHelper>> started;
  started.reserve(helpers);
  std::exception_ptr thrown;
  try {
    for (uint32_t i = 0; i < helpers; ++i) {
      auto helper = MakeRef<CHelper>(work);
      if (!helper->Ended.IsValid() || !helper->Start()) break;
      started.push_back(std::move(helper));
    }
    work();
  } catch (...) {
    thrown = std::current_exception();
  }
  for (const Ref<CHelper>& helper : started) {
    os::WaitAny({&helper->Ended}, os::kInfinite);
    helper->Stop(os::kInfinite);
    if (!thrown) thrown = helper->Thrown;
  }
  if (thrown) std::rethrow_exception(thrown);
}

uint32_t UsefulHelpers() {
  constexpr uint32_t kMost = 3;
  const uint32_t processors = os::OnlineProcessors();
  return processors > 1 ? std::min(processors - 1, kMost) : 0;
}

}  // namespace kestra
