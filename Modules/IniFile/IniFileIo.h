// Reading and writing the whole of a data file, so that of two writers none loses the other's
// change.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "VLib/src/threads/TerminationLook.h"
#include "platform/machine/FileSystem.h"

namespace kestra {

struct IniContent {
  std::string bytes;
  std::optional<FileInfo> info;         // nothing for a file that is not there
  std::unique_ptr<CFileReader> reader;  // open until the content is done with
};

// Through a link in the last place, too. A file that is not there has no bytes, with success.
// kErrorFileTooLarge, with nothing read, for one of more than kCfgMostBytes; kErrorCancelled when
// it was terminated; kErrorSharingViolation when the file became shorter meanwhile.
SystemError ReadIniFile(CFileSystem& files, const std::string& path, CTerminationLook& termination,
                        IniContent& content);

// Writes the bytes in the place of what was read. kErrorSharingViolation when somebody else has
// changed, removed or made the file since; it is then, as after every other error, what it was.
SystemError WriteIniFile(CFileSystem& files, const std::string& path, const IniContent& read,
                         std::string_view bytes, CTerminationLook& termination);

}  // namespace kestra
