// By memfd_create(2) and its seals, fcntl(2).
#include "platform/os/MemoryFile.h"

#include <fcntl.h>
#include <sys/mman.h>

#include <cerrno>

#include "platform/linux/ErrnoMap.h"
#include "platform/linux/UniqueFd.h"

namespace kestra::os {
namespace {

class CSealedFile final : public CMemoryFile {
 public:
  explicit CSealedFile(CUniqueFd fd) : m_fd(std::move(fd)) {}
  ~CSealedFile() override {
    if (m_pBytes) munmap(m_pBytes, m_size);
  }
  CSealedFile(const CSealedFile&) = delete;
  CSealedFile& operator=(const CSealedFile&) = delete;

  SystemError Write(std::string_view bytes) override {
    while (!bytes.empty()) {
      const ssize_t written = write(m_fd.get(), bytes.data(), bytes.size());
      if (written < 0 && errno == EINTR) continue;
      if (written < 0) return LastError();
      m_size += static_cast<size_t>(written);
      bytes.remove_prefix(static_cast<size_t>(written));
    }
    return kErrorSuccess;
  }

  size_t Size() const override { return m_size; }

  SystemError Seal() override {
    const int seals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL;
    if (fcntl(m_fd.get(), F_ADD_SEALS, seals) != 0) return LastError();
    if (m_size == 0) return kErrorSuccess;
    void* pBytes = mmap(nullptr, m_size, PROT_READ, MAP_PRIVATE, m_fd.get(), 0);
    if (pBytes == MAP_FAILED) return LastError();
    m_pBytes = pBytes;
    return kErrorSuccess;
  }

  std::string_view Bytes() const override {
    return m_pBytes ? std::string_view(static_cast<const char*>(m_pBytes), m_size)
                    : std::string_view();
  }
  std::string Path() const override { return "/proc/self/fd/" + std::to_string(m_fd.get()); }

 private:
  CUniqueFd m_fd;
  size_t m_size = 0;
  void* m_pBytes = nullptr;
};

}  // namespace

SystemError MakeMemoryFile(std::unique_ptr<CMemoryFile>& file) {
  CUniqueFd fd(memfd_create("kestra", MFD_CLOEXEC | MFD_ALLOW_SEALING));
  if (!fd) return LastError();
  file = std::make_unique<CSealedFile>(std::move(fd));
  return kErrorSuccess;
}

}  // namespace kestra::os
