// Who may have put something where we find it.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

namespace kestra {

// True when another user than this one and the system's own may change what has this owner, group
// and mode.
inline bool OthersCanChange(uid_t owner, gid_t group, mode_t mode) {
  if (owner != 0 && owner != geteuid()) return true;
  if (mode & S_IWOTH) return true;
  // A group of the same number as its user is his alone, by the custom of most distributions.
  return (mode & S_IWGRP) != 0 && group != owner;
}

}  // namespace kestra
