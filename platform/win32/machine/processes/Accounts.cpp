#include "platform/win32/machine/processes/Accounts.h"

#include <ntsecapi.h>
#include <sddl.h>

#include <memory>

#include "platform/win32/base/Optional.h"
#include "platform/win32/base/UniqueHandle.h"
#include "platform/win32/base/Wide.h"
#include "platform/win32/machine/processes/NativeCalls.h"

namespace kestra {
namespace {

std::string BytesOf(PSID sid) {
  if (!sid || !IsValidSid(sid)) return {};
  return std::string(static_cast<const char*>(sid), GetLengthSid(sid));
}

// Null for bytes that are no SID as a whole. The system's functions do not write into one.
PSID SidOf(const std::string& bytes) {
  constexpr size_t kHeader = 8, kPart = 4, kCountAt = 1;
  if (bytes.size() < kHeader) return nullptr;
  const size_t size = kHeader + kPart * static_cast<uint8_t>(bytes[kCountAt]);
  auto* const pSid = const_cast<char*>(bytes.data());
  return size == bytes.size() && IsValidSid(pSid) ? pSid : nullptr;
}

struct LsaBufferDeleter {
  void operator()(void* pBuffer) const {
    static const auto pFree = Optional<LONG WINAPI(void*)>(L"secur32.dll", "LsaFreeReturnBuffer");
    if (pFree) pFree(pBuffer);
  }
};
template <class Data>
using UniqueLsaBuffer = std::unique_ptr<Data, LsaBufferDeleter>;

}  // namespace

SystemError SidOfProcess(HANDLE process, std::string& sid) {
  HANDLE opened = nullptr;
  if (!OpenProcessToken(process, TOKEN_QUERY, &opened)) return LastError();
  const CUniqueHandle token(opened);
  DWORD needed = 0;
  GetTokenInformation(token.get(), TokenUser, nullptr, 0, &needed);
  if (needed < sizeof(TOKEN_USER)) return LastError();
  const auto buffer = std::make_unique<std::byte[]>(needed);
  if (!GetTokenInformation(token.get(), TokenUser, buffer.get(), needed, &needed)) {
    return LastError();
  }
  sid = BytesOf(reinterpret_cast<const TOKEN_USER*>(buffer.get())->User.Sid);
  return sid.empty() ? kErrorInvalidData : kErrorSuccess;
}

SystemError LookUpAccount(const std::string& sid, std::string& account) {
  const PSID pSid = SidOf(sid);
  if (!pSid) return kErrorInvalidParameter;
  DWORD nameSize = 256, domainSize = 256;
  for (int attempt = 0; attempt < 2; ++attempt) {
    std::wstring name(nameSize, L'\0'), domain(domainSize, L'\0');
    SID_NAME_USE use = SidTypeUnknown;
    if (LookupAccountSidW(nullptr, pSid, name.data(), &nameSize, domain.data(), &domainSize,
                          &use)) {
      name.resize(nameSize);
      domain.resize(domainSize);
      account = Narrow(domain.empty() ? name : domain + L'\\' + name);
      return kErrorSuccess;
    }
    if (GetLastError() != ERROR_INSUFFICIENT_BUFFER) break;
  }
  return LastError();
}

SystemError TextOfSid(const std::string& sid, std::string& text) {
  static const auto pConvert =
      Optional<BOOL WINAPI(PSID, wchar_t**)>(L"advapi32.dll", "ConvertSidToStringSidW");
  if (!pConvert) return kErrorCallNotImplemented;
  const PSID pSid = SidOf(sid);
  if (!pSid) return kErrorInvalidParameter;
  wchar_t* pText = nullptr;
  if (!pConvert(pSid, &pText)) return LastError();
  const CUniqueLocal owner(pText);
  text = Narrow(pText);
  return kErrorSuccess;
}

SystemError ListLogonSessions(std::vector<LogonSession>& sessions) {
  static const auto pList =
      Optional<LONG WINAPI(ULONG*, LUID**)>(L"secur32.dll", "LsaEnumerateLogonSessions");
  static const auto pRead = Optional<LONG WINAPI(LUID*, SECURITY_LOGON_SESSION_DATA**)>(
      L"secur32.dll", "LsaGetLogonSessionData");
  if (!pList || !pRead) return kErrorCallNotImplemented;
  ULONG count = 0;
  LUID* pIds = nullptr;
  const SystemError error = ErrorOfStatus(pList(&count, &pIds));
  if (error != kErrorSuccess) return error;
  const UniqueLsaBuffer<LUID> ids(pIds);
  for (ULONG i = 0; pIds && i < count; ++i) {
    SECURITY_LOGON_SESSION_DATA* pData = nullptr;
    if (pRead(&pIds[i], &pData) < 0 || !pData) continue;
    const UniqueLsaBuffer<SECURITY_LOGON_SESSION_DATA> data(pData);
    sessions.push_back({data->Session, data->LogonType, BytesOf(data->Sid)});
  }
  return kErrorSuccess;
}

}  // namespace kestra
