// What all of front/com/ includes of OLE, and the owner of an interface pointer.
#pragma once

// oleauto.h tells functions apart by what the other headers have defined.
#include "platform/win32/base/Windows.h"
//
#include <ocidl.h>
#include <ole2.h>
#include <olectl.h>

#include <utility>

namespace kestra::com {

template <class Interface>
class CComPtr {
 public:
  CComPtr() = default;
  explicit CComPtr(Interface* pInterface) : m_pInterface(pInterface) {
    if (m_pInterface) m_pInterface->AddRef();
  }
  CComPtr(const CComPtr& other) : CComPtr(other.m_pInterface) {}
  CComPtr(CComPtr&& other) noexcept : m_pInterface(std::exchange(other.m_pInterface, nullptr)) {}
  CComPtr& operator=(CComPtr other) noexcept {
    std::swap(m_pInterface, other.m_pInterface);
    return *this;
  }
  ~CComPtr() {
    if (m_pInterface) m_pInterface->Release();
  }

  Interface* get() const { return m_pInterface; }
  Interface* operator->() const { return m_pInterface; }
  explicit operator bool() const { return m_pInterface != nullptr; }
  // Gives the reference away.
  Interface* Detach() { return std::exchange(m_pInterface, nullptr); }
  // A place for a function that hands out a reference. Only while it is null.
  Interface** Place() { return &m_pInterface; }

 private:
  Interface* m_pInterface = nullptr;
};

}  // namespace kestra::com
