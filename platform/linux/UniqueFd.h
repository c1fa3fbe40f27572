// The one owner of a descriptor, and that of a directory stream.
#pragma once

#include <dirent.h>
#include <unistd.h>

#include <memory>
#include <utility>

namespace kestra {

class CUniqueFd {
 public:
  CUniqueFd() = default;
  explicit CUniqueFd(int fd) : m_fd(fd) {}
  CUniqueFd(CUniqueFd&& other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
  CUniqueFd& operator=(CUniqueFd&& other) noexcept {
    std::swap(m_fd, other.m_fd);
    return *this;
  }
  ~CUniqueFd() {
    if (m_fd >= 0) close(m_fd);
  }

  int get() const { return m_fd; }
  explicit operator bool() const { return m_fd >= 0; }
  int Release() { return std::exchange(m_fd, -1); }

 private:
  int m_fd = -1;
};

struct DirectoryCloser {
  void operator()(DIR* pDirectory) const { closedir(pDirectory); }
};
using CUniqueDirectory = std::unique_ptr<DIR, DirectoryCloser>;

}  // namespace kestra
