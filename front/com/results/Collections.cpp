#include "front/com/results/Collections.h"

#include <memory>

#include "front/com/base/Barrier.h"
#include "front/com/base/Enumerator.h"
#include "front/com/results/ItemObject.h"
#include "front/com/results/ParamObject.h"

namespace kestra::com {

// What both policies, which the header names, have in common.
struct EnumVariant {
  using Interface = IEnumVARIANT;
  using Element = VARIANT;
  static void Clear(VARIANT* pElement) { VariantClear(pElement); }
};

struct ItemsPolicy : EnumVariant {
  using Source = Ref<CVDiagItem>;
  static const DiagItems& List(const CVDiagItem& owner) { return owner.Children; }
  static HRESULT Fetch(const Source& item, VARIANT* pElement) {
    return GiveObject<CItemObject>(pElement, item);
  }
};

struct ParamsPolicy : EnumVariant {
  using Source = Ref<DiagParam>;
  static const DiagParams& List(const CVDiagItem& owner) { return owner.Params; }
  static HRESULT Fetch(const Source& param, VARIANT* pElement) {
    return GiveObject<CParamObject>(pElement, param);
  }
};

template <class Interface, class Policy>
STDMETHODIMP CCollection<Interface, Policy>::get_Count(long* pVal) noexcept {
  return ComBarrier(pVal)([&] {
    *pVal = static_cast<long>(Policy::List(*m_poOwner).Count());
    return S_OK;
  });
}

template <class Interface, class Policy>
STDMETHODIMP CCollection<Interface, Policy>::get__NewEnum(IUnknown** pVal) noexcept {
  return ComBarrier(pVal)([&] {
    *pVal = nullptr;
    auto sources = std::make_shared<std::vector<typename Policy::Source>>();
    const auto& list = Policy::List(*m_poOwner);
    // The list may be filled anew meanwhile, and be shorter then.
    for (size_t i = 0; auto* pElement = list.Get(i); ++i) sources->emplace_back(pElement);
    return GiveObject<CEnumerator<Policy>>(pVal, std::move(sources));
  });
}

template <class Interface, class Policy>
STDMETHODIMP CCollection<Interface, Policy>::get_Item(long Index, VARIANT* pVal) noexcept {
  return ComBarrier(pVal)([&] {
    VariantInit(pVal);
    if (Index < 1) return E_INVALIDARG;
    auto* pElement = Policy::List(*m_poOwner).Get(static_cast<size_t>(Index) - 1);
    return pElement ? Policy::Fetch(typename Policy::Source(pElement), pVal) : E_INVALIDARG;
  });
}

template class CCollection<IDiagItems, ItemsPolicy>;
template class CCollection<IDiagParams, ParamsPolicy>;

}  // namespace kestra::com
