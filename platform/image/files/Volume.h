// A directory of this machine that holds another machine's volume, and the way to what is in it.
//
// Names are found without regard to case: the exact name first, and else the first in byte order
// of those that differ in case alone. Nothing outside the directory is ever reached: a link is
// followed by our own steps, an absolute one only if it leads into the directory (as a volume that
// is mounted there writes it), and ".." ends at the root.
#pragma once

#include <string>
#include <vector>

#include "platform/base/SystemError.h"
#include "platform/linux/UniqueFd.h"

namespace kestra::image {

// An entry of a directory that is open, under the name that the volume has for it. Without a name
// it is the directory itself.
struct Entry {
  CUniqueFd directory;
  std::string name;
};

// What a link in the last place of a path means.
enum class LastName { FollowLink, KeepLink };

// All methods may be called from any thread.
class CVolume {
 public:
  // root is an open directory, rootPath what it is called here, without links.
  CVolume(CUniqueFd root, std::string rootPath);

  // The entry that names lead to from the root. kErrorFileNotFound when the last one is missing,
  // kErrorPathNotFound when one on the way is missing or is no directory;
  // kErrorCannotResolveFilename for a link that leads out of the volume or in circles.
  SystemError Find(const std::vector<std::string>& names, LastName last, Entry& entry) const;
  // The same as an open directory. kErrorDirectory for what is none.
  SystemError OpenDirectory(const std::vector<std::string>& names, CUniqueFd& directory) const;
  // Whether a link that a directory holds leads to a directory of the volume. names are those of
  // the link.
  bool LeadsToDirectory(const std::vector<std::string>& names) const;

 private:
  class CWalk;

  const CUniqueFd m_root;
  const std::string m_rootPath;
};

}  // namespace kestra::image
