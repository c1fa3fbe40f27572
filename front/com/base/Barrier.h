// ComBarrier: what stands at every COM method.
//
//   return ComBarrier(pVal)([&] { *pVal = ...; return S_OK; });
//
// A null among the pointers is answered with E_POINTER, and whatever is thrown inside with E_FAIL:
// nothing is thrown across a COM method, and hosts are promised these codes alone.
#pragma once

#include "front/com/base/Com.h"

namespace kestra::com {

class CComBarrier {
 public:
  explicit CComBarrier(bool isAnyNull) : m_isAnyNull(isAnyNull) {}

  template <class Body>
  HRESULT operator()(Body&& body) const noexcept {
    if (m_isAnyNull) return E_POINTER;
    try {
      return body();
    } catch (...) {
      return E_FAIL;
    }
  }

 private:
  bool m_isAnyNull;
};

template <class... Pointers>
CComBarrier ComBarrier(const Pointers*... pointers) {
  return CComBarrier(((pointers == nullptr) || ...));
}

}  // namespace kestra::com
