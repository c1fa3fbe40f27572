#include "platform/linux/machine/files/TemporaryFile.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/random.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdint>

#include "platform/linux/ErrnoMap.h"

namespace kestra {
namespace {

constexpr int kTries = 16;

// A name that nobody can foresee; empty if the system gives no random bytes.
std::string NewName() {
  unsigned char random[16];
  if (getrandom(random, sizeof random, 0) != static_cast<ssize_t>(sizeof random)) return {};
  std::string name = ".kestra-";
  for (const unsigned char byte : random) {
    name += "0123456789abcdef"[byte >> 4];
    name += "0123456789abcdef"[byte & 15];
  }
  return name;
}

// How a file without a name is linked to one: open(2), "O_TMPFILE".
std::string DescriptorPath(int fd) {
  return "/proc/self/fd/" + std::to_string(fd);
}

// Tries names until make(name) succeeds or fails by something else than a name that is taken.
template <class Make>
SystemError WithNewName(std::string& name, Make make) {
  for (int i = 0; i < kTries; ++i) {
    const std::string candidate = NewName();
    if (candidate.empty()) return kErrorGenFailure;
    if (make(candidate.c_str())) {
      name = candidate;
      return kErrorSuccess;
    }
    if (errno != EEXIST) break;
  }
  return LastError();
}

}  // namespace

CTemporaryFile::~CTemporaryFile() {
  if (!m_name.empty()) unlinkat(m_directory, m_name.c_str(), 0);
}

SystemError CTemporaryFile::Open(mode_t mode) {
  return OpenUnnamed(mode) ? kErrorSuccess : OpenNamed(mode);
}

bool CTemporaryFile::OpenUnnamed(mode_t mode) {
  CUniqueFd fd(openat(m_directory, ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, mode));
  // Where /proc is missing it could never get a name.
  struct stat status {};
  if (!fd || stat(DescriptorPath(fd.get()).c_str(), &status) != 0) return false;
  m_fd = std::move(fd);
  return true;
}

SystemError CTemporaryFile::OpenNamed(mode_t mode) {
  return WithNewName(m_name, [&](const char* name) {
    m_fd = CUniqueFd(openat(m_directory, name, O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, mode));
    return static_cast<bool>(m_fd);
  });
}

SystemError CTemporaryFile::NameUnnamed() {
  const std::string source = DescriptorPath(m_fd.get());
  return WithNewName(m_name, [&](const char* name) {
    return linkat(AT_FDCWD, source.c_str(), m_directory, name, AT_SYMLINK_FOLLOW) == 0;
  });
}

SystemError CTemporaryFile::MoveTo(const std::string& name, Existing existing) {
  if (!m_name.empty()) return Rename(name, existing);
  // Linking never replaces. So a name that is free is given in one step, and only for one that is
  // taken the file needs a name of its own, for a moment, which renaming can put in its place.
  const std::string source = DescriptorPath(m_fd.get());
  if (linkat(AT_FDCWD, source.c_str(), m_directory, name.c_str(), AT_SYMLINK_FOLLOW) == 0)
    return kErrorSuccess;
  if (errno != EEXIST) return LastError();
  if (existing == Existing::Refuse) return kErrorFileExists;
  const SystemError error = NameUnnamed();
  return error == kErrorSuccess ? Rename(name, existing) : error;
}

SystemError CTemporaryFile::Rename(const std::string& name, Existing existing) {
  const char* const pFrom = m_name.c_str();
  if (existing == Existing::Replace) {
    if (renameat(m_directory, pFrom, m_directory, name.c_str()) != 0) return LastError();
    m_name.clear();
    return kErrorSuccess;
  }
  if (renameat2(m_directory, pFrom, m_directory, name.c_str(), RENAME_NOREPLACE) == 0) {
    m_name.clear();
    return kErrorSuccess;
  }
  if (errno == EEXIST) return kErrorFileExists;
  if (errno != EINVAL && errno != ENOSYS) return LastError();
  // A file system that cannot tell whether it would replace. The destructor removes the first name.
  if (linkat(m_directory, pFrom, m_directory, name.c_str(), 0) == 0) return kErrorSuccess;
  return errno == EEXIST ? kErrorFileExists : LastError();
}

}  // namespace kestra
