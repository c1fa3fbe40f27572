#include "platform/image/registry/layout/HiveProfiles.h"

#include <algorithm>
#include <unordered_map>

#include "platform/base/text/Characters.h"
#include "platform/image/registry/tree/FoldedName.h"
#include "platform/os/CurrentTermination.h"

namespace kestra::image {
namespace {

constexpr size_t kMostProfiles = 10'000;
constexpr std::string_view kClassesPaths[] = {
    "\\AppData\\Local\\Microsoft\\Windows\\UsrClass.dat",
    "\\Local Settings\\Application Data\\Microsoft\\Windows\\UsrClass.dat",
};

bool StartsWithNoCase(std::string_view text, std::string_view start) {
  return text.size() > start.size() && EqualsNoCase(text.substr(0, start.size()), start);
}

// What the tokens in a profile's path stand for on the volume.
class CTokens {
 public:
  CTokens(const VolumeNode& profileList, const std::string& windowsFolder)
      : m_windowsFolder(windowsFolder) {
    m_programData = Value(profileList, "ProgramData", "\\ProgramData");
    m_public = Value(profileList, "Public", "\\Users\\Public");
  }

  // A token that is not known stays as it is.
  std::string Expand(std::string_view text) const {
    std::string expanded;
    while (!text.empty()) {
      const size_t begin = std::min(text.find('%'), text.size());
      expanded += text.substr(0, begin);
      text.remove_prefix(begin);
      const size_t end = text.find('%', 1);
      if (end == std::string_view::npos) break;
      const std::string* pValue = nullptr;
      std::string drive = Drive();
      const std::string_view token = text.substr(1, end - 1);
      if (EqualsNoCase(token, "SystemDrive")) pValue = &drive;
      if (EqualsNoCase(token, "SystemRoot") || EqualsNoCase(token, "windir")) {
        pValue = &m_windowsFolder;
      }
      if (EqualsNoCase(token, "ProgramData") || EqualsNoCase(token, "ALLUSERSPROFILE")) {
        pValue = &m_programData;
      }
      if (EqualsNoCase(token, "PUBLIC")) pValue = &m_public;
      // A percent sign that ends no token may begin the next one.
      expanded += pValue ? std::string_view(*pValue) : text.substr(0, end);
      text.remove_prefix(pValue ? end + 1 : end);
    }
    return expanded.append(text);
  }

 private:
  std::string Drive() const { return m_windowsFolder.substr(0, m_windowsFolder.find('\\')); }
  std::string Value(const VolumeNode& profileList, const char* name, const char* path) const {
    std::string value;
    return FindText(profileList, name, value) == kErrorSuccess ? Expand(value) : Drive() + path;
  }

  const std::string& m_windowsFolder;
  std::string m_programData;
  std::string m_public;
};

std::string LastPart(const std::string& path) {
  return path.substr(path.rfind('\\') + 1);
}

// Makes the hives of profiles' folders, each once.
class CProfileHives {
 public:
  CProfileHives(const OpenRegistryFile& open, const Notice& notice, CLoadBudget& budget)
      : m_open(open), m_notice(notice), m_budget(budget) {}

  HiveProfile Make(const std::string& sid, std::string path) {
    while (!path.empty() && path.back() == '\\') path.pop_back();
    Hives& hives = m_hives[FoldedName(path)];
    if (!hives.own) MakeHives(path, hives);
    Profile profile{{sid, LastPart(path), path}, IsPersonSid(sid), hives.own->IsThere()};
    return {std::move(profile), hives.own, hives.classes};
  }

 private:
  struct Hives {
    std::shared_ptr<CRegistryFile> own;
    std::shared_ptr<CRegistryFile> classes;
  };

  std::shared_ptr<CRegistryFile> File(const std::string& name) const {
    return std::make_shared<CRegistryFile>(name, RegistryFileForm::Hive, m_open, m_notice,
                                           m_budget);
  }
  void MakeHives(const std::string& path, Hives& hives) const {
    hives.own = File(path + "\\NTUSER.DAT");
    for (const std::string_view name : kClassesPaths) {
      if (!hives.classes || !hives.classes->IsThere()) {
        hives.classes = File(path + std::string(name));
      }
    }
  }

  const OpenRegistryFile& m_open;
  const Notice& m_notice;
  CLoadBudget& m_budget;
  std::unordered_map<std::string, Hives> m_hives;  // by folder
};

}  // namespace

bool IsSid(std::string_view text) {
  if (!StartsWithNoCase(text, "S-1-")) return false;
  const std::string_view numbers = text.substr(4);
  const bool isPlain = numbers.find_first_not_of("0123456789-") == std::string_view::npos;
  return isPlain && numbers.find("--") == std::string_view::npos && numbers.front() != '-' &&
         numbers.back() != '-';
}

bool IsPersonSid(std::string_view sid) {
  return StartsWithNoCase(sid, "S-1-5-21-") || StartsWithNoCase(sid, "S-1-12-1-");
}

SystemError ReadProfiles(const VolumeNode& profileList, const std::string& windowsFolder,
                         const OpenRegistryFile& open, const Notice& notice, CLoadBudget& budget,
                         std::vector<HiveProfile>& profiles) {
  const CTokens tokens(profileList, windowsFolder);
  CProfileHives hives(open, notice, budget);
  profiles.clear();
  size_t count = 0;
  for (const KeyLayer& layer : profileList.layers) {
    CRegistryFile::Listing listing;
    if (const SystemError error = layer.pFile->SubKeys(layer.key, listing)) return error;
    for (const TreeEntry& entry : listing->Entries()) {
      if (os::IsWorkTerminated()) return kErrorCancelled;
      // The system's own part of the registry is no profile's: it is the default hive.
      if (!IsSid(entry.name) || EqualsNoCase(entry.name, kLocalSystemSid)) continue;
      if (++count > kMostProfiles) continue;
      const VolumeNode key{Zone::Plain, {{layer.pFile, entry.id}}, {}};
      std::string path;
      if (FindText(key, "ProfileImagePath", path) != kErrorSuccess || path.empty()) continue;
      profiles.push_back(hives.Make(entry.name, tokens.Expand(path)));
    }
  }
  if (os::IsWorkTerminated()) return kErrorCancelled;
  if (count > kMostProfiles && notice) {
    notice("The volume has " + std::to_string(count) + " profiles, of which only the first " +
           std::to_string(kMostProfiles) + " are looked at");
  }
  std::stable_sort(profiles.begin(), profiles.end(), [](const auto& a, const auto& b) {
    return CompareNoCase(a.profile.user.name, b.profile.user.name) < 0;
  });
  return kErrorSuccess;
}

}  // namespace kestra::image
