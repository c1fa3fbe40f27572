#include "front/com/results/ValuesObject.h"

#include "front/com/base/Barrier.h"
#include "front/com/results/ValueObject.h"

namespace kestra::com {

STDMETHODIMP CValuesObject::get_ValuesCount(long* pVal) noexcept {
  return ComBarrier(pVal)([&] {
    *pVal = static_cast<long>(m_poVector->Count());
    return S_OK;
  });
}

STDMETHODIMP CValuesObject::get_Value(long lValueNumber, IDispatch** pVal) noexcept {
  return ComBarrier(pVal)([&] {
    *pVal = nullptr;
    const auto index = static_cast<size_t>(lValueNumber);
    if (lValueNumber < 0 || index >= m_poVector->Count()) return E_INVALIDARG;
    return GiveObject<CValueObject>(pVal, (*m_poVector)[index]);
  });
}

}  // namespace kestra::com
