// Facility "registry" of the diagnosed machine, in the terms of the Win32 registry functions.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/base/FileTime.h"
#include "platform/base/SystemError.h"

namespace kestra {

// Predefined roots. Source: winreg.h as documented on the Win32 page "Predefined Keys".
enum class RegistryRoot : uint32_t {
  ClassesRoot = 0x80000000,
  CurrentUser = 0x80000001,
  LocalMachine = 0x80000002,
  Users = 0x80000003,
  PerformanceData = 0x80000004,
  CurrentConfig = 0x80000005,
  DynData = 0x80000006,
};

// Access bits. Source: the Win32 page "Registry Key Security and Access Rights".
inline constexpr uint32_t kKeyQueryValue = 0x1;
inline constexpr uint32_t kKeySetValue = 0x2;
inline constexpr uint32_t kKeyCreateSubKey = 0x4;
inline constexpr uint32_t kKeyEnumerateSubKeys = 0x8;
inline constexpr uint32_t kKeyWow64Key64 = 0x100;
inline constexpr uint32_t kKeyWow64Key32 = 0x200;

// Value types. Source: the Win32 page "Registry Value Types".
inline constexpr uint32_t kRegNone = 0;
inline constexpr uint32_t kRegSz = 1;
inline constexpr uint32_t kRegExpandSz = 2;
inline constexpr uint32_t kRegBinary = 3;
inline constexpr uint32_t kRegDword = 4;
inline constexpr uint32_t kRegDwordBigEndian = 5;
inline constexpr uint32_t kRegLink = 6;
inline constexpr uint32_t kRegMultiSz = 7;
inline constexpr uint32_t kRegResourceList = 8;
inline constexpr uint32_t kRegFullResourceDescriptor = 9;
inline constexpr uint32_t kRegResourceRequirementsList = 10;
inline constexpr uint32_t kRegQword = 11;

struct RegistryKeyInfo {
  std::string className;
  uint32_t subKeyCount = 0;
  uint32_t valueCount = 0;
  FileTime lastWriteTime;
};

// An open key; closed by its destructor. One thread at a time. Names are UTF-8, and so are the data
// of kRegSz, kRegExpandSz and kRegMultiSz, which carry their terminators, one NUL each, as stored:
// there may be none, and an odd last byte of the stored UTF-16 is left out. A registry that is only
// read answers every change with kErrorWriteProtect. Every method answers kErrorSuccess or the
// error that the registry function of the same name would give: kErrorFileNotFound for a key or
// value that is not there, kErrorNoMoreItems behind the last one.
class CRegistryKey {
 public:
  virtual ~CRegistryKey() = default;
  virtual SystemError OpenSubKey(const std::string& path, uint32_t access,
                                 std::unique_ptr<CRegistryKey>& key) = 0;
  // The same, but a symbolic link in the path's last place is opened itself, and not the key that
  // it leads to: it has no keys below it, and its value "SymbolicLinkValue" says where it leads.
  virtual SystemError OpenLinkItself(const std::string& path, uint32_t access,
                                     std::unique_ptr<CRegistryKey>& key) = 0;
  virtual SystemError CreateSubKey(const std::string& path, uint32_t access,
                                   std::unique_ptr<CRegistryKey>& key) = 0;
  // Of a key that has none below it; kErrorAccessDenied for another one. A symbolic link goes
  // itself.
  virtual SystemError DeleteSubKey(const std::string& path, uint32_t access) = 0;
  virtual SystemError QueryInfo(RegistryKeyInfo& info) = 0;
  virtual SystemError EnumSubKey(uint32_t index, std::string& name) = 0;
  virtual SystemError EnumValue(uint32_t index, std::string& name) = 0;
  virtual SystemError QueryValue(const std::string& name, uint32_t& type, std::string& data) = 0;
  virtual SystemError SetValue(const std::string& name, uint32_t type, const std::string& data) = 0;
  virtual SystemError DeleteValue(const std::string& name) = 0;
};

// All methods may be called from any thread.
class CRegistry {
 public:
  virtual ~CRegistry() = default;
  virtual SystemError OpenRoot(RegistryRoot root, std::unique_ptr<CRegistryKey>& key) = 0;
};

}  // namespace kestra
