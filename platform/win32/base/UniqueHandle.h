// The owners of the system's handles: each closing function is named here, once.
#pragma once

#include <utility>

#include "platform/base/SystemError.h"
#include "platform/win32/base/Windows.h"

namespace kestra {

// Owns a handle of type Native; one equal to Traits::None() is none. Traits::Close gives it back.
template <class Native, class Traits>
class CUniqueNative {
 public:
  CUniqueNative() = default;
  explicit CUniqueNative(Native handle) : m_handle(handle) {}
  CUniqueNative(CUniqueNative&& other) noexcept : m_handle(other.Release()) {}
  CUniqueNative& operator=(CUniqueNative&& other) noexcept {
    std::swap(m_handle, other.m_handle);
    return *this;
  }
  ~CUniqueNative() {
    if (m_handle != Traits::None()) Traits::Close(m_handle);
  }

  Native get() const { return m_handle; }
  explicit operator bool() const { return m_handle != Traits::None(); }
  Native Release() { return std::exchange(m_handle, Traits::None()); }

 private:
  Native m_handle = Traits::None();
};

// What CloseHandle closes. A function that tells failure by INVALID_HANDLE_VALUE and one that tells
// it by null are both understood.
class CUniqueHandle {
 public:
  CUniqueHandle() = default;
  explicit CUniqueHandle(HANDLE handle)
      : m_handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
  CUniqueHandle(CUniqueHandle&& other) noexcept : m_handle(other.Release()) {}
  CUniqueHandle& operator=(CUniqueHandle&& other) noexcept {
    std::swap(m_handle, other.m_handle);
    return *this;
  }
  ~CUniqueHandle() {
    if (m_handle) CloseHandle(m_handle);
  }

  HANDLE get() const { return m_handle; }
  explicit operator bool() const { return m_handle != nullptr; }
  HANDLE Release() { return std::exchange(m_handle, nullptr); }

 private:
  HANDLE m_handle = nullptr;
};

struct FindTraits {
  static HANDLE None() { return INVALID_HANDLE_VALUE; }
  static void Close(HANDLE handle) { FindClose(handle); }
};
using CUniqueFind = CUniqueNative<HANDLE, FindTraits>;

struct KeyTraits {
  static HKEY None() { return nullptr; }
  static void Close(HKEY key) { RegCloseKey(key); }
};
using CUniqueKey = CUniqueNative<HKEY, KeyTraits>;

struct ModuleTraits {
  static HMODULE None() { return nullptr; }
  static void Close(HMODULE module) { FreeLibrary(module); }
};
using CUniqueModule = CUniqueNative<HMODULE, ModuleTraits>;

// What LocalFree gives back: buffers that the system allocated for us.
struct LocalTraits {
  static HLOCAL None() { return nullptr; }
  static void Close(HLOCAL memory) { LocalFree(memory); }
};
using CUniqueLocal = CUniqueNative<HLOCAL, LocalTraits>;

// The calling thread's last error; never success, for calls that fail without setting one.
inline SystemError LastError() {
  const DWORD error = GetLastError();
  return error == ERROR_SUCCESS ? kErrorGenFailure : error;
}

}  // namespace kestra
