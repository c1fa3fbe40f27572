#include "platform/linux/machine/files/Place.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>
#include <vector>

#include "platform/linux/ErrnoMap.h"
#include "platform/linux/Trust.h"

namespace kestra {
namespace {

constexpr int kMostLinks = 40;  // as the kernel follows: path_resolution(7)

SystemError OpenPlaceFrom(int base, const std::string& path, Place& place) {
  const size_t slash = path.rfind('/');
  place.name = path.substr(slash == std::string::npos ? 0 : slash + 1);
  if (path.empty()) return kErrorPathNotFound;
  if (place.name.empty() || place.name == "." || place.name == "..") return kErrorAccessDenied;
  const std::string directory = slash == std::string::npos ? "." : path.substr(0, slash + 1);
  place.directory = CUniqueFd(openat(base, directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  // One may write where one may not list.
  if (!place.directory && errno == EACCES)
    place.directory = CUniqueFd(openat(base, directory.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (place.directory) return kErrorSuccess;
  return errno == ENOENT ? kErrorPathNotFound : LastError();
}

// Whether nobody but the caller and the system's administrator can have put the link there.
bool IsTrustedLink(const struct stat& link, const struct stat& directory) {
  return link.st_uid == geteuid() || link.st_uid == 0 ||
         !OthersCanChange(directory.st_uid, directory.st_gid, directory.st_mode);
}

// What the link at the place leads to; empty when there is something else. Opened first, so that
// the link that is read is the one that was looked at.
SystemError ReadLink(const Place& place, std::string& target) {
  constexpr int kFlags = O_PATH | O_NOFOLLOW | O_CLOEXEC;
  const CUniqueFd link(openat(place.directory.get(), place.name.c_str(), kFlags));
  struct stat status {};
  struct stat directory {};
  if (!link || fstat(link.get(), &status) != 0 || fstat(place.directory.get(), &directory) != 0)
    return LastError();
  target.clear();
  if (!S_ISLNK(status.st_mode)) return kErrorSuccess;
  if (!IsTrustedLink(status, directory)) return kErrorAccessDenied;
  char buffer[PATH_MAX];
  const ssize_t size = readlinkat(link.get(), "", buffer, sizeof buffer);
  if (size < 0) return LastError();
  if (size == 0) return kErrorFileNotFound;
  if (size == sizeof buffer) return kErrorFilenameExceedsRange;
  target.assign(buffer, static_cast<size_t>(size));
  return kErrorSuccess;
}

// The parts of a path, the next one last.
std::vector<std::string> PartsOf(const std::string& path) {
  std::vector<std::string> parts;
  for (size_t end = path.size(); end > 0;) {
    const size_t slash = path.rfind('/', end - 1);
    const size_t start = slash == std::string::npos ? 0 : slash + 1;
    if (start < end) parts.push_back(path.substr(start, end - start));
    end = slash == std::string::npos ? 0 : slash;
  }
  return parts;
}

CUniqueFd OpenStart(const std::string& path) {
  return CUniqueFd(open(path.starts_with('/') ? "/" : ".", O_PATH | O_DIRECTORY | O_CLOEXEC));
}

// Goes into the directory, part by part, and through links that can be trusted.
SystemError OpenDirectoryByParts(const std::string& path, CUniqueFd& directory) {
  constexpr int kFlags = O_PATH | O_NOFOLLOW | O_CLOEXEC;
  directory = OpenStart(path);
  std::vector<std::string> parts = PartsOf(path);
  for (int links = 0; directory && !parts.empty();) {
    Place place{std::move(directory), std::move(parts.back())};
    parts.pop_back();
    CUniqueFd next(openat(place.directory.get(), place.name.c_str(), kFlags));
    struct stat status {};
    if (!next || fstat(next.get(), &status) != 0)
      return errno == ENOENT ? kErrorPathNotFound : LastError();
    if (!S_ISLNK(status.st_mode)) {
      if (!S_ISDIR(status.st_mode)) return kErrorPathNotFound;
      directory = std::move(next);
      continue;
    }
    if (++links > kMostLinks) return kErrorCannotResolveFilename;
    std::string target;
    const SystemError error = ReadLink(place, target);
    if (error != kErrorSuccess) return error;
    directory = target.starts_with('/') ? OpenStart(target) : std::move(place.directory);
    for (std::string& part : PartsOf(target)) parts.push_back(std::move(part));
  }
  return directory ? kErrorSuccess : LastError();
}

}  // namespace

SystemError OpenPlaceToChange(std::string path, Place& place) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  const size_t slash = path.rfind('/');
  place.name = path.substr(slash == std::string::npos ? 0 : slash + 1);
  if (path.empty()) return kErrorPathNotFound;
  if (place.name.empty() || place.name == "." || place.name == "..") return kErrorAccessDenied;
  return OpenDirectoryByParts(path.substr(0, slash == std::string::npos ? 0 : slash + 1),
                              place.directory);
}

SystemError OpenPlace(const std::string& path, Place& place) {
  return OpenPlaceFrom(AT_FDCWD, path, place);
}

SystemError FollowLinks(Place& place) {
  for (int i = 0; i <= kMostLinks; ++i) {
    std::string target;
    SystemError error = ReadLink(place, target);
    if (error != kErrorSuccess || target.empty()) return error;
    Place next;
    error = OpenPlaceFrom(place.directory.get(), target, next);
    // The link is there, so what is missing is what it leads to.
    if (error == kErrorPathNotFound) return kErrorFileNotFound;
    if (error != kErrorSuccess) return error;
    place = std::move(next);
  }
  return kErrorCannotResolveFilename;
}

}  // namespace kestra
