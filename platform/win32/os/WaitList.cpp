#include "platform/win32/os/WaitList.h"

#include "platform/win32/os/NativeHandle.h"

namespace kestra::os {

CWaitList::CWaitList(std::span<const CWaitable* const> objects) {
  if (objects.size() <= kUsual) {
    m_handles = m_usualHandles;
    m_entries = m_usualEntries;
  } else {
    m_manyHandles.resize(objects.size());
    m_manyEntries.resize(objects.size());
    m_handles = m_manyHandles;
    m_entries = m_manyEntries;
  }
  size_t count = 0;
  for (size_t i = 0; i < objects.size(); ++i) {
    const NativeHandle handle = objects[i] ? objects[i]->Native() : kNoHandle;
    if (!IsHandle(handle)) continue;
    m_handles[count] = HandleOf(handle);
    m_entries[count++] = {static_cast<int>(i), objects[i]};
  }
  m_handles = m_handles.first(count);
  m_entries = m_entries.first(count);
}

int CWaitList::IndexFor(DWORD answer, size_t first, size_t count) const {
  if (answer == WAIT_TIMEOUT) return kWaitTimeOut;
  size_t position = answer - WAIT_OBJECT_0;
  // The mutex of an owner that has died is the waiter's now, as any other.
  if (position >= count) position = answer - WAIT_ABANDONED_0;
  if (position >= count) return kWaitFailed;
  const Entry& entry = m_entries[first + position];
  return entry.pObject->Consume() ? entry.index : kWaitTimeOut;
}

}  // namespace kestra::os
