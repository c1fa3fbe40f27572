#include "platform/os/Event.h"

#include <fcntl.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include "platform/linux/os/Descriptor.h"

namespace kestra::os {
namespace {

NativeHandle MakeEventDescriptor() {
  return eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
}

void CloseDescriptor(NativeHandle handle) {
  if (handle != kNoHandle) close(static_cast<int>(handle));
}

// A counter at its limit refuses the write, but then it is readable already.
void MakeReadable(NativeHandle handle) {
  const uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = write(static_cast<int>(handle), &one, sizeof one);
}

// True if it was readable.
bool Drain(NativeHandle handle) {
  uint64_t count = 0;
  return read(static_cast<int>(handle), &count, sizeof count) == sizeof count;
}

// Makes the descriptor say what the flag says. Whoever acts last on the descriptor looks at the
// flag afterwards and acts again if it has changed, so the two agree once all callers are back,
// however their steps interleave. There is no lock, so that a signal handler may set an event.
void Synchronise(NativeHandle handle, const std::atomic<bool>& isSet) {
  if (handle == kNoHandle) return;
  for (;;) {
    const bool wanted = isSet.load();
    if (wanted) {
      MakeReadable(handle);
    } else {
      Drain(handle);
    }
    if (isSet.load() == wanted) return;
  }
}

}  // namespace

CEvent::CEvent() : m_handle(MakeEventDescriptor()) {}
CEvent::~CEvent() {
  CloseDescriptor(m_handle);
}

void CEvent::Set() {
  m_isSet.store(true);
  Synchronise(m_handle, m_isSet);
}

void CEvent::Reset() {
  m_isSet.store(false);
  Synchronise(m_handle, m_isSet);
}

CAutoResetEvent::CAutoResetEvent() : m_handle(MakeEventDescriptor()) {}
CAutoResetEvent::~CAutoResetEvent() {
  CloseDescriptor(m_handle);
}

void CAutoResetEvent::Set() {
  if (IsValid()) MakeReadable(m_handle);
}

void CAutoResetEvent::Reset() {
  if (IsValid()) Drain(m_handle);
}

bool CAutoResetEvent::Consume() const {
  return IsValid() && Drain(m_handle);
}

CKeptEvent::CKeptEvent(const CWaitable& event)
    : m_handle(fcntl(DescriptorOf(event.Native()), F_DUPFD_CLOEXEC, 0)) {}

CKeptEvent::~CKeptEvent() {
  if (m_handle != kNoHandle) close(static_cast<int>(m_handle));
}

}  // namespace kestra::os
