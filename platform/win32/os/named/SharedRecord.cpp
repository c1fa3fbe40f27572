#include "platform/os/SharedRecord.h"

#include <algorithm>

#include "platform/win32/os/NativeHandle.h"
#include "platform/win32/os/named/MutexLock.h"
#include "platform/win32/os/named/ObjectName.h"

namespace kestra::os {
namespace {

constexpr size_t kMaximumSize = 4096;
constexpr uint32_t kTimeOutMs = 10'000;
constexpr uint32_t kTimeOutWithoutStopMs = 1000;

struct ViewTraits {
  static void* None() { return nullptr; }
  static void Close(void* pView) { UnmapViewOfFile(pView); }
};
using CUniqueView = CUniqueNative<void*, ViewTraits>;

class CMappedMemory final : public CSharedMemory {
 public:
  CMappedMemory(CUniqueHandle mapping, CUniqueView view)
      : m_mapping(std::move(mapping)), m_view(std::move(view)) {}
  void* Data() override { return m_view.get(); }

 private:
  CUniqueHandle m_mapping;
  CUniqueView m_view;
};

class CNamedEvent final : public CSharedEvent {
 public:
  explicit CNamedEvent(CUniqueHandle event) : m_event(std::move(event)) {}
  void Set() override { SetEvent(m_event.get()); }
  NativeHandle Native() const override { return NativeOf(m_event.get()); }

 private:
  CUniqueHandle m_event;
};

bool HasAny(std::span<const CWaitable* const> stops) {
  return std::any_of(stops.begin(), stops.end(), [](const CWaitable* p) { return p != nullptr; });
}

SystemError ErrorOf(NamedLockResult result) {
  switch (result) {
    case NamedLockResult::Held:
      return kErrorSuccess;
    case NamedLockResult::TimedOut:
      return kErrorTimeout;
    case NamedLockResult::Terminated:
      return kErrorCancelled;
    default:
      return kErrorAccessDenied;
  }
}

// Under the lock of the name's openings.
SystemError OpenObjects(const std::wstring& memoryName, size_t size, const std::wstring& eventName,
                        SharedRecord& record) {
  CUniqueHandle event(CreateEventW(nullptr, FALSE, FALSE, eventName.c_str()));
  if (!event) return LastError();
  CUniqueHandle mapping(CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0,
                                           static_cast<DWORD>(size), memoryName.c_str()));
  const bool isFresh = GetLastError() != ERROR_ALREADY_EXISTS;
  if (!mapping) return LastError();
  CUniqueView view(MapViewOfFile(mapping.get(), FILE_MAP_WRITE, 0, 0, size));
  if (!view) return LastError();
  // Of a process that is just dying the event may live a little longer than the memory.
  if (isFresh) ResetEvent(event.get());
  record.memory = std::make_unique<CMappedMemory>(std::move(mapping), std::move(view));
  record.event = std::make_unique<CNamedEvent>(std::move(event));
  return kErrorSuccess;
}

}  // namespace

SystemError OpenSharedRecord(const std::string& memoryName, size_t size,
                             const std::string& eventName, SharedRecord& record,
                             std::span<const CWaitable* const> stops) {
  if (size == 0 || size > kMaximumSize) return kErrorInvalidParameter;
  std::unique_ptr<CNamedLock> turn;
  const SystemError error =
      ErrorOf(AcquireMutexLock(NameSpace::Session, ObjectName(memoryName + "_Opening"), stops,
                               HasAny(stops) ? kTimeOutMs : kTimeOutWithoutStopMs, turn));
  if (error != kErrorSuccess) return error;
  return OpenObjects(ObjectName(memoryName), size, ObjectName(eventName), record);
}

}  // namespace kestra::os
