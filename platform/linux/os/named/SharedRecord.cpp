#include "platform/os/SharedRecord.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <cerrno>

#include "platform/linux/ErrnoMap.h"
#include "platform/linux/os/named/NamedObjects.h"

// The memory is a mapped file and the event a FIFO. Each user of a memory holds a shared flock(2)
// on its file, which goes with the process however that ends; so who gets the exclusive one is
// alone, and what the file holds is left over from the dead. To turn an exclusive lock into a
// shared one is not one step, so all openings happen under the lock of a guard file.

namespace kestra::os {
namespace {

constexpr size_t kMaximumSize = 4096;
constexpr uint32_t kGuardTimeOutMs = 10'000;
constexpr uint32_t kGuardStepMs = 5;
constexpr char kGuardName[] = "guard";

class CMappedMemory final : public CSharedMemory {
 public:
  CMappedMemory(CUniqueFd file, void* pData, size_t size)
      : m_file(std::move(file)), m_pData(pData), m_size(size) {}
  ~CMappedMemory() override { munmap(m_pData, m_size); }
  void* Data() override { return m_pData; }

 private:
  CUniqueFd m_file;  // holds the shared lock; a forked child that has it too is a user as well
  void* m_pData;
  size_t m_size;
};

class CGuard {
 public:
  CGuard() = default;
  CGuard(const CGuard&) = delete;
  CGuard& operator=(const CGuard&) = delete;
  // Closing alone would not free it if another thread has forked meanwhile.
  ~CGuard() {
    if (m_file) flock(m_file.get(), LOCK_UN);
  }
  SystemError Enter(int directory) {
    const SystemError error = OpenNamedFile(directory, kGuardName, m_file);
    if (error != kErrorSuccess) return error;
    return LockWithin(m_file.get(), nullptr, kGuardTimeOutMs, kGuardStepMs);
  }

 private:
  CUniqueFd m_file;
};

bool IsReadable(int fd) {
  pollfd poll{fd, POLLIN, 0};
  return ::poll(&poll, 1, 0) > 0;
}

// True if there was a signal. Two setters at once may have left a byte each.
bool TakeSignal(int fifo) {
  char bytes[64];
  return read(fifo, bytes, sizeof bytes) > 0;
}

// Open for reading and writing, a FIFO never tells of an end, and keeps what is in it.
class CFifoEvent final : public CSharedEvent {
 public:
  explicit CFifoEvent(CUniqueFd fifo) : m_fifo(std::move(fifo)) {}
  void Set() override {
    const char signal = 1;
    // A full FIFO refuses the byte, but then it is signalled already.
    if (!IsReadable(m_fifo.get())) [[maybe_unused]]
      const ssize_t written = write(m_fifo.get(), &signal, sizeof signal);
  }
  NativeHandle Native() const override { return m_fifo.get(); }
  bool Consume() const override { return TakeSignal(m_fifo.get()); }

 private:
  CUniqueFd m_fifo;
};

SystemError OpenFifo(int directory, const std::string& fileName, CUniqueFd& fifo) {
  if (mkfifoat(directory, fileName.c_str(), S_IRUSR | S_IWUSR) != 0 && errno != EEXIST)
    return LastError();
  CUniqueFd fd(
      openat(directory, fileName.c_str(), O_RDWR | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC));
  if (!fd) return errno == ELOOP ? kErrorAccessDenied : LastError();
  struct stat status {};
  if (fstat(fd.get(), &status) != 0) return LastError();
  if (!S_ISFIFO(status.st_mode) || status.st_uid != geteuid()) return kErrorAccessDenied;
  fifo = std::move(fd);
  return kErrorSuccess;
}

SystemError CheckSize(int file, size_t size) {
  struct stat status {};
  if (fstat(file, &status) != 0) return LastError();
  return status.st_size == static_cast<off_t>(size) ? kErrorSuccess : kErrorInvalidParameter;
}

SystemError FillWithZeros(int file, size_t size) {
  if (ftruncate(file, 0) != 0) return LastError();
  // Space that the file system could not give later would end the process with SIGBUS.
  int error = EINTR;
  while (error == EINTR) error = posix_fallocate(file, 0, static_cast<off_t>(size));
  return ErrorFromErrno(error);
}

// Takes the shared lock. isAlone: nobody else has it, and the file is reset. Under the guard.
SystemError Join(int file, size_t size, bool& isAlone) {
  isAlone = flock(file, LOCK_EX | LOCK_NB) == 0;
  if (!isAlone && errno != EWOULDBLOCK) return LastError();
  const SystemError error = isAlone ? FillWithZeros(file, size) : CheckSize(file, size);
  if (error != kErrorSuccess) return error;
  return flock(file, LOCK_SH | LOCK_NB) == 0 ? kErrorSuccess : LastError();
}

}  // namespace

SystemError OpenSharedRecord(const std::string& memoryName, size_t size,
                             const std::string& eventName, SharedRecord& record) {
  if (size == 0 || size > kMaximumSize) return kErrorInvalidParameter;
  CUniqueFd directory;
  SystemError error = OpenNamedObjectDirectory(directory);
  if (error != kErrorSuccess) return error;
  CGuard guard;
  error = guard.Enter(directory.get());
  CUniqueFd fifo;
  if (error == kErrorSuccess)
    error = OpenFifo(directory.get(), NamedObjectFileName("event", eventName), fifo);
  CUniqueFd file;
  if (error == kErrorSuccess)
    error = OpenNamedFile(directory.get(), NamedObjectFileName("memory", memoryName), file);
  bool isAlone = false;
  if (error == kErrorSuccess) error = Join(file.get(), size, isAlone);
  if (error != kErrorSuccess) return error;
  if (isAlone) TakeSignal(fifo.get());
  void* const pData = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file.get(), 0);
  if (pData == MAP_FAILED) return LastError();
  record.memory = std::make_unique<CMappedMemory>(std::move(file), pData, size);
  record.event = std::make_unique<CFifoEvent>(std::move(fifo));
  return kErrorSuccess;
}

}  // namespace kestra::os
