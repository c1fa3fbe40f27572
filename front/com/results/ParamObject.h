// IDiagParam: a property of an item, with its value.
#pragma once

#include "front/com/SORRELLib.h"
#include "front/com/base/DispatchObject.h"
#include "model/items/Param.h"

namespace kestra::com {

class CParamObject final : public CDispatchObject<IDiagParam> {
 public:
  explicit CParamObject(Ref<DiagParam> param) : m_poParam(std::move(param)) {}

  STDMETHODIMP get_Name(BSTR* pVal) noexcept override;
  STDMETHODIMP get_StringValue(BSTR* pVal) noexcept override;
  STDMETHODIMP get_DWordValue(long* pVal) noexcept override;
  STDMETHODIMP get_Type(long* pVal) noexcept override;

 private:
  const Ref<DiagParam> m_poParam;
};

}  // namespace kestra::com
