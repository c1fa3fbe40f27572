// Decoders of the files below /proc/PID: bytes in, values out, no I/O. Source: proc(5).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kestra {

// What is used of /proc/PID/stat.
struct ProcStat {
  std::string name;        // at most 15 bytes, more for kernel threads; any byte may stand in it
  char state = '?';        // 'Z' and 'X' have ended
  uint32_t parentPid = 0;  // 0 for a process without parent in our PID namespace
  uint32_t flags = 0;      // PF_... of the kernel
  uint64_t startTime = 0;  // clock ticks since boot
  uint64_t residentPages = 0;

  bool IsKernelThread() const;
  bool IsZombie() const { return state == 'Z' || state == 'X'; }
};

// False if the line is not one that the kernel writes.
bool DecodeStat(std::string_view line, ProcStat& stat);

// The effective user id out of /proc/PID/status: whose rights the process has.
std::optional<uint32_t> DecodeEffectiveUid(std::string_view status);

// The arguments of /proc/PID/cmdline as one line. Nothing for a process without arguments.
//
// Arguments are separated by one blank. One that is empty or holds white space or a quote stands in
// double quotes, with a backslash before each double quote and backslash in it. A lone argument
// stays as it is, since a server that writes its state there ("sshd: ann [priv]") has put a whole
// line into it; NULs at the end, with which such servers fill up, are dropped. The result has at
// most kMaxCommandLine bytes.
inline constexpr size_t kMaxCommandLine = 1024 * 1024;
std::optional<std::string> DecodeCommandLine(std::string_view bytes);

// 32 or 64 by the class byte of an ELF header, 0 for anything else. Source: elf(5).
inline constexpr size_t kElfHeadBytes = 5;
uint32_t DecodeElfWidth(std::string_view head);

// The target of /proc/PID/exe, without the mark that the kernel adds when the file has been
// removed or replaced since (after an update, say). Empty for a file that never had a path, as
// those of memfd_create(2).
std::string DecodeExecutableLink(std::string_view target);

// The image name: the executable's file name. Where that cannot be read it is the kernel's name for
// the process; the kernel cuts it after 15 bytes, so arguments' first word completes it if it
// begins so.
std::string DecodeImageName(const std::string& executable, const ProcStat& stat,
                            std::string_view commandLineBytes);

}  // namespace kestra
