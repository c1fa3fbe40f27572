// The users of a volume with hives: out of the list of profiles, and where their hives lie.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/image/registry/layout/VolumeLayout.h"

namespace kestra::image {

inline constexpr std::string_view kLocalSystemSid = "S-1-5-18";

// A profile with its hives, which are those of another one too if both name the same folder.
struct HiveProfile {
  Profile profile;
  std::shared_ptr<CRegistryFile> hive;
  std::shared_ptr<CRegistryFile> classes;
};

// All profiles under the key Microsoft\Windows NT\CurrentVersion\ProfileList of the SOFTWARE hive,
// ordered by name; at most 10,000, and a notice tells if there are more. windowsFolder as in
// "C:\Windows". kErrorCancelled when the thread's work is terminated.
SystemError ReadProfiles(const VolumeNode& profileList, const std::string& windowsFolder,
                         const OpenRegistryFile& open, const Notice& notice, CLoadBudget& budget,
                         std::vector<HiveProfile>& profiles);

// S-1-, and then numbers with - between.
bool IsSid(std::string_view text);
// The account of a person: made on the machine, in a domain or in a directory service. Source: the
// Win32 page "Well-known SIDs".
bool IsPersonSid(std::string_view sid);

}  // namespace kestra::image
