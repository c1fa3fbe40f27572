// ValuesCOM: the elements of a vector.
#pragma once

#include "front/com/SORRELLib.h"
#include "front/com/base/DispatchObject.h"
#include "query/Value.h"

namespace kestra::com {

class CValuesObject final : public CDispatchObject<IValuesCOM> {
 public:
  explicit CValuesObject(Ref<ValueVector> vector) : m_poVector(std::move(vector)) {}

  STDMETHODIMP get_ValuesCount(long* pVal) noexcept override;
  STDMETHODIMP get_Value(long lValueNumber, IDispatch** pVal) noexcept override;

 private:
  const Ref<ValueVector> m_poVector;
};

}  // namespace kestra::com
