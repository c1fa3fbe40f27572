// The enumerators of COM are of one shape; this is it. What is enumerated is a list that was taken
// when the enumerator was made.
//
//   struct Policy {
//     using Interface = IEnumVARIANT;
//     using Element = VARIANT;
//     using Source = Ref<DiagParam>;
//     static HRESULT Fetch(const Source& source, Element* pElement);  // may throw
//     static void Clear(Element* pElement);                           // of what Fetch gave
//   };
#pragma once

#include <memory>
#include <vector>

#include "front/com/base/Barrier.h"
#include "front/com/base/ComObject.h"

namespace kestra::com {

template <class Policy>
class CEnumerator final : public CComObject<typename Policy::Interface> {
 public:
  using Element = typename Policy::Element;
  using List = std::shared_ptr<const std::vector<typename Policy::Source>>;

  explicit CEnumerator(List list, size_t position = 0)
      : m_list(std::move(list)), m_position(position) {}

  // All that were fetched are given back when one of them fails.
  STDMETHODIMP Next(ULONG count, Element* pElements, ULONG* pFetched) noexcept override {
    if (pFetched) *pFetched = 0;
    if (!pElements || (!pFetched && count > 1)) return E_POINTER;
    const size_t left = m_list->size() - m_position;
    const ULONG wanted = left < count ? static_cast<ULONG>(left) : count;
    for (ULONG i = 0; i < wanted; ++i) {
      const HRESULT result =
          ComBarrier()([&] { return Policy::Fetch((*m_list)[m_position + i], &pElements[i]); });
      if (SUCCEEDED(result)) continue;
      while (i-- > 0) Policy::Clear(&pElements[i]);
      return result;
    }
    m_position += wanted;
    if (pFetched) *pFetched = wanted;
    return wanted == count ? S_OK : S_FALSE;
  }

  STDMETHODIMP Skip(ULONG count) noexcept override {
    const size_t left = m_list->size() - m_position;
    m_position += left < count ? left : count;
    return left < count ? S_FALSE : S_OK;
  }

  STDMETHODIMP Reset() noexcept override {
    m_position = 0;
    return S_OK;
  }

  STDMETHODIMP Clone(typename Policy::Interface** ppClone) noexcept override {
    return ComBarrier(ppClone)(
        [&] { return GiveObject<CEnumerator>(ppClone, m_list, m_position); });
  }

 private:
  const List m_list;
  size_t m_position;
};

}  // namespace kestra::com
