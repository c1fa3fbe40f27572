#include "platform/win32/machine/files/FileStatus.h"

#include <winioctl.h>

#include <algorithm>
#include <array>
#include <iterator>

#include "platform/win32/machine/files/QuietErrors.h"

namespace kestra {
namespace {

// Attributes of a file whose bytes are elsewhere and are fetched by a look into it.
constexpr DWORD kRecallOnOpen = 0x40000, kRecallOnDataAccess = 0x400000;
constexpr DWORD kElsewhere = FILE_ATTRIBUTE_OFFLINE | kRecallOnOpen | kRecallOnDataAccess;

// Sockets, pipes and devices of the Linux subsystem. Source: [MS-FSCC] 2.1.2.1.
constexpr DWORD kForeignTags[] = {0x80000023, 0x80000024, 0x80000025, 0x80000026};

FileTime TimeOf(const FILETIME& time) {
  return {uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime};
}
FileTime TimeOf(const LARGE_INTEGER& time) {
  return {static_cast<uint64_t>(std::max<LONGLONG>(time.QuadPart, 0))};
}

// A tag that says what lies behind the name stands for another file; the others (a compressed file,
// one of a cloud) change nothing about what the file is. Where the tag is not told, as under Wine,
// it is taken for a link: nobody is led anywhere by that.
FileKind KindOf(DWORD attributes, DWORD tag) {
  if (attributes & FILE_ATTRIBUTE_DEVICE) return FileKind::Other;
  if (attributes & FILE_ATTRIBUTE_REPARSE_POINT) {
    if (tag == 0 || IsReparseTagNameSurrogate(tag)) return FileKind::Link;
    if (std::find(std::begin(kForeignTags), std::end(kForeignTags), tag) != std::end(kForeignTags))
      return FileKind::Other;
  }
  return attributes & FILE_ATTRIBUTE_DIRECTORY ? FileKind::Directory : FileKind::File;
}

// What the attribute word and the tag decide.
FileInfo BareInfo(DWORD attributes, DWORD tag) {
  FileInfo info;
  info.kind = KindOf(attributes, tag);
  info.attributes = attributes;
  info.isTrusted = info.kind != FileKind::Link;
  info.isStored = (attributes & kElsewhere) == 0;
  return info;
}

// A file system that has no such numbers gives 0, or all bits where they do not fit.
FileIdentity IdentityOf(uint64_t volume, uint64_t file) {
  return file == 0 || file == ~uint64_t{0} ? FileIdentity{} : FileIdentity{volume, file};
}

uint64_t Join(DWORD high, DWORD low) {
  return uint64_t{high} << 32 | low;
}

bool IsClosedToUs(SystemError error) {
  return error == kErrorAccessDenied || error == kErrorSharingViolation;
}

SystemError ReadFoundInfo(const NativePath& path, FileInfo& info) {
  WIN32_FIND_DATAW entry{};
  const CUniqueFind find(FindFirstFileW(path.text.c_str(), &entry));
  if (!find) return LastError();
  info = InfoOf(entry);
  return kErrorSuccess;
}

}  // namespace

SystemError OpenExisting(const NativePath& path, DWORD access, DWORD share, DWORD flags,
                         CUniqueHandle& handle) {
  constexpr DWORD kAsStranger = SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION;
  const CQuietErrors quiet;
  handle = CUniqueHandle(CreateFileW(path.text.c_str(), access, share, nullptr, OPEN_EXISTING,
                                     flags | kAsStranger, nullptr));
  return handle ? kErrorSuccess : LastError();
}

FileInfo InfoOf(const WIN32_FIND_DATAW& entry) {
  const bool isReparsePoint = entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT;
  FileInfo info = BareInfo(entry.dwFileAttributes, isReparsePoint ? entry.dwReserved0 : 0);
  info.size = Join(entry.nFileSizeHigh, entry.nFileSizeLow);
  info.creationTime = TimeOf(entry.ftCreationTime);
  info.lastAccessTime = TimeOf(entry.ftLastAccessTime);
  info.lastWriteTime = TimeOf(entry.ftLastWriteTime);
  return info;
}

// For a reparse point the size of the extended attributes is its tag. Source: [MS-FSCC] 2.4.17.
FileInfo InfoOf(const FILE_ID_BOTH_DIR_INFO& entry, uint64_t volume) {
  FileInfo info = BareInfo(entry.FileAttributes, entry.EaSize);
  info.size = static_cast<uint64_t>(entry.EndOfFile.QuadPart);
  info.creationTime = TimeOf(entry.CreationTime);
  info.lastAccessTime = TimeOf(entry.LastAccessTime);
  info.lastWriteTime = TimeOf(entry.LastWriteTime);
  info.changeStamp = TimeOf(entry.ChangeTime).ticks;
  info.identity = IdentityOf(volume, static_cast<uint64_t>(entry.FileId.QuadPart));
  return info;
}

SystemError ReadFileInfo(HANDLE handle, FileInfo& info) {
  BY_HANDLE_FILE_INFORMATION data{};
  if (!GetFileInformationByHandle(handle, &data)) return LastError();
  FILE_ATTRIBUTE_TAG_INFO tagged{};
  if (data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT)
    GetFileInformationByHandleEx(handle, FileAttributeTagInfo, &tagged, sizeof tagged);
  info = BareInfo(data.dwFileAttributes, tagged.ReparseTag);
  info.size = Join(data.nFileSizeHigh, data.nFileSizeLow);
  info.creationTime = TimeOf(data.ftCreationTime);
  info.lastAccessTime = TimeOf(data.ftLastAccessTime);
  info.lastWriteTime = TimeOf(data.ftLastWriteTime);
  info.identity =
      IdentityOf(data.dwVolumeSerialNumber, Join(data.nFileIndexHigh, data.nFileIndexLow));
  FILE_BASIC_INFO basic{};
  if (GetFileInformationByHandleEx(handle, FileBasicInfo, &basic, sizeof basic))
    info.changeStamp = TimeOf(basic.ChangeTime).ticks;
  return kErrorSuccess;
}

SystemError ReadFileInfo(const NativePath& path, FileInfo& info) {
  CUniqueHandle handle;
  SystemError error = OpenExisting(path, FILE_READ_ATTRIBUTES, kShareAll, kItself, handle);
  if (error == kErrorSuccess)
    error = ReadFileInfo(handle.get(), info);
  else if (IsClosedToUs(error) && !path.isRoot)
    error = ReadFoundInfo(path, info);
  if (error != kErrorSuccess) return error;
  const bool isDirectory = info.attributes & kFileAttributeDirectory;
  if (path.isDirectoryOnly && !isDirectory) return kErrorPathNotFound;
  // Wine opens the directory that a link leads to, whatever it is asked; by its name it tells of
  // the link. On Windows both say the same.
  if (isDirectory && !path.isRoot && info.kind == FileKind::Directory) {
    const DWORD attributes = GetFileAttributesW(path.text.c_str());
    const bool isKnown = attributes != INVALID_FILE_ATTRIBUTES;
    if (isKnown && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) &&
        !(info.attributes & FILE_ATTRIBUTE_REPARSE_POINT)) {
      info.kind = FileKind::Link;
      info.attributes = attributes;
      info.isTrusted = false;
    }
  }
  return kErrorSuccess;
}

void Compress(HANDLE file) {
  USHORT format = COMPRESSION_FORMAT_DEFAULT;
  DWORD count = 0;
  DeviceIoControl(file, FSCTL_SET_COMPRESSION, &format, sizeof format, nullptr, 0, &count, nullptr);
}

}  // namespace kestra
