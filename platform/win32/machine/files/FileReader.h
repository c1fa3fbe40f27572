// Opening plain files for reading.
#pragma once

#include <memory>
#include <string>

#include "platform/machine/FileSystem.h"
#include "platform/win32/base/UniqueHandle.h"
#include "platform/win32/machine/files/NativePath.h"

namespace kestra {

// Opens for reading what is a plain file, and nothing else. Others may read, write, rename and
// remove it meanwhile.
SystemError OpenPlainFile(const NativePath& path, LastLink lastLink, CUniqueHandle& file);

SystemError OpenWindowsFile(const std::string& path, LastLink lastLink,
                            std::unique_ptr<CFileReader>& reader);

}  // namespace kestra
