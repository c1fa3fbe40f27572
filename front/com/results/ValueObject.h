// ValueCOM: one value of a result.
#pragma once

#include "front/com/SORRELLib.h"
#include "front/com/base/DispatchObject.h"
#include "query/Value.h"

namespace kestra::com {

class CValueObject final : public CDispatchObject<IValueCOM> {
 public:
  explicit CValueObject(Value value) : m_value(std::move(value)) {}

  STDMETHODIMP get_IsUndefined(long* pVal) noexcept override;
  STDMETHODIMP get_IsError(long* pVal) noexcept override;
  STDMETHODIMP get_IsBoolean(long* pVal) noexcept override;
  STDMETHODIMP get_asBool(long* pVal) noexcept override;
  STDMETHODIMP get_IsNumber(long* pVal) noexcept override;
  STDMETHODIMP get_asLong(long* pVal) noexcept override;
  STDMETHODIMP get_IsString(long* pVal) noexcept override;
  STDMETHODIMP get_asString(BSTR* pVal) noexcept override;
  STDMETHODIMP get_IsDatime(long* pVal) noexcept override;
  STDMETHODIMP get_asDatime(long* pVal) noexcept override;
  STDMETHODIMP get_IsVDiagItem(long* pVal) noexcept override;
  STDMETHODIMP get_asVDIagItem(IDispatch** pVal) noexcept override;
  STDMETHODIMP get_IsVector(long* pVal) noexcept override;
  STDMETHODIMP get_asVector(IDispatch** pVal) noexcept override;

 private:
  HRESULT Tell(bool (Value::*test)() const, long* pVal) noexcept;

  const Value m_value;
};

}  // namespace kestra::com
