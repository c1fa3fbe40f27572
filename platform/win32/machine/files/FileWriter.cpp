#include "platform/win32/machine/files/FileWriter.h"

#include <algorithm>
#include <optional>

#include "platform/win32/base/Wide.h"
#include "platform/win32/machine/files/AccessList.h"
#include "platform/win32/machine/files/FileStatus.h"
#include "platform/win32/machine/files/QuietErrors.h"
#include "platform/win32/machine/files/TemporaryFile.h"

namespace kestra {
namespace {

// A file that is replaced, not followed if it has become a link by now.
SystemError OpenReplaced(const NativePath& path, DWORD access, DWORD share, CUniqueHandle& file,
                         FileInfo& info) {
  constexpr DWORD kFlags = FILE_FLAG_OPEN_REPARSE_POINT;
  SystemError error =
      OpenExisting(path, access | READ_CONTROL | FILE_READ_ATTRIBUTES, share, kFlags, file);
  if (error == kErrorSuccess) error = ReadFileInfo(file.get(), info);
  if (error != kErrorSuccess) return error;
  return info.kind == FileKind::File ? kErrorSuccess : kErrorAccessDenied;
}

class CWindowsFileWriter final : public CFileWriter {
 public:
  CWindowsFileWriter(NativePath target, Existing existing)
      : m_target(std::move(target)), m_existing(existing), m_file(m_target) {}

  SystemError OpenNew() { return m_file.Open(FILE_ATTRIBUTE_NORMAL); }
  // The caller must have the right to write into what is replaced. That may be private, so the new
  // one gets its access list before a byte.
  SystemError OpenToReplace() {
    CUniqueHandle replaced;
    FileInfo info;
    SystemError error = OpenReplaced(m_target, GENERIC_WRITE, kShareAll, replaced, info);
    // It was there a moment ago: another writer is about to put a new one in its place.
    if (error == kErrorFileNotFound) return kErrorSharingViolation;
    const bool isEncrypted = info.attributes & FILE_ATTRIBUTE_ENCRYPTED;
    if (error == kErrorSuccess)
      error = m_file.Open(isEncrypted ? FILE_ATTRIBUTE_ENCRYPTED : FILE_ATTRIBUTE_NORMAL);
    if (error == kErrorSuccess) error = CopyAccessList(replaced.get(), m_file.File());
    if (error == kErrorSuccess && (info.attributes & FILE_ATTRIBUTE_COMPRESSED))
      Compress(m_file.File());
    m_replaces = true;
    return error;
  }
  SystemError Write(std::string_view bytes) override {
    constexpr size_t kMostAtOnce = 1 << 20;
    while (m_error == kErrorSuccess && !bytes.empty()) {
      const auto wanted = static_cast<DWORD>(std::min(bytes.size(), kMostAtOnce));
      DWORD count = 0;
      if (!WriteFile(m_file.File(), bytes.data(), wanted, &count, nullptr))
        m_error = LastError();
      else if (count == 0)
        m_error = kErrorDiskFull;
      bytes.remove_prefix(count);
    }
    return m_error;
  }
  void ExpectUnchanged(const FileInfo& read) override { m_expected = read; }
  SystemError Commit() override {
    if (m_error != kErrorSuccess) return m_error;
    m_error = PutInPlace();
    if (m_error != kErrorSuccess) return m_error;
    m_error = kErrorInvalidHandle;  // for every later call
    return kErrorSuccess;
  }

 private:
  SystemError PutInPlace() {
    CUniqueHandle replaced;  // held until the new one is in place
    if (m_replaces || m_expected) {
      const SystemError error = HoldReplaced(replaced);
      if (error != kErrorSuccess) return error;
    }
    if (!FlushFileBuffers(m_file.File())) return LastError();
    return m_file.MoveTo(m_existing);
  }
  // One that is expected to be unchanged is opened so that nobody else can have it open for
  // writing: neither another program, nor a writer of ours that is at the same place. What went
  // meanwhile leaves a name that is free.
  SystemError HoldReplaced(CUniqueHandle& replaced) {
    FileInfo found;
    const DWORD access = m_expected ? FILE_WRITE_DATA : 0;
    const DWORD share = m_expected ? FILE_SHARE_READ | FILE_SHARE_DELETE : kShareAll;
    const SystemError error = OpenReplaced(m_target, access, share, replaced, found);
    if (m_expected && (error != kErrorSuccess || !m_replaces || !IsSameState(found, *m_expected)))
      return kErrorSharingViolation;
    if (error == kErrorFileNotFound) return kErrorSuccess;
    return error == kErrorSuccess ? TakeOver(found) : error;
  }
  SystemError TakeOver(const FileInfo& replaced) {
    FILE_BASIC_INFO basic{};  // what is 0 stays as it is
    basic.CreationTime.QuadPart = static_cast<LONGLONG>(replaced.creationTime.ticks);
    basic.FileAttributes = (replaced.attributes & kPassedOver) | FILE_ATTRIBUTE_ARCHIVE;
    return SetFileInformationByHandle(m_file.File(), FileBasicInfo, &basic, sizeof basic)
               ? kErrorSuccess
               : LastError();
  }

  NativePath m_target;
  Existing m_existing;
  CTemporaryFile m_file;
  bool m_replaces = false;
  std::optional<FileInfo> m_expected;   // what is replaced, or nothing is
  SystemError m_error = kErrorSuccess;  // what every later call answers
};

// The path of the file that a link leads to.
SystemError FollowLink(NativePath& path) {
  CUniqueHandle end;
  const SystemError error =
      OpenExisting(path, FILE_READ_ATTRIBUTES, kShareAll, FILE_FLAG_BACKUP_SEMANTICS, end);
  if (error == kErrorPathNotFound) return kErrorFileNotFound;
  if (error != kErrorSuccess) return error;
  if (GetFileType(end.get()) != FILE_TYPE_DISK) return kErrorAccessDenied;
  path.text = FetchText([&](wchar_t* buffer, DWORD size) {
    return GetFinalPathNameByHandleW(end.get(), buffer, size, 0);
  });
  return path.text.empty() ? LastError() : kErrorSuccess;
}

}  // namespace

SystemError CheckNameIsFree(const NativePath& path) {
  FileInfo info;
  const SystemError error = ReadFileInfo(path, info);
  if (error == kErrorSuccess) return kErrorFileExists;
  return error == kErrorFileNotFound ? kErrorSuccess : error;
}

SystemError BeginWindowsWrite(const std::string& path, LastLink lastLink, Existing existing,
                              std::unique_ptr<CFileWriter>& writer) {
  NativePath native;
  if (const SystemError error = ReadPathToChange(path, native)) return error;
  if (native.isDirectoryOnly || native.isRoot) return kErrorAccessDenied;
  FileInfo found;
  SystemError error = ReadFileInfo(native, found);
  const bool isThere = error == kErrorSuccess;
  if (error == kErrorFileNotFound) error = kErrorSuccess;
  if (isThere && existing == Existing::Refuse) return kErrorFileExists;
  if (isThere && found.kind == FileKind::Link && lastLink == LastLink::Follow) {
    error = FollowLink(native);
    if (error == kErrorSuccess) error = ReadFileInfo(native, found);
  }
  if (error == kErrorSuccess && isThere && found.kind != FileKind::File) error = kErrorAccessDenied;
  if (error != kErrorSuccess) return error;
  auto made = std::make_unique<CWindowsFileWriter>(std::move(native), existing);
  error = isThere ? made->OpenToReplace() : made->OpenNew();
  if (error == kErrorSuccess) writer = std::move(made);
  return error;
}

}  // namespace kestra
