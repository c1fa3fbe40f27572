#include "platform/os/ThreadLocal.h"

#include <pthread.h>

namespace kestra::os {

CThreadSlot::CThreadSlot(Destroy destroy) {
  pthread_key_t key{};
  m_isOpen = pthread_key_create(&key, destroy) == 0;
  m_key = key;
}

CThreadSlot::~CThreadSlot() {
  if (m_isOpen.exchange(false)) pthread_key_delete(m_key);
}

void* CThreadSlot::Get() const {
  return m_isOpen ? pthread_getspecific(m_key) : nullptr;
}

bool CThreadSlot::Set(void* pObject) {
  return m_isOpen && pthread_setspecific(m_key, pObject) == 0;
}

}  // namespace kestra::os
