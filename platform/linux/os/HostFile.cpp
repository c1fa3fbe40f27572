#include "platform/os/HostFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>

#include "platform/linux/ErrnoMap.h"
#include "platform/linux/Trust.h"
#include "platform/linux/UniqueFd.h"

namespace kestra::os {
namespace {

// Never waits for the other end of a FIFO and never makes a terminal ours.
constexpr int kSafeOpen = O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;

// Opening a link with O_NOFOLLOW fails with ELOOP.
SystemError LastOpenError(const std::string& path) {
  return errno == ELOOP ? kErrorAccessDenied : LastErrorOfPath(path);
}

class CPosixFile final : public CHostFile {
 public:
  explicit CPosixFile(CUniqueFd fd) : m_fd(std::move(fd)) {}

  SystemError Write(std::string_view data, size_t& written) override {
    written = 0;
    while (written < data.size()) {
      const ssize_t count = write(m_fd.get(), data.data() + written, data.size() - written);
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) return LastError();
      if (count == 0) return kErrorDiskFull;
      written += static_cast<size_t>(count);
    }
    return kErrorSuccess;
  }
  SystemError Seek(uint64_t offset) override {
    return lseek(m_fd.get(), static_cast<off_t>(offset), SEEK_SET) < 0 ? LastError()
                                                                       : kErrorSuccess;
  }
  SystemError SetEnd(uint64_t offset) override {
    if (ftruncate(m_fd.get(), static_cast<off_t>(offset)) != 0) return LastError();
    return Seek(offset);
  }
  SystemError Size(uint64_t& size) override {
    struct stat status {};
    if (fstat(m_fd.get(), &status) != 0) return LastError();
    size = static_cast<uint64_t>(status.st_size);
    return kErrorSuccess;
  }

 private:
  CUniqueFd m_fd;
};

SystemError CheckOwnPlainFile(int fd) {
  struct stat status {};
  if (fstat(fd, &status) != 0) return LastError();
  const bool isOwn = S_ISREG(status.st_mode) && status.st_nlink == 1 && status.st_uid == geteuid();
  return isOwn ? kErrorSuccess : kErrorAccessDenied;
}

}  // namespace

SystemError OpenExclusive(const std::string& path, std::unique_ptr<CHostFile>& file) {
  if (HasNul(path)) return kErrorInvalidName;
  CUniqueFd fd(open(path.c_str(), O_RDWR | O_CREAT | kSafeOpen, S_IRUSR | S_IWUSR));
  if (!fd) return LastOpenError(path);
  const SystemError error = CheckOwnPlainFile(fd.get());
  if (error != kErrorSuccess) return error;
  // flock belongs to the open file and not to the process, so it keeps out this process too.
  if (flock(fd.get(), LOCK_EX | LOCK_NB) != 0) return LastError();
  file = std::make_unique<CPosixFile>(std::move(fd));
  return kErrorSuccess;
}

SystemError ReadFileHead(const std::string& path, size_t limit, std::string& content) {
  content.clear();
  if (HasNul(path)) return kErrorInvalidName;
  const CUniqueFd fd(open(path.c_str(), O_RDONLY | kSafeOpen));
  if (!fd) return LastOpenError(path);
  struct stat status {};
  if (fstat(fd.get(), &status) != 0) return LastError();
  if (!S_ISREG(status.st_mode)) return kErrorAccessDenied;
  char buffer[4096];
  while (content.size() < limit) {
    const size_t wanted = std::min(limit - content.size(), sizeof buffer);
    const ssize_t count = read(fd.get(), buffer, wanted);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return LastError();
    if (count == 0) break;
    content.append(buffer, static_cast<size_t>(count));
  }
  return kErrorSuccess;
}

std::string FullPath(const std::string& path) {
  std::error_code failure;
  const auto full = std::filesystem::absolute(path, failure);
  return failure ? path : full.string();
}

bool DirectoryExists(const std::string& path) {
  struct stat status {};
  return !HasNul(path) && stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool PathExists(const std::string& path) {
  struct stat status {};
  return !HasNul(path) && stat(path.c_str(), &status) == 0;
}

SystemError MakeDirectory(const std::string& path) {
  if (HasNul(path)) return kErrorInvalidName;
  return mkdir(path.c_str(), S_IRWXU) == 0 ? kErrorSuccess : LastErrorOfPath(path);
}

bool OthersCanWrite(const std::string& path) {
  struct stat status {};
  if (HasNul(path) || stat(path.c_str(), &status) != 0) return true;
  return OthersCanChange(status.st_uid, status.st_gid, status.st_mode);
}

}  // namespace kestra::os
