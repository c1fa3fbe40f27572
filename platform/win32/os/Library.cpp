#include "platform/os/Library.h"

#include <ole2.h>

#include <climits>
#include <new>

#include "platform/os/HostEnvironment.h"
#include "platform/win32/base/Optional.h"
#include "platform/win32/base/UniqueHandle.h"
#include "platform/win32/base/Wide.h"

namespace kestra::os {
namespace {

// Keeps the system from asking the user about a library that is damaged or lacks another one.
class CQuietErrors {
 public:
  CQuietErrors() {
    if (Setter()) Setter()(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &m_former);
  }
  ~CQuietErrors() {
    if (Setter()) Setter()(m_former, nullptr);
  }
  CQuietErrors(const CQuietErrors&) = delete;
  CQuietErrors& operator=(const CQuietErrors&) = delete;

 private:
  using Function = BOOL WINAPI(DWORD, LPDWORD);
  // For the thread alone; older systems know one for the whole process only, which is the host's.
  static Function* Setter() {
    static Function* const pSetter = Optional<Function>(L"kernel32.dll", "SetThreadErrorMode");
    return pSetter;
  }
  DWORD m_former = 0;
};

// The code page of libraries: the system's.
std::string FromWide(std::wstring_view wide) {
  const int length = static_cast<int>(wide.size());
  const int needed =
      WideCharToMultiByte(CP_ACP, 0, wide.data(), length, nullptr, 0, nullptr, nullptr);
  std::string text(static_cast<size_t>(needed), '\0');
  WideCharToMultiByte(CP_ACP, 0, wide.data(), length, text.data(), needed, nullptr, nullptr);
  return text;
}

std::string ToUtf8(std::string_view text) {
  const int length = static_cast<int>(text.size());
  const int needed = MultiByteToWideChar(CP_ACP, 0, text.data(), length, nullptr, 0);
  std::wstring wide(static_cast<size_t>(needed), L'\0');
  MultiByteToWideChar(CP_ACP, 0, text.data(), length, wide.data(), needed);
  return Narrow(wide);
}

BSTR BstrOf(ByteString text) {
  return reinterpret_cast<BSTR>(text);
}

}  // namespace

// The libraries that one named by its path needs are looked for beside it, and not beside the host.
NativeLibrary OpenLibrary(const std::string& name, LibraryUse use) {
  std::wstring wide;
  if (name.empty() || WideName(name, wide) != kErrorSuccess) return nullptr;
  const CQuietErrors quiet;
  const DWORD flags = RootLength(name) != 0 ? LOAD_WITH_ALTERED_SEARCH_PATH : 0;
  const HMODULE module = LoadLibraryExW(wide.c_str(), nullptr, flags);
  HMODULE pinned = nullptr;
  if (module && use == LibraryUse::ForEver) {
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                       reinterpret_cast<LPCWSTR>(module), &pinned);
  }
  return module;
}

void CloseLibrary(NativeLibrary library) {
  const CUniqueModule closed(static_cast<HMODULE>(library));
}

void* FindExport(NativeLibrary library, const std::string& name) {
  if (!library) return nullptr;
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name.c_str()));
}

std::string LibraryText(std::string_view utf8) {
  if (utf8.size() > INT_MAX / 4) throw std::bad_alloc();  // the system counts in int
  return FromWide(Wide(utf8));
}

CByteString::CByteString(std::string_view utf8) {
  const std::string text = LibraryText(utf8);
  m_pText = reinterpret_cast<ByteString>(
      SysAllocStringByteLen(text.data(), static_cast<UINT>(text.size())));
  if (!m_pText) throw std::bad_alloc();
}

CByteString::~CByteString() {
  SysFreeString(BstrOf(m_pText));
}

CByteString CByteString::Take(ByteString text) {
  CByteString taken;
  taken.m_pText = text;
  return taken;
}

std::optional<std::string> CByteString::Text() const {
  if (!m_pText) return std::nullopt;
  return ToUtf8({m_pText, SysStringByteLen(BstrOf(m_pText))});
}

}  // namespace kestra::os
