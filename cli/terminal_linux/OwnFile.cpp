#include "cli/shell/input/OwnFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <system_error>
#include <thread>

namespace kestra::cli {
namespace {

constexpr int kTries = 20;  // for the lock, and for a file that was replaced meanwhile
constexpr auto kBetweenTries = std::chrono::milliseconds(25);

std::string Sentence(int error) {
  return std::generic_category().message(error);
}

class CFile {
 public:
  explicit CFile(int fd) : m_fd(fd) {}
  ~CFile() {
    if (m_fd != -1) close(m_fd);
  }
  CFile(const CFile&) = delete;
  CFile& operator=(const CFile&) = delete;
  int Get() const { return m_fd; }
  void Set(int fd) {
    if (m_fd != -1) close(m_fd);
    m_fd = fd;
  }

 private:
  int m_fd;
};

void MakeDirectoryOf(const std::string& path) {
  const std::filesystem::path directory = std::filesystem::path(path).parent_path();
  std::error_code failure;
  if (directory.empty() || std::filesystem::exists(directory, failure)) return;
  std::filesystem::create_directories(directory.parent_path(), failure);
  // What fails here is told by the opening of the file.
  [[maybe_unused]] const int made = mkdir(directory.c_str(), 0700);
}

bool IsStillThere(int fd, const std::string& path) {
  struct stat opened {};
  struct stat named {};
  return fstat(fd, &opened) == 0 && stat(path.c_str(), &named) == 0 &&
         opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

// Opens the file and takes its lock. An error number, or 0.
int OpenLocked(const std::string& path, CFile& file) {
  for (int i = 0; i < kTries; ++i) {
    // O_NONBLOCK, since a name may turn out to be a pipe's.
    file.Set(open(path.c_str(), O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0600));
    if (file.Get() == -1) return errno;
    struct stat status {};
    if (fstat(file.Get(), &status) != 0) return errno;
    if (!S_ISREG(status.st_mode)) return EINVAL;
    if (flock(file.Get(), LOCK_EX | LOCK_NB) != 0) {
      if (errno != EWOULDBLOCK) return errno;
      std::this_thread::sleep_for(kBetweenTries);
    } else if (IsStillThere(file.Get(), path)) {
      return 0;
    }
  }
  return EWOULDBLOCK;
}

int WriteAll(int fd, const std::string& text) {
  for (size_t done = 0; done < text.size();) {
    const ssize_t count = write(fd, text.data() + done, text.size() - done);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errno;
    done += static_cast<size_t>(count);
  }
  return 0;
}

int ReadAll(int fd, std::string& content) {
  char buffer[size_t{16} << 10];
  for (;;) {
    const ssize_t count = read(fd, buffer, sizeof(buffer));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errno;
    if (count == 0) return 0;
    content.append(buffer, static_cast<size_t>(count));
    if (content.size() > kLongestOwnFile) return EFBIG;
  }
}

// The old file stays what it was until the new one is whole.
int Replace(const std::string& path, const std::string& content) {
  const std::string fresh = path + ".new";
  const CFile file(
      open(fresh.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600));
  if (file.Get() == -1) return errno;
  int error = WriteAll(file.Get(), content);
  if (error == 0 && fsync(file.Get()) != 0) error = errno;
  if (error == 0 && rename(fresh.c_str(), path.c_str()) != 0) error = errno;
  if (error != 0) unlink(fresh.c_str());
  return error;
}

}  // namespace

std::string AppendToOwnFile(const std::string& path, const std::string& text) {
  MakeDirectoryOf(path);
  CFile file(-1);
  int error = OpenLocked(path, file);
  if (error == 0) error = WriteAll(file.Get(), text);
  return error == 0 ? std::string() : Sentence(error);
}

std::string TrimOwnFile(const std::string& path,
                        const std::function<std::string(const std::string&)>& trim,
                        std::string& content) {
  MakeDirectoryOf(path);
  CFile file(-1);
  int error = OpenLocked(path, file);
  if (error == 0) error = ReadAll(file.Get(), content);
  if (error != 0) {
    content.clear();
    return Sentence(error);
  }
  std::string trimmed = trim(content);
  if (trimmed.size() < content.size()) error = Replace(path, trimmed);
  content = std::move(trimmed);
  return error == 0 ? std::string() : Sentence(error);
}

}  // namespace kestra::cli
