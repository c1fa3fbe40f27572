// Writing plain files so that what was there stays whole until the new one is on the disk.
#pragma once

#include <sys/types.h>

#include <ctime>
#include <memory>
#include <string>

#include "platform/machine/FileSystem.h"

namespace kestra {

SystemError BeginLinuxWrite(const std::string& path, LastLink lastLink, Existing existing,
                            NewRights rights, std::unique_ptr<CFileWriter>& writer);
// Begins a new file with this mode, from which the umask takes away, that shall have this time of
// its last write. kErrorFileExists if there is anything of that name.
SystemError BeginLinuxCopy(const std::string& path, mode_t mode, const timespec& writeTime,
                           std::unique_ptr<CFileWriter>& writer);

}  // namespace kestra
