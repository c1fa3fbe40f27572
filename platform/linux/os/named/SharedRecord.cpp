#include "platform/os/SharedRecord.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

#include "platform/linux/ErrnoMap.h"
#include "platform/linux/os/named/NamedObjects.h"
#include "platform/linux/os/named/SharedFile.h"

// The memory is a mapped file and the event a FIFO, each with the lock of its users (SharedFile.h).

namespace kestra::os {
namespace {

constexpr size_t kMaximumSize = 4096;
constexpr uint32_t kTimeOutMs = 10'000;
constexpr uint32_t kTimeOutWithoutStopMs = 1000;

class CMappedMemory final : public CSharedMemory {
 public:
  CMappedMemory(CSharedFile file, void* pData, size_t size)
      : m_file(std::move(file)), m_pData(pData), m_size(size) {}
  ~CMappedMemory() override { munmap(m_pData, m_size); }
  void* Data() override { return m_pData; }

 private:
  CSharedFile m_file;
  void* m_pData;
  size_t m_size;
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
  explicit CFifoEvent(CSharedFile fifo) : m_fifo(std::move(fifo)) {}
  void Set() override {
    const char signal = 1;
    // A full FIFO refuses the byte, but then it is signalled already.
    if (!IsReadable(m_fifo.get())) [[maybe_unused]]
      const ssize_t written = write(m_fifo.get(), &signal, sizeof signal);
  }
  NativeHandle Native() const override { return m_fifo.get(); }
  bool Consume() const override { return TakeSignal(m_fifo.get()); }

 private:
  CSharedFile m_fifo;
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

// A thread's number, by which owners know each other, is unique within a namespace of processes
// only, and containers may share the directory.
SystemError ProcessNamespace(std::string& number) {
  struct stat status {};
  if (stat("/proc/self/ns/pid", &status) != 0) return LastError();
  number = std::to_string(status.st_ino);
  return kErrorSuccess;
}

// isAlone: nobody else has it open, and it is reset. Under the guard.
SystemError JoinMemory(const CSharedFile& file, size_t size, bool& isAlone) {
  SystemError error = file.LearnIfAlone(isAlone);
  if (error != kErrorSuccess) return error;
  error = isAlone ? FillWithZeros(file.get(), size) : CheckSize(file.get(), size);
  return error == kErrorSuccess ? file.Join() : error;
}

bool HasAny(std::span<const CWaitable* const> stops) {
  return std::any_of(stops.begin(), stops.end(), [](const CWaitable* p) { return p != nullptr; });
}

// Opens both files and joins their users. What was opened leaves again with its owner.
SystemError OpenFiles(int directory, const std::string& memoryName, const std::string& eventName,
                      size_t size, std::span<const CWaitable* const> stops, CSharedFile& memory,
                      CSharedFile& fifo) {
  CGuard guard;
  SystemError error =
      guard.Enter(directory, stops, HasAny(stops) ? kTimeOutMs : kTimeOutWithoutStopMs);
  if (error != kErrorSuccess) return error;
  CUniqueFd fifoFd;
  error = OpenFifo(directory, eventName, fifoFd);
  if (error != kErrorSuccess) return error;
  fifo.Take(std::move(fifoFd));
  error = fifo.Join();
  CUniqueFd memoryFd;
  if (error == kErrorSuccess) error = OpenNamedFile(directory, memoryName, memoryFd);
  if (error != kErrorSuccess) return error;
  memory.Take(std::move(memoryFd));
  bool isAlone = false;
  error = JoinMemory(memory, size, isAlone);
  if (error == kErrorSuccess && isAlone) TakeSignal(fifo.get());
  return error;
}

}  // namespace

SystemError OpenSharedRecord(const std::string& memoryName, size_t size,
                             const std::string& eventName, SharedRecord& record,
                             std::span<const CWaitable* const> stops) {
  if (size == 0 || size > kMaximumSize) return kErrorInvalidParameter;
  CUniqueFd directoryFd;
  SystemError error = OpenNamedObjectDirectory(directoryFd);
  std::string processNamespace;
  if (error == kErrorSuccess) error = ProcessNamespace(processNamespace);
  if (error != kErrorSuccess) return error;
  const auto directory = std::make_shared<const CUniqueFd>(std::move(directoryFd));
  const std::string memoryFile = NamedObjectFileName("memory." + processNamespace, memoryName);
  const std::string eventFile = NamedObjectFileName("event." + processNamespace, eventName);
  CSharedFile memory(directory, memoryFile);
  CSharedFile fifo(directory, eventFile);
  error = OpenFiles(directory->get(), memoryFile, eventFile, size, stops, memory, fifo);
  if (error != kErrorSuccess) return error;
  void* const pData = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, memory.get(), 0);
  if (pData == MAP_FAILED) return LastError();
  auto pMemory = std::make_unique<CMappedMemory>(std::move(memory), pData, size);
  record.event = std::make_unique<CFifoEvent>(std::move(fifo));
  record.memory = std::move(pMemory);
  return kErrorSuccess;
}

}  // namespace kestra::os
