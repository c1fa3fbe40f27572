#include "platform/win32/machine/files/AccessList.h"

#include <aclapi.h>

#include <array>
#include <cstdint>
#include <vector>

#include "platform/win32/base/UniqueHandle.h"
#include "platform/win32/machine/files/FileStatus.h"
#include "platform/win32/machine/files/NativePath.h"

namespace kestra {
namespace {

// S-1-1-0. Text of it would have to be looked up in the language of the system.
struct EveryoneSid {
  alignas(DWORD) std::array<BYTE, SECURITY_MAX_SID_SIZE> bytes{};
};
bool MakeEveryone(EveryoneSid& sid) {
  DWORD size = static_cast<DWORD>(sid.bytes.size());
  return CreateWellKnownSid(WinWorldSid, nullptr, sid.bytes.data(), &size);
}

bool KeepsLists(HANDLE file) {
  DWORD flags = 0;
  const bool isKnown =
      GetVolumeInformationByHandleW(file, nullptr, 0, nullptr, nullptr, &flags, nullptr, 0);
  return !isKnown || (flags & FILE_PERSISTENT_ACLS) != 0;
}

// Of a file that has a second name, other than the one given, or that leads to another, everybody
// would get at something that nobody named.
SystemError OpenToGrant(const std::string& path, CUniqueHandle& file) {
  constexpr DWORD kAccess = FILE_READ_ATTRIBUTES | READ_CONTROL | WRITE_DAC;
  NativePath native;
  FileInfo info;
  SystemError error = ReadPathToChange(path, native);
  if (error == kErrorSuccess) error = OpenExisting(native, kAccess, kShareAll, kItself, file);
  if (error == kErrorSuccess) error = ReadFileInfo(file.get(), info);
  if (error != kErrorSuccess) return error;
  if (info.kind == FileKind::Directory) return kErrorSuccess;
  BY_HANDLE_FILE_INFORMATION more{};
  if (!GetFileInformationByHandle(file.get(), &more)) return LastError();
  return info.kind == FileKind::File && more.nNumberOfLinks <= 1 ? kErrorSuccess
                                                                 : kErrorAccessDenied;
}

// A file's descriptor with its access list. In words of eight bytes, as it must be aligned.
SystemError ReadAccessList(HANDLE file, std::vector<uint64_t>& descriptor) {
  constexpr int kMostTries = 16;  // it may grow between two calls
  for (int i = 0; i < kMostTries; ++i) {
    const auto size = static_cast<DWORD>(descriptor.size() * sizeof(uint64_t));
    DWORD needed = 0;
    if (GetKernelObjectSecurity(file, DACL_SECURITY_INFORMATION, descriptor.data(), size, &needed))
      return kErrorSuccess;
    if (GetLastError() != ERROR_INSUFFICIENT_BUFFER) return LastError();
    descriptor.resize(needed / sizeof(uint64_t) + 1);
  }
  return kErrorInsufficientBuffer;
}

}  // namespace

SystemError GrantEveryoneAccess(const std::string& path) {
  CUniqueHandle file;
  if (const SystemError error = OpenToGrant(path, file)) return error;
  EveryoneSid everyone;
  if (!MakeEveryone(everyone)) return LastError();
  constexpr DWORD kEverything = GENERIC_ALL | STANDARD_RIGHTS_ALL;
  EXPLICIT_ACCESSW entry{};
  entry.grfAccessPermissions = kEverything;
  entry.grfAccessMode = SET_ACCESS;
  entry.grfInheritance = SUB_CONTAINERS_AND_OBJECTS_INHERIT;
  entry.Trustee.TrusteeForm = TRUSTEE_IS_SID;
  entry.Trustee.TrusteeType = TRUSTEE_IS_WELL_KNOWN_GROUP;
  entry.Trustee.ptstrName = reinterpret_cast<wchar_t*>(everyone.bytes.data());
  PACL pList = nullptr;
  if (const DWORD error = SetEntriesInAclW(1, &entry, nullptr, &pList)) return error;
  const CUniqueLocal owner(pList);
  return SetSecurityInfo(file.get(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                         pList, nullptr);
}

SystemError CopyAccessList(HANDLE from, HANDLE to) {
  if (!KeepsLists(from)) return kErrorSuccess;
  std::vector<uint64_t> descriptor(64);
  if (const SystemError error = ReadAccessList(from, descriptor)) return error;
  // SetSecurityInfo would work out anew what comes from the directory: a file that was moved there
  // would lose what it has. The mark of such entries stays only if that is asked for.
  SECURITY_DESCRIPTOR_CONTROL control = 0;
  DWORD revision = 0;
  if (!GetSecurityDescriptorControl(descriptor.data(), &control, &revision)) return LastError();
  if ((control & SE_DACL_AUTO_INHERITED) != 0 &&
      !SetSecurityDescriptorControl(descriptor.data(), SE_DACL_AUTO_INHERIT_REQ,
                                    SE_DACL_AUTO_INHERIT_REQ))
    return LastError();
  const SECURITY_INFORMATION inheritance = (control & SE_DACL_PROTECTED) != 0
                                               ? PROTECTED_DACL_SECURITY_INFORMATION
                                               : UNPROTECTED_DACL_SECURITY_INFORMATION;
  return SetKernelObjectSecurity(to, DACL_SECURITY_INFORMATION | inheritance, descriptor.data())
             ? kErrorSuccess
             : LastError();
}

}  // namespace kestra
