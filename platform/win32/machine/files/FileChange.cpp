#include "platform/win32/machine/files/FileChange.h"

#include "platform/win32/machine/files/FileReader.h"
#include "platform/win32/machine/files/FileStatus.h"
#include "platform/win32/machine/files/FileWriter.h"
#include "platform/win32/machine/files/QuietErrors.h"
#include "platform/win32/machine/files/TemporaryFile.h"

namespace kestra {
namespace {

constexpr DWORD kSettable = kFileAttributeReadOnly | kFileAttributeHidden | kFileAttributeSystem;

bool IsSignalled(const os::CWaitable* pTermination) {
  return pTermination && os::WaitAny({pTermination}, 0) != os::kWaitTimeOut;
}

DWORD CALLBACK LookAtTermination(LARGE_INTEGER, LARGE_INTEGER, LARGE_INTEGER, LARGE_INTEGER, DWORD,
                                 DWORD, HANDLE, HANDLE, void* pTermination) {
  return IsSignalled(static_cast<const os::CWaitable*>(pTermination)) ? PROGRESS_CANCEL
                                                                      : PROGRESS_CONTINUE;
}

SystemError CopyContent(const NativePath& source, const std::wstring& target,
                        const os::CWaitable* pTermination) {
  if (IsSignalled(pTermination)) return kErrorCancelled;
  auto* const pData = const_cast<void*>(static_cast<const void*>(pTermination));
  const bool isCopied = CopyFileExW(source.text.c_str(), target.c_str(), LookAtTermination, pData,
                                    nullptr, COPY_FILE_FAIL_IF_EXISTS);
  const SystemError error = isCopied ? kErrorSuccess : LastError();
  if (error == ERROR_REQUEST_ABORTED || IsSignalled(pTermination)) return kErrorCancelled;
  return error;
}

SystemError SetAttributeWord(HANDLE file, DWORD attributes) {
  FILE_BASIC_INFO basic{};  // a time of 0 stays as it is
  basic.FileAttributes = attributes == 0 ? FILE_ATTRIBUTE_NORMAL : attributes;
  return SetFileInformationByHandle(file, FileBasicInfo, &basic, sizeof basic) ? kErrorSuccess
                                                                               : LastError();
}

// Nobody can open a read-only file so that it can be flushed: it gets its attributes afterwards.
SystemError Finish(const std::wstring& name, DWORD attributes) {
  if ((attributes & FILE_ATTRIBUTE_READONLY) &&
      !SetFileAttributesW(name.c_str(), FILE_ATTRIBUTE_NORMAL))
    return LastError();
  const CUniqueHandle file(CreateFileW(name.c_str(), GENERIC_WRITE, kShareAll, nullptr,
                                       OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file || !FlushFileBuffers(file.get())) return LastError();
  return SetAttributeWord(file.get(), attributes & kPassedOver);
}

// Such a link goes as a directory does, without what it leads to. Wine would remove the latter; but
// it does not open a link itself either, so that this says no.
bool IsDirectoryLink(const NativePath& path) {
  CUniqueHandle itself;
  FileInfo info;
  return OpenExisting(path, FILE_READ_ATTRIBUTES, kShareAll, kItself, itself) == kErrorSuccess &&
         ReadFileInfo(itself.get(), info) == kErrorSuccess && info.kind == FileKind::Link &&
         (info.attributes & kFileAttributeDirectory) != 0;
}

SystemError CheckIsDirectory(NativePath path) {
  path.isDirectoryOnly = false;  // or a file would count as one that is not there
  FileInfo info;
  const SystemError error = ReadFileInfo(path, info);
  if (error != kErrorSuccess) return error;
  return (info.attributes & kFileAttributeDirectory) != 0 ? kErrorSuccess : kErrorDirectory;
}

// Whether a file was written to since: what was copied is then neither the old nor the new.
bool HasChanged(HANDLE file, const FileInfo& before) {
  FileInfo now;
  return ReadFileInfo(file, now) != kErrorSuccess || now.size != before.size ||
         now.lastWriteTime != before.lastWriteTime;
}

}  // namespace

SystemError RemoveWindowsFile(const std::string& path) {
  NativePath native;
  if (const SystemError error = ReadPathToChange(path, native)) return error;
  const CQuietErrors quiet;
  if (!native.isDirectoryOnly && DeleteFileW(native.text.c_str())) return kErrorSuccess;
  const SystemError error = native.isDirectoryOnly ? kErrorAccessDenied : LastError();
  if (error != kErrorAccessDenied || !IsDirectoryLink(native)) return error;
  return RemoveDirectoryW(native.text.c_str()) ? kErrorSuccess : LastError();
}

SystemError RemoveWindowsDirectory(const std::string& path) {
  NativePath native;
  FileInfo info;
  SystemError error = ReadPathToChange(path, native);
  if (error == kErrorSuccess) error = ReadFileInfo(native, info);
  if (error != kErrorSuccess) return error;
  if (info.kind != FileKind::Directory) return kErrorDirectory;
  return RemoveDirectoryW(native.text.c_str()) ? kErrorSuccess : LastError();
}

SystemError RenameWindowsPath(const std::string& from, const std::string& to) {
  NativePath source, target;
  SystemError error = ReadPathToChange(from, source);
  if (error == kErrorSuccess) error = ReadPathToChange(to, target);
  if (error == kErrorSuccess && (source.isDirectoryOnly || target.isDirectoryOnly))
    error = CheckIsDirectory(source);
  if (error != kErrorSuccess) return error;
  const CQuietErrors quiet;
  return MoveFileExW(source.text.c_str(), target.text.c_str(), MOVEFILE_WRITE_THROUGH)
             ? kErrorSuccess
             : LastError();
}

SystemError CopyWindowsFile(const std::string& from, const std::string& to,
                            const os::CWaitable* pTermination) {
  NativePath source, target;
  CUniqueHandle held;
  FileInfo before;
  SystemError error = ReadPathToChange(from, source);
  if (error == kErrorSuccess) error = ReadPathToChange(to, target);
  if (error == kErrorSuccess) error = OpenPlainFile(source, LastLink::Follow, held);
  if (error == kErrorSuccess) error = ReadFileInfo(held.get(), before);
  if (error == kErrorSuccess) error = CheckNameIsFree(target);
  if (error != kErrorSuccess) return error;
  if (target.isDirectoryOnly) return kErrorAccessDenied;
  const CQuietErrors quiet;
  CTemporaryFile copy(target);
  error = copy.Choose();
  if (error == kErrorSuccess) error = CopyContent(source, copy.Name(), pTermination);
  if (error == kErrorSuccess && HasChanged(held.get(), before)) error = kErrorSharingViolation;
  if (error == kErrorSuccess) error = Finish(copy.Name(), before.attributes);
  return error == kErrorSuccess ? copy.MoveTo(Existing::Refuse) : error;
}

SystemError SetWindowsAttributes(const std::string& path, uint32_t attributes) {
  constexpr DWORD kAccess = FILE_READ_ATTRIBUTES | FILE_WRITE_ATTRIBUTES;
  NativePath native;
  CUniqueHandle file;
  FILE_BASIC_INFO now{};
  SystemError error = ReadPathToChange(path, native);
  if (error == kErrorSuccess) error = OpenExisting(native, kAccess, kShareAll, kItself, file);
  if (error != kErrorSuccess) return error;
  if (!GetFileInformationByHandleEx(file.get(), FileBasicInfo, &now, sizeof now))
    return LastError();
  return SetAttributeWord(file.get(), (now.FileAttributes & ~kSettable) | (attributes & kSettable));
}

SystemError MoveWindowsPathAtBoot(const std::string& from, const std::string& to) {
  NativePath source, target;
  SystemError error = ReadPathToChange(from, source);
  if (error == kErrorSuccess && !to.empty()) error = ReadPathToChange(to, target);
  if (error != kErrorSuccess) return error;
  return MoveFileExW(source.text.c_str(), to.empty() ? nullptr : target.text.c_str(),
                     MOVEFILE_REPLACE_EXISTING | MOVEFILE_DELAY_UNTIL_REBOOT)
             ? kErrorSuccess
             : LastError();
}

}  // namespace kestra
