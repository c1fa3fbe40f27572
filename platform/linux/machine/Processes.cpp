#include "platform/machine/Processes.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <climits>
#include <string_view>

#include "platform/linux/ErrnoMap.h"
#include "platform/linux/PidFd.h"
#include "platform/linux/machine/Facilities.h"
#include "platform/linux/machine/ProcReader.h"

namespace kestra {
namespace {

class CLinuxProcessList final : public CProcessList {
 public:
  CLinuxProcessList(CUniqueFd proc, std::vector<uint32_t> pids, uint32_t wanted)
      : m_proc(std::move(proc)), m_pids(std::move(pids)), m_reader(m_proc.get(), wanted) {}

  SystemError Next(ProcessRecord& record) override {
    while (m_next < m_pids.size()) {
      const SystemError error = m_reader.Read(m_pids[m_next++], record);
      if (error != kErrorInvalidHandle) return error;
    }
    return kErrorNoMoreItems;
  }

 private:
  CUniqueFd m_proc;
  std::vector<uint32_t> m_pids;
  CProcReader m_reader;
  size_t m_next = 0;
};

class CLinuxProcess final : public CProcess {
 public:
  explicit CLinuxProcess(CUniqueFd pidFd) : m_pidFd(std::move(pidFd)) {}

  // Readable once all threads of the process have ended, whether its parent has asked or not.
  os::NativeHandle Native() const override { return m_pidFd.get(); }
  SystemError RequestClose() override { return Send(SIGTERM); }
  SystemError Terminate() override { return Send(SIGKILL); }

 private:
  // A process that has ended already needs no signal.
  SystemError Send(int signal) {
    if (PidFdSendSignal(m_pidFd.get(), signal) || errno == ESRCH) return kErrorSuccess;
    return LastError();
  }

  CUniqueFd m_pidFd;
};

// The names that are numbers, rising.
SystemError ReadPids(int procFd, std::vector<uint32_t>& pids) {
  CUniqueFd copy(openat(procFd, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!copy) return LastError();
  const CUniqueDirectory directory(fdopendir(copy.get()));
  if (!directory) return LastError();
  copy.Release();
  errno = 0;
  while (const dirent* pEntry = readdir(directory.get())) {
    const std::string_view name = pEntry->d_name;
    uint32_t pid = 0;
    const auto parsed = std::from_chars(name.data(), name.data() + name.size(), pid);
    if (parsed.ec == std::errc() && parsed.ptr == name.data() + name.size()) pids.push_back(pid);
    errno = 0;
  }
  if (errno != 0) return LastError();
  std::sort(pids.begin(), pids.end());
  return kErrorSuccess;
}

class CLinuxProcesses final : public CProcesses {
 public:
  explicit CLinuxProcesses(std::string procRoot) : m_procRoot(std::move(procRoot)) {}

  SystemError Enumerate(uint32_t wanted, std::unique_ptr<CProcessList>& list) override {
    CUniqueFd proc = OpenProc();
    if (!proc) return LastErrorOfPath(m_procRoot);
    std::vector<uint32_t> pids;
    const SystemError error = ReadPids(proc.get(), pids);
    if (error != kErrorSuccess) return error;
    list = std::make_unique<CLinuxProcessList>(std::move(proc), std::move(pids), wanted);
    return kErrorSuccess;
  }

  // The start time is compared while the descriptor is held: from then on the PID stays this
  // process's own, or the process is known to have ended.
  SystemError Open(uint32_t pid, uint64_t startTime, std::unique_ptr<CProcess>& process) override {
    if (pid == 0 || pid > INT_MAX) return kErrorInvalidHandle;
    CUniqueFd pidFd(PidFdOpen(pid));
    // EINVAL and ENOENT are said of the number of a thread.
    if (!pidFd) return errno == EINVAL || errno == ENOENT ? kErrorInvalidHandle : LastError();
    if (startTime != 0) {
      const CUniqueFd proc = OpenProc();
      if (!proc) return LastErrorOfPath(m_procRoot);
      uint64_t found = 0;
      const SystemError error = CProcReader(proc.get(), 0).ReadStartTime(pid, found);
      if (error != kErrorSuccess) return error;
      if (found != startTime) return kErrorInvalidHandle;
    }
    process = std::make_unique<CLinuxProcess>(std::move(pidFd));
    return kErrorSuccess;
  }

 private:
  CUniqueFd OpenProc() const {
    return CUniqueFd(open(m_procRoot.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  }

  std::string m_procRoot;
};

}  // namespace

std::unique_ptr<CProcesses> MakeLinuxProcesses(const std::string& procRoot) {
  return std::make_unique<CLinuxProcesses>(procRoot);
}

}  // namespace kestra
