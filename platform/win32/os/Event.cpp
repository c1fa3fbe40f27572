#include "platform/os/Event.h"

#include "platform/win32/os/NativeHandle.h"

namespace kestra::os {
namespace {

NativeHandle MakeEvent(bool isManualReset) {
  return NativeOf(CreateEventW(nullptr, isManualReset, FALSE, nullptr));
}

// Makes the event say what the flag says. Whoever acts last on the event looks at the flag
// afterwards and acts again if it has changed, so the two agree once all callers are back, however
// their steps interleave.
void Synchronise(NativeHandle handle, const std::atomic<bool>& isSet) {
  if (handle == kNoHandle) return;
  for (;;) {
    const bool wanted = isSet.load();
    if (wanted) {
      SetEvent(HandleOf(handle));
    } else {
      ResetEvent(HandleOf(handle));
    }
    if (isSet.load() == wanted) return;
  }
}

// The handle is opened anew, so that it is good for as long as we keep it.
NativeHandle Duplicate(NativeHandle handle) {
  HANDLE own = nullptr;
  // Minus one would be the process itself to the system.
  if (!IsHandle(handle)) return kNoHandle;
  const HANDLE process = GetCurrentProcess();
  const BOOL isDone =
      DuplicateHandle(process, HandleOf(handle), process, &own, 0, FALSE, DUPLICATE_SAME_ACCESS);
  return isDone ? NativeOf(own) : kNoHandle;
}

}  // namespace

CEvent::CEvent() : m_handle(MakeEvent(true)) {}
CEvent::~CEvent() {
  CloseNative(m_handle);
}

void CEvent::Set() {
  m_isSet.store(true);
  Synchronise(m_handle, m_isSet);
}

void CEvent::Reset() {
  m_isSet.store(false);
  Synchronise(m_handle, m_isSet);
}

CAutoResetEvent::CAutoResetEvent() : m_handle(MakeEvent(false)) {}
CAutoResetEvent::~CAutoResetEvent() {
  CloseNative(m_handle);
}

void CAutoResetEvent::Set() {
  if (IsValid()) SetEvent(HandleOf(m_handle));
}

void CAutoResetEvent::Reset() {
  if (IsValid()) ResetEvent(HandleOf(m_handle));
}

// The wait that it ended has taken its signal already.
bool CAutoResetEvent::Consume() const {
  return IsValid();
}

CKeptEvent::CKeptEvent(const CWaitable& event) : m_handle(Duplicate(event.Native())) {}

CKeptEvent::~CKeptEvent() {
  CloseNative(m_handle);
}

}  // namespace kestra::os
