#include <fcntl.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <system_error>

#include "cli/Terminal.h"

namespace kestra::cli {
namespace {

// What the handler may touch; lock-free, so it may (signal-safety(7)).
std::atomic<int> g_event{-1};
std::atomic<bool> g_wasInterrupted{false};

void OnInterrupt(int) {
  const int saved = errno;
  g_wasInterrupted = true;
  const uint64_t one = 1;
  // Nothing can be done about a failure here; the second interrupt still ends the process.
  [[maybe_unused]] const ssize_t written = write(g_event, &one, sizeof(one));
  errno = saved;
}

}  // namespace

void ReserveStandardStreams() {
  for (int fd = 0; fd <= 2; ++fd) {
    if (fcntl(fd, F_GETFD) != -1 || errno != EBADF) continue;
    // Opened the wrong way round, so that using it fails. It takes the lowest free number: fd.
    if (open("/dev/null", fd == 0 ? O_WRONLY : O_RDONLY) != fd) return;
  }
}

std::vector<std::string> CommandLine(int argc, char** argv) {
  return {argv, argv + argc};
}

std::FILE* OpenForReading(const std::string& path) {
  return std::fopen(path.c_str(), "rb");
}

bool IsDirectory(const std::string& path) {
  std::error_code failure;
  return std::filesystem::is_directory(path, failure);
}

std::string FullPath(const std::string& path) {
  std::error_code failure;
  const auto full = std::filesystem::absolute(path, failure);
  return failure ? path : full.string();
}

bool IsTerminal(Stream stream) {
  return isatty(static_cast<int>(stream)) == 1;
}

size_t TerminalWidth() {
  winsize size{};
  if (!IsTerminal(Stream::Out) || ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0) return 0;
  return size.ws_col;
}

CInterruptScope::CInterruptScope() {
  m_event = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  g_event = static_cast<int>(m_event);
  g_wasInterrupted = false;
  struct sigaction old {};
  if (m_event == -1 || sigaction(SIGINT, nullptr, &old) != 0 || old.sa_handler == SIG_IGN) return;
  struct sigaction action {};
  action.sa_handler = OnInterrupt;
  action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
  m_isInstalled = sigaction(SIGINT, &action, nullptr) == 0;
}

CInterruptScope::~CInterruptScope() {
  if (m_isInstalled) std::signal(SIGINT, SIG_DFL);
  g_event = -1;
  if (m_event != -1) close(static_cast<int>(m_event));
}

bool CInterruptScope::WasInterrupted() const {
  return g_wasInterrupted;
}

}  // namespace kestra::cli
