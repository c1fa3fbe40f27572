#include "platform/linux/machine/ProcReader.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstring>
#include <limits>
#include <vector>

#include "platform/linux/Account.h"
#include "platform/linux/ErrnoMap.h"

namespace kestra {
namespace {

// stat and status have a few hundred bytes, unless the user is in very many groups.
constexpr size_t kMaxStatusFile = 64 * 1024;
constexpr size_t kReadBlock = 4096;

// A file of a process that is gone cannot be opened, or not be read any more.
SystemError LastProcError() {
  return errno == ENOENT || errno == ESRCH ? kErrorInvalidHandle : LastError();
}

// Something of the process could not be read. One that has ended is no problem.
void NoteUnread(ProcessRecord& record, SystemError error = LastProcError()) {
  if (error != kErrorInvalidHandle && record.Unread == kErrorSuccess) record.Unread = error;
}

// Counts the entries of a directory without a name being looked at. Nothing if it may not be read.
std::optional<uint32_t> CountEntries(int directory, const char* name) {
  const CUniqueFd fd(openat(directory, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!fd) return std::nullopt;
  alignas(dirent64) char buffer[32 * 1024];
  uint32_t count = 0;
  for (;;) {
    const long bytes = syscall(SYS_getdents64, fd.get(), buffer, sizeof buffer);
    if (bytes < 0) return std::nullopt;
    if (bytes == 0) break;
    for (long at = 0; at < bytes; ++count) {
      uint16_t length = 0;
      std::memcpy(&length, buffer + at + offsetof(dirent64, d_reclen), sizeof length);
      at += length;
    }
  }
  return count >= 2 ? count - 2 : 0;  // without "." and ".."
}

// Since Linux 6.2 the size of the directory "fd" is the number of descriptors.
bool KernelCountsHandles(int procFd) {
  struct stat status {};
  return fstatat(procFd, "self/fd", &status, 0) == 0 && status.st_size > 0;
}

// The kernel gives the directory of a process to the process's effective user, whoever may read its
// memory (task_dump_owner in its fs/proc/base.c). A copy of such a directory belongs to whoever
// made it.
bool OwnersAreEffectiveUsers(int procFd) {
  struct statfs fileSystem {};
  return fstatfs(procFd, &fileSystem) == 0 && fileSystem.f_type == PROC_SUPER_MAGIC;
}

}  // namespace

CProcReader::CProcReader(int procFd, uint32_t wanted)
    : m_procFd(procFd),
      m_wanted(wanted),
      m_pageKB(static_cast<uint64_t>(sysconf(_SC_PAGESIZE)) / 1024),
      m_kernelCountsHandles(KernelCountsHandles(procFd)),
      m_ownersAreEffectiveUsers(OwnersAreEffectiveUsers(procFd)) {}

SystemError CProcReader::Read(uint32_t pid, ProcessRecord& record) {
  record = ProcessRecord();
  record.PID = pid;
  SystemError error = OpenProcess(pid);
  ProcStat stat;
  if (error == kErrorSuccess) error = ReadStat(stat);
  // Where /proc is mounted to hide the processes of others, only their numbers are known.
  // Nor does one that cannot be made out keep the others from being listed.
  if (error == kErrorAccessDenied || error == kErrorInvalidData) {
    record.Unread = error;
    return kErrorSuccess;
  }
  if (error != kErrorSuccess) return error;
  record.ParentPID = stat.parentPid;
  record.StartTime = stat.startTime + 1;  // never 0, which means not known
  const uint64_t workingSet = stat.residentPages * m_pageKB;
  if (workingSet != 0 && workingSet <= std::numeric_limits<uint32_t>::max())
    record.WorkingSetKB = static_cast<uint32_t>(workingSet);
  if (!stat.IsKernelThread() && !stat.IsZombie()) {
    ReadExecutable(record);
    ReadHandleCount(record);
  }
  error = ReadArguments(stat, record);
  if (error == kErrorSuccess) error = ReadUser(record);
  return error;
}

SystemError CProcReader::ReadStartTime(uint32_t pid, uint64_t& startTime) {
  ProcStat stat;
  SystemError error = OpenProcess(pid);
  if (error == kErrorSuccess) error = ReadStat(stat);
  startTime = stat.startTime + 1;
  return error;
}

// All files of a process are opened below this descriptor, so they are one process's even if its
// number is given to another one meanwhile.
SystemError CProcReader::OpenProcess(uint32_t pid) {
  const std::string name = std::to_string(pid);
  m_process = CUniqueFd(openat(m_procFd, name.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  return m_process ? kErrorSuccess : LastProcError();
}

SystemError CProcReader::ReadStat(ProcStat& stat) {
  const SystemError error = ReadFile("stat", kMaxStatusFile);
  if (error != kErrorSuccess) return error;
  // An empty file is that of a process that ended between opening and reading.
  if (m_buffer.empty()) return kErrorInvalidHandle;
  return DecodeStat(m_buffer, stat) ? kErrorSuccess : kErrorInvalidData;
}

void CProcReader::ReadExecutable(ProcessRecord& record) {
  char target[PATH_MAX];
  const ssize_t length = readlinkat(m_process.get(), "exe", target, sizeof target);
  if (length < 0) NoteUnread(record);
  if (length <= 0) return;
  std::string path = DecodeExecutableLink({target, static_cast<size_t>(length)});
  if (!path.empty()) record.FilePath = std::move(path);
  record.Width = WidthOfExecutable();
}

// The link leads to the file itself, wherever its name may lead to by now. The same few files are
// run again and again.
uint32_t CProcReader::WidthOfExecutable() {
  struct stat status {};
  if (fstatat(m_process.get(), "exe", &status, 0) != 0 || !S_ISREG(status.st_mode)) return 0;
  const auto [entry, isNew] = m_widths.try_emplace({status.st_dev, status.st_ino}, 0);
  if (!isNew) return entry->second;
  const CUniqueFd fd(openat(m_process.get(), "exe", O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  char head[kElfHeadBytes];
  if (fd && read(fd.get(), head, sizeof head) == sizeof head)
    entry->second = DecodeElfWidth({head, sizeof head});
  return entry->second;
}

void CProcReader::ReadHandleCount(ProcessRecord& record) {
  if (!m_kernelCountsHandles) {
    record.HandleCount = CountEntries(m_process.get(), "fd");
    if (!record.HandleCount) NoteUnread(record);
    return;
  }
  struct stat status {};
  if (fstatat(m_process.get(), "fd", &status, 0) == 0)
    record.HandleCount = static_cast<uint32_t>(status.st_size);
  else
    NoteUnread(record);
}

SystemError CProcReader::ReadArguments(const ProcStat& stat, ProcessRecord& record) {
  const bool isWanted = (m_wanted & kProcessWantCommandLine) != 0;
  const std::string executable = record.FilePath.value_or(std::string());
  m_buffer.clear();
  if (!stat.IsKernelThread() && !stat.IsZombie() && (isWanted || executable.empty())) {
    const SystemError error = ReadFile("cmdline", kMaxCommandLine);
    if (error == kErrorInvalidHandle) return error;
    if (error != kErrorSuccess) {
      m_buffer.clear();
      NoteUnread(record, error);
    }
  }
  record.ImageName = DecodeImageName(executable, stat, m_buffer);
  if (isWanted) record.CommandLine = DecodeCommandLine(m_buffer);
  return kErrorSuccess;
}

SystemError CProcReader::ReadUser(ProcessRecord& record) {
  if ((m_wanted & kProcessWantUser) == 0) return kErrorSuccess;
  std::optional<uint32_t> uid;
  const SystemError error = ReadEffectiveUid(uid);
  if (error == kErrorInvalidHandle) return error;
  if (error != kErrorSuccess) NoteUnread(record, error);
  if (uid) record.User = UserName(*uid);
  return kErrorSuccess;
}

// The kernel writes some sixty lines for a look into "status", of which one is wanted.
SystemError CProcReader::ReadEffectiveUid(std::optional<uint32_t>& uid) {
  if (!m_ownersAreEffectiveUsers) {
    const SystemError error = ReadFile("status", kMaxStatusFile);
    if (error == kErrorSuccess) uid = DecodeEffectiveUid(m_buffer);
    return error;
  }
  struct stat status {};
  if (fstat(m_process.get(), &status) != 0) return LastProcError();
  uid = status.st_uid;
  return kErrorSuccess;
}

const std::string& CProcReader::UserName(uint32_t uid) {
  const auto [entry, isNew] = m_userNames.try_emplace(uid);
  if (!isNew) return entry->second;
  const std::optional<Account> account = ReadAccount(uid);
  entry->second = account ? account->name : std::to_string(uid);
  return entry->second;
}

SystemError CProcReader::ReadFile(const char* name, size_t limit) {
  m_buffer.clear();
  const CUniqueFd fd(openat(m_process.get(), name, O_RDONLY | O_CLOEXEC));
  if (!fd) return LastProcError();
  while (m_buffer.size() < limit) {
    const size_t size = m_buffer.size();
    const size_t block = std::min(std::max(kReadBlock, size), limit - size);
    m_buffer.resize(size + block);
    const ssize_t count = read(fd.get(), m_buffer.data() + size, block);
    m_buffer.resize(size + static_cast<size_t>(std::max<ssize_t>(count, 0)));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return LastProcError();
    // The kernel gives these files whole where they fit, so a short read is the end.
    if (static_cast<size_t>(count) < block) break;
  }
  return kErrorSuccess;
}

}  // namespace kestra
