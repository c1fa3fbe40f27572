#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/os/HostEnvironment.h"
#include "platform/os/HostFile.h"

namespace kestra::os {
namespace {

std::string WithoutTrailingSeparators(std::string path) {
  while (path.size() > 1 && path.ends_with('/')) path.pop_back();
  return path;
}

// A directory in which others may write must not let them replace what is not theirs.
bool IsSticky(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
         (status.st_mode & S_ISVTX) != 0;
}

bool IsPrivateDirectory(const std::string& path) {
  struct stat status {};
  return lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
         status.st_uid == geteuid() && (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

// The user's own directory below a base that all users share; empty if it is not his own.
std::string OwnDirectoryBelow(const std::string& base) {
  if (!IsSticky(base)) return std::string();
  const std::string path = base + "/kestra-" + std::to_string(geteuid());
  if (mkdir(path.c_str(), S_IRWXU) != 0 && errno != EEXIST) return std::string();
  return IsPrivateDirectory(path) ? path : std::string();
}

}  // namespace

std::string TemporaryDirectory() {
  const std::string wanted = WithoutTrailingSeparators(ReadEnvironment("TMPDIR").value_or(""));
  if (RootLength(wanted) != 0 && DirectoryExists(wanted)) {
    return OthersCanWrite(wanted) ? OwnDirectoryBelow(wanted) : wanted;
  }
  return OwnDirectoryBelow("/tmp");
}

}  // namespace kestra::os
