// What a file is, as statx(2) tells it and the seam says it.
#pragma once

#include <string>

#include "platform/machine/FileSystem.h"

namespace kestra {

// A name with a leading dot, in a path's last place.
bool IsHiddenName(const std::string& path);
// Whether the question if a link counts as a directory is asked of what it leads to.
enum class LinkTarget { Look, Leave };
// Of the entry that path names in the directory (AT_FDCWD: as the process sees it). A link is
// described itself, but for that question. Nothing is opened, so that a FIFO does not wait and a
// device does not act. False with errno set.
bool ReadFileInfo(int directory, const char* path, bool isHidden, FileInfo& info,
                  LinkTarget target = LinkTarget::Look);
// Of an open file.
bool ReadFileInfo(int file, bool isHidden, FileInfo& info);

}  // namespace kestra
