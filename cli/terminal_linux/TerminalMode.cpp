#include "cli/terminal_linux/TerminalMode.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <termios.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>

namespace kestra::cli {
namespace {

// What the handlers may touch. The mode is written before the handlers are there.
termios g_found{};
std::atomic<bool> g_isKnown{false};
std::atomic<bool> g_wasInterrupted{false};
std::atomic<bool> g_isDisplayOld{false};
std::atomic<int> g_wake{-1};  // an eventfd that a handler sets; -1 if the system had none to give

std::atomic<int> g_marked{-1};  // a descriptor of the terminal that marks what is pasted; -1: none

constexpr int kEnding[] = {SIGTERM, SIGHUP, SIGQUIT};

// Nothing can be done about a failure: the wait then ends at the next key.
void Wake() {
  const int saved = errno;
  const uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = write(g_wake, &one, sizeof(one));
  errno = saved;
}

// The private mode 2004 of xterm, which other terminals have taken over.
void SetPasteMarks(int fd, bool areOn) {
  constexpr char kOn[] = "\033[?2004h";
  constexpr char kOff[] = "\033[?2004l";
  if (fd == -1) return;
  [[maybe_unused]] const ssize_t written = write(fd, areOn ? kOn : kOff, sizeof(kOn) - 1);
}

bool IsForeground() {
  return tcgetpgrp(STDIN_FILENO) == getpgrp();
}

// tcgetattr() and tcsetattr() may be called by a handler (signal-safety(7)); a process in the
// background would be stopped by it.
void SetMode(const termios& mode) {
  if (g_isKnown && IsForeground()) tcsetattr(STDIN_FILENO, TCSANOW, &mode);
}

void OnEnding(int signal) {
  SetMode(g_found);
  if (IsForeground()) SetPasteMarks(g_marked, false);
  std::signal(signal, SIG_DFL);
  raise(signal);
}

void OnStop(int) {
  const int saved = errno;
  termios present{};
  const bool isKnown = tcgetattr(STDIN_FILENO, &present) == 0;
  SetMode(g_found);
  if (IsForeground()) SetPasteMarks(g_marked, false);
  raise(SIGSTOP);
  // Going on from here.
  if (isKnown) SetMode(present);
  if (IsForeground()) SetPasteMarks(g_marked, true);
  g_isDisplayOld = true;
  Wake();
  errno = saved;
}

void OnInterrupt(int) {
  g_wasInterrupted = true;
  Wake();
}

void OnResize(int) {
  g_isDisplayOld = true;
  Wake();
}

void Handle(int signal, void (*handler)(int), int flags) {
  struct sigaction former {};
  if (sigaction(signal, nullptr, &former) != 0 || former.sa_handler == SIG_IGN) return;
  struct sigaction action {};
  action.sa_handler = handler;
  action.sa_flags = flags;
  sigaction(signal, &action, nullptr);
}

}  // namespace

CTerminalMode::CTerminalMode() {
  g_isKnown = tcgetattr(STDIN_FILENO, &g_found) == 0;
  if (g_wake == -1) g_wake = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  for (const int signal : kEnding) Handle(signal, OnEnding, 0);
  // Not restarted: who reads a line is to hear of it.
  Handle(SIGTSTP, OnStop, 0);
  Handle(SIGINT, OnInterrupt, 0);
  Handle(SIGWINCH, OnResize, 0);
}

CTerminalMode::~CTerminalMode() {
  LeavePastesAlone();
  ReadLines();
  g_isKnown = false;
}

void CTerminalMode::KeepInput() {
  termios keeping = g_found;
  keeping.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
  keeping.c_lflag |= static_cast<tcflag_t>(ISIG | NOFLSH);
  keeping.c_cc[VMIN] = 1;
  keeping.c_cc[VTIME] = 0;
  SetMode(keeping);
}

void CTerminalMode::ReadLines() {
  SetMode(g_found);
}

void CTerminalMode::MarkPastes(int fd) {
  SetPasteMarks(fd, true);
  g_marked = fd;
}

void CTerminalMode::LeavePastesAlone() {
  SetPasteMarks(g_marked.exchange(-1), false);
}

bool CTerminalMode::HasInput() {
  pollfd waiting{STDIN_FILENO, POLLIN, 0};
  return poll(&waiting, 1, 0) == 1 && (waiting.revents & POLLIN) != 0;
}

bool CTerminalMode::AwaitInput() {
  pollfd waiting[] = {{STDIN_FILENO, POLLIN, 0}, {g_wake, POLLIN, 0}};
  if (poll(waiting, 2, -1) < 0) return errno != EINTR;
  uint64_t count = 0;
  if (waiting[1].revents != 0 && read(g_wake, &count, sizeof(count)) > 0) return false;
  return waiting[0].revents != 0;
}

char CTerminalMode::EndKey() {
  return static_cast<char>(g_found.c_cc[VEOF]);
}

bool CTerminalMode::TakeInterrupt() {
  return g_wasInterrupted.exchange(false);
}

bool CTerminalMode::TakeOldDisplay() {
  return g_isDisplayOld.exchange(false);
}

}  // namespace kestra::cli
