// Writing plain files so that what was there stays whole until the new one is on the disk.
#pragma once

#include <memory>
#include <string>

#include "platform/machine/FileSystem.h"

namespace kestra {

SystemError BeginLinuxWrite(const std::string& path, LastLink lastLink, Existing existing,
                            NewRights rights, std::unique_ptr<CFileWriter>& writer);

}  // namespace kestra
