#include "platform/linux/machine/files/FileWriter.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <optional>

#include "platform/linux/ErrnoMap.h"
#include "platform/linux/UniqueFd.h"
#include "platform/linux/machine/files/FileStatus.h"
#include "platform/linux/machine/files/Place.h"
#include "platform/linux/machine/files/ReplacedFile.h"
#include "platform/linux/machine/files/TemporaryFile.h"

namespace kestra {
namespace {

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
  void ExpectUnchanged(const FileInfo& read) override { m_expected = read; }
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
    if (m_expected && !HoldUnchanged()) return kErrorSharingViolation;
    const SystemError error = m_file.MoveTo(m_place.name, m_existing);
    if (error == kErrorSuccess) SyncDirectory(m_place.directory.get(), m_file.File());
    return error;
  }
  // Holds the old file's lock, which goes with the descriptor, and looks at what is there: the name
  // may have come to mean another file, or somebody may have written into this one.
  bool HoldUnchanged() {
    if (!m_replaced || flock(m_replaced.get(), LOCK_EX | LOCK_NB) != 0) return false;
    FileInfo open, named;
    return ReadFileInfo(m_replaced.get(), false, open) && IsSameState(open, *m_expected) &&
           ReadFileInfo(m_place.directory.get(), m_place.name.c_str(), false, named) &&
           IsSameState(named, *m_expected);
  }

  Place m_place;
  CUniqueFd m_replaced;  // open file that is replaced; none for a new one
  Existing m_existing;
  CTemporaryFile m_file;
  std::optional<timespec> m_writeTime;  // of a copy
  std::optional<FileInfo> m_expected;   // what is replaced, or nothing is
  SystemError m_error = kErrorSuccess;  // what every later call answers
};

// The mode of what stands at the place; 0 for nothing.
SystemError FindFile(const Place& place, mode_t& mode) {
  struct stat status {};
  const bool isThere =
      fstatat(place.directory.get(), place.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
  if (!isThere && errno != ENOENT) return LastError();
  mode = isThere ? status.st_mode : 0;
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
  mode_t found = 0;
  error = FindFile(place, found);
  if (error == kErrorSuccess && found != 0 && existing == Existing::Refuse) return kErrorFileExists;
  if (error == kErrorSuccess && S_ISLNK(found) && lastLink == LastLink::Follow) {
    error = FollowLinks(place);
    if (error == kErrorSuccess) error = FindFile(place, found);
  }
  if (error != kErrorSuccess) return error;
  CUniqueFd replaced;
  if (found != 0) error = S_ISREG(found) ? OpenReplaced(place, replaced) : kErrorAccessDenied;
  if (error != kErrorSuccess) return error;
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
  mode_t found = 0;
  // Looked at now so that nothing is copied for no use; Commit does not replace either.
  error = FindFile(place, found);
  if (error == kErrorSuccess && found != 0) error = kErrorFileExists;
  if (error != kErrorSuccess) return error;
  auto made = std::make_unique<CLinuxFileWriter>(std::move(place), CUniqueFd(), Existing::Refuse);
  error = made->OpenCopy(mode, writeTime);
  if (error == kErrorSuccess) writer = std::move(made);
  return error;
}

}  // namespace kestra
