// IDiagItems and IDiagParams: what is below an item, and its properties. A collection holds the
// item that its list belongs to; it shows the list as it is at each call, an enumerator the list as
// it was when the enumerator was made.
#pragma once

#include "front/com/SORRELLib.h"
#include "front/com/base/DispatchObject.h"
#include "model/items/Item.h"

namespace kestra::com {

template <class Interface, class Policy>
class CCollection final : public CDispatchObject<Interface> {
 public:
  explicit CCollection(Ref<CVDiagItem> owner) : m_poOwner(std::move(owner)) {}

  STDMETHODIMP get_Count(long* pVal) noexcept override;
  STDMETHODIMP get__NewEnum(IUnknown** pVal) noexcept override;
  STDMETHODIMP get_Item(long Index, VARIANT* pVal) noexcept override;

 private:
  const Ref<CVDiagItem> m_poOwner;
};

struct ItemsPolicy;
struct ParamsPolicy;
using CItemsObject = CCollection<IDiagItems, ItemsPolicy>;
using CParamsObject = CCollection<IDiagParams, ParamsPolicy>;
extern template class CCollection<IDiagItems, ItemsPolicy>;
extern template class CCollection<IDiagParams, ParamsPolicy>;

}  // namespace kestra::com
