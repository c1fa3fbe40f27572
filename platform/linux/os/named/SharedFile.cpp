#include "platform/linux/os/named/SharedFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>

#include "platform/linux/ErrnoMap.h"
#include "platform/linux/os/named/NamedObjects.h"

namespace kestra::os {
namespace {

constexpr char kGuardName[] = "guard";
constexpr uint32_t kGuardStepMs = 5;
constexpr uint32_t kRemovalTimeOutMs = 100;

}  // namespace

CGuard::~CGuard() {
  // Closing alone would not free it if another thread has forked meanwhile.
  if (m_file) flock(m_file.get(), LOCK_UN);
}

SystemError CGuard::Enter(int directory, std::span<const CWaitable* const> stops,
                          uint32_t timeOutMs) {
  const SystemError error = OpenNamedFile(directory, kGuardName, m_file);
  if (error != kErrorSuccess) return error;
  return LockWithin(m_file.get(), stops, timeOutMs, kGuardStepMs);
}

CSharedFile::~CSharedFile() {
  if (!m_file) return;
  m_file = CUniqueFd();
  RemoveIfUnused();
}

SystemError CSharedFile::LearnIfAlone(bool& isAlone) const {
  isAlone = flock(m_file.get(), LOCK_EX | LOCK_NB) == 0;
  return isAlone || errno == EWOULDBLOCK ? kErrorSuccess : LastError();
}

SystemError CSharedFile::Join() const {
  return flock(m_file.get(), LOCK_SH | LOCK_NB) == 0 ? kErrorSuccess : LastError();
}

// Opened anew, since a lock belongs to the opening: a forked child that has ours too is a user as
// well, and keeps the file.
void CSharedFile::RemoveIfUnused() const {
  const int directory = m_directory->get();
  CGuard guard;
  if (guard.Enter(directory, {}, kRemovalTimeOutMs) != kErrorSuccess) return;
  const CUniqueFd file(openat(directory, m_fileName.c_str(),
                              O_RDWR | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC));
  if (file && flock(file.get(), LOCK_EX | LOCK_NB) == 0) unlinkat(directory, m_fileName.c_str(), 0);
}

}  // namespace kestra::os
