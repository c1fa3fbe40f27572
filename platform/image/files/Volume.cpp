#include "platform/image/files/Volume.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <deque>
#include <optional>
#include <string_view>
#include <utility>

#include "platform/base/text/Characters.h"
#include "platform/linux/ErrnoMap.h"

namespace kestra::image {
namespace {

// As many as the kernel takes: path_resolution(7).
constexpr uint32_t kMostLinks = 40;

CUniqueFd OpenBelow(int directory, const char* name) {
  constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK | O_NOATIME;
  CUniqueFd fd(openat(directory, name, kFlags));
  // Only a file's owner may ask for no trace.
  if (!fd && errno == EPERM) fd = CUniqueFd(openat(directory, name, kFlags & ~O_NOATIME));
  return fd;
}

bool ReadStatus(int directory, const std::string& name, struct stat& status) {
  return fstatat(directory, name.c_str(), &status, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT) == 0;
}

// The name that the directory has for a wanted one. Empty when it has none such.
SystemError FindName(int directory, const std::string& wanted, std::string& found) {
  found.clear();
  struct stat status {};
  if (ReadStatus(directory, wanted, status)) {
    found = wanted;
    return kErrorSuccess;
  }
  if (errno != ENOENT && errno != ENAMETOOLONG) return LastError();
  CUniqueFd fd = OpenBelow(directory, ".");
  DIR* pDirectory = fd ? fdopendir(fd.get()) : nullptr;
  if (!pDirectory) return LastError();
  fd.Release();
  const CUniqueDirectory owner(pDirectory);
  errno = 0;
  while (const dirent* pEntry = readdir(pDirectory)) {
    const std::string_view name = pEntry->d_name;
    if ((found.empty() || name < found) && EqualsNoCase(name, wanted)) found = name;
    errno = 0;
  }
  return errno == 0 ? kErrorSuccess : LastError();
}

std::optional<std::string> ReadLink(int directory, const std::string& name) {
  std::string target(PATH_MAX, '\0');
  const ssize_t length = readlinkat(directory, name.c_str(), target.data(), target.size());
  if (length < 0 || static_cast<size_t>(length) >= target.size()) return std::nullopt;
  target.resize(static_cast<size_t>(length));
  return target;
}

}  // namespace

// One way through the volume: the directories that are open, from the root on, and the names that
// are still to be walked.
class CVolume::CWalk {
 public:
  CWalk(const CVolume& volume, const std::vector<std::string>& names)
      : m_volume(volume), m_names(names.begin(), names.end()) {}

  SystemError Run(LastName last, Entry& entry) {
    while (!m_names.empty()) {
      const std::string wanted = std::move(m_names.front());
      m_names.pop_front();
      const SystemError error = Step(wanted, last, entry);
      if (error != kErrorSuccess || m_isFound) return error;
    }
    entry = {CUniqueFd(OpenBelow(Here(), ".")), std::string()};
    return entry.directory ? kErrorSuccess : LastError();
  }

 private:
  int Here() const { return m_open.empty() ? m_volume.m_root.get() : m_open.back().get(); }
  SystemError Missing() const { return m_names.empty() ? kErrorFileNotFound : kErrorPathNotFound; }

  SystemError Step(const std::string& wanted, LastName last, Entry& entry) {
    if (wanted.empty() || wanted == ".") return kErrorSuccess;
    if (wanted == "..") {
      if (!m_open.empty()) m_open.pop_back();
      return kErrorSuccess;
    }
    std::string name;
    if (const SystemError error = FindName(Here(), wanted, name); error != kErrorSuccess)
      return error;
    struct stat status {};
    if (name.empty() || !ReadStatus(Here(), name, status)) return Missing();
    const bool isLast = m_names.empty();
    if (S_ISLNK(status.st_mode) && !(isLast && last == LastName::KeepLink)) return Follow(name);
    if (S_ISDIR(status.st_mode) && !isLast) return Enter(name);
    if (!isLast) return kErrorPathNotFound;
    m_isFound = true;
    entry = {CUniqueFd(OpenBelow(Here(), ".")), name};
    return entry.directory ? kErrorSuccess : LastError();
  }
  SystemError Enter(const std::string& name) {
    CUniqueFd fd = OpenBelow(Here(), name.c_str());
    if (!fd) return errno == ENOENT || errno == ENOTDIR ? Missing() : LastError();
    m_open.push_back(std::move(fd));
    return kErrorSuccess;
  }
  SystemError Follow(const std::string& name) {
    const std::optional<std::string> target = ReadLink(Here(), name);
    if (!target || ++m_links > kMostLinks) return kErrorCannotResolveFilename;
    std::string_view rest = *target;
    if (rest.starts_with('/')) {
      const bool isInside =
          rest.starts_with(m_volume.m_rootPath) &&
          (rest.size() == m_volume.m_rootPath.size() || rest[m_volume.m_rootPath.size()] == '/');
      if (!isInside) return kErrorCannotResolveFilename;
      rest.remove_prefix(m_volume.m_rootPath.size());
      m_open.clear();
    }
    std::deque<std::string> names;
    while (!rest.empty()) {
      const size_t end = std::min(rest.find('/'), rest.size());
      names.emplace_back(rest.substr(0, end));
      rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    m_names.insert(m_names.begin(), names.begin(), names.end());
    return kErrorSuccess;
  }

  const CVolume& m_volume;
  std::deque<std::string> m_names;
  std::vector<CUniqueFd> m_open;
  uint32_t m_links = 0;
  bool m_isFound = false;
};

CVolume::CVolume(CUniqueFd root, std::string rootPath)
    : m_root(std::move(root)), m_rootPath(rootPath == "/" ? "" : std::move(rootPath)) {}

SystemError CVolume::Find(const std::vector<std::string>& names, LastName last,
                          Entry& entry) const {
  return CWalk(*this, names).Run(last, entry);
}

SystemError CVolume::OpenDirectory(const std::vector<std::string>& names,
                                   CUniqueFd& directory) const {
  Entry entry;
  const SystemError error = Find(names, LastName::FollowLink, entry);
  if (error != kErrorSuccess) return error;
  directory = entry.name.empty() ? std::move(entry.directory)
                                 : OpenBelow(entry.directory.get(), entry.name.c_str());
  if (directory) return kErrorSuccess;
  return errno == ENOTDIR || errno == ELOOP ? kErrorDirectory : LastError();
}

bool CVolume::LeadsToDirectory(const std::vector<std::string>& names) const {
  CUniqueFd directory;
  return OpenDirectory(names, directory) == kErrorSuccess;
}

}  // namespace kestra::image
