// What the diagnosed machine is.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/base/SystemError.h"

namespace kestra {

enum class SystemFamily { Unknown, Windows, Linux };

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
  // The system class number: 0 unknown, 1 platform 0, 2-5 the 9x family, 6 NT 3, 7 NT 4, 8 NT 5.0,
  // 9 NT 5.1, 10 NT 5.2, 11 NT 6.0 and newer workstations, 12 NT 6.0 and newer otherwise,
  // 13 NT 5.2 R2. 0 on a machine that is not Windows.
  virtual uint32_t SystemClass() const = 0;
  // 1 for a system of 32 bits, 2 for one of 64 bits, 0 unknown.
  virtual uint32_t WordWidth() const = 0;
  virtual std::string ComputerName() const = 0;
  // A folder without trailing separator; nothing when the machine has none such. The file system
  // need not hold it.
  virtual std::optional<std::string> FolderPath(Folder folder) const = 0;
  // '\\' for Windows machines, '/' for Linux.
  virtual char PathSeparator() const = 0;
  // A path's greatest length in bytes, the end included.
  virtual size_t MaxPath() const = 0;
};

}  // namespace kestra
