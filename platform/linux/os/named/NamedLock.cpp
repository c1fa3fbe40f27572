#include "platform/os/NamedLock.h"

#include <sys/file.h>
#include <sys/stat.h>

#include "platform/linux/os/named/NamedObjects.h"
#include "platform/os/Clock.h"

// A lock is held by flock(2) on a file, which belongs to the open file and not to the process: so
// threads exclude each other too, and the system lets go of it when the process ends in whatever
// way. The holder removes the file before it lets go, and who gets the lock of a file that has no
// name any more begins again with a new one; so no files are left but those of killed holders, and
// these only until the next holder.

namespace kestra::os {
namespace {

constexpr uint32_t kMaximumStepMs = 50;

class CFileLock final : public CNamedLock {
 public:
  CFileLock(CUniqueFd directory, std::string fileName, CUniqueFd file)
      : m_directory(std::move(directory)),
        m_fileName(std::move(fileName)),
        m_file(std::move(file)) {}
  ~CFileLock() override {
    unlinkat(m_directory.get(), m_fileName.c_str(), 0);
    // Closing alone would not free it if the process has forked meanwhile.
    flock(m_file.get(), LOCK_UN);
  }

 private:
  CUniqueFd m_directory;
  std::string m_fileName;
  CUniqueFd m_file;
};

bool HasName(int file) {
  struct stat status {};
  return fstat(file, &status) == 0 && status.st_nlink != 0;
}

NamedLockResult ResultOf(SystemError error) {
  switch (error) {
    case kErrorSuccess:
      return NamedLockResult::Held;
    case kErrorTimeout:
      return NamedLockResult::TimedOut;
    case kErrorCancelled:
      return NamedLockResult::Terminated;
    default:
      return NamedLockResult::Failed;
  }
}

}  // namespace

NamedLockResult AcquireNamedLock(const std::string& name, const CWaitable* pTermination,
                                 uint32_t timeOutMs, std::unique_ptr<CNamedLock>& lock) {
  CUniqueFd directory;
  if (OpenNamedObjectDirectory(directory) != kErrorSuccess) return NamedLockResult::Failed;
  std::string fileName = NamedObjectFileName("lock", name);
  const uint32_t start = TickCount();
  for (;;) {
    CUniqueFd file;
    if (OpenNamedFile(directory.get(), fileName, file) != kErrorSuccess)
      return NamedLockResult::Failed;
    const uint32_t passed = TickCount() - start;
    const uint32_t rest = timeOutMs == kInfinite ? kInfinite
                          : passed < timeOutMs   ? timeOutMs - passed
                                                 : 0;
    const SystemError error = LockWithin(file.get(), {&pTermination, 1}, rest, kMaximumStepMs);
    if (error != kErrorSuccess) return ResultOf(error);
    if (HasName(file.get())) {
      lock =
          std::make_unique<CFileLock>(std::move(directory), std::move(fileName), std::move(file));
      return NamedLockResult::Held;
    }
  }
}

}  // namespace kestra::os
