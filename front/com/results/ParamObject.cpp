#include "front/com/results/ParamObject.h"

#include "front/com/base/Barrier.h"
#include "front/com/base/Text.h"

namespace kestra::com {

STDMETHODIMP CParamObject::get_Name(BSTR* pVal) noexcept {
  return ComBarrier(pVal)([&] {
    *pVal = nullptr;
    if (!m_poParam->Def) return E_POINTER;
    *pVal = ToBstr(m_poParam->Def->Name);
    return S_OK;
  });
}

STDMETHODIMP CParamObject::get_StringValue(BSTR* pVal) noexcept {
  return ComBarrier(pVal)([&] {
    *pVal = nullptr;
    *pVal = ToBstr(m_poParam->GetText());
    return S_OK;
  });
}

STDMETHODIMP CParamObject::get_DWordValue(long* pVal) noexcept {
  return ComBarrier(pVal)([&] {
    *pVal = static_cast<long>(m_poParam->DWordValue);
    return S_OK;
  });
}

STDMETHODIMP CParamObject::get_Type(long* pVal) noexcept {
  return ComBarrier(pVal)([&] {
    if (!m_poParam->Def) return E_POINTER;
    *pVal = static_cast<long>(m_poParam->Def->Type);
    return S_OK;
  });
}

}  // namespace kestra::com
