#include "platform/image/registry/layout/UserChoice.h"

#include "platform/base/text/Characters.h"

namespace kestra::image {
namespace {

std::string ListOfPeople(const std::vector<Profile>& profiles) {
  constexpr size_t kMostNamed = 50;
  std::string list;
  size_t count = 0;
  for (const Profile& each : profiles) {
    if (!each.isPerson || ++count > kMostNamed) continue;
    list += (list.empty() ? "" : ", ") + each.user.name + " (" + each.user.sid + ")";
    if (!each.hasHive) list += " without a hive";
  }
  if (count > kMostNamed) list += " and " + std::to_string(count - kMostNamed) + " more";
  return list.empty() ? "nobody" : list;
}

// One that others might share has a SID that nobody shares.
const Profile* FindNamed(const std::vector<Profile>& profiles, const std::string& name,
                         size_t& count) {
  const Profile* pFound = nullptr;
  count = 0;
  for (const bool isPerson : {true, false}) {
    for (const Profile& each : profiles) {
      if (each.isPerson != isPerson) continue;
      if (EqualsNoCase(each.user.sid, name)) {
        count = 1;
        return &each;
      }
      if (!EqualsNoCase(each.user.name, name)) continue;
      if (count++ == 0) pFound = &each;
    }
    if (count != 0) break;
  }
  return pFound;
}

const Profile* FindOnly(const std::vector<Profile>& profiles, size_t& count) {
  const Profile* pFound = nullptr;
  count = 0;
  for (const Profile& each : profiles) {
    if (each.isPerson && each.hasHive && count++ == 0) pFound = &each;
  }
  return pFound;
}

}  // namespace

SystemError ChooseUser(const std::vector<Profile>& profiles, const std::string& name,
                       VolumeUser& user, std::string& reason) {
  size_t count = 0;
  const Profile* pFound =
      name.empty() ? FindOnly(profiles, count) : FindNamed(profiles, name, count);
  if (count == 1) {
    user = pFound->user;
    return kErrorSuccess;
  }
  if (name.empty()) {
    reason = count == 0 ? "No user of the volume has a registry hive"
                        : "Several users have a profile on the volume and none of them is named";
  } else {
    reason = (count == 0 ? "No user of the volume is named " : "Several users are named ") + name;
  }
  reason += "; there is " + ListOfPeople(profiles);
  return kErrorNoSuchUser;
}

}  // namespace kestra::image
