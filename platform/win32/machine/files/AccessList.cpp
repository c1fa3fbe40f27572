#include "platform/win32/machine/files/AccessList.h"

#include <aclapi.h>

#include <array>

#include "platform/win32/base/UniqueHandle.h"
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

// Whether a list takes no entries from the directory's.
bool IsProtected(PSECURITY_DESCRIPTOR descriptor) {
  SECURITY_DESCRIPTOR_CONTROL control = 0;
  DWORD revision = 0;
  return GetSecurityDescriptorControl(descriptor, &control, &revision) &&
         (control & SE_DACL_PROTECTED) != 0;
}

}  // namespace

SystemError GrantEveryoneAccess(const std::string& path) {
  NativePath native;
  if (const SystemError error = ReadNativePath(path, native)) return error;
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
  return SetNamedSecurityInfoW(native.text.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION,
                               nullptr, nullptr, pList, nullptr);
}

SystemError CopyAccessList(HANDLE from, HANDLE to) {
  if (!KeepsLists(from)) return kErrorSuccess;
  PACL pList = nullptr;
  PSECURITY_DESCRIPTOR pDescriptor = nullptr;
  if (const DWORD error = GetSecurityInfo(from, SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr,
                                          nullptr, &pList, nullptr, &pDescriptor))
    return error;
  const CUniqueLocal owner(pDescriptor);
  const SECURITY_INFORMATION inheritance = IsProtected(pDescriptor)
                                               ? PROTECTED_DACL_SECURITY_INFORMATION
                                               : UNPROTECTED_DACL_SECURITY_INFORMATION;
  return SetSecurityInfo(to, SE_FILE_OBJECT, DACL_SECURITY_INFORMATION | inheritance, nullptr,
                         nullptr, pList, nullptr);
}

}  // namespace kestra
