#include "platform/win32/machine/processes/Snapshot.h"

#include <tlhelp32.h>

#include <utility>

#include "platform/win32/base/Optional.h"
#include "platform/win32/base/UniqueHandle.h"
#include "platform/win32/base/Wide.h"
#include "platform/win32/machine/processes/NativeCalls.h"

namespace kestra {
namespace {

using WalkProcesses = BOOL WINAPI(HANDLE, PROCESSENTRY32W*);

class CToolhelpSnapshot final : public CProcessSnapshot {
 public:
  explicit CToolhelpSnapshot(CUniqueHandle snapshot) : m_snapshot(std::move(snapshot)) {}

  SystemError Next(SnapshotEntry& entry) override {
    static const auto pFirst = Optional<WalkProcesses>(L"kernel32.dll", "Process32FirstW");
    static const auto pNext = Optional<WalkProcesses>(L"kernel32.dll", "Process32NextW");
    if (!pFirst || !pNext) return kErrorCallNotImplemented;
    PROCESSENTRY32W raw = {};
    raw.dwSize = sizeof(raw);
    const auto pStep = std::exchange(m_isBegun, true) ? pNext : pFirst;
    const SystemError error = ErrorOf(pStep(m_snapshot.get(), &raw));
    if (error != kErrorSuccess) return error;
    raw.szExeFile[MAX_PATH - 1] = L'\0';
    entry = {raw.th32ProcessID, raw.th32ParentProcessID, Narrow(raw.szExeFile)};
    return kErrorSuccess;
  }

 private:
  CUniqueHandle m_snapshot;
  bool m_isBegun = false;
};

}  // namespace

SystemError TakeToolhelpSnapshot(std::unique_ptr<CProcessSnapshot>& snapshot) {
  static const auto pTake =
      Optional<HANDLE WINAPI(DWORD, DWORD)>(L"kernel32.dll", "CreateToolhelp32Snapshot");
  if (!pTake) return kErrorCallNotImplemented;
  CUniqueHandle handle(pTake(TH32CS_SNAPPROCESS, 0));
  if (!handle) return LastError();
  snapshot = std::make_unique<CToolhelpSnapshot>(std::move(handle));
  return kErrorSuccess;
}

}  // namespace kestra
