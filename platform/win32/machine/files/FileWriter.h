// Writing plain files so that what was there stays whole until the new one is on the disk.
#pragma once

#include <memory>
#include <string>

#include "platform/machine/FileSystem.h"
#include "platform/win32/machine/files/NativePath.h"

namespace kestra {

// A file that takes another one's place has its attributes, its access list and the time of its
// creation, and is compressed or encrypted if that one is. Its further streams, its integrity label
// and its list for auditing do not pass over, and the new file's owner is the caller.
SystemError BeginWindowsWrite(const std::string& path, LastLink lastLink, Existing existing,
                              std::unique_ptr<CFileWriter>& writer);

// Whether nothing of that name is there: kErrorSuccess then, kErrorFileExists if there is.
SystemError CheckNameIsFree(const NativePath& path);

}  // namespace kestra
