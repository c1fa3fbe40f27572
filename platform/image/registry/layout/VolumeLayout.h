// Where in its files a volume keeps which part of the registry. One for hives, one for Wine.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/image/registry/VolumeNode.h"

namespace kestra::image {

inline constexpr std::string_view kNarrowKey = "Wow6432Node";

struct Profile {
  VolumeUser user;
  bool isPerson = false;  // not an account that services run under
  bool hasHive = false;   // its part of the registry is there
};

// All methods may be called from any thread.
class CVolumeLayout {
 public:
  virtual ~CVolumeLayout() = default;
  virtual bool IsWide() = 0;
  // Everybody who has a profile, ordered by name.
  virtual SystemError Profiles(std::vector<Profile>& profiles) = 0;
  // HKEY_LOCAL_MACHINE and HKEY_USERS.
  virtual SystemError MachineRoot(VolumeNode& node) = 0;
  virtual SystemError UsersRoot(VolumeNode& node) = 0;
  // What stands below the node although its files do not have it there, in the order that the
  // running system gives it behind what the files have.
  virtual SystemError MountNames(const VolumeNode& node, std::vector<std::string>& names) = 0;
  // The subkey of that name: brought in from elsewhere, or, if it is none of those, out of the
  // node's layers. Links are not followed.
  virtual SystemError Child(const VolumeNode& node, std::string_view name, VolumeNode& child) = 0;
  // Whether a 32-bit program that asks for next below the node, or (empty) for the node, gets it
  // from the node's Wow6432Node.
  virtual bool IsNarrowed(const VolumeNode& node, std::string_view next) = 0;
  // The node below which a 32-bit program finds next where it is not the node itself; false if it
  // is.
  virtual bool IsShared(const VolumeNode& node, std::string_view next, VolumeNode& shared) = 0;
};

// open and notice must outlive what is made. windowsFolder as in "C:\Windows".
std::unique_ptr<CVolumeLayout> MakeHiveLayout(const OpenRegistryFile& open, const Notice& notice,
                                              std::string windowsFolder);
std::unique_ptr<CVolumeLayout> MakeWineLayout(const OpenRegistryFile& open, const Notice& notice);

}  // namespace kestra::image
