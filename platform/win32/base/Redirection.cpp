#include "platform/win32/base/Redirection.h"

#include "platform/win32/base/Optional.h"

namespace kestra {
namespace {

auto* Disable() {
  static const auto pDisable =
      Optional<BOOL WINAPI(void**)>(L"kernel32.dll", "Wow64DisableWow64FsRedirection");
  return pDisable;
}

auto* Revert() {
  static const auto pRevert =
      Optional<BOOL WINAPI(void*)>(L"kernel32.dll", "Wow64RevertWow64FsRedirection");
  return pRevert;
}

}  // namespace

CNoRedirection::CNoRedirection(bool isWanted) {
  if (isWanted && Disable() && Revert()) m_isOff = Disable()(&m_pBefore) != FALSE;
}

CNoRedirection::~CNoRedirection() {
  if (m_isOff) Revert()(m_pBefore);
}

}  // namespace kestra
