#include "platform/linux/machine/files/FileWriter.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <optional>

#include "platform/linux/ErrnoMap.h"
#include "platform/linux/UniqueFd.h"
#include "platform/linux/machine/files/ReplacedFile.h"
#include "platform/linux/machine/files/TemporaryFile.h"

namespace kestra {
namespace {

// A name in an open directory: all later steps are taken there, whatever the path comes to mean.
struct Place {
  CUniqueFd directory;
  std::string name;
};

SystemError OpenPlace(const std::string& path, Place& place) {
  const size_t slash = path.rfind('/');
  place.name = path.substr(slash == std::string::npos ? 0 : slash + 1);
  if (path.empty()) return kErrorPathNotFound;
  if (place.name.empty() || place.name == "." || place.name == "..") return kErrorAccessDenied;
  const std::string directory = slash == std::string::npos ? "." : path.substr(0, slash + 1);
  place.directory = CUniqueFd(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  // One may write where one may not list.
  if (!place.directory && errno == EACCES)
    place.directory = CUniqueFd(open(directory.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (place.directory) return kErrorSuccess;
  return errno == ENOENT ? kErrorPathNotFound : LastError();
}

// The directory's entry has to be on the disk too. It is in place by now and whole in any case, so
// that a failure here decides nothing but what a crash of the system would show.
void SyncDirectory(int directory, int file) {
  if (fsync(directory) != 0) syncfs(file);
}

class CLinuxFileWriter final : public CFileWriter {
 public:
  CLinuxFileWriter(Place place, CUniqueFd replaced, Existing existing)
      : m_place(std::move(place)),
        m_replaced(std::move(replaced)),
        m_existing(existing),
        m_file(m_place.directory.get()) {}

  SystemError Open(NewRights rights) {
    // What is replaced may be private; until its mode is taken over nobody else gets at the new
    // one.
    constexpr mode_t kPrivate = S_IRUSR | S_IWUSR;
    constexpr mode_t kAll = kPrivate | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;
    return m_file.Open(m_replaced || rights == NewRights::OwnerOnly ? kPrivate : kAll);
  }
  SystemError OpenCopy(mode_t mode, const timespec& writeTime) {
    m_writeTime = writeTime;
    return m_file.Open(mode);
  }
  SystemError Write(std::string_view bytes) override {
    while (m_error == kErrorSuccess && !bytes.empty()) {
      const ssize_t count = write(m_file.File(), bytes.data(), bytes.size());
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) m_error = LastError();
      if (count == 0) m_error = kErrorDiskFull;
      bytes.remove_prefix(count > 0 ? static_cast<size_t>(count) : 0);
    }
    return m_error;
  }
  SystemError Commit() override {
    if (m_error != kErrorSuccess) return m_error;
    m_error = PutInPlace();
    if (m_error != kErrorSuccess) return m_error;
    m_error = kErrorInvalidHandle;  // for every later call
    return kErrorSuccess;
  }

 private:
  SystemError PutInPlace() {
    if (m_replaced) {
      const SystemError error = TakeOverAttributes(m_replaced.get(), m_file.File());
      if (error != kErrorSuccess) return error;
    }
    // A file system that keeps no times does no harm to what the file holds.
    if (m_writeTime) {
      const timespec times[] = {{.tv_sec = 0, .tv_nsec = UTIME_OMIT}, *m_writeTime};
      futimens(m_file.File(), times);
    }
    // EINVAL: a file system that has no disk to bring it to.
    if (fsync(m_file.File()) != 0 && errno != EINVAL) return LastError();
    const SystemError error = m_file.MoveTo(m_place.name, m_existing);
    if (error == kErrorSuccess) SyncDirectory(m_place.directory.get(), m_file.File());
    return error;
  }

  Place m_place;
  CUniqueFd m_replaced;  // open file that is replaced; none for a new one
  Existing m_existing;
  CTemporaryFile m_file;
  std::optional<timespec> m_writeTime;  // of a copy
  SystemError m_error = kErrorSuccess;  // what every later call answers
};

// The path that a link leads to at last.
SystemError ResolveLink(const std::string& path, std::string& target) {
  const std::unique_ptr<char, decltype(&free)> resolved(realpath(path.c_str(), nullptr), free);
  // The link is there, so what is missing is what it leads to.
  if (!resolved) return errno == ENOENT ? kErrorFileNotFound : LastError();
  target = resolved.get();
  return kErrorSuccess;
}

// Opens what is replaced: the caller must have the right to write into it.
SystemError OpenReplaced(const Place& place, CUniqueFd& replaced) {
  constexpr int kFlags = O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY;
  replaced = CUniqueFd(openat(place.directory.get(), place.name.c_str(), kFlags));
  struct stat status {};
  if (!replaced || fstat(replaced.get(), &status) != 0)
    return errno == ELOOP ? kErrorAccessDenied : LastError();
  return S_ISREG(status.st_mode) ? kErrorSuccess : kErrorAccessDenied;
}

}  // namespace

SystemError BeginLinuxWrite(const std::string& path, LastLink lastLink, Existing existing,
                            NewRights rights, std::unique_ptr<CFileWriter>& writer) {
  if (HasNul(path)) return kErrorInvalidName;
  Place place;
  SystemError error = OpenPlace(path, place);
  if (error != kErrorSuccess) return error;
  struct stat status {};
  const int found =
      fstatat(place.directory.get(), place.name.c_str(), &status, AT_SYMLINK_NOFOLLOW);
  if (found != 0 && errno != ENOENT) return LastError();
  CUniqueFd replaced;
  if (found == 0) {
    if (existing == Existing::Refuse) return kErrorFileExists;
    if (S_ISLNK(status.st_mode)) {
      if (lastLink == LastLink::Refuse) return kErrorAccessDenied;
      std::string target;
      error = ResolveLink(path, target);
      // What it leads to is no link, and if it has become one it is refused.
      return error == kErrorSuccess
                 ? BeginLinuxWrite(target, LastLink::Refuse, existing, rights, writer)
                 : error;
    }
    if (!S_ISREG(status.st_mode)) return kErrorAccessDenied;
    error = OpenReplaced(place, replaced);
    if (error != kErrorSuccess) return error;
  }
  auto made = std::make_unique<CLinuxFileWriter>(std::move(place), std::move(replaced), existing);
  error = made->Open(rights);
  if (error == kErrorSuccess) writer = std::move(made);
  return error;
}

SystemError BeginLinuxCopy(const std::string& path, mode_t mode, const timespec& writeTime,
                           std::unique_ptr<CFileWriter>& writer) {
  if (HasNul(path)) return kErrorInvalidName;
  Place place;
  SystemError error = OpenPlace(path, place);
  if (error != kErrorSuccess) return error;
  struct stat status {};
  // Looked at now so that nothing is copied for no use; Commit does not replace either.
  if (fstatat(place.directory.get(), place.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0)
    return kErrorFileExists;
  if (errno != ENOENT) return LastError();
  auto made = std::make_unique<CLinuxFileWriter>(std::move(place), CUniqueFd(), Existing::Refuse);
  error = made->OpenCopy(mode, writeTime);
  if (error == kErrorSuccess) writer = std::move(made);
  return error;
}

}  // namespace kestra
