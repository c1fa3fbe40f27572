#include "front/com/library/ClassFactory.h"

#include "front/com/base/Barrier.h"
#include "front/com/session/SorrelObject.h"

namespace kestra::com {
namespace {

// LanternCOM joins when there are reports to post.
const CreatableClass kClasses[] = {
    {__uuidof(SorrelCOM), L"SorrelCOM Class",
     []() -> IUnknown* { return static_cast<ISorrelCOM*>(new CSorrelObject); }},
};

}  // namespace

std::span<const CreatableClass> CreatableClasses() {
  return kClasses;
}

STDMETHODIMP CClassFactory::CreateInstance(IUnknown* pOuter, REFIID iid, void** ppObject) noexcept {
  return ComBarrier(ppObject)([&]() -> HRESULT {
    *ppObject = nullptr;
    if (pOuter) return CLASS_E_NOAGGREGATION;
    IUnknown* const pObject = m_creatable.create();
    const HRESULT result = pObject->QueryInterface(iid, ppObject);
    pObject->Release();
    return result;
  });
}

STDMETHODIMP CClassFactory::LockServer(BOOL lock) noexcept {
  if (lock) {
    CModuleLock::Lock();
  } else {
    CModuleLock::Unlock();
  }
  return S_OK;
}

}  // namespace kestra::com
