#include "platform/win32/machine/registry/RegistryKey.h"

#include <algorithm>
#include <limits>
#include <vector>

#include "platform/base/text/Utf16.h"
#include "platform/win32/base/Optional.h"
#include "platform/win32/base/Wide.h"

namespace kestra {
namespace {

// Source: the Win32 page "Registry Element Size Limits".
constexpr DWORD kUsualName = 256;
constexpr DWORD kLongestName = 16384;
constexpr int kMostTries = 16;

constexpr DWORD kViews = KEY_WOW64_32KEY | KEY_WOW64_64KEY;

bool IsText(uint32_t type) {
  return type == kRegSz || type == kRegExpandSz || type == kRegMultiSz;
}

// Asks again with more room until a name fits. ask(buffer, size) gets the room in characters, the
// end included, and sets size to the length without it.
template <class Ask>
SystemError FetchName(std::string& name, Ask ask) {
  std::vector<wchar_t> buffer(kUsualName);
  for (;;) {
    auto size = static_cast<DWORD>(buffer.size());
    const auto error = static_cast<SystemError>(ask(buffer.data(), &size));
    if (error == kErrorSuccess) name = Narrow({buffer.data(), size});
    if (error != kErrorMoreData || buffer.size() > kLongestName) return error;
    buffer.resize(buffer.size() * 4);
  }
}

// The bytes of a value, which may grow between two calls.
SystemError FetchData(HKEY key, const wchar_t* name, uint32_t& type, std::string& bytes) {
  bytes.resize(kUsualName);
  for (int i = 0; i < kMostTries; ++i) {
    auto size = static_cast<DWORD>(bytes.size());
    DWORD found = 0;
    const auto error = static_cast<SystemError>(
        RegQueryValueExW(key, name, nullptr, &found, reinterpret_cast<BYTE*>(bytes.data()), &size));
    if (error == kErrorSuccess) {
      bytes.resize(size);
      type = found;
    }
    if (error != kErrorMoreData) return error;
    bytes.resize(std::max<size_t>(size, bytes.size() * 2));
  }
  return kErrorMoreData;
}

// Deletes what is open, where RegDeleteKeyEx might take the key that a link leads to. Source: the
// page of ZwDeleteKey; its statuses are told apart by RtlNtStatusToDosError.
SystemError DeleteOpenKey(HKEY key) {
  const auto pDeleteKey = Optional<LONG WINAPI(HANDLE)>(L"ntdll.dll", "NtDeleteKey");
  const auto pErrorOf = Optional<ULONG WINAPI(LONG)>(L"ntdll.dll", "RtlNtStatusToDosError");
  if (!pDeleteKey || !pErrorOf) return kErrorCallNotImplemented;
  const LONG status = pDeleteKey(key);
  return status == 0 ? kErrorSuccess : pErrorOf(status);
}

bool IsNoPath(const std::wstring& path) {
  return path.find_first_not_of(L'\\') == std::wstring::npos;
}

SystemError DeletePlainKey(HKEY key, const std::wstring& path, DWORD view) {
  // The older function knows one view only.
  const auto pDeleteKeyEx = Optional<LONG WINAPI(HKEY, const wchar_t*, REGSAM, DWORD)>(
      L"advapi32.dll", "RegDeleteKeyExW");
  const LONG error =
      pDeleteKeyEx ? pDeleteKeyEx(key, path.c_str(), view, 0) : RegDeleteKeyW(key, path.c_str());
  return static_cast<SystemError>(error);
}

class CWindowsKey final : public CRegistryKey {
 public:
  explicit CWindowsKey(CUniqueKey key, bool isPredefined = false)
      : m_key(std::move(key)), m_isPredefined(isPredefined) {}
  ~CWindowsKey() override {
    if (m_isPredefined) m_key.Release();
  }

  SystemError OpenSubKey(const std::string& path, uint32_t access,
                         std::unique_ptr<CRegistryKey>& key) override {
    return Open(path, 0, access, key);
  }
  SystemError OpenLinkItself(const std::string& path, uint32_t access,
                             std::unique_ptr<CRegistryKey>& key) override {
    return Open(path, REG_OPTION_OPEN_LINK, access, key);
  }
  SystemError CreateSubKey(const std::string& path, uint32_t access,
                           std::unique_ptr<CRegistryKey>& key) override {
    std::wstring name;
    if (const SystemError error = WideName(path, name)) return error;
    if (m_isPredefined && IsNoPath(name)) return kErrorInvalidParameter;
    HKEY made = nullptr;
    const LONG error = RegCreateKeyExW(m_key.get(), name.c_str(), 0, nullptr,
                                       REG_OPTION_NON_VOLATILE, access, nullptr, &made, nullptr);
    if (error == ERROR_SUCCESS) key = std::make_unique<CWindowsKey>(CUniqueKey(made));
    return static_cast<SystemError>(error);
  }
  SystemError DeleteSubKey(const std::string& path, uint32_t access) override {
    std::wstring name;
    if (const SystemError error = WideName(path, name)) return error;
    if (IsNoPath(name)) return kErrorInvalidParameter;  // would be this key itself
    const DWORD view = access & kViews;
    HKEY opened = nullptr;
    const LONG error =
        RegOpenKeyExW(m_key.get(), name.c_str(), REG_OPTION_OPEN_LINK, DELETE | view, &opened);
    if (error != ERROR_SUCCESS) return static_cast<SystemError>(error);
    const CUniqueKey itself(opened);
    const SystemError deleted = DeleteOpenKey(itself.get());
    return deleted == kErrorCallNotImplemented ? DeletePlainKey(m_key.get(), name, view) : deleted;
  }
  SystemError QueryInfo(RegistryKeyInfo& info) override {
    DWORD subKeys = 0, values = 0;
    FILETIME written{};
    const SystemError error = FetchName(info.className, [&](wchar_t* buffer, DWORD* pSize) {
      return RegQueryInfoKeyW(m_key.get(), buffer, pSize, nullptr, &subKeys, nullptr, nullptr,
                              &values, nullptr, nullptr, nullptr, &written);
    });
    if (error != kErrorSuccess) return error;
    info.subKeyCount = subKeys;
    info.valueCount = values;
    info.lastWriteTime = {uint64_t{written.dwHighDateTime} << 32 | written.dwLowDateTime};
    return kErrorSuccess;
  }
  SystemError EnumSubKey(uint32_t index, std::string& name) override {
    return FetchName(name, [&](wchar_t* buffer, DWORD* pSize) {
      return RegEnumKeyExW(m_key.get(), index, buffer, pSize, nullptr, nullptr, nullptr, nullptr);
    });
  }
  SystemError EnumValue(uint32_t index, std::string& name) override {
    return FetchName(name, [&](wchar_t* buffer, DWORD* pSize) {
      return RegEnumValueW(m_key.get(), index, buffer, pSize, nullptr, nullptr, nullptr, nullptr);
    });
  }
  SystemError QueryValue(const std::string& name, uint32_t& type, std::string& data) override {
    std::wstring wide;
    std::string bytes;
    uint32_t found = 0;
    SystemError error = WideName(name, wide);
    if (error == kErrorSuccess) error = FetchData(m_key.get(), wide.c_str(), found, bytes);
    if (error != kErrorSuccess) return error;
    type = found;
    data = IsText(found) ? Utf8FromUtf16(bytes) : std::move(bytes);
    return kErrorSuccess;
  }
  SystemError SetValue(const std::string& name, uint32_t type, const std::string& data) override {
    std::wstring wide;
    if (const SystemError error = WideName(name, wide)) return error;
    if (data.size() > std::numeric_limits<int>::max() / sizeof(wchar_t))
      return kErrorInvalidParameter;
    if (!IsText(type)) return Set(wide, type, data.data(), data.size());
    // The function takes a NUL behind the text for one that was forgotten, and stores it too.
    const std::wstring text = Wide(data) + L'#';
    return Set(wide, type, text.data(), (text.size() - 1) * sizeof(wchar_t));
  }
  SystemError DeleteValue(const std::string& name) override {
    std::wstring wide;
    if (const SystemError error = WideName(name, wide)) return error;
    return static_cast<SystemError>(RegDeleteValueW(m_key.get(), wide.c_str()));
  }

 private:
  SystemError Open(const std::string& path, DWORD options, uint32_t access,
                   std::unique_ptr<CRegistryKey>& key) {
    std::wstring name;
    if (const SystemError error = WideName(path, name)) return error;
    // The system would give the predefined key itself, and closing that closes it for everybody.
    if (m_isPredefined && IsNoPath(name)) return kErrorInvalidParameter;
    HKEY opened = nullptr;
    const LONG error = RegOpenKeyExW(m_key.get(), name.c_str(), options, access, &opened);
    if (error == ERROR_SUCCESS) key = std::make_unique<CWindowsKey>(CUniqueKey(opened));
    return static_cast<SystemError>(error);
  }
  SystemError Set(const std::wstring& name, uint32_t type, const void* pData, size_t size) {
    return static_cast<SystemError>(RegSetValueExW(m_key.get(), name.c_str(), 0, type,
                                                   static_cast<const BYTE*>(pData),
                                                   static_cast<DWORD>(size)));
  }

  CUniqueKey m_key;
  bool m_isPredefined;
};

}  // namespace

std::unique_ptr<CRegistryKey> MakePredefinedKey(HKEY key) {
  return std::make_unique<CWindowsKey>(CUniqueKey(key), true);
}

}  // namespace kestra
