// Opening, and what the system says of what is open.
#pragma once

#include "platform/machine/FileSystem.h"
#include "platform/win32/base/UniqueHandle.h"
#include "platform/win32/machine/files/NativePath.h"

namespace kestra {

// The flags that open a directory as well as a file, and a link itself.
inline constexpr DWORD kItself = FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT;
inline constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// The attributes that one file can give to another. Source: the Win32 page of SetFileAttributes.
inline constexpr DWORD kPassedOver = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN |
                                     FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE |
                                     FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;

// What a file system, or an older system, answers to an operation that it does not have.
inline bool IsUnsupported(SystemError error) {
  return error == kErrorInvalidParameter || error == kErrorNotSupported ||
         error == kErrorInvalidFunction || error == kErrorCallNotImplemented ||
         error == ERROR_INVALID_LEVEL;
}

// Opens what is there. Whoever may answer for the path learns nothing of us but who we are.
SystemError OpenExisting(const NativePath& path, DWORD access, DWORD share, DWORD flags,
                         CUniqueHandle& handle);

// What is open may be a link itself. Whether a link counts as a directory is what the link says: a
// link is made for a directory or for a file, and to ask what it leads to might wait for a network.
SystemError ReadFileInfo(HANDLE handle, FileInfo& info);
// Of what a path names; of a link itself. The system does not open everything that it tells of,
// such as its page file: then without the identity.
SystemError ReadFileInfo(const NativePath& path, FileInfo& info);

// Has a file that was just made, open for reading and writing, compressed by the file system, where
// that can do it. The content is the same without it: a failure is no reason to write nothing.
void Compress(HANDLE file);

FileInfo InfoOf(const WIN32_FIND_DATAW& entry);
FileInfo InfoOf(const FILE_ID_BOTH_DIR_INFO& entry, uint64_t volume);

}  // namespace kestra
