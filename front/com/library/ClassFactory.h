// The class objects: what a host makes sessions with.
#pragma once

#include <span>

#include "front/com/base/ComObject.h"

namespace kestra::com {

// A class that a host may create.
struct CreatableClass {
  CLSID clsid;
  const wchar_t* name;
  // Makes an object with one reference. May throw.
  IUnknown* (*create)();
};

std::span<const CreatableClass> CreatableClasses();

class CClassFactory final : public CComObject<IClassFactory> {
 public:
  explicit CClassFactory(const CreatableClass& creatable) : m_creatable(creatable) {}

  STDMETHODIMP CreateInstance(IUnknown* pOuter, REFIID iid, void** ppObject) noexcept override;
  STDMETHODIMP LockServer(BOOL lock) noexcept override;

 private:
  const CreatableClass& m_creatable;
};

}  // namespace kestra::com
