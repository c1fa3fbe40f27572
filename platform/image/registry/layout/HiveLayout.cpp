#include <array>
#include <mutex>

#include "platform/base/text/Characters.h"
#include "platform/image/registry/layout/HiveProfiles.h"
#include "platform/image/registry/layout/VolumeLayout.h"

namespace kestra::image {
namespace {

constexpr std::string_view kDefaultUser = ".DEFAULT";
constexpr std::string_view kClassesEnding = "_Classes";
constexpr std::string_view kCurrentControlSet = "CurrentControlSet";

// Keys of Classes that 32-bit programs have of their own. Source: the Win32 page "Registry Keys
// Affected by WOW64". What else is shared are symbolic links.
constexpr std::string_view kNarrowClasses[] = {"CLSID", "DirectShow", "Interface", "Media Type",
                                               "MediaFoundation"};

class CHiveLayout final : public CVolumeLayout {
 public:
  CHiveLayout(const OpenRegistryFile& open, const Notice& notice, std::string windowsFolder)
      : m_open(open),
        m_notice(notice),
        m_windowsFolder(std::move(windowsFolder)),
        m_sam(Config("SAM"), RegistryFileForm::Hive, open, notice),
        m_security(Config("SECURITY"), RegistryFileForm::Hive, open, notice),
        m_software(Config("SOFTWARE"), RegistryFileForm::Hive, open, notice),
        m_system(Config("SYSTEM"), RegistryFileForm::Hive, open, notice),
        m_default(Config("DEFAULT"), RegistryFileForm::Hive, open, notice) {}

  bool IsWide() override;
  SystemError Profiles(std::vector<Profile>& profiles) override;
  SystemError MachineRoot(VolumeNode& node) override {
    node = {Zone::Machine};
    return kErrorSuccess;
  }
  SystemError UsersRoot(VolumeNode& node) override {
    node = {Zone::Users};
    return kErrorSuccess;
  }
  SystemError MountNames(const VolumeNode& node, std::vector<std::string>& names) override;
  SystemError Child(const VolumeNode& node, std::string_view name, VolumeNode& child) override;
  bool IsNarrowed(const VolumeNode& node, std::string_view next) override;
  bool IsShared(const VolumeNode& node, std::string_view next, VolumeNode& shared) override;

 private:
  struct Mount {
    std::string_view name;
    CRegistryFile* pFile;
    Zone zone;
  };

  std::string Config(const char* name) const {
    return m_windowsFolder + "\\System32\\config\\" + name;
  }
  // In the order of the running system's enumeration.
  std::array<Mount, 4> MachineMounts() {
    return {{{"SAM", &m_sam, Zone::Plain},
             {"SECURITY", &m_security, Zone::Plain},
             {"SOFTWARE", &m_software, Zone::Software},
             {"SYSTEM", &m_system, Zone::System}}};
  }
  bool ReadWidth();
  SystemError LoadProfiles();
  SystemError UserNames(std::vector<std::string>& names);
  SystemError MachineChild(std::string_view name, VolumeNode& child);
  SystemError UserChild(std::string_view name, VolumeNode& child);
  SystemError UserClasses(const std::string& sid, VolumeNode& child);
  SystemError ControlSet(const VolumeNode& system, VolumeNode& child);
  HiveProfile* FindProfile(std::string_view sid);

  const OpenRegistryFile& m_open;
  const Notice& m_notice;
  const std::string m_windowsFolder;
  CRegistryFile m_sam;
  CRegistryFile m_security;
  CRegistryFile m_software;
  CRegistryFile m_system;
  CRegistryFile m_default;
  std::once_flag m_width;
  bool m_isWide = false;  // written under m_width
  std::once_flag m_profileLoad;
  SystemError m_profileError = kErrorSuccess;  // written under m_profileLoad, like the next
  std::vector<HiveProfile> m_profiles;
  std::once_flag m_controlSetTold;
};

// Links on the way are of no account for the few keys that are read here.
SystemError FindPath(VolumeNode node, std::initializer_list<std::string_view> path,
                     VolumeNode& found) {
  for (const std::string_view name : path) {
    if (const SystemError error = FindChild(node, name, node)) return error;
  }
  found = std::move(node);
  return kErrorSuccess;
}

bool CHiveLayout::IsWide() {
  std::call_once(m_width, [this] { m_isWide = ReadWidth(); });
  return m_isWide;
}

bool CHiveLayout::ReadWidth() {
  VolumeNode node;
  std::string architecture;
  if (RootNode(m_system, Zone::System, node) == kErrorSuccess &&
      ControlSet(node, node) == kErrorSuccess &&
      FindPath(node, {"Control", "Session Manager", "Environment"}, node) == kErrorSuccess &&
      FindText(node, "PROCESSOR_ARCHITECTURE", architecture) == kErrorSuccess) {
    return EqualsNoCase(architecture, "AMD64") || EqualsNoCase(architecture, "ARM64") ||
           EqualsNoCase(architecture, "IA64");
  }
  // Without that, what only a system of 64 bits has tells as well.
  return RootNode(m_software, Zone::Software, node) == kErrorSuccess &&
         FindChild(node, kNarrowKey, node) == kErrorSuccess;
}

SystemError CHiveLayout::Profiles(std::vector<Profile>& profiles) {
  if (const SystemError error = LoadProfiles()) return error;
  for (const HiveProfile& each : m_profiles) profiles.push_back(each.profile);
  return kErrorSuccess;
}

SystemError CHiveLayout::LoadProfiles() {
  std::call_once(m_profileLoad, [this] {
    VolumeNode list;
    m_profileError = RootNode(m_software, Zone::Software, list);
    if (m_profileError != kErrorSuccess) return;
    m_profileError =
        FindPath(list, {"Microsoft", "Windows NT", "CurrentVersion", "ProfileList"}, list);
    if (m_profileError != kErrorSuccess) return;
    m_profileError = ReadProfiles(list, m_windowsFolder, m_open, m_notice, m_profiles);
  });
  return m_profileError;
}

HiveProfile* CHiveLayout::FindProfile(std::string_view sid) {
  if (sid.empty() || LoadProfiles() != kErrorSuccess) return nullptr;
  for (HiveProfile& each : m_profiles) {
    if (EqualsNoCase(each.profile.user.sid, sid)) return &each;
  }
  return nullptr;
}

SystemError CHiveLayout::MountNames(const VolumeNode& node, std::vector<std::string>& names) {
  VolumeNode found;
  switch (node.zone) {
    case Zone::Machine:
      for (const Mount& mount : MachineMounts()) {
        if (mount.pFile->IsThere()) names.emplace_back(mount.name);
      }
      return kErrorSuccess;
    case Zone::Users:
      return UserNames(names);
    case Zone::System:
      if (ControlSet(node, found) == kErrorSuccess) names.emplace_back(kCurrentControlSet);
      return kErrorSuccess;
    case Zone::UserSoftware: {
      HiveProfile* pProfile = FindProfile(node.sid);
      if (pProfile && pProfile->classes->IsThere()) names.emplace_back("Classes");
      return kErrorSuccess;
    }
    default:
      return kErrorSuccess;
  }
}

SystemError CHiveLayout::UserNames(std::vector<std::string>& names) {
  if (const SystemError error = LoadProfiles()) return error;
  if (m_default.IsThere()) {
    names.emplace_back(kDefaultUser);
    names.emplace_back(kLocalSystemSid);
  }
  for (HiveProfile& each : m_profiles) {
    if (each.hive->IsThere()) names.push_back(each.profile.user.sid);
    if (each.classes->IsThere())
      names.push_back(each.profile.user.sid + std::string(kClassesEnding));
  }
  return kErrorSuccess;
}

SystemError CHiveLayout::Child(const VolumeNode& node, std::string_view name, VolumeNode& child) {
  if (node.zone == Zone::Machine) return MachineChild(name, child);
  if (node.zone == Zone::Users) return UserChild(name, child);
  if (node.zone == Zone::System && EqualsNoCase(name, kCurrentControlSet) &&
      ControlSet(node, child) == kErrorSuccess) {
    return kErrorSuccess;
  }
  const bool isClasses = EqualsNoCase(name, "Classes");
  const bool hasClasses = node.zone == Zone::Software || node.zone == Zone::UserSoftware;
  if (node.zone == Zone::UserSoftware && isClasses) {
    const SystemError error = UserClasses(node.sid, child);
    if (error != kErrorFileNotFound) return error;
  }
  const std::string sid = node.sid;
  const bool isUser = node.zone == Zone::User;
  if (const SystemError error = FindChild(node, name, child)) return error;
  if (isClasses && hasClasses) child.zone = Zone::Classes;
  if (isUser && EqualsNoCase(name, "Software")) {
    child.zone = Zone::UserSoftware;
    child.sid = sid;
  }
  return kErrorSuccess;
}

SystemError CHiveLayout::MachineChild(std::string_view name, VolumeNode& child) {
  for (const Mount& mount : MachineMounts()) {
    if (EqualsNoCase(name, mount.name)) return RootNode(*mount.pFile, mount.zone, child);
  }
  return kErrorFileNotFound;
}

SystemError CHiveLayout::UserChild(std::string_view name, VolumeNode& child) {
  if (EqualsNoCase(name, kDefaultUser) || EqualsNoCase(name, kLocalSystemSid)) {
    return RootNode(m_default, Zone::User, child);
  }
  if (const SystemError error = LoadProfiles()) return error;
  const size_t length = name.size() - std::min(name.size(), kClassesEnding.size());
  if (EqualsNoCase(name.substr(length), kClassesEnding)) {
    return UserClasses(std::string(name.substr(0, length)), child);
  }
  HiveProfile* pProfile = FindProfile(name);
  if (!pProfile || !pProfile->hive->IsThere()) return kErrorFileNotFound;
  if (const SystemError error = RootNode(*pProfile->hive, Zone::User, child)) return error;
  child.sid = pProfile->profile.user.sid;
  return kErrorSuccess;
}

SystemError CHiveLayout::UserClasses(const std::string& sid, VolumeNode& child) {
  HiveProfile* pProfile = FindProfile(sid);
  if (!pProfile || !pProfile->classes->IsThere()) return kErrorFileNotFound;
  return RootNode(*pProfile->classes, Zone::Classes, child);
}

// The set of services and drivers that the system runs with: the one that Select names.
SystemError CHiveLayout::ControlSet(const VolumeNode& system, VolumeNode& child) {
  VolumeNode select;
  uint32_t number = 0;
  SystemError error = FindChild(system, "Select", select);
  if (error == kErrorSuccess) error = FindNumber(select, "Current", number);
  if (error == kErrorSuccess && number > 999) error = kErrorInvalidData;
  if (error == kErrorSuccess) {
    const std::string digits = std::to_string(1000 + number).substr(1);
    error = FindChild(system, "ControlSet" + digits, child);
  }
  if (error != kErrorSuccess) {
    std::call_once(m_controlSetTold, [this] {
      if (m_notice) {
        m_notice(m_system.Name() +
                 " does not tell its current control set: there is no "
                 "HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet");
      }
    });
  }
  return error;
}

bool CHiveLayout::IsNarrowed(const VolumeNode& node, std::string_view next) {
  if (node.zone == Zone::Software) {
    return !EqualsNoCase(next, kNarrowKey) && !EqualsNoCase(next, "Classes") && IsWide();
  }
  if (node.zone != Zone::Classes) return false;
  for (const std::string_view name : kNarrowClasses) {
    if (EqualsNoCase(next, name)) return IsWide();
  }
  return false;
}

bool CHiveLayout::IsShared(const VolumeNode& node, std::string_view next, VolumeNode& shared) {
  const bool isBeside = EqualsNoCase(next, "Classes") || EqualsNoCase(next, kNarrowKey);
  return node.zone == Zone::SoftwareNarrow && isBeside &&
         RootNode(m_software, Zone::Software, shared) == kErrorSuccess;
}

}  // namespace

std::unique_ptr<CVolumeLayout> MakeHiveLayout(const OpenRegistryFile& open, const Notice& notice,
                                              std::string windowsFolder) {
  return std::make_unique<CHiveLayout>(open, notice, std::move(windowsFolder));
}

}  // namespace kestra::image
