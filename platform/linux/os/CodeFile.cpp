#include "platform/os/CodeFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/linux/ErrnoMap.h"
#include "platform/linux/UniqueFd.h"
#include "platform/linux/os/ElfFile.h"

namespace kestra::os {
namespace {

constexpr size_t kMostComments = 4096;

class CDescriptorSource final : public CByteSource {
 public:
  explicit CDescriptorSource(CUniqueFd fd) : m_fd(std::move(fd)) {}

  SystemError ReadAt(uint64_t offset, size_t length, std::string& bytes) override {
    bytes.clear();
    struct stat status {};
    if (fstat(m_fd.get(), &status) != 0) return LastError();
    const auto size = static_cast<uint64_t>(status.st_size);
    if (offset >= size) return kErrorSuccess;
    // Room is made for what is there only, whatever a header promised.
    bytes.resize(static_cast<size_t>(std::min<uint64_t>(length, size - offset)));
    size_t done = 0;
    while (done < bytes.size()) {
      const ssize_t count = pread(m_fd.get(), bytes.data() + done, bytes.size() - done,
                                  static_cast<off_t>(offset + done));
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) return LastError();
      if (count == 0) break;
      done += static_cast<size_t>(count);
    }
    bytes.resize(done);
    return kErrorSuccess;
  }

 private:
  CUniqueFd m_fd;
};

// Links are followed, since a library is something that its user put there. What is no plain file
// is not opened, because opening alone makes some devices act.
SystemError OpenPlainFile(const std::string& path, CUniqueFd& fd, struct stat& status) {
  if (HasNul(path)) return kErrorInvalidName;
  if (stat(path.c_str(), &status) != 0) return LastErrorOfPath(path);
  if (!S_ISREG(status.st_mode)) return kErrorAccessDenied;
  fd = CUniqueFd(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (!fd) return LastErrorOfPath(path);
  if (fstat(fd.get(), &status) != 0) return LastError();
  return S_ISREG(status.st_mode) ? kErrorSuccess : kErrorAccessDenied;
}

std::string HexDigits(const std::string& bytes) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const char byte : bytes) {
    text += kDigits[static_cast<uint8_t>(byte) >> 4];
    text += kDigits[static_cast<uint8_t>(byte) & 15];
  }
  return text;
}

}  // namespace

const char* LibraryEnding() {
  return ".so";
}

SystemError ReadLibraryComments(const std::string& path, std::string& comments) {
  comments.clear();
  CUniqueFd fd;
  struct stat status {};
  SystemError error = OpenPlainFile(path, fd, status);
  if (error != kErrorSuccess) return error;
  CDescriptorSource source(std::move(fd));
  CElfFile file(source);
  error = file.Open();
  if (error == kErrorSuccess) error = file.ReadSection(".kestra.comments", kMostComments, comments);
  comments.resize(std::min(comments.size(), comments.find('\0')));
  return error;
}

SystemError ReadLibraryVersion(const std::string& path, std::string& version) {
  version.clear();
  CUniqueFd fd;
  struct stat status {};
  SystemError error = OpenPlainFile(path, fd, status);
  if (error != kErrorSuccess) return error;
  CDescriptorSource source(std::move(fd));
  CElfFile file(source);
  std::string id;
  error = file.Open();
  if (error == kErrorSuccess) error = file.ReadBuildId(id);
  if (error != kErrorSuccess) return error;
  version = !id.empty()
                ? HexDigits(id)
                : std::to_string(status.st_size) + '-' + std::to_string(status.st_mtim.tv_sec) +
                      '.' + std::to_string(status.st_mtim.tv_nsec);
  return kErrorSuccess;
}

}  // namespace kestra::os
