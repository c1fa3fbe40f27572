#include "platform/image/registry/VolumeRegistry.h"

#include "platform/base/Once.h"
#include "platform/image/registry/KeyResolver.h"
#include "platform/image/registry/VolumeKey.h"
#include "platform/image/registry/layout/UserChoice.h"
#include "platform/image/registry/tree/LoadOnce.h"
#include "platform/os/CurrentTermination.h"

namespace kestra::image {
namespace {

// What the layout's files refer to, and keys share.
struct Source {
  OpenRegistryFile open;
  VolumeRegistryOptions options;
  std::unique_ptr<CVolumeLayout> layout;
};

class CLayoutRegistry final : public CVolumeRegistry {
 public:
  explicit CLayoutRegistry(std::shared_ptr<Source> source)
      : m_source(source), m_layout(source, source->layout.get()) {}

  bool IsWide() override { return m_layout->IsWide(); }
  SystemError Users(std::vector<VolumeUser>& users) override;
  SystemError CurrentUser(VolumeUser& user) override;
  SystemError OpenRoot(RegistryRoot root, std::unique_ptr<CRegistryKey>& key) override;

 private:
  SystemError RootOf(RegistryRoot root, VolumeNode& node);
  SystemError UserNode(VolumeNode& node);
  SystemError ClassesNode(VolumeNode& node);
  SystemError ConfigNode(VolumeNode& node);
  SystemError Choose();
  void Tell(COnce& once, const std::string& sentence) const;

  const std::shared_ptr<Source> m_source;
  const std::shared_ptr<CVolumeLayout> m_layout;  // lives as long as m_source
  CLoadOnce m_choice;
  VolumeUser m_user;  // written under m_choice, like the next
  std::string m_choiceReason;
  COnce m_choiceTold;
  COnce m_classesTold;
};

SystemError CLayoutRegistry::Users(std::vector<VolumeUser>& users) {
  std::vector<Profile> profiles;
  if (const SystemError error = m_layout->Profiles(profiles)) return error;
  users.clear();
  for (Profile& each : profiles) {
    if (each.isPerson) users.push_back(std::move(each.user));
  }
  return kErrorSuccess;
}

SystemError CLayoutRegistry::Choose() {
  return m_choice.Run([this] {
    std::vector<Profile> profiles;
    if (const SystemError error = m_layout->Profiles(profiles)) {
      m_choiceReason =
          "The volume's list of profiles cannot be read: system error " + std::to_string(error);
      return error;
    }
    if (os::IsWorkTerminated()) return kErrorCancelled;
    return ChooseUser(profiles, m_source->options.userName, m_user, m_choiceReason);
  });
}

SystemError CLayoutRegistry::CurrentUser(VolumeUser& user) {
  const SystemError error = Choose();
  if (error == kErrorCancelled) return error;
  if (error != kErrorSuccess) {
    Tell(m_choiceTold, m_choiceReason);
    return error;
  }
  user = m_user;
  return kErrorSuccess;
}

SystemError CLayoutRegistry::OpenRoot(RegistryRoot root, std::unique_ptr<CRegistryKey>& key) {
  VolumeNode node;
  if (const SystemError error = RootOf(root, node)) return error;
  key = MakeVolumeKey(m_layout, std::move(node));
  return kErrorSuccess;
}

SystemError CLayoutRegistry::RootOf(RegistryRoot root, VolumeNode& node) {
  switch (root) {
    case RegistryRoot::LocalMachine:
      return m_layout->MachineRoot(node);
    case RegistryRoot::Users:
      return m_layout->UsersRoot(node);
    case RegistryRoot::CurrentUser:
      return UserNode(node);
    case RegistryRoot::ClassesRoot:
      return ClassesNode(node);
    case RegistryRoot::CurrentConfig:
      return ConfigNode(node);
    case RegistryRoot::PerformanceData:
    case RegistryRoot::DynData:
      break;  // only a running system has them
  }
  return kErrorFileNotFound;
}

SystemError CLayoutRegistry::UserNode(VolumeNode& node) {
  VolumeUser user;
  if (const SystemError error = CurrentUser(user)) return error;
  VolumeNode users;
  if (const SystemError error = m_layout->UsersRoot(users)) return error;
  const SystemError error = m_layout->Child(users, user.sid, node);
  if (error == kErrorFileNotFound) {
    Tell(m_choiceTold, "There is no registry hive in the profile " + user.profilePath);
  }
  return error;
}

// The user's classes over the machine's. Either may be missing.
SystemError CLayoutRegistry::ClassesNode(VolumeNode& node) {
  VolumeNode machine;
  SystemError error = m_layout->MachineRoot(machine);
  if (error == kErrorSuccess) {
    error = ResolveKey(*m_layout, machine, "Software\\Classes", false, machine);
  }
  const SystemError choiceError = Choose();
  if (choiceError == kErrorCancelled) return choiceError;
  VolumeNode user;
  bool hasUser = choiceError == kErrorSuccess;
  if (!hasUser) {
    Tell(m_classesTold,
         "HKEY_CLASSES_ROOT shows the classes of the machine alone. " + m_choiceReason);
  }
  hasUser = hasUser && UserNode(user) == kErrorSuccess &&
            ResolveKey(*m_layout, user, "Software\\Classes", false, user) == kErrorSuccess;
  if (os::IsWorkTerminated()) return kErrorCancelled;
  if (!hasUser && error != kErrorSuccess) return error;
  node = {Zone::Classes, std::move(user.layers)};
  if (!hasUser) node.layers.clear();
  if (error == kErrorSuccess) {
    node.layers.insert(node.layers.end(), machine.layers.begin(), machine.layers.end());
  }
  return kErrorSuccess;
}

// The link "Current" is not kept on the disk by every version of the system.
SystemError CLayoutRegistry::ConfigNode(VolumeNode& node) {
  const std::string controlSet = "System\\CurrentControlSet\\";
  VolumeNode machine;
  if (const SystemError error = m_layout->MachineRoot(machine)) return error;
  const auto find = [&](const std::string& path, VolumeNode& found) {
    return ResolveKey(*m_layout, machine, controlSet + path, false, found);
  };
  const SystemError error = find("Hardware Profiles\\Current", node);
  if (error != kErrorFileNotFound) return error;
  uint32_t number = 1;
  VolumeNode choice;
  if (find("Control\\IDConfigDB", choice) == kErrorSuccess) {
    FindNumber(choice, "CurrentConfig", number);
  }
  return find("Hardware Profiles\\" + std::to_string(10000 + number % 10000).substr(1), node);
}

void CLayoutRegistry::Tell(COnce& once, const std::string& sentence) const {
  once.Do([&] {
    if (m_source->options.notice) m_source->options.notice(sentence);
  });
}

std::shared_ptr<Source> MakeSource(OpenRegistryFile open, VolumeRegistryOptions options) {
  return std::make_shared<Source>(Source{std::move(open), std::move(options), nullptr});
}

}  // namespace

std::unique_ptr<CVolumeRegistry> MakeHiveRegistry(OpenRegistryFile open,
                                                  const std::string& windowsFolder,
                                                  VolumeRegistryOptions options) {
  const auto source = MakeSource(std::move(open), std::move(options));
  source->layout = MakeHiveLayout(source->open, source->options.notice, windowsFolder);
  return std::make_unique<CLayoutRegistry>(source);
}

std::unique_ptr<CVolumeRegistry> MakeTextRegistry(OpenRegistryFile open,
                                                  VolumeRegistryOptions options) {
  const auto source = MakeSource(std::move(open), std::move(options));
  source->layout = MakeWineLayout(source->open, source->options.notice);
  return std::make_unique<CLayoutRegistry>(source);
}

}  // namespace kestra::image
