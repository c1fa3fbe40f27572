// The processes that a Windows system runs for itself.
#pragma once

#include <cstdint>
#include <string>

namespace kestra {

// The greatest PID that Windows keeps for itself: its idle process is 0, its kernel 4.
inline constexpr uint32_t kLastSystemPID = 4;

// A process's image name: the system names its own two differently from version to version, and in
// some lists not at all.
inline std::string ProcessName(uint32_t pid, std::string listedName) {
  if (pid == 0) return "System Idle Process";
  if (pid == kLastSystemPID) return "System";
  return listedName;
}

}  // namespace kestra
