// Changes of files that are there: renaming, copying, attributes.
#pragma once

#include <string>

#include "platform/machine/FileSystem.h"

namespace kestra {

SystemError RenameLinuxPath(const std::string& from, const std::string& to);
SystemError CopyLinuxFile(const std::string& from, const std::string& to,
                          const os::CWaitable* pTermination);
SystemError SetLinuxAttributes(const std::string& path, uint32_t attributes);

}  // namespace kestra
