#include "cli/Interrupt.h"

#include <windows.h>

namespace kestra::cli {
namespace {

// What the handler, which runs on a thread of the system's, may touch, under the lock.
SRWLOCK g_lock = SRWLOCK_INIT;
CCancellation* g_pCancellation = nullptr;
CInterruptScope::Second g_second = CInterruptScope::Second::EndsTheProcess;

// What is not taken goes to the next handler: the system's ends the process.
BOOL WINAPI OnControl(DWORD control) {
  if (control != CTRL_C_EVENT && control != CTRL_BREAK_EVENT) return FALSE;
  AcquireSRWLockExclusive(&g_lock);
  const bool isTaken = g_pCancellation && (!g_pCancellation->WasCancelled() ||
                                           g_second == CInterruptScope::Second::CancelsAgain);
  if (isTaken) g_pCancellation->Cancel();
  ReleaseSRWLockExclusive(&g_lock);
  return isTaken ? TRUE : FALSE;
}

void SetTarget(CCancellation* pCancellation, CInterruptScope::Second second) {
  AcquireSRWLockExclusive(&g_lock);
  g_pCancellation = pCancellation;
  g_second = second;
  ReleaseSRWLockExclusive(&g_lock);
}

}  // namespace

CCancellation::CCancellation() {
  if (const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
    m_event = reinterpret_cast<intptr_t>(event);
  }
}

CCancellation::~CCancellation() {
  if (m_event != kNone) CloseHandle(reinterpret_cast<HANDLE>(m_event));
}

void CCancellation::Cancel() {
  m_wasCancelled = true;
  if (m_event != kNone) SetEvent(reinterpret_cast<HANDLE>(m_event));
}

struct CInterruptScope::State {};

CInterruptScope::CInterruptScope(CCancellation& cancellation, Second second) : m_pState(nullptr) {
  SetTarget(&cancellation, second);
  SetConsoleCtrlHandler(OnControl, TRUE);
}

CInterruptScope::~CInterruptScope() {
  SetConsoleCtrlHandler(OnControl, FALSE);
  SetTarget(nullptr, Second::EndsTheProcess);
}

// There are no signals that a thread would have to be spared.
struct CSignalShield::State {};
CSignalShield::CSignalShield() : m_pState(nullptr) {}
CSignalShield::~CSignalShield() = default;

}  // namespace kestra::cli
