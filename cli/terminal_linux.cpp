#include <fcntl.h>
#include <locale.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <clocale>
#include <csignal>
#include <cwchar>

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

// Text is UTF-8 whatever the environment says, so the widths are those of this locale.
locale_t Utf8Locale() {
  static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  return locale;
}

class CLocaleScope {
 public:
  explicit CLocaleScope(locale_t locale) : m_old(uselocale(locale)) {}
  ~CLocaleScope() { uselocale(m_old); }
  CLocaleScope(const CLocaleScope&) = delete;
  CLocaleScope& operator=(const CLocaleScope&) = delete;

 private:
  locale_t m_old;
};

// Marks that turn the direction of text around (UAX 9): a name that has them is not shown as it is.
bool IsDirectionMark(wchar_t character) {
  return (character >= 0x202A && character <= 0x202E) ||
         (character >= 0x2066 && character <= 0x2069) || character == 0x200E ||
         character == 0x200F || character == 0x061C;
}

}  // namespace

void ReserveStandardStreams() {
  for (int fd = 0; fd <= 2; ++fd) {
    if (fcntl(fd, F_GETFD) != -1 || errno != EBADF) continue;
    // Opened the wrong way round, so that using it fails. It takes the lowest free number: fd.
    if (open("/dev/null", fd == 0 ? O_WRONLY : O_RDONLY) != fd) return;
  }
}

bool IsTerminal(Stream stream) {
  return isatty(static_cast<int>(stream)) == 1;
}

size_t TerminalWidth() {
  winsize size{};
  if (!IsTerminal(Stream::Out) || ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0) return 0;
  return size.ws_col;
}

TerminalCharacter FirstCharacter(std::string_view text) {
  const auto first = static_cast<unsigned char>(text[0]);
  if (first < 0x80) return {1, first >= 0x20 && first != 0x7F ? 1 : -1};
  if (!Utf8Locale()) return {1, -1};
  const CLocaleScope scope(Utf8Locale());
  wchar_t character = 0;
  std::mbstate_t state{};
  const size_t bytes = std::mbrtowc(&character, text.data(), text.size(), &state);
  if (bytes == 0 || bytes > text.size()) return {1, -1};
  return {bytes, IsDirectionMark(character) ? -1 : wcwidth(character)};
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
