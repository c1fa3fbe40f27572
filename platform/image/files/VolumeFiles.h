// Facility "file system" of a volume: its files under "C:\", read and never changed.
#pragma once

#include <memory>

#include "platform/image/files/Volume.h"
#include "platform/machine/FileSystem.h"

namespace kestra::image {

// Every change answers kErrorWriteProtect, before anything is looked at. Attributes are what the
// file system keeps of Windows (the ntfs drivers' "system.ntfs_attrib", Wine's "user.DOSATTRIB"),
// and read-only also a file that nobody may write. Names that a Windows path cannot hold are passed
// over. volume outlives the object.
std::unique_ptr<CFileSystem> MakeVolumeFiles(const CVolume& volume);

}  // namespace kestra::image
