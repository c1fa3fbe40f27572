#include "platform/os/HostFile.h"

#include <algorithm>

#include "platform/win32/base/UniqueHandle.h"
#include "platform/win32/base/Wide.h"

namespace kestra::os {
namespace {

constexpr size_t kMostBytesAtOnce = 1 << 30;

// A reparse point is opened itself, so that it can be seen and refused; and the other end of a pipe
// does not get to act for us.
constexpr DWORD kSafeOpen =
    FILE_FLAG_OPEN_REPARSE_POINT | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION;

bool MoveTo(HANDLE file, uint64_t offset) {
  LARGE_INTEGER distance{};
  distance.QuadPart = static_cast<LONGLONG>(offset);
  return SetFilePointerEx(file, distance, nullptr, FILE_BEGIN) != FALSE;
}

class CWinFile final : public CHostFile {
 public:
  explicit CWinFile(CUniqueHandle file) : m_file(std::move(file)) {}

  SystemError Write(std::string_view data, size_t& written) override {
    written = 0;
    while (written < data.size()) {
      const auto wanted = static_cast<DWORD>(std::min(data.size() - written, kMostBytesAtOnce));
      DWORD count = 0;
      if (!WriteFile(m_file.get(), data.data() + written, wanted, &count, nullptr))
        return LastError();
      if (count == 0) return kErrorDiskFull;
      written += count;
    }
    return kErrorSuccess;
  }
  SystemError Seek(uint64_t offset) override {
    return MoveTo(m_file.get(), offset) ? kErrorSuccess : LastError();
  }
  SystemError SetEnd(uint64_t offset) override {
    return MoveTo(m_file.get(), offset) && SetEndOfFile(m_file.get()) ? kErrorSuccess : LastError();
  }
  SystemError Size(uint64_t& size) override {
    LARGE_INTEGER length{};
    if (!GetFileSizeEx(m_file.get(), &length)) return LastError();
    size = static_cast<uint64_t>(length.QuadPart);
    return kErrorSuccess;
  }

 private:
  CUniqueHandle m_file;
};

// No link, no device, and no second name where isAlone.
SystemError CheckPlainFile(HANDLE file, bool isAlone) {
  if (GetFileType(file) != FILE_TYPE_DISK) return kErrorAccessDenied;
  BY_HANDLE_FILE_INFORMATION info{};
  if (!GetFileInformationByHandle(file, &info)) return LastError();
  constexpr DWORD kNoPlainFile = FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DIRECTORY;
  const bool isPlain = (info.dwFileAttributes & kNoPlainFile) == 0;
  return isPlain && (!isAlone || info.nNumberOfLinks == 1) ? kErrorSuccess : kErrorAccessDenied;
}

SystemError OpenPlainFile(const std::string& path, DWORD access, DWORD share, DWORD disposition,
                          CUniqueHandle& file) {
  std::wstring name;
  if (const SystemError error = WideName(path, name)) return error;
  if (name.empty()) return kErrorPathNotFound;
  file = CUniqueHandle(CreateFileW(name.c_str(), access, share, nullptr, disposition,
                                   FILE_ATTRIBUTE_NORMAL | kSafeOpen, nullptr));
  if (!file) return LastError();
  return CheckPlainFile(file.get(), (access & GENERIC_WRITE) != 0);
}

DWORD AttributesOf(const std::string& path) {
  std::wstring name;
  if (WideName(path, name) != kErrorSuccess) return INVALID_FILE_ATTRIBUTES;
  return GetFileAttributesW(name.c_str());
}

}  // namespace

SystemError OpenExclusive(const std::string& path, std::unique_ptr<CHostFile>& file) {
  CUniqueHandle handle;
  const SystemError error =
      OpenPlainFile(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, OPEN_ALWAYS, handle);
  if (error == kErrorSuccess) file = std::make_unique<CWinFile>(std::move(handle));
  return error;
}

SystemError ReadFileHead(const std::string& path, size_t limit, std::string& content) {
  content.clear();
  CUniqueHandle file;
  constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const SystemError error = OpenPlainFile(path, GENERIC_READ, kShareAll, OPEN_EXISTING, file);
  if (error != kErrorSuccess) return error;
  char buffer[4096];
  while (content.size() < limit) {
    const auto wanted = static_cast<DWORD>(std::min(limit - content.size(), sizeof buffer));
    DWORD count = 0;
    if (!ReadFile(file.get(), buffer, wanted, &count, nullptr)) return LastError();
    if (count == 0) break;
    content.append(buffer, count);
  }
  return kErrorSuccess;
}

std::string FullPath(const std::string& path) {
  const std::wstring name = Wide(path);
  const std::wstring full = FetchText([&name](wchar_t* pBuffer, DWORD size) {
    return GetFullPathNameW(name.c_str(), size, pBuffer, nullptr);
  });
  return full.empty() ? path : Narrow(full);
}

bool DirectoryExists(const std::string& path) {
  const DWORD attributes = AttributesOf(path);
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool PathExists(const std::string& path) {
  return AttributesOf(path) != INVALID_FILE_ATTRIBUTES;
}

SystemError MakeDirectory(const std::string& path) {
  std::wstring name;
  if (const SystemError error = WideName(path, name)) return error;
  return CreateDirectoryW(name.c_str(), nullptr) ? kErrorSuccess : LastError();
}

bool OthersCanWrite(const std::string& /*path*/) {
  return false;
}

}  // namespace kestra::os
