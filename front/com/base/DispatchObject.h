// Base of the objects that scripts drive: IDispatch for a dual interface, carried out by the system
// over the interface's description in our type library.
#pragma once

#include "front/com/base/ComObject.h"
#include "front/com/base/TypeInfo.h"

namespace kestra::com {

template <class Interface, class... Others>
class CDispatchObject : public CComObject<Interface, Others...> {
 public:
  STDMETHODIMP GetTypeInfoCount(UINT* pCount) noexcept override {
    if (!pCount) return E_POINTER;
    *pCount = 1;
    return S_OK;
  }

  STDMETHODIMP GetTypeInfo(UINT index, LCID, ITypeInfo** ppInfo) noexcept override {
    if (!ppInfo) return E_POINTER;
    *ppInfo = nullptr;
    if (index != 0) return DISP_E_BADINDEX;
    CComPtr<ITypeInfo> info;
    const HRESULT result = TypeInfoOf(__uuidof(Interface), info);
    *ppInfo = info.Detach();
    return result;
  }

  STDMETHODIMP GetIDsOfNames(REFIID iid, LPOLESTR* pNames, UINT count, LCID,
                             DISPID* pIds) noexcept override {
    if (!IsEqualIID(iid, IID_NULL)) return DISP_E_UNKNOWNINTERFACE;
    if (!pNames || !pIds) return E_POINTER;
    CComPtr<ITypeInfo> info;
    const HRESULT result = TypeInfoOf(__uuidof(Interface), info);
    return FAILED(result) ? result : info->GetIDsOfNames(pNames, count, pIds);
  }

  STDMETHODIMP Invoke(DISPID member, REFIID iid, LCID, WORD flags, DISPPARAMS* pParams,
                      VARIANT* pResult, EXCEPINFO* pException,
                      UINT* pArgumentError) noexcept override {
    if (!IsEqualIID(iid, IID_NULL)) return DISP_E_UNKNOWNINTERFACE;
    if (!pParams) return E_POINTER;
    CComPtr<ITypeInfo> info;
    const HRESULT result = TypeInfoOf(__uuidof(Interface), info);
    if (FAILED(result)) return result;
    // Some hosts ask for the enumerator as a method, some as a property.
    if (member == DISPID_NEWENUM) flags = DISPATCH_METHOD | DISPATCH_PROPERTYGET;
    return info->Invoke(static_cast<Interface*>(this), member, flags, pParams, pResult, pException,
                        pArgumentError);
  }

 protected:
  void* Find(REFIID iid) noexcept override {
    if (IsEqualIID(iid, __uuidof(IDispatch))) return static_cast<Interface*>(this);
    return CComObject<Interface, Others...>::Find(iid);
  }
};

}  // namespace kestra::com
