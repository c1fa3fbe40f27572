#include "platform/os/process/ChildProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/eventfd.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <vector>

#include "platform/linux/ErrnoMap.h"
#include "platform/linux/PidFd.h"
#include "platform/linux/UniqueFd.h"
#include "platform/linux/os/process/ChildReaper.h"
#include "platform/linux/os/process/CommandLine.h"

namespace kestra::os {
namespace {

constexpr uint32_t kSignalExitCode = 128;

class CPosixChild final : public CChildProcess {
 public:
  CPosixChild(CUniqueFd pidFd, uint32_t pid) : m_pidFd(std::move(pidFd)), m_pid(pid) {}
  ~CPosixChild() override {
    if (!m_result) ReapWhenEnded(std::move(m_pidFd));
  }

  NativeHandle Native() const override { return m_pidFd.get(); }
  uint32_t Id() const override { return m_pid; }
  SystemError ExitCode(uint32_t& exitCode) override {
    if (!m_result) {
      siginfo_t info{};
      int status = -1;
      do {
        status = waitid(P_PIDFD, static_cast<id_t>(m_pidFd.get()), &info, WEXITED | WNOHANG);
      } while (status != 0 && errno == EINTR);
      if (status == 0 && info.si_pid == 0) return kErrorNotReady;
      m_result = status == 0 ? Result{kErrorSuccess, CodeOf(info)} : Result{kErrorInvalidHandle, 0};
    }
    if (m_result->error == kErrorSuccess) exitCode = m_result->exitCode;
    return m_result->error;
  }

 private:
  struct Result {
    SystemError error;
    uint32_t exitCode;
  };
  static uint32_t CodeOf(const siginfo_t& info) {
    const auto status = static_cast<uint32_t>(info.si_status);
    return info.si_code == CLD_EXITED ? status : kSignalExitCode + status;
  }

  CUniqueFd m_pidFd;
  uint32_t m_pid;
  std::optional<Result> m_result;  // once it has been reaped
};

// What a child begins with: no signal blocked or ignored, whatever the calling thread does with
// its own, no descriptor but the three, and nothing to read.
class CSpawnSettings {
 public:
  CSpawnSettings(const std::string& directory, bool isHidden) {
    posix_spawnattr_init(&m_attributes);
    sigset_t signals;
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&m_attributes, &signals);
    sigfillset(&signals);
    posix_spawnattr_setsigdefault(&m_attributes, &signals);
    posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);

    posix_spawn_file_actions_init(&m_actions);
    Check(posix_spawn_file_actions_addopen(&m_actions, 0, "/dev/null", O_RDONLY, 0));
    for (int output = 1; isHidden && output <= 2; ++output)
      Check(posix_spawn_file_actions_addopen(&m_actions, output, "/dev/null", O_WRONLY, 0));
    Check(posix_spawn_file_actions_addclosefrom_np(&m_actions, 3));
    if (!directory.empty())
      Check(posix_spawn_file_actions_addchdir_np(&m_actions, directory.c_str()));
  }
  ~CSpawnSettings() {
    posix_spawn_file_actions_destroy(&m_actions);
    posix_spawnattr_destroy(&m_attributes);
  }
  CSpawnSettings(const CSpawnSettings&) = delete;
  CSpawnSettings& operator=(const CSpawnSettings&) = delete;

  SystemError Spawn(std::vector<std::string>& words, pid_t& pid) const {
    if (m_error != 0) return ErrorFromErrno(m_error);
    std::vector<char*> pointers;
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    return ErrorFromErrno(
        posix_spawnp(&pid, pointers[0], &m_actions, &m_attributes, pointers.data(), environ));
  }

 private:
  void Check(int error) {
    if (m_error == 0) m_error = error;
  }

  posix_spawnattr_t m_attributes;
  posix_spawn_file_actions_t m_actions;
  int m_error = 0;
};

SystemError StartWords(std::vector<std::string>& words, const std::string& directory, bool isHidden,
                       std::unique_ptr<CChildProcess>& child) {
  // Kept for the pidfd: a child that runs already could not be waited for without one.
  CUniqueFd reserve(open("/dev/null", O_RDONLY | O_CLOEXEC));
  if (!reserve) return LastError();
  const CSpawnSettings settings(directory, isHidden);
  pid_t pid = -1;
  const SystemError error = settings.Spawn(words, pid);
  if (error != kErrorSuccess) return error;
  reserve = CUniqueFd();
  CUniqueFd pidFd(PidFdOpen(static_cast<uint32_t>(pid)));
  // Where the host ignores SIGCHLD a short-lived child may be gone already. What stands for it is
  // signalled, and knows no exit code.
  if (!pidFd && errno == ESRCH) pidFd = CUniqueFd(eventfd(1, EFD_CLOEXEC));
  if (!pidFd) {
    const SystemError pidFdError = LastError();
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
    return pidFdError;
  }
  child = std::make_unique<CPosixChild>(std::move(pidFd), static_cast<uint32_t>(pid));
  return kErrorSuccess;
}

// "http://x" and "mailto:x", by the scheme of RFC 3986, section 3.1.
bool IsAddress(const std::string& text) {
  const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
  const size_t colon = text.find(':');
  if (colon == std::string::npos || colon < 2 || !isLetter(text[0])) return false;
  return std::all_of(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(colon), [&](char c) {
    return isLetter(c) || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.';
  });
}

SystemError CheckExists(const std::string& file, const std::string& directory) {
  struct stat status {};
  const bool isRelative = !file.starts_with('/') && !directory.empty();
  const std::string path = isRelative ? directory + "/" + file : file;
  return stat(path.c_str(), &status) == 0 ? kErrorSuccess : LastErrorOfPath(path);
}

}  // namespace

std::string QuotedProgram(const std::string& program) {
  std::string quoted = "\"";
  for (const char c : program) {
    if (c == '"' || c == '\\' || c == '$' || c == '`') quoted += '\\';
    quoted += c;
  }
  return quoted + '"';
}

SystemError StartChild(const std::string& commandLine, const std::string& directory,
                       const ChildWindow& window, std::unique_ptr<CChildProcess>& child) {
  std::vector<std::string> words;
  if (HasNul(directory) || !SplitCommandLine(commandLine, words) || words.empty())
    return kErrorBadArguments;
  return StartWords(words, directory, window.isHidden, child);
}

SystemError OpenByShell(const std::string& file, const std::string& /*arguments*/,
                        const std::string& directory, uint32_t /*shellMask*/,
                        uint32_t /*showWindow*/, std::unique_ptr<CChildProcess>& child) {
  if (file.empty() || HasNul(file) || HasNul(directory)) return kErrorBadArguments;
  // A directory that is missing would look like a missing xdg-open below.
  SystemError error = directory.empty() ? kErrorSuccess : CheckExists(directory, "");
  if (error == kErrorSuccess && !IsAddress(file)) error = CheckExists(file, directory);
  if (error != kErrorSuccess) return error;
  // A file name that begins with a dash would be an option.
  std::vector<std::string> words{"xdg-open", (file.starts_with('-') ? "./" : "") + file};
  error = StartWords(words, directory, true, child);
  return error == kErrorFileNotFound ? kErrorCallNotImplemented : error;
}

}  // namespace kestra::os
