// The first word of a registry path, and opening keys below it.
//
//   const auto hive = ReadHive("HKLM64", machine);
//   std::unique_ptr<CRegistryKey> key;
//   if (OpenRegistryKey(machine, *hive, "Software\\Acme", kKeyQueryValue, key) == kErrorSuccess)
//   ...
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/machine/Machine.h"
#include "platform/machine/Registry.h"

namespace kestra {

struct RegistryHive {
  RegistryRoot root = RegistryRoot::LocalMachine;
  // kKeyWow64Key64 for a word that ends in "64", kKeyWow64Key32 for one that does not; 0 on a
  // system of 32 bits, which has one view only.
  uint32_t view = 0;
  std::string word;  // as it was written, without the "64"
};

// Nothing for a word that names no hive. In any case, long or short: "HKLM", "hkey_users64".
std::optional<RegistryHive> ReadHive(std::string_view word, CMachine& machine);

// The word and the path behind it.
std::string HivePath(const RegistryHive& hive, const std::string& subPath);

// Opens a key in the hive's view; an empty path is the hive itself. kErrorCallNotImplemented on a
// machine without a registry.
SystemError OpenRegistryKey(CMachine& machine, const RegistryHive& hive, const std::string& subPath,
                            uint32_t access, std::unique_ptr<CRegistryKey>& key);

// The key or value is not there, or not any more.
inline bool IsGoneFromRegistry(SystemError error) {
  return error == kErrorFileNotFound || error == kErrorPathNotFound || error == kErrorKeyDeleted;
}

// Says in the log that something of a path could not be read and is passed over.
void LogUnread(const std::string& path, SystemError error);

}  // namespace kestra
