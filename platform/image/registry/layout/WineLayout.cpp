#include "platform/base/text/Characters.h"
#include "platform/image/registry/KeyResolver.h"
#include "platform/image/registry/layout/VolumeLayout.h"

namespace kestra::image {
namespace {

// As Wine writes it.
constexpr std::string_view kWineDefaultUser = ".Default";
// The one user that Wine's own tools know, should the file not tell.
constexpr std::string_view kOnlySid = "S-1-5-21-0-0-0-1000";

// system.reg is HKEY_LOCAL_MACHINE as a whole; user.reg and userdef.reg are keys of HKEY_USERS.
class CWineLayout final : public CVolumeLayout {
 public:
  CWineLayout(const OpenRegistryFile& open, const Notice& notice)
      : m_machine("system.reg", RegistryFileForm::WineText, open, notice, m_budget),
        m_user("user.reg", RegistryFileForm::WineText, open, notice, m_budget),
        m_default("userdef.reg", RegistryFileForm::WineText, open, notice, m_budget) {}

  bool IsWide() override { return m_machine.Load() == kErrorSuccess && m_machine.IsWide(); }
  SystemError Profiles(std::vector<Profile>& profiles) override;
  SystemError MachineRoot(VolumeNode& node) override {
    return RootNode(m_machine, Zone::Plain, node);
  }
  SystemError UsersRoot(VolumeNode& node) override {
    node = {Zone::Users};
    return kErrorSuccess;
  }
  SystemError MountNames(const VolumeNode& node, std::vector<std::string>& names) override;
  SystemError Child(const VolumeNode& node, std::string_view name, VolumeNode& child) override;
  bool IsNarrowed(const VolumeNode& node, std::string_view next) override;
  bool IsShared(const VolumeNode&, std::string_view, VolumeNode&) override { return false; }

 private:
  std::string Sid() const;

  CLoadBudget m_budget;
  CRegistryFile m_machine;
  CRegistryFile m_user;
  CRegistryFile m_default;
};

// Of the user's file, once it is loaded.
std::string CWineLayout::Sid() const {
  const std::string& path = m_user.RelativeTo();
  const std::string last = path.substr(path.rfind('\\') + 1);
  return last.empty() ? std::string(kOnlySid) : last;
}

SystemError CWineLayout::Profiles(std::vector<Profile>& profiles) {
  const SystemError error = m_user.Load();
  if (error == kErrorFileNotFound) return kErrorSuccess;
  if (error != kErrorSuccess) return error;
  Profile profile{{Sid(), {}, {}}, true, true};
  VolumeNode node;
  const std::string list = "Software\\Microsoft\\Windows NT\\CurrentVersion\\ProfileList\\";
  if (MachineRoot(node) == kErrorSuccess &&
      ResolveKey(*this, node, list + profile.user.sid, false, node) == kErrorSuccess) {
    FindText(node, "ProfileImagePath", profile.user.profilePath);
  }
  const std::string& path = profile.user.profilePath;
  profile.user.name = path.substr(path.rfind('\\') + 1);
  if (profile.user.name.empty() && RootNode(m_user, Zone::Plain, node) == kErrorSuccess &&
      FindChild(node, "Volatile Environment", node) == kErrorSuccess) {
    FindText(node, "USERNAME", profile.user.name);
  }
  profiles.push_back(std::move(profile));
  return kErrorSuccess;
}

SystemError CWineLayout::MountNames(const VolumeNode& node, std::vector<std::string>& names) {
  if (node.zone != Zone::Users) return kErrorSuccess;
  if (m_default.IsThere()) names.emplace_back(kWineDefaultUser);
  const SystemError error = m_user.Load();
  if (error == kErrorSuccess) names.push_back(Sid());
  // Without the user there is the rest; a notice tells what is lacking.
  return error == kErrorCancelled ? error : kErrorSuccess;
}

SystemError CWineLayout::Child(const VolumeNode& node, std::string_view name, VolumeNode& child) {
  if (node.zone != Zone::Users) return FindChild(node, name, child);
  if (EqualsNoCase(name, kWineDefaultUser)) return RootNode(m_default, Zone::Plain, child);
  if (const SystemError error = m_user.Load()) return error;
  return EqualsNoCase(name, Sid()) ? RootNode(m_user, Zone::Plain, child) : kErrorFileNotFound;
}

// Wherever there is such a key, Wine goes there for all that a 32-bit program asks for, but for
// paths that name it themselves. HKEY_CLASSES_ROOT is listed whole in both views: what is listed
// and not there is the key that both have.
bool CWineLayout::IsNarrowed(const VolumeNode& node, std::string_view next) {
  VolumeNode narrow;
  if (EqualsNoCase(next, kNarrowKey) || !IsWide() ||
      FindChild(node, kNarrowKey, narrow) != kErrorSuccess) {
    return false;
  }
  return node.zone != Zone::Classes || FindChild(narrow, next, narrow) == kErrorSuccess;
}

}  // namespace

std::unique_ptr<CVolumeLayout> MakeWineLayout(const OpenRegistryFile& open, const Notice& notice) {
  return std::make_unique<CWineLayout>(open, notice);
}

}  // namespace kestra::image
