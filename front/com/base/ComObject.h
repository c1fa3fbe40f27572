// Base of every object that is handed out: counting, the answer to QueryInterface, and the lock
// that keeps the library loaded.
//
//   class CThing final : public CComObject<IThing, IOther> { ... };
//   return GiveObject<CThing>(place, arguments);
//
// An object begins with one reference, which belongs to who made it.
#pragma once

#include <atomic>

#include "front/com/base/Com.h"
#include "front/com/base/ModuleLock.h"

namespace kestra::com {

// First is the one whose IUnknown stands for the object.
template <class First, class... Others>
class CComObject : public First, public Others... {
 public:
  CComObject() = default;
  CComObject(const CComObject&) = delete;
  CComObject& operator=(const CComObject&) = delete;
  virtual ~CComObject() = default;

  STDMETHODIMP QueryInterface(REFIID iid, void** ppInterface) noexcept override {
    if (!ppInterface) return E_POINTER;
    *ppInterface = IsEqualIID(iid, __uuidof(IUnknown)) ? static_cast<First*>(this) : Find(iid);
    if (!*ppInterface) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  STDMETHODIMP_(ULONG) AddRef() noexcept override { return ++m_references; }
  STDMETHODIMP_(ULONG) Release() noexcept override {
    const ULONG left = --m_references;
    if (left == 0) delete this;
    return left;
  }

 protected:
  // A class whose interface has another one below it, such as IDispatch, answers that too.
  virtual void* Find(REFIID iid) noexcept {
    void* pFound = IsEqualIID(iid, __uuidof(First)) ? static_cast<First*>(this) : nullptr;
    ((pFound = !pFound && IsEqualIID(iid, __uuidof(Others)) ? static_cast<Others*>(this) : pFound),
     ...);
    return pFound;
  }

 private:
  CModuleLock m_lock;
  std::atomic<ULONG> m_references{1};
};

// Makes an object and hands it out by one of its interfaces.
template <class Object, class Interface, class... Args>
HRESULT GiveObject(Interface** place, Args&&... args) {
  *place = nullptr;
  *place = new Object(std::forward<Args>(args)...);
  return S_OK;
}

// The same in a VARIANT.
template <class Object, class... Args>
HRESULT GiveObject(VARIANT* place, Args&&... args) {
  VariantInit(place);
  place->pdispVal = new Object(std::forward<Args>(args)...);
  place->vt = VT_DISPATCH;
  return S_OK;
}

}  // namespace kestra::com
