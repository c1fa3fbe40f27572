#include "platform/image/files/VolumeFiles.h"

#include <fcntl.h>

#include <cerrno>
#include <utility>

#include "platform/image/files/DosAttributes.h"
#include "platform/image/files/VolumePath.h"
#include "platform/linux/ErrnoMap.h"
#include "platform/linux/machine/files/FileReader.h"
#include "platform/linux/machine/files/FileStatus.h"

namespace kestra::image {
namespace {

// "\" separates names there, and "/" is in none.
bool CanBeInPath(const std::string& name) {
  return name.find('\\') == std::string::npos;
}

// names lead to the entry, for the question what a link leads to.
SystemError ReadEntry(const CVolume& volume, const std::vector<std::string>& names, int directory,
                      const std::string& name, FileInfo& info) {
  const char* pName = name.empty() ? "." : name.c_str();
  if (!ReadFileInfo(directory, pName, false, info, LinkTarget::Leave)) return LastError();
  info.isTrusted = true;
  uint32_t attributes = info.attributes & ~kFileAttributeNormal;
  constexpr uint32_t kKept = kFileAttributeReadOnly | kFileAttributeHidden | kFileAttributeSystem |
                             kFileAttributeCompressed;
  attributes |= ReadDosAttributes(directory, pName) & kKept;
  if (info.kind == FileKind::Link && volume.LeadsToDirectory(names))
    attributes |= kFileAttributeDirectory;
  info.attributes = attributes == 0 ? kFileAttributeNormal : attributes;
  return kErrorSuccess;
}

class CVolumeListing final : public CDirectoryListing {
 public:
  CVolumeListing(const CVolume& volume, std::vector<std::string> names, DIR* pDirectory)
      : m_volume(volume), m_names(std::move(names)), m_pDirectory(pDirectory) {}

  SystemError OwnInfo(FileInfo& info) override {
    return ReadEntry(m_volume, m_names, dirfd(m_pDirectory.get()), std::string(), info);
  }
  SystemError Next(std::string& name) override {
    do {
      errno = 0;
      const dirent* pEntry = readdir(m_pDirectory.get());
      if (!pEntry) return errno == 0 ? kErrorNoMoreFiles : LastError();
      m_name = pEntry->d_name;
    } while (!CanBeInPath(m_name));
    name = m_name;
    return kErrorSuccess;
  }
  SystemError Info(FileInfo& info) override {
    if (m_name.empty()) return kErrorInvalidParameter;
    m_names.push_back(m_name);
    const SystemError error = ReadEntry(m_volume, m_names, dirfd(m_pDirectory.get()), m_name, info);
    m_names.pop_back();
    return error;
  }

 private:
  const CVolume& m_volume;
  std::vector<std::string> m_names;
  CUniqueDirectory m_pDirectory;
  std::string m_name;
};

class CVolumeFiles final : public CFileSystem {
 public:
  explicit CVolumeFiles(const CVolume& volume) : m_volume(volume) {}

  SystemError OpenDirectory(const std::string& path,
                            std::unique_ptr<CDirectoryListing>& listing) override {
    std::vector<std::string> names;
    SystemError error = SplitVolumePath(path, names);
    CUniqueFd fd;
    if (error == kErrorSuccess) error = m_volume.OpenDirectory(names, fd);
    if (error != kErrorSuccess) return error;
    DIR* pDirectory = fdopendir(fd.get());
    if (!pDirectory) return LastError();
    fd.Release();
    listing = std::make_unique<CVolumeListing>(m_volume, std::move(names), pDirectory);
    return kErrorSuccess;
  }
  SystemError Info(const std::string& path, FileInfo& info) override {
    std::vector<std::string> names;
    Entry entry;
    SystemError error = SplitVolumePath(path, names);
    if (error == kErrorSuccess) error = m_volume.Find(names, LastName::KeepLink, entry);
    if (error != kErrorSuccess) return error;
    error = ReadEntry(m_volume, names, entry.directory.get(), entry.name, info);
    const bool wantsDirectory = path.ends_with('\\') || path.ends_with('/');
    const bool isNoDirectory = error == kErrorSuccess && wantsDirectory &&
                               (info.attributes & kFileAttributeDirectory) == 0;
    return isNoDirectory ? kErrorPathNotFound : error;
  }
  SystemError ShortPath(const std::string&, std::string&) override { return kErrorNotSupported; }
  SystemError OpenFile(const std::string& path, LastLink lastLink,
                       std::unique_ptr<CFileReader>& reader) override {
    std::vector<std::string> names;
    Entry entry;
    SystemError error = SplitVolumePath(path, names);
    const LastName last = lastLink == LastLink::Follow ? LastName::FollowLink : LastName::KeepLink;
    if (error == kErrorSuccess) error = m_volume.Find(names, last, entry);
    if (error != kErrorSuccess) return error;
    // Looked at first, since the opening of a device may already do something.
    FileInfo info;
    error = ReadEntry(m_volume, names, entry.directory.get(), entry.name, info);
    if (error != kErrorSuccess) return error;
    if (info.kind != FileKind::File) return kErrorAccessDenied;
    CUniqueFd fd;
    error = OpenNamedFile(entry.directory.get(), entry.name, fd);
    if (error == kErrorSuccess) reader = MakeFileReader(std::move(fd), false);
    return error;
  }

  SystemError BeginWrite(const std::string&, LastLink, Existing, NewRights,
                         std::unique_ptr<CFileWriter>&) override {
    return kErrorWriteProtect;
  }
  SystemError RemoveFile(const std::string&) override { return kErrorWriteProtect; }
  SystemError MakeDirectory(const std::string&, NewRights) override { return kErrorWriteProtect; }
  SystemError RemoveEmptyDirectory(const std::string&) override { return kErrorWriteProtect; }
  SystemError Rename(const std::string&, const std::string&) override { return kErrorWriteProtect; }
  SystemError CopyPlainFile(const std::string&, const std::string&, const os::CWaitable*) override {
    return kErrorWriteProtect;
  }
  SystemError SetAttributes(const std::string&, uint32_t) override { return kErrorWriteProtect; }
  SystemError VolumeFlags(const std::string&, uint32_t& flags) override {
    flags = 0;
    return kErrorSuccess;
  }
  SystemError GrantEveryone(const std::string&) override { return kErrorWriteProtect; }
  SystemError MoveAtBoot(const std::string&, const std::string&) override {
    return kErrorWriteProtect;
  }

 private:
  const CVolume& m_volume;
};

}  // namespace

std::unique_ptr<CFileSystem> MakeVolumeFiles(const CVolume& volume) {
  return std::make_unique<CVolumeFiles>(volume);
}

}  // namespace kestra::image
