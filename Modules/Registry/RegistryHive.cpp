#include "Modules/Registry/RegistryHive.h"

#include "VLib/src/log/Log.h"
#include "VLib/src/system/OsKind.h"
#include "VLib/src/text/Text.h"

namespace kestra {
namespace {

struct HiveWords {
  std::string_view shortWord;
  std::string_view longWord;
  RegistryRoot root;
};

constexpr HiveWords kHives[] = {
    {"HKLM", "HKEY_LOCAL_MACHINE", RegistryRoot::LocalMachine},
    {"HKCU", "HKEY_CURRENT_USER", RegistryRoot::CurrentUser},
    {"HKCR", "HKEY_CLASSES_ROOT", RegistryRoot::ClassesRoot},
    {"HKU", "HKEY_USERS", RegistryRoot::Users},
    {"HKCC", "HKEY_CURRENT_CONFIG", RegistryRoot::CurrentConfig},
    {"HKDD", "HKEY_DYN_DATA", RegistryRoot::DynData},
    {"HKPD", "HKEY_PERFORMANCE_DATA", RegistryRoot::PerformanceData},
};

constexpr uint32_t kWideSystem = 2;

}  // namespace

std::optional<RegistryHive> ReadHive(std::string_view word, CMachine& machine) {
  const bool wantsWide = word.ends_with("64");
  if (wantsWide) word.remove_suffix(2);
  for (const HiveWords& hive : kHives) {
    if (!EqualsNoCase(word, hive.shortWord) && !EqualsNoCase(word, hive.longWord)) continue;
    uint32_t view = 0;
    if (GetBitness(machine) == kWideSystem) view = wantsWide ? kKeyWow64Key64 : kKeyWow64Key32;
    return RegistryHive{hive.root, view, std::string(word)};
  }
  return std::nullopt;
}

std::string HivePath(const RegistryHive& hive, const std::string& subPath) {
  return subPath.empty() ? hive.word : hive.word + "\\" + subPath;
}

SystemError OpenRegistryKey(CMachine& machine, const RegistryHive& hive, const std::string& subPath,
                            uint32_t access, std::unique_ptr<CRegistryKey>& key) {
  CRegistry* pRegistry = machine.Registry();
  if (!pRegistry) return kErrorCallNotImplemented;
  std::unique_ptr<CRegistryKey> root;
  const SystemError error = pRegistry->OpenRoot(hive.root, root);
  if (error != kErrorSuccess) return error;
  if (!subPath.empty()) return root->OpenSubKey(subPath, access | hive.view, key);
  key = std::move(root);
  return kErrorSuccess;
}

void LogUnread(const std::string& path, SystemError error) {
  g_Log.Error("Registry: passed over, since it could not be read (system error %u): %s", error,
              path.c_str());
}

}  // namespace kestra
