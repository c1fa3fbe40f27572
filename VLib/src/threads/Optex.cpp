#include "VLib/src/threads/Optex.h"

#include <span>
#include <vector>

#include "platform/os/Event.h"
#include "platform/os/Thread.h"

namespace kestra {
namespace {

constexpr size_t kLongestName = 99;
// MAXIMUM_WAIT_OBJECTS of the Win32 page WaitForMultipleObjects.
constexpr uint32_t kMaximumWaitObjects = 64;

class CPrivateEvent final : public os::CSharedEvent {
 public:
  void Set() override { m_event.Set(); }
  bool IsValid() const { return m_event.IsValid(); }
  os::NativeHandle Native() const override { return m_event.Native(); }
  bool Consume() const override { return m_event.Consume(); }

 private:
  os::CAutoResetEvent m_event;
};

void LearnProcessors(std::atomic<int32_t>& uniProcessor) {
  int32_t unknown = -1;
  const bool isOne = os::OnlineProcessors() == 1;
  if (uniProcessor.load() == unknown) uniProcessor.compare_exchange_strong(unknown, isOne ? 1 : 0);
}

// Handles that no wait would take are as none.
std::span<const os::CWaitable* const> UsableHandles(uint32_t count,
                                                    const os::CWaitable* const* handles) {
  if (count >= kMaximumWaitObjects || !handles) return {};
  return {handles, count};
}

}  // namespace

std::atomic<int32_t> Optex::UniProcessor{-1};

Optex::Optex(uint32_t spinCount) : Optex(std::string(), spinCount) {}

Optex::Optex(const std::string& name, uint32_t spinCount, uint32_t extraCount,
             const os::CWaitable* const* extraHandles) {
  LearnProcessors(UniProcessor);
  if (name.empty()) {
    auto pEvent = std::make_unique<CPrivateEvent>();
    if (!pEvent->IsValid()) return;
    hEvent = std::move(pEvent);
    m_pOwnRecord = std::make_unique<OptexRecord>();
    Shared = m_pOwnRecord.get();
  } else {
    const std::string memoryName = ("Optex_MMF_" + name).substr(0, kLongestName);
    const std::string eventName = ("Optex_Event_" + name).substr(0, kLongestName);
    os::SharedRecord record;
    if (os::OpenSharedRecord(memoryName, sizeof(OptexRecord), eventName, record,
                             UsableHandles(extraCount, extraHandles)) != kErrorSuccess)
      return;
    hEvent = std::move(record.event);
    hMapping = std::move(record.memory);
    Shared = static_cast<OptexRecord*>(hMapping->Data());
  }
  SetSpinCount(spinCount);
}

void Optex::SetSpinCount(uint32_t count) {
  if (Shared && UniProcessor.load() != 1) std::atomic_ref(Shared->SpinCount).exchange(count);
}

bool Optex::TryEnter() {
  return Shared && TryEnterRecord(*Shared, os::CurrentThreadId());
}

bool Optex::Enter(uint32_t extraCount, const os::CWaitable* const* extraHandles, uint32_t timeout) {
  if (TryEnter()) return true;
  if (!Shared) return false;
  const uint32_t caller = os::CurrentThreadId();
  if (CountIntoRecord(*Shared, caller) != OptexEntry::MustWait) return false;
  if (extraCount >= kMaximumWaitObjects || (extraCount != 0 && !extraHandles)) return false;
  std::vector<const os::CWaitable*> objects{hEvent.get()};
  objects.insert(objects.end(), extraHandles, extraHandles + extraCount);
  if (os::WaitAny(objects, timeout) != 0) return false;
  OwnRecord(*Shared, caller);
  return true;
}

bool Optex::IsHeldByCaller() const {
  return Shared && std::atomic_ref(Shared->ThreadId).load() == os::CurrentThreadId();
}

void Optex::Leave() {
  if (Shared && LeaveRecord(*Shared)) hEvent->Set();
}

}  // namespace kestra
