// The handles of a wait: what WaitForMultipleObjects takes, and which of the caller's objects each
// is.
#pragma once

#include <array>
#include <span>
#include <vector>

#include "platform/os/Wait.h"
#include "platform/win32/base/Windows.h"

namespace kestra::os {

class CWaitList {
 public:
  explicit CWaitList(std::span<const CWaitable* const> objects);
  CWaitList(const CWaitList&) = delete;
  CWaitList& operator=(const CWaitList&) = delete;

  size_t Count() const { return m_handles.size(); }
  std::span<const HANDLE> Handles() const { return m_handles; }
  // What the wait over count handles from the one at first on has answered: the index of the
  // object, kWaitTimeOut, also when the object does not give itself, or kWaitFailed.
  int IndexFor(DWORD answer, size_t first, size_t count) const;

 private:
  struct Entry {
    int index;
    const CWaitable* pObject;
  };
  static constexpr size_t kUsual = MAXIMUM_WAIT_OBJECTS;
  std::array<HANDLE, kUsual> m_usualHandles;
  std::array<Entry, kUsual> m_usualEntries;
  std::vector<HANDLE> m_manyHandles;
  std::vector<Entry> m_manyEntries;
  std::span<HANDLE> m_handles;
  std::span<Entry> m_entries;
};

}  // namespace kestra::os
