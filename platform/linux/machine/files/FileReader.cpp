#include "platform/linux/machine/files/FileReader.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <limits>

#include "platform/linux/ErrnoMap.h"
#include "platform/linux/UniqueFd.h"
#include "platform/linux/machine/files/FileStatus.h"
#include "platform/linux/machine/files/Place.h"

namespace kestra {
namespace {

class CLinuxFileReader final : public CFileReader {
 public:
  CLinuxFileReader(CUniqueFd fd, bool isHidden) : m_fd(std::move(fd)), m_isHidden(isHidden) {}

  SystemError Info(FileInfo& info) override {
    return ReadFileInfo(m_fd.get(), m_isHidden, info) ? kErrorSuccess : LastError();
  }
  SystemError Read(size_t limit, std::string& bytes) override {
    // Room is made for what one call may bring and not for all that the caller would take.
    constexpr size_t kMostAtOnce = 1 << 20;
    const size_t before = bytes.size();
    const size_t wanted = std::min(limit, kMostAtOnce);
    bytes.resize(before + wanted);
    ssize_t count = -1;
    do {
      count = read(m_fd.get(), bytes.data() + before, wanted);
    } while (count < 0 && errno == EINTR);
    const SystemError error = count < 0 ? LastError() : kErrorSuccess;
    bytes.resize(before + (count < 0 ? 0 : static_cast<size_t>(count)));
    return error;
  }
  SystemError Seek(uint64_t offset) override {
    if (offset > static_cast<uint64_t>(std::numeric_limits<off_t>::max()))
      return kErrorInvalidParameter;
    return lseek(m_fd.get(), static_cast<off_t>(offset), SEEK_SET) < 0 ? LastError()
                                                                       : kErrorSuccess;
  }

 private:
  CUniqueFd m_fd;
  bool m_isHidden;
};

bool IsPlainFile(const Place& place) {
  struct stat status {};
  return fstatat(place.directory.get(), place.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
         S_ISREG(status.st_mode);
}

}  // namespace

// Follows no link: one that came since the file was looked at is refused.
SystemError OpenNamedFile(int directory, const std::string& name, CUniqueFd& file) {
  constexpr int kFlags = O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY | O_NOFOLLOW;
  // A look at a file should not show as its last access. Only its owner may ask for that.
  CUniqueFd fd(openat(directory, name.c_str(), kFlags | O_NOATIME));
  if (!fd && errno == EPERM) fd = CUniqueFd(openat(directory, name.c_str(), kFlags));
  if (!fd) return errno == ELOOP ? kErrorAccessDenied : LastError();
  struct stat status {};
  if (fstat(fd.get(), &status) != 0) return LastError();
  if (!S_ISREG(status.st_mode)) return kErrorAccessDenied;
  file = std::move(fd);
  return kErrorSuccess;
}

SystemError OpenPlainFile(const std::string& path, LastLink lastLink, CUniqueFd& file) {
  if (HasNul(path)) return kErrorInvalidName;
  // Looked at first, since the opening of a device may already do something.
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0) return LastErrorOfPath(path);
  if (S_ISREG(status.st_mode)) return OpenNamedFile(AT_FDCWD, path, file);
  if (!S_ISLNK(status.st_mode) || lastLink == LastLink::Refuse) return kErrorAccessDenied;
  Place place;
  SystemError error = OpenPlace(path, place);
  if (error == kErrorSuccess) error = FollowLinks(place);
  if (error == kErrorSuccess && !IsPlainFile(place)) error = kErrorAccessDenied;
  return error == kErrorSuccess ? OpenNamedFile(place.directory.get(), place.name, file) : error;
}

std::unique_ptr<CFileReader> MakeFileReader(CUniqueFd file, bool isHidden) {
  return std::make_unique<CLinuxFileReader>(std::move(file), isHidden);
}

SystemError OpenLinuxFile(const std::string& path, LastLink lastLink,
                          std::unique_ptr<CFileReader>& reader) {
  CUniqueFd fd;
  const SystemError error = OpenPlainFile(path, lastLink, fd);
  if (error == kErrorSuccess) reader = MakeFileReader(std::move(fd), IsHiddenName(path));
  return error;
}

}  // namespace kestra
