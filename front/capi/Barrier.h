// Barrier: what stands at every entry of the C interface.
//
//   return Barrier(handle, place)([&] { *place = ...; return KESTRA_OK; });
//
// A null among the pointers is answered with KESTRA_E_POINTER, and whatever is thrown inside with
// KESTRA_E_OUTOFMEMORY or KESTRA_E_FAIL.
#pragma once

#include <exception>
#include <memory>
#include <new>

#include "include/kestra/kestra.h"

namespace kestra {

class CBarrier {
 public:
  explicit CBarrier(bool isAnyNull) : m_isAnyNull(isAnyNull) {}

  template <class Body>
  kestra_status operator()(Body&& body) const noexcept {
    if (m_isAnyNull) return KESTRA_E_POINTER;
    try {
      return body();
    } catch (const std::bad_alloc&) {
      return KESTRA_E_OUTOFMEMORY;
    } catch (...) {
      return KESTRA_E_FAIL;
    }
  }

 private:
  bool m_isAnyNull;
};

template <class... Pointers>
CBarrier Barrier(const Pointers*... pointers) {
  return CBarrier(((pointers == nullptr) || ...));
}

// Makes a handle out of what it holds.
template <class Handle, class... Args>
kestra_status GiveHandle(Handle** place, Args&&... args) {
  *place = new Handle{std::forward<Args>(args)...};
  return KESTRA_OK;
}

// Null is allowed, as with free().
template <class Handle>
kestra_status ReleaseHandle(Handle* handle) {
  return Barrier()([&] {
    delete handle;
    return KESTRA_OK;
  });
}

// A place for a result that the caller need not give.
template <class T>
void Tell(T* place, T what) {
  if (place) *place = what;
}

// Whether number is an index of a list of that length.
inline bool IsInside(int32_t number, size_t count) {
  return number >= 0 && static_cast<size_t>(number) < count;
}

}  // namespace kestra
