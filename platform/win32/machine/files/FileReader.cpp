#include "platform/win32/machine/files/FileReader.h"

#include <algorithm>
#include <limits>

#include "platform/win32/machine/files/FileStatus.h"

namespace kestra {
namespace {

class CWindowsFileReader final : public CFileReader {
 public:
  explicit CWindowsFileReader(CUniqueHandle file) : m_file(std::move(file)) {}

  SystemError Info(FileInfo& info) override { return ReadFileInfo(m_file.get(), info); }
  SystemError Read(size_t limit, std::string& bytes) override {
    // Room is made for what one call may bring and not for all that the caller would take.
    constexpr size_t kMostAtOnce = 1 << 20;
    const size_t before = bytes.size();
    const auto wanted = static_cast<DWORD>(std::min(limit, kMostAtOnce));
    bytes.resize(before + wanted);
    DWORD count = 0;
    const bool isRead = ReadFile(m_file.get(), bytes.data() + before, wanted, &count, nullptr);
    const SystemError error = isRead ? kErrorSuccess : LastError();
    bytes.resize(before + (isRead ? count : 0));
    return error == ERROR_HANDLE_EOF ? kErrorSuccess : error;
  }
  SystemError Seek(uint64_t offset) override {
    if (offset > static_cast<uint64_t>(std::numeric_limits<LONGLONG>::max()))
      return kErrorInvalidParameter;
    LARGE_INTEGER distance{};
    distance.QuadPart = static_cast<LONGLONG>(offset);
    return SetFilePointerEx(m_file.get(), distance, nullptr, FILE_BEGIN) ? kErrorSuccess
                                                                         : LastError();
  }

 private:
  CUniqueHandle m_file;
};

// A directory cannot be opened like this (kErrorAccessDenied).
SystemError OpenToRead(const NativePath& path, DWORD flags, CUniqueHandle& file, FileInfo& info) {
  const SystemError error = OpenExisting(path, GENERIC_READ, kShareAll, flags, file);
  if (error != kErrorSuccess) return error;
  return GetFileType(file.get()) == FILE_TYPE_DISK ? ReadFileInfo(file.get(), info)
                                                   : kErrorAccessDenied;
}

}  // namespace

SystemError OpenPlainFile(const NativePath& path, LastLink lastLink, CUniqueHandle& file) {
  if (path.isRoot) return kErrorAccessDenied;
  FileInfo info;
  CUniqueHandle opened;
  SystemError error = OpenToRead(path, FILE_FLAG_OPEN_REPARSE_POINT, opened, info);
  if (error != kErrorSuccess) return error;
  if (path.isDirectoryOnly) return kErrorPathNotFound;
  if (info.kind == FileKind::Link && lastLink == LastLink::Refuse) return kErrorAccessDenied;
  // What is open is the reparse point; what its file system makes of it opens without the flag. A
  // path that goes another way by then is noticed where it must not.
  if (info.attributes & FILE_ATTRIBUTE_REPARSE_POINT) {
    const FileInfo before = info;
    error = OpenToRead(path, 0, opened, info);
    // A link that leads nowhere is a file that there is not.
    if (error == kErrorPathNotFound) return kErrorFileNotFound;
    if (error != kErrorSuccess) return error;
    if (before.kind != FileKind::Link && IsAnotherFile(before, info)) return kErrorAccessDenied;
  }
  if (info.attributes & kFileAttributeDirectory) return kErrorAccessDenied;
  if (info.kind == FileKind::Other) return kErrorAccessDenied;
  file = std::move(opened);
  return kErrorSuccess;
}

SystemError OpenWindowsFile(const std::string& path, LastLink lastLink,
                            std::unique_ptr<CFileReader>& reader) {
  NativePath native;
  CUniqueHandle file;
  SystemError error = ReadNativePath(path, native);
  if (error == kErrorSuccess) error = OpenPlainFile(native, lastLink, file);
  if (error == kErrorSuccess) reader = std::make_unique<CWindowsFileReader>(std::move(file));
  return error;
}

}  // namespace kestra
