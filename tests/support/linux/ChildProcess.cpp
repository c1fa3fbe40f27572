#include "tests/support/linux/ChildProcess.h"

#include <signal.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>

#include "platform/os/Clock.h"
#include "tests/support/Peer.h"
#include "tests/support/TempDirectory.h"

extern char** environ;

namespace kestra::test {

CChildProcess::CChildProcess(const std::string& path, const std::vector<std::string>& arguments) {
  std::vector<char*> pointers;
  for (const std::string& argument : arguments)
    pointers.push_back(const_cast<char*>(argument.c_str()));
  pointers.push_back(nullptr);
  if (posix_spawn(&m_pid, path.c_str(), nullptr, nullptr, pointers.data(), environ) != 0)
    throw std::runtime_error("cannot start " + path);
}

CChildProcess::~CChildProcess() {
  if (m_pid < 0) return;
  kill(m_pid, SIGKILL);
  Reap();
}

void CChildProcess::AwaitExec() const {
  const std::string process = "/proc/" + std::to_string(m_pid);
  std::error_code error;
  const auto own = std::filesystem::read_symlink("/proc/self/exe", error);
  for (int tries = 0; tries < 5000; ++tries) {
    const auto found = std::filesystem::read_symlink(process + "/exe", error);
    // The arguments are there a moment after the image.
    if (!error && found != own && !ReadWholeFile(process + "/cmdline").empty()) return;
    os::Sleep(1);
  }
  throw std::runtime_error("the child does not start");
}

void CChildProcess::Reap() {
  waitpid(m_pid, nullptr, 0);
  m_pid = -1;
}

std::shared_ptr<void> StartPeer(const std::string& path,
                                const std::vector<std::string>& arguments) {
  std::vector<std::string> words{path};
  words.insert(words.end(), arguments.begin(), arguments.end());
  return std::make_shared<CChildProcess>(path, words);
}

int RunInChild(const std::function<int()>& body) {
  const pid_t child = fork();
  if (child == 0) _exit(body());
  int status = -1;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

int RunWithoutDescriptors(const std::function<int()>& body) {
  return RunInChild([&] {
    const rlimit none{0, 0};
    return setrlimit(RLIMIT_NOFILE, &none) == 0 ? body() : -1;
  });
}

bool IsRoot() {
  return geteuid() == 0;
}

bool RunAsOrdinaryUser(const std::function<bool()>& body) {
  constexpr uid_t kNobody = 65534;
  return RunInChild([&] {
           if (IsRoot() && (setgid(kNobody) != 0 || setuid(kNobody) != 0)) return 2;
           return body() ? 0 : 1;
         }) == 0;
}

}  // namespace kestra::test
