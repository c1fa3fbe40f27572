#include "platform/linux/machine/files/ReplacedFile.h"

#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <string_view>

#include "platform/linux/ErrnoMap.h"

namespace kestra {
namespace {

// acl(5) is kept there; the kernel hands it out in one piece.
constexpr std::string_view kAccessList = "system.posix_acl_access";

// Also takes away one that "from" has not, such as a directory gives to new files.
bool CopyAttribute(int from, int to, const char* name) {
  constexpr size_t kLargest = 1 << 16;  // XATTR_SIZE_MAX
  std::string value(kLargest, '\0');
  const ssize_t size = fgetxattr(from, name, value.data(), value.size());
  if (size >= 0) return fsetxattr(to, name, value.data(), static_cast<size_t>(size), 0) == 0;
  return fremovexattr(to, name) == 0 || errno == ENODATA || errno == EOPNOTSUPP;
}

void CopyUserAttributes(int from, int to) {
  constexpr size_t kLargestList = 1 << 16;  // XATTR_LIST_MAX
  std::string names(kLargestList, '\0');
  const ssize_t size = flistxattr(from, names.data(), names.size());
  if (size <= 0) return;
  names.resize(static_cast<size_t>(size));
  for (size_t at = 0; at < names.size(); at += strlen(names.c_str() + at) + 1) {
    if (std::string_view(names.c_str() + at).starts_with("user."))
      CopyAttribute(from, to, names.c_str() + at);
  }
}

// The group keeps what others have too: for a group that is not the one its bits were meant for.
mode_t WithoutGroupRights(mode_t mode) {
  return (mode & ~mode_t{S_IRWXG}) | (mode & ((mode & S_IRWXO) << 3) & S_IRWXG);
}

}  // namespace

SystemError TakeOverAttributes(int from, int to) {
  struct stat status {};
  if (fstat(from, &status) != 0) return LastError();
  // As after a write by any ordinary user, the bits that lend the owner's rights are gone.
  mode_t mode = status.st_mode & (S_IRWXU | S_IRWXG | S_IRWXO);
  // Who cannot give a file away may still give it to a group of his.
  const bool hasGroup = fchown(to, status.st_uid, status.st_gid) == 0 ||
                        fchown(to, static_cast<uid_t>(-1), status.st_gid) == 0;
  // With an access list the group's bits are its mask, which without it would say too much.
  const bool hasAccessList = CopyAttribute(from, to, kAccessList.data());
  if (!hasGroup || !hasAccessList) mode = WithoutGroupRights(mode);
  CopyUserAttributes(from, to);
  return fchmod(to, mode) == 0 ? kErrorSuccess : LastError();
}

}  // namespace kestra
