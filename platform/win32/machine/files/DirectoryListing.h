// The entries of one directory.
#pragma once

#include <memory>

#include "platform/machine/FileSystem.h"

namespace kestra {

SystemError OpenWindowsDirectory(const std::string& path,
                                 std::unique_ptr<CDirectoryListing>& listing);

// The same by FindFirstFile, as it is done for a file system that lists no numbers of files, such
// as some network's: every entry's identity and change stamp are unknown.
SystemError OpenWindowsDirectoryByName(const std::string& path,
                                       std::unique_ptr<CDirectoryListing>& listing);

}  // namespace kestra
