// While one of these lives, the calling thread gets an error number for a drive without a disk, and
// no dialog that waits for a user.
#pragma once

#include "platform/win32/base/Optional.h"

namespace kestra {

class CQuietErrors {
 public:
  CQuietErrors() {
    // The older function sets the mode of all threads.
    if (SetOfThread())
      SetOfThread()(SEM_FAILCRITICALERRORS, &m_before);
    else
      m_before = SetErrorMode(GetErrorMode() | SEM_FAILCRITICALERRORS);
  }
  ~CQuietErrors() {
    // The caller may still want to know why its call failed.
    const DWORD error = GetLastError();
    if (SetOfThread())
      SetOfThread()(m_before, nullptr);
    else
      SetErrorMode(m_before);
    SetLastError(error);
  }
  CQuietErrors(const CQuietErrors&) = delete;
  CQuietErrors& operator=(const CQuietErrors&) = delete;

 private:
  using SetMode = BOOL WINAPI(DWORD, DWORD*);
  static SetMode* SetOfThread() {
    static SetMode* const pSet = Optional<SetMode>(L"kernel32.dll", "SetThreadErrorMode");
    return pSet;
  }

  DWORD m_before = 0;
};

}  // namespace kestra
