// Processes by descriptor: pidfd_open(2) and pidfd_send_signal(2).
#pragma once

#include <sys/syscall.h>
#include <sys/types.h>
#include <unistd.h>

#include <cstdint>

namespace kestra {

// By number: the header that declares them lacks C linkage in glibc 2.36.
inline int PidFdOpen(uint32_t pid) {
  return static_cast<int>(syscall(SYS_pidfd_open, static_cast<pid_t>(pid), 0));
}
inline bool PidFdSendSignal(int pidFd, int signal) {
  return syscall(SYS_pidfd_send_signal, pidFd, signal, nullptr, 0) == 0;
}

}  // namespace kestra
