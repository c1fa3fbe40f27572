// IDiagItem: an item out of a result.
#pragma once

#include "front/com/SORRELLib.h"
#include "front/com/base/DispatchObject.h"
#include "model/items/Item.h"

namespace kestra::com {

class CItemObject final : public CDispatchObject<IDiagItem> {
 public:
  explicit CItemObject(Ref<CVDiagItem> item) : m_poItem(std::move(item)) {}

  STDMETHODIMP get_Name(BSTR* pVal) noexcept override;
  STDMETHODIMP get_DiagItems(VARIANT* pVal) noexcept override;
  STDMETHODIMP get_Params(VARIANT* pVal) noexcept override;
  STDMETHODIMP Init(long bInitChild, long* pVal) noexcept override;
  STDMETHODIMP get_XMLDump(long lFormat, BSTR* pVal) noexcept override;

 private:
  const Ref<CVDiagItem> m_poItem;
};

}  // namespace kestra::com
