#include "front/com/results/ItemObject.h"

#include "front/com/base/Barrier.h"
#include "front/com/base/Text.h"
#include "front/com/results/Collections.h"
#include "front/session/FillAgain.h"
#include "model/dump/Dump.h"

namespace kestra::com {

STDMETHODIMP CItemObject::get_Name(BSTR* pVal) noexcept {
  return ComBarrier(pVal)([&] {
    *pVal = nullptr;
    *pVal = ToBstr(m_poItem->GetName());
    return S_OK;
  });
}

STDMETHODIMP CItemObject::get_DiagItems(VARIANT* pVal) noexcept {
  return ComBarrier(pVal)([&] { return GiveObject<CItemsObject>(pVal, m_poItem); });
}

STDMETHODIMP CItemObject::get_Params(VARIANT* pVal) noexcept {
  return ComBarrier(pVal)([&] { return GiveObject<CParamsObject>(pVal, m_poItem); });
}

STDMETHODIMP CItemObject::Init(long bInitChild, long* pVal) noexcept {
  return ComBarrier(pVal)([&] {
    *pVal = AutomationBool(FillAgain(*m_poItem, bInitChild != 0));
    return S_OK;
  });
}

STDMETHODIMP CItemObject::get_XMLDump(long lFormat, BSTR* pVal) noexcept {
  return ComBarrier(pVal)([&] {
    *pVal = nullptr;
    std::string text;
    const auto message = MakeRef<QueryMessage>();
    Dump(*m_poItem, text, *message, static_cast<DumpFormat>(lFormat));
    *pVal = ToBstr(text);
    return S_OK;
  });
}

}  // namespace kestra::com
