#include "platform/machine/Registry.h"

#include "platform/win32/machine/Facilities.h"
#include "platform/win32/machine/registry/RegistryKey.h"

namespace kestra {
namespace {

class CWindowsRegistry final : public CRegistry {
 public:
  SystemError OpenRoot(RegistryRoot root, std::unique_ptr<CRegistryKey>& key) override {
    const HKEY predefined = KeyOf(root);
    if (!predefined) return kErrorFileNotFound;
    key = MakePredefinedKey(predefined);
    return kErrorSuccess;
  }

 private:
  // The performance data are no keys: a look at them has every library of counters loaded and run.
  // The dynamic data went with the systems on top of DOS.
  static HKEY KeyOf(RegistryRoot root) {
    switch (root) {
      case RegistryRoot::ClassesRoot:
        return HKEY_CLASSES_ROOT;
      case RegistryRoot::CurrentUser:
        return HKEY_CURRENT_USER;
      case RegistryRoot::LocalMachine:
        return HKEY_LOCAL_MACHINE;
      case RegistryRoot::Users:
        return HKEY_USERS;
      case RegistryRoot::CurrentConfig:
        return HKEY_CURRENT_CONFIG;
      case RegistryRoot::PerformanceData:
      case RegistryRoot::DynData:
        break;
    }
    return nullptr;
  }
};

}  // namespace

std::unique_ptr<CRegistry> MakeWindowsRegistry() {
  return std::make_unique<CWindowsRegistry>();
}

}  // namespace kestra
