// Where a path leads: a name in a directory that is open.
#pragma once

#include <string>

#include "platform/base/SystemError.h"
#include "platform/linux/UniqueFd.h"

namespace kestra {

// All steps after the opening are taken in the open directory, whatever the path comes to mean.
struct Place {
  CUniqueFd directory;
  std::string name;
};

// The place of a path, relative to the present directory. kErrorPathNotFound when the directory is
// missing, kErrorAccessDenied for a path whose last part can only be a directory. Whether there is
// anything of that name is not looked at.
SystemError OpenPlace(const std::string& path, Place& place);

// The place of something that is to be changed: as above, but no directory on the way is reached by
// a link that another user may have put there, which is kErrorAccessDenied. So a tree of another
// user's can be taken away by root while its owner swaps its directories for links. Separators at
// the end of path are passed over.
SystemError OpenPlaceToChange(std::string path, Place& place);

// Goes on, link by link, to the place of what is no link. A link that another user may have put
// there (LastLink::Follow in FileSystem.h) is refused with kErrorAccessDenied, the first one as any
// on the way; kErrorFileNotFound when the last one leads nowhere, and kErrorCannotResolveFilename
// when there is no end to them. A link that takes the name afterwards is for the caller to refuse
// (O_NOFOLLOW).
SystemError FollowLinks(Place& place);

}  // namespace kestra
