#include <array>
#include <unordered_map>

#include "platform/base/Once.h"
#include "platform/base/text/Characters.h"
#include "platform/image/registry/layout/HiveProfiles.h"
#include "platform/image/registry/layout/VolumeLayout.h"
#include "platform/image/registry/tree/FoldedName.h"
#include "platform/os/CurrentTermination.h"

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
        m_sam(Config("SAM"), RegistryFileForm::Hive, open, notice, m_budget),
        m_security(Config("SECURITY"), RegistryFileForm::Hive, open, notice, m_budget),
        m_software(Config("SOFTWARE"), RegistryFileForm::Hive, open, notice, m_budget),
        m_system(Config("SYSTEM"), RegistryFileForm::Hive, open, notice, m_budget),
        m_default(Config("DEFAULT"), RegistryFileForm::Hive, open, notice, m_budget) {}

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
  SystemError ReadProfileList();
  SystemError UserNames(std::vector<std::string>& names);
  SystemError MachineChild(std::string_view name, VolumeNode& child);
  SystemError UserChild(std::string_view name, VolumeNode& child);
  SystemError UserClasses(const std::string& sid, VolumeNode& child);
  SystemError ControlSet(const VolumeNode& system, VolumeNode& child);
  HiveProfile* FindProfile(std::string_view sid);

  const OpenRegistryFile& m_open;
  const Notice& m_notice;
  const std::string m_windowsFolder;
  CLoadBudget m_budget;
  CRegistryFile m_sam;
  CRegistryFile m_security;
  CRegistryFile m_software;
  CRegistryFile m_system;
  CRegistryFile m_default;
  CLoadOnce m_width;
  bool m_isWide = false;  // written under m_width
  CLoadOnce m_profileLoad;
  std::vector<HiveProfile> m_profiles;                      // written under m_profileLoad, like
  std::unordered_map<std::string, size_t> m_profilePlaces;  // this one: by folded SID
  COnce m_controlSetTold;
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
  const SystemError error = m_width.Run([this] {
    const bool isWide = ReadWidth();
    // What a cancel kept from being read tells nothing.
    if (os::IsWorkTerminated()) return kErrorCancelled;
    m_isWide = isWide;
    return kErrorSuccess;
  });
  return error == kErrorSuccess && m_isWide;
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
  profiles.reserve(m_profiles.size());
  for (const HiveProfile& each : m_profiles) profiles.push_back(each.profile);
  return kErrorSuccess;
}

SystemError CHiveLayout::LoadProfiles() {
  return m_profileLoad.Run([this] {
    const SystemError error = ReadProfileList();
    if (error != kErrorSuccess) return error;
    for (size_t i = 0; i < m_profiles.size(); ++i) {
      m_profilePlaces.try_emplace(FoldedName(m_profiles[i].profile.user.sid), i);
    }
    return error;
  });
}

SystemError CHiveLayout::ReadProfileList() {
  VolumeNode list;
  // A notice tells of a hive that cannot be read.
  if (const SystemError error = RootNode(m_software, Zone::Software, list)) return error;
  SystemError error =
      FindPath(list, {"Microsoft", "Windows NT", "CurrentVersion", "ProfileList"}, list);
  if (error == kErrorSuccess) {
    error = ReadProfiles(list, m_windowsFolder, m_open, m_notice, m_budget, m_profiles);
  }
  if (error != kErrorSuccess && error != kErrorCancelled && m_notice) {
    m_notice(m_software.Name() + " does not tell who has a profile (system error " +
             std::to_string(error) + "): no user's keys are shown below HKEY_USERS");
  }
  return error;
}

HiveProfile* CHiveLayout::FindProfile(std::string_view sid) {
  if (sid.empty() || LoadProfiles() != kErrorSuccess) return nullptr;
  const auto found = m_profilePlaces.find(FoldedName(sid));
  return found == m_profilePlaces.end() ? nullptr : &m_profiles[found->second];
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
      return os::IsWorkTerminated() ? kErrorCancelled : kErrorSuccess;
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
  if (m_default.IsThere()) {
    names.emplace_back(kDefaultUser);
    names.emplace_back(kLocalSystemSid);
  }
  // Without the list of profiles there is the rest; a notice tells what is lacking.
  const SystemError error = LoadProfiles();
  if (error == kErrorCancelled) return error;
  if (error != kErrorSuccess) return kErrorSuccess;
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
  if (error != kErrorSuccess && error != kErrorCancelled) {
    m_controlSetTold.Do([this] {
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
