// Counted references: how every shared object of the system is held.
//
//   class CThing : public CCounted<CThing> { ... };
//   Ref<CThing> thing = MakeRef<CThing>(arguments);
//
// A reference is one pointer; the count lives in the object. The count is atomic, so references to
// one object may be copied and dropped on any thread. A reference variable itself is not: two
// threads must not assign to the same one. There are no weak references, and the trees that are
// built from these have no parent pointers, so there are no cycles.
#pragma once

#include <atomic>
#include <cstdint>
#include <type_traits>
#include <utility>

namespace kestra {

// Base of a counted class. T is the class that is deleted when the last reference goes; a class
// with derived classes gives itself a virtual destructor.
template <class T>
class CCounted {
 public:
  CCounted() = default;
  // A copy is an object of its own, with its own count.
  CCounted(const CCounted&) {}
  CCounted& operator=(const CCounted&) { return *this; }

  void AddRef() const { m_count.fetch_add(1, std::memory_order_relaxed); }
  void Release() const {
    if (m_count.fetch_sub(1, std::memory_order_acq_rel) == 1) delete static_cast<const T*>(this);
  }
  // Whether there is more than one reference. Only the holder of the one reference can rely on a
  // "no".
  bool IsShared() const { return m_count.load(std::memory_order_acquire) > 1; }

 protected:
  ~CCounted() = default;

 private:
  mutable std::atomic<uint32_t> m_count{0};
};

template <class T>
class Ref {
 public:
  constexpr Ref() = default;
  constexpr Ref(std::nullptr_t) {}
  explicit Ref(T* pObject) : m_pObject(pObject) {
    if (m_pObject) m_pObject->AddRef();
  }
  Ref(const Ref& other) : Ref(other.m_pObject) {}
  Ref(Ref&& other) noexcept : m_pObject(std::exchange(other.m_pObject, nullptr)) {}
  template <class U>
  requires std::is_convertible_v<U*, T*> Ref(const Ref<U>& other) : Ref(other.get()) {}
  template <class U>
  requires std::is_convertible_v<U*, T*> Ref(Ref<U>&& other)
  noexcept : m_pObject(other.Detach()) {}
  ~Ref() {
    if (m_pObject) m_pObject->Release();
  }
  Ref& operator=(Ref other) noexcept {
    std::swap(m_pObject, other.m_pObject);
    return *this;
  }

  T* get() const { return m_pObject; }
  T& operator*() const { return *m_pObject; }
  T* operator->() const { return m_pObject; }
  explicit operator bool() const { return m_pObject != nullptr; }
  bool operator==(const Ref& other) const { return m_pObject == other.m_pObject; }

  // Gives the object away together with its count; the caller calls Release.
  T* Detach() { return std::exchange(m_pObject, nullptr); }
  // Takes over a count that Detach gave away.
  static Ref Attach(T* pObject) {
    Ref result;
    result.m_pObject = pObject;
    return result;
  }

 private:
  T* m_pObject = nullptr;
};

template <class T, class... Args>
Ref<T> MakeRef(Args&&... args) {
  return Ref<T>(new T(std::forward<Args>(args)...));
}

}  // namespace kestra
