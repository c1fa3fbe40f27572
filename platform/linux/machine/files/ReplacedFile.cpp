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

// Only what the group and all others both have: who was in the group counts as another now, and
// the other way round.
mode_t WithoutGroup(mode_t mode) {
  const mode_t common = mode & ((mode & S_IRWXG) >> 3) & S_IRWXO;
  return (mode & S_IRWXU) | common << 3 | common;
}

}  // namespace

SystemError TakeOverAttributes(int from, int to) {
  struct stat status {};
  if (fstat(from, &status) != 0) return LastError();
  // Who cannot give a file away may still give it to a group of his.
  if (fchown(to, status.st_uid, status.st_gid) != 0) {
    [[maybe_unused]] const int result = fchown(to, static_cast<uid_t>(-1), status.st_gid);
  }
  // What counts is whom it belongs to now: some file systems know one owner only.
  struct stat made {};
  if (fstat(to, &made) != 0) return LastError();
  if (made.st_uid != status.st_uid) return kErrorAccessDenied;
  if (!CopyAttribute(from, to, kAccessList.data())) return kErrorAccessDenied;
  CopyUserAttributes(from, to);
  // As after a write by any ordinary user, the bits that lend the owner's rights are gone.
  const mode_t mode = status.st_mode & (S_IRWXU | S_IRWXG | S_IRWXO);
  const bool hasGroup = made.st_gid == status.st_gid;
  return fchmod(to, hasGroup ? mode : WithoutGroup(mode)) == 0 ? kErrorSuccess : LastError();
}

}  // namespace kestra
