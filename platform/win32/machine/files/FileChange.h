// Changes of files that are there: removing, renaming, copying, attributes.
#pragma once

#include <string>

#include "platform/machine/FileSystem.h"

namespace kestra {

SystemError RemoveWindowsFile(const std::string& path);
SystemError RemoveWindowsDirectory(const std::string& path);
SystemError RenameWindowsPath(const std::string& from, const std::string& to);
// With all that belongs to the file, its further streams among it. A cancel is answered between two
// blocks; Wine asks nobody meanwhile, so there it is answered when all is copied.
SystemError CopyWindowsFile(const std::string& from, const std::string& to,
                            const os::CWaitable* pTermination);
SystemError SetWindowsAttributes(const std::string& path, uint32_t attributes);
SystemError MoveWindowsPathAtBoot(const std::string& from, const std::string& to);

}  // namespace kestra
