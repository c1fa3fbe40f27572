// FileVersionInfo: the version resource of a program file of Windows, read on any machine.
//
//   FileVersionInfo info;
//   if (info.Load(machine, path) == kErrorSuccess) info.GetVersionText(FileVersionInfo::kFile);
//
// The file is read through the machine's file facility and taken apart by the decoders in PeFile.h
// and VersionBlock.h, so that a DLL on a Windows volume has its version read from Linux. A file
// that is no program of Windows, or has no version resource, has none: that is no failure of
// reading.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/base/SystemError.h"
#include "platform/machine/Machine.h"
#include "platform/os/Wait.h"

namespace kestra {

class FileVersionInfo {
 public:
  // Which of the two versions of VS_FIXEDFILEINFO.
  static constexpr uint32_t kProduct = 5;
  static constexpr uint32_t kFile = 9;

  // kErrorSuccess when there is a version block; kErrorResourceTypeNotFound (1813) when the file
  // was read and has none; the file facility's error when it could not be read;
  // kErrorCallNotImplemented on a machine without files; kErrorCancelled when pTermination (may be
  // null) was signalled. Reads the headers and the resource only, however large the file is.
  SystemError Load(CMachine& machine, const std::string& path,
                   const os::CWaitable* pTermination = nullptr);

  // A string of the block: by a path such as "\StringFileInfo\040904b0\Comments" as it stands, else
  // by its name in the first language of the block. UTF-8. Nothing if there is none.
  std::optional<std::string> GetString(std::string_view name) const;
  // "1.2.3.4" of VS_FIXEDFILEINFO; nothing without one.
  std::optional<std::string> GetFixedVersion(uint32_t which) const;
  // The fixed version, or, where that is missing or "0.0.0.0", the string "FileVersion" or
  // "ProductVersion", trimmed of blanks. Empty if there is neither.
  std::string GetVersionText(uint32_t which) const;

 private:
  std::string m_block;
};

}  // namespace kestra
