// An object of its own for each thread that asks for it, destroyed when the thread ends.
//
//   static os::CThreadLocal<os::CEvent> events;
//   os::CEvent& event = events.Get();
//
// For types with a destructor, which must not be thread_local: MinGW gives back the memory of a
// thread's variables before it runs their destructors.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

namespace kestra::os {

// A place for one pointer per thread. destroy gets what is not null there when the thread ends.
class CThreadSlot {
 public:
  using Destroy = void (*)(void*);
  explicit CThreadSlot(Destroy destroy);
  // Static ones go with the library that they are in; what threads still have there is lost on
  // Linux, and destroyed on Windows.
  ~CThreadSlot();
  CThreadSlot(const CThreadSlot&) = delete;
  CThreadSlot& operator=(const CThreadSlot&) = delete;

  // Null before Set, and once the slot is gone.
  void* Get() const;
  // False when the system has no place left, or the slot is gone.
  bool Set(void* pObject);

 private:
  std::atomic<bool> m_isOpen{false};
  uint32_t m_key = 0;
};

template <class T>
class CThreadLocal {
 public:
  // Throws std::bad_alloc. Without a place the object is a new one each time, and never destroyed.
  T& Get() {
    if (void* const pKnown = m_slot.Get()) return *static_cast<T*>(pKnown);
    auto object = std::make_unique<T>();
    m_slot.Set(object.get());
    return *object.release();
  }

 private:
  CThreadSlot m_slot{[](void* pObject) { delete static_cast<T*>(pObject); }};
};

}  // namespace kestra::os
