// What a file is, as statx(2) tells it and the seam says it.
#pragma once

#include <string>

#include "platform/machine/FileSystem.h"

namespace kestra {

// A name with a leading dot, in a path's last place.
bool IsHiddenName(const std::string& path);
// Of the entry that path names in the directory (AT_FDCWD: as the process sees it). A link is
// described itself, but for the question whether it counts as a directory. Nothing is opened, so
// that a FIFO does not wait and a device does not act. False with errno set.
bool ReadFileInfo(int directory, const char* path, bool isHidden, FileInfo& info);
// Of an open file.
bool ReadFileInfo(int file, bool isHidden, FileInfo& info);

}  // namespace kestra
