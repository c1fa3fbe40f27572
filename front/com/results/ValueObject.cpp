#include "front/com/results/ValueObject.h"

#include "front/com/base/Barrier.h"
#include "front/com/base/Text.h"
#include "front/com/results/ItemObject.h"
#include "front/com/results/ValuesObject.h"

namespace kestra::com {

HRESULT CValueObject::Tell(bool (Value::*test)() const, long* pVal) noexcept {
  return ComBarrier(pVal)([&] {
    *pVal = AutomationBool((m_value.*test)());
    return S_OK;
  });
}

STDMETHODIMP CValueObject::get_IsUndefined(long* pVal) noexcept {
  return Tell(&Value::IsUndefined, pVal);
}

STDMETHODIMP CValueObject::get_IsError(long* pVal) noexcept {
  return Tell(&Value::IsError, pVal);
}

STDMETHODIMP CValueObject::get_IsBoolean(long* pVal) noexcept {
  return Tell(&Value::IsBoolean, pVal);
}

// A value and no test, so that it can be counted with: 1 and not -1.
STDMETHODIMP CValueObject::get_asBool(long* pVal) noexcept {
  return ComBarrier(pVal)([&] {
    *pVal = m_value.asBool() ? 1 : 0;
    return S_OK;
  });
}

STDMETHODIMP CValueObject::get_IsNumber(long* pVal) noexcept {
  return Tell(&Value::IsNumber, pVal);
}

STDMETHODIMP CValueObject::get_asLong(long* pVal) noexcept {
  return ComBarrier(pVal)([&] {
    *pVal = m_value.asLong();
    return S_OK;
  });
}

STDMETHODIMP CValueObject::get_IsString(long* pVal) noexcept {
  return Tell(&Value::IsString, pVal);
}

STDMETHODIMP CValueObject::get_asString(BSTR* pVal) noexcept {
  return ComBarrier(pVal)([&] {
    *pVal = nullptr;
    *pVal = ToBstr(m_value.asString());
    return S_OK;
  });
}

STDMETHODIMP CValueObject::get_IsDatime(long* pVal) noexcept {
  return Tell(&Value::IsDatime, pVal);
}

STDMETHODIMP CValueObject::get_asDatime(long* pVal) noexcept {
  return ComBarrier(pVal)([&] {
    *pVal = static_cast<long>(m_value.asDatime());
    return S_OK;
  });
}

STDMETHODIMP CValueObject::get_IsVDiagItem(long* pVal) noexcept {
  return Tell(&Value::IsVDiagItem, pVal);
}

STDMETHODIMP CValueObject::get_asVDIagItem(IDispatch** pVal) noexcept {
  return ComBarrier(pVal)([&] {
    *pVal = nullptr;
    CVDiagItem* pItem = m_value.asVDIagItem();
    return pItem ? GiveObject<CItemObject>(pVal, Ref<CVDiagItem>(pItem)) : E_POINTER;
  });
}

STDMETHODIMP CValueObject::get_IsVector(long* pVal) noexcept {
  return Tell(&Value::IsVector, pVal);
}

STDMETHODIMP CValueObject::get_asVector(IDispatch** pVal) noexcept {
  return ComBarrier(pVal)([&] {
    *pVal = nullptr;
    if (!m_value.IsVector()) return E_POINTER;
    return GiveObject<CValuesObject>(pVal, Ref<ValueVector>(&m_value.asVector()));
  });
}

}  // namespace kestra::com
