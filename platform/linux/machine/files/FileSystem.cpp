#include "platform/machine/FileSystem.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

#include "platform/linux/ErrnoMap.h"
#include "platform/linux/UniqueFd.h"
#include "platform/linux/machine/Facilities.h"
#include "platform/linux/machine/files/FileChange.h"
#include "platform/linux/machine/files/FileReader.h"
#include "platform/linux/machine/files/FileStatus.h"
#include "platform/linux/machine/files/FileWriter.h"
#include "platform/linux/machine/files/Place.h"

namespace kestra {
namespace {

class CLinuxDirectoryListing final : public CDirectoryListing {
 public:
  explicit CLinuxDirectoryListing(DIR* pDirectory) : m_pDirectory(pDirectory) {}

  SystemError OwnInfo(FileInfo& info) override {
    return ReadFileInfo(dirfd(m_pDirectory.get()), false, info) ? kErrorSuccess : LastError();
  }
  SystemError Next(std::string& name) override {
    errno = 0;
    const dirent* pEntry = readdir(m_pDirectory.get());
    if (!pEntry) return errno == 0 ? kErrorNoMoreFiles : LastError();
    m_name = pEntry->d_name;
    name = m_name;
    return kErrorSuccess;
  }
  // Asked of the system only now: a listing that is filtered by name looks at no other file.
  SystemError Info(FileInfo& info) override {
    if (m_name.empty()) return kErrorInvalidParameter;
    const int directory = dirfd(m_pDirectory.get());
    return ReadFileInfo(directory, m_name.c_str(), IsHiddenName(m_name), info) ? kErrorSuccess
                                                                               : LastError();
  }

 private:
  CUniqueDirectory m_pDirectory;
  std::string m_name;
};

class CLinuxFileSystem final : public CFileSystem {
 public:
  SystemError OpenDirectory(const std::string& path,
                            std::unique_ptr<CDirectoryListing>& listing) override {
    if (HasNul(path)) return kErrorInvalidName;
    CUniqueFd fd(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK));
    if (!fd) return OpenDirectoryError(path);
    DIR* pDirectory = fdopendir(fd.get());
    if (!pDirectory) return LastError();
    fd.Release();
    listing = std::make_unique<CLinuxDirectoryListing>(pDirectory);
    return kErrorSuccess;
  }
  SystemError Info(const std::string& path, FileInfo& info) override {
    if (HasNul(path)) return kErrorInvalidName;
    return ReadFileInfo(AT_FDCWD, path.c_str(), IsHiddenName(path), info) ? kErrorSuccess
                                                                          : LastErrorOfPath(path);
  }
  SystemError ShortPath(const std::string&, std::string&) override { return kErrorNotSupported; }
  SystemError OpenFile(const std::string& path, LastLink lastLink,
                       std::unique_ptr<CFileReader>& reader) override {
    return OpenLinuxFile(path, lastLink, reader);
  }
  SystemError BeginWrite(const std::string& path, LastLink lastLink, Existing existing,
                         NewRights rights, std::unique_ptr<CFileWriter>& writer) override {
    return BeginLinuxWrite(path, lastLink, existing, rights, writer);
  }
  SystemError RemoveFile(const std::string& path) override {
    if (HasNul(path)) return kErrorInvalidName;
    Place place;
    const SystemError error = OpenPlaceToChange(path, place);
    if (error != kErrorSuccess) return error;
    return unlinkat(place.directory.get(), place.name.c_str(), 0) == 0 ? kErrorSuccess
                                                                       : LastError();
  }
  SystemError MakeDirectory(const std::string& path, NewRights rights) override {
    if (HasNul(path)) return kErrorInvalidName;
    constexpr mode_t kAll = S_IRWXU | S_IRWXG | S_IRWXO;  // the umask takes away
    const mode_t mode = rights == NewRights::OwnerOnly ? S_IRWXU : kAll;
    return mkdir(path.c_str(), mode) == 0 ? kErrorSuccess : LastErrorOfPath(path);
  }
  SystemError RemoveEmptyDirectory(const std::string& path) override {
    if (HasNul(path)) return kErrorInvalidName;
    Place place;
    const SystemError error = OpenPlaceToChange(path, place);
    if (error != kErrorSuccess) return error;
    if (unlinkat(place.directory.get(), place.name.c_str(), AT_REMOVEDIR) == 0)
      return kErrorSuccess;
    if (errno == EEXIST) return kErrorDirNotEmpty;  // another word for it, says rmdir(2)
    return errno == ENOTDIR ? NoDirectoryError(path) : LastErrorOfPath(path);
  }
  SystemError Rename(const std::string& from, const std::string& to) override {
    return RenameLinuxPath(from, to);
  }
  SystemError CopyPlainFile(const std::string& from, const std::string& to,
                            const os::CWaitable* pTermination) override {
    return CopyLinuxFile(from, to, pTermination);
  }
  SystemError SetAttributes(const std::string& path, uint32_t attributes) override {
    return SetLinuxAttributes(path, attributes);
  }
  SystemError VolumeFlags(const std::string&, uint32_t& flags) override {
    flags = 0;
    return kErrorSuccess;
  }
  SystemError GrantEveryone(const std::string&) override { return kErrorSuccess; }
  SystemError MoveAtBoot(const std::string&, const std::string&) override {
    return kErrorCallNotImplemented;
  }

 private:
  // Of what is there but is no directory, rather than of a file on the way to it.
  static SystemError OpenDirectoryError(const std::string& path) {
    return errno == ENOTDIR ? NoDirectoryError(path) : LastErrorOfPath(path);
  }
  static SystemError NoDirectoryError(const std::string& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 ? kErrorDirectory : kErrorPathNotFound;
  }
};

}  // namespace

std::unique_ptr<CFileSystem> MakeLinuxFileSystem() {
  return std::make_unique<CLinuxFileSystem>();
}

}  // namespace kestra
