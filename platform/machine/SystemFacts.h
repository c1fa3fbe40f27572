// What the diagnosed machine is.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/base/SystemError.h"

namespace kestra {

enum class SystemFamily { Unknown, Windows, Linux };

// What a Windows system says of itself, as its functions answered; what they mean is decided above.
// Nothing stands for what a system that old does not tell. Sources: the Win32 pages of
// OSVERSIONINFOEX, SYSTEM_INFO, GetSystemMetrics and GetProductInfo.
struct WindowsVersion {
  uint32_t platformId = 0;  // 0 on top of DOS, 1 the 9x family, 2 NT
  uint32_t major = 0;
  uint32_t minor = 0;
  std::string text{};  // szCSDVersion: "Service Pack 1"; " A " and the like on 9x
  std::optional<uint32_t> productType{};  // 1 workstation, 2 domain controller, 3 server
  uint32_t suiteMask = 0;
  std::optional<uint32_t> architecture{};  // of the system, not of this process: 0 Intel, 9 AMD64
  bool isServerR2 = false;                 // SM_SERVERR2 (89)
  bool isMediaCenter = false;              // SM_MEDIACENTER (87)
  bool isTabletPc = false;                 // SM_TABLETPC (86)
  std::optional<uint32_t> product{};       // GetProductInfo
};

// What tells a system of 64 bits from one of 32.
struct SystemWidth {
  bool isKnown = false;                // false: the functions that would tell cannot be used
  std::optional<bool> isRedirected{};  // this process is one of 32 bits on a system of 64
                                       // (IsWow64Process); nothing where that cannot be asked
  bool isWide = false;                 // the system has a folder for redirected programs
                                       // (GetSystemWow64Directory); on Linux its kernel has 64 bits
};

// Well-known folders, by what a path token or a module asks for.
enum class Folder {
  Windows,  // the Windows folder; "/" on Linux
  System,   // the system folder
  Temp,
  Inf,
  Desktop,
  Programs,  // the start menu's programs
  Startup,
  AppData,
  CommonAppData,
  ProgramFiles,  // the process's own view
  ProgramFiles32,
  ProgramFiles64,
  CdDrive,
  SystemDrive,  // "C:" on Windows, empty on Linux
};

// Facility "system facts". Every machine has it. All methods may be called from any thread and do
// not block for long. Text is UTF-8.
class CSystemFacts {
 public:
  virtual ~CSystemFacts() = default;
  virtual SystemFamily Family() const = 0;
  // Nothing on a machine that is not Windows.
  virtual std::optional<WindowsVersion> Windows() const = 0;
  virtual SystemWidth Width() const = 0;
  virtual std::string ComputerName() const = 0;
  // A folder without trailing separator; nothing when the machine has none such. The file system
  // need not hold it. A Windows machine gives what its own functions answer: of what only its
  // registry tells, and of what stands for a missing one, VLib/src/paths/ knows.
  virtual std::optional<std::string> FolderPath(Folder folder) const = 0;
  // '\\' for Windows machines, '/' for Linux.
  virtual char PathSeparator() const = 0;
  // A path's greatest length in bytes, the end included.
  virtual size_t MaxPath() const = 0;
};

}  // namespace kestra
