#include "platform/image/Image.h"

#include <fcntl.h>
#include <limits.h>
#include <stdlib.h>

#include <cerrno>
#include <cstring>
#include <optional>
#include <utility>
#include <vector>

#include "platform/base/text/Characters.h"
#include "platform/image/VolumeFacts.h"
#include "platform/image/files/Volume.h"
#include "platform/image/files/VolumeFiles.h"
#include "platform/linux/machine/files/FileReader.h"

namespace kestra::image {
namespace {

class CImageMachine final : public CMachine {
 public:
  CImageMachine(CUniqueFd root, std::string rootPath)
      : m_volume(std::move(root), std::move(rootPath)) {}

  bool IsReadOnly() const override { return true; }
  CSystemFacts& System() override { return *m_pFacts; }
  CFileSystem* Files() override { return m_pFiles.get(); }
  CRegistry* Registry() override { return m_pRegistry.get(); }
  CProcesses* Processes() override { return nullptr; }

  CFileSystem& VolumeFiles() { return *m_pFiles; }
  CVolumeRegistry& VolumeRegistry() { return *m_pRegistry; }
  void Complete(std::unique_ptr<CVolumeRegistry> registry, const std::string& windowsFolder) {
    m_pRegistry = std::move(registry);
    m_pFacts = MakeVolumeFacts(*m_pRegistry, windowsFolder);
  }

 private:
  CVolume m_volume;
  std::unique_ptr<CFileSystem> m_pFiles = MakeVolumeFiles(m_volume);
  std::unique_ptr<CVolumeRegistry> m_pRegistry;
  std::unique_ptr<CSystemFacts> m_pFacts;
};

bool IsPlain(CFileSystem& files, const std::string& path) {
  FileInfo info;
  return files.Info(path, info) == kErrorSuccess && info.kind == FileKind::File;
}

bool HasHives(CFileSystem& files, const std::string& folder) {
  return IsPlain(files, folder + "\\System32\\config\\SOFTWARE") ||
         IsPlain(files, folder + "\\System32\\config\\SYSTEM");
}

// The folder as the volume spells it. Nothing if there is none with hives in it.
std::optional<std::string> FindWindowsFolder(CFileSystem& files) {
  std::unique_ptr<CDirectoryListing> listing;
  if (files.OpenDirectory("C:\\", listing) != kErrorSuccess) return std::nullopt;
  std::optional<std::string> found;
  std::string name;
  while (listing->Next(name) == kErrorSuccess) {
    const bool isUsual = EqualsNoCase(name, "Windows") || EqualsNoCase(name, "WINNT");
    if ((found && !isUsual) || name.front() == '.' || !HasHives(files, "C:\\" + name)) continue;
    found = "C:\\" + name;
    if (isUsual) break;
  }
  return found;
}

std::optional<std::string> FindDirectoryOfWine(CFileSystem& files) {
  std::unique_ptr<CDirectoryListing> listing;
  if (files.OpenDirectory("C:\\", listing) != kErrorSuccess) return std::nullopt;
  std::string name;
  while (listing->Next(name) == kErrorSuccess) {
    if (EqualsNoCase(name, "windows")) return "C:\\" + name;
  }
  return std::nullopt;
}

std::optional<std::string> RealPath(const std::string& path) {
  char* pReal = realpath(path.c_str(), nullptr);
  if (!pReal) return std::nullopt;
  std::string real(pReal);
  free(pReal);
  return real;
}

CUniqueFd OpenDirectory(const std::string& path) {
  return CUniqueFd(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

// A prefix of Wine: its directory, and the drive in it. No link is followed below the directory
// that the user named: one could lead anywhere on this machine.
struct Prefix {
  std::string path;
  CUniqueFd directory;
  CUniqueFd drive;
};

std::optional<Prefix> OpenPrefixAt(const std::string& path) {
  Prefix prefix{path, OpenDirectory(path), {}};
  if (!prefix.directory) return std::nullopt;
  constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW;
  prefix.drive = CUniqueFd(openat(prefix.directory.get(), "drive_c", kFlags));
  CUniqueFd file;
  const bool hasRegistry =
      OpenNamedFile(prefix.directory.get(), "system.reg", file) == kErrorSuccess;
  return prefix.drive && hasRegistry ? std::optional(std::move(prefix)) : std::nullopt;
}

// The directory that holds system.reg: the one that was given, or the one above its drive_c.
std::optional<Prefix> FindPrefix(const std::string& directory) {
  std::optional<Prefix> prefix = OpenPrefixAt(directory);
  const size_t slash = directory.rfind('/');
  if (!prefix && directory.substr(slash + 1) == "drive_c")
    prefix = OpenPrefixAt(directory.substr(0, slash));
  return prefix;
}

OpenRegistryFile OpenInPrefix(CUniqueFd prefix) {
  const auto directory = std::make_shared<CUniqueFd>(std::move(prefix));
  return [directory](const std::string& name, std::unique_ptr<CFileReader>& reader) {
    CUniqueFd file;
    const SystemError error = OpenNamedFile(directory->get(), name, file);
    if (error == kErrorSuccess) reader = MakeFileReader(std::move(file), false);
    return error;
  };
}

// Users for a sentence: "alice (S-1-5-21-...), bob (...)".
std::string ListUsers(CVolumeRegistry& registry) {
  std::vector<VolumeUser> users;
  if (registry.Users(users) != kErrorSuccess) return "they cannot be read";
  std::string list;
  for (const VolumeUser& user : users)
    list +=
        (list.empty() ? "" : ", ") + (user.name.empty() ? "?" : user.name) + " (" + user.sid + ")";
  return list.empty() ? "there are none" : list;
}

Ref<CImageMachine> OpenPrefix(const std::string& directory, const VolumeRegistryOptions& options) {
  std::optional<Prefix> prefix = FindPrefix(directory);
  if (!prefix) return nullptr;
  auto machine = MakeRef<CImageMachine>(std::move(prefix->drive), prefix->path + "/drive_c");
  machine->Complete(MakeTextRegistry(OpenInPrefix(std::move(prefix->directory)), options),
                    FindDirectoryOfWine(machine->VolumeFiles()).value_or("C:\\windows"));
  return machine;
}

Ref<CImageMachine> OpenHives(CUniqueFd root, const std::string& path,
                             const VolumeRegistryOptions& options) {
  auto machine = MakeRef<CImageMachine>(std::move(root), path);
  CFileSystem& files = machine->VolumeFiles();
  const std::optional<std::string> windowsFolder = FindWindowsFolder(files);
  if (!windowsFolder) return nullptr;
  OpenRegistryFile open = [&files](const std::string& name, std::unique_ptr<CFileReader>& reader) {
    return files.OpenFile(name, LastLink::Refuse, reader);
  };
  machine->Complete(MakeHiveRegistry(std::move(open), *windowsFolder, options), *windowsFolder);
  return machine;
}

}  // namespace

bool OpenImage(const ImageOptions& options, Ref<CMachine>& machine, std::string& refusal) {
  const std::optional<std::string> path = RealPath(options.directory);
  CUniqueFd root = path ? OpenDirectory(*path) : CUniqueFd();
  if (!root) {
    refusal = options.directory + " cannot be opened: " + std::strerror(errno);
    return false;
  }
  const VolumeRegistryOptions registryOptions{options.userName, options.notice};
  // Hives first: what else lies on a disk may have been put there to be taken for a system.
  Ref<CImageMachine> image = OpenHives(std::move(root), *path, registryOptions);
  if (!image) image = OpenPrefix(*path, registryOptions);
  if (!image) {
    refusal = options.directory +
              " holds no Windows system: there is no Windows\\System32\\config with hives in it, "
              "and no system.reg of a Wine prefix";
    return false;
  }
  VolumeUser user;
  if (!options.userName.empty() && image->VolumeRegistry().CurrentUser(user) != kErrorSuccess) {
    refusal = "there is no user " + options.userName + " in " + options.directory +
              "; the users are: " + ListUsers(image->VolumeRegistry());
    return false;
  }
  machine = image;
  return true;
}

}  // namespace kestra::image
