#include "platform/os/ThreadLocal.h"

#include "platform/win32/base/Windows.h"

namespace kestra::os {

// Places of fibers rather than of threads, since only these tell when their owner ends.
CThreadSlot::CThreadSlot(Destroy destroy) : m_key(FlsAlloc(destroy)) {
  m_isOpen = m_key != FLS_OUT_OF_INDEXES;
}

CThreadSlot::~CThreadSlot() {
  if (m_isOpen.exchange(false)) FlsFree(m_key);
}

void* CThreadSlot::Get() const {
  return m_isOpen ? FlsGetValue(m_key) : nullptr;
}

bool CThreadSlot::Set(void* pObject) {
  return m_isOpen && FlsSetValue(m_key, pObject);
}

}  // namespace kestra::os
