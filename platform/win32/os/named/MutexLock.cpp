#include "platform/win32/os/named/MutexLock.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <mutex>
#include <vector>

#include "platform/os/Clock.h"
#include "platform/os/Event.h"
#include "platform/win32/os/NativeHandle.h"

// The system lets a thread that holds a mutex take it again. So each name has a gate in this
// process, which lets one through at a time, and only then is the mutex waited for.

namespace kestra::os {
namespace {

struct Gate : CCounted<Gate> {
  Gate() { free.Set(); }
  CAutoResetEvent free;
  std::mutex lock;      // guards the one below
  CUniqueHandle owner;  // the thread that has come through; none while the gate is open
};

struct GateTable {
  struct Entry {
    Ref<Gate> gate;
    size_t users = 0;
  };
  std::mutex lock;
  std::map<std::wstring, Entry> entries;
};

GateTable& Gates() {
  static auto* const pTable = new GateTable;  // never destroyed: threads may outlive statics
  return *pTable;
}

// One who waits at a gate, or has come through it.
class CGateUse {
 public:
  explicit CGateUse(const std::wstring& name) : m_name(name) {
    std::lock_guard guard(Gates().lock);
    GateTable::Entry& entry = Gates().entries[name];
    if (!entry.gate) entry.gate = MakeRef<Gate>();
    ++entry.users;
    m_gate = entry.gate;
  }
  ~CGateUse() {
    if (m_isThrough) Open();
    std::lock_guard guard(Gates().lock);
    const auto found = Gates().entries.find(m_name);
    if (--found->second.users == 0) Gates().entries.erase(found);
  }
  CGateUse(const CGateUse&) = delete;
  CGateUse& operator=(const CGateUse&) = delete;

  bool IsValid() const { return m_gate->free.IsValid(); }
  const CWaitable& Free() const { return m_gate->free; }
  void HasComeThrough() {
    m_isThrough = true;
    std::lock_guard guard(m_gate->lock);
    m_gate->owner = CUniqueHandle(OpenThread(SYNCHRONIZE, FALSE, GetCurrentThreadId()));
  }
  // A thread that was ended by force leaves its gate shut.
  void OpenIfOwnerHasEnded() {
    std::lock_guard guard(m_gate->lock);
    if (!m_gate->owner || WaitForSingleObject(m_gate->owner.get(), 0) != WAIT_OBJECT_0) return;
    m_gate->owner = {};
    m_gate->free.Set();
  }

 private:
  void Open() {
    std::lock_guard guard(m_gate->lock);
    m_gate->owner = {};
    m_gate->free.Set();
  }

  std::wstring m_name;
  Ref<Gate> m_gate;
  bool m_isThrough = false;
};

class CMutexLock final : public CNamedLock {
 public:
  CMutexLock(std::unique_ptr<CGateUse> gate, CUniqueHandle mutex)
      : m_gate(std::move(gate)), m_mutex(std::move(mutex)) {}
  ~CMutexLock() override { ReleaseMutex(m_mutex.get()); }

 private:
  std::unique_ptr<CGateUse> m_gate;  // opened after the mutex is free
  CUniqueHandle m_mutex;
};

constexpr DWORD kMutexAccess = SYNCHRONIZE | MUTEX_MODIFY_STATE;

// Lets everybody wait for the mutex and hold it, which is what it is for, and nothing else.
class CMutexRights {
 public:
  CMutexRights() {
    DWORD size = sizeof m_everyone;
    auto* const pList = reinterpret_cast<ACL*>(m_list);
    m_isGood = CreateWellKnownSid(WinWorldSid, nullptr, m_everyone, &size) &&
               InitializeAcl(pList, sizeof m_list, ACL_REVISION) &&
               AddAccessAllowedAce(pList, ACL_REVISION, kMutexAccess, m_everyone) &&
               InitializeSecurityDescriptor(&m_descriptor, SECURITY_DESCRIPTOR_REVISION) &&
               SetSecurityDescriptorDacl(&m_descriptor, TRUE, pList, FALSE);
  }
  CMutexRights(const CMutexRights&) = delete;
  CMutexRights& operator=(const CMutexRights&) = delete;

  // Null, which is the system's default, if they could not be made.
  SECURITY_ATTRIBUTES* get() { return m_isGood ? &m_attributes : nullptr; }

 private:
  alignas(DWORD) std::byte m_everyone[SECURITY_MAX_SID_SIZE];
  alignas(DWORD) std::byte m_list[sizeof(ACL) + sizeof(ACCESS_ALLOWED_ACE) + SECURITY_MAX_SID_SIZE];
  SECURITY_DESCRIPTOR m_descriptor{};
  SECURITY_ATTRIBUTES m_attributes{sizeof m_attributes, &m_descriptor, FALSE};
  bool m_isGood = false;
};

CUniqueHandle MakeMutex(const std::wstring& name) {
  CMutexRights rights;
  return CUniqueHandle(CreateMutexExW(rights.get(), name.c_str(), 0, kMutexAccess));
}

// A mutex for all sessions that is there and refuses us is no reason to take another one: whoever
// holds that one would not be kept out.
CUniqueHandle OpenMutexIn(NameSpace space, const std::wstring& name) {
  if (space == NameSpace::Machine) {
    const std::wstring global = L"Global\\" + name;
    CUniqueHandle mutex = MakeMutex(global);
    if (mutex) return mutex;
    const CUniqueHandle refused(OpenMutexW(SYNCHRONIZE, FALSE, global.c_str()));
    if (refused || GetLastError() != ERROR_FILE_NOT_FOUND) return {};
  }
  return MakeMutex(L"Local\\" + name);
}

// Waits for the object, which comes before the stops.
NamedLockResult WaitFor(const CWaitable& object, std::span<const CWaitable* const> stops,
                        uint32_t timeOutMs) {
  std::vector<const CWaitable*> objects{&object};
  objects.insert(objects.end(), stops.begin(), stops.end());
  const int index = WaitAny(objects, timeOutMs);
  if (index == kWaitTimeOut) return NamedLockResult::TimedOut;
  if (index == kWaitFailed) return NamedLockResult::Failed;
  return index == 0 ? NamedLockResult::Held : NamedLockResult::Terminated;
}

uint32_t RestOf(uint32_t timeOutMs, uint32_t start) {
  if (timeOutMs == kInfinite) return kInfinite;
  const uint32_t passed = TickCount() - start;
  return passed < timeOutMs ? timeOutMs - passed : 0;
}

// Waits at the gate, and looks now and then whether who came through still lives.
NamedLockResult WaitAt(CGateUse& gate, std::span<const CWaitable* const> stops, uint32_t start,
                       uint32_t timeOutMs) {
  constexpr uint32_t kMsBetweenLooks = 250;
  for (;;) {
    const uint32_t rest = RestOf(timeOutMs, start);
    const NamedLockResult result = WaitFor(gate.Free(), stops, std::min(rest, kMsBetweenLooks));
    if (result != NamedLockResult::TimedOut || rest <= kMsBetweenLooks) return result;
    gate.OpenIfOwnerHasEnded();
  }
}

}  // namespace

NamedLockResult AcquireMutexLock(NameSpace space, const std::wstring& name,
                                 std::span<const CWaitable* const> stops, uint32_t timeOutMs,
                                 std::unique_ptr<CNamedLock>& lock) {
  const uint32_t start = TickCount();
  auto gate = std::make_unique<CGateUse>(name);
  if (!gate->IsValid()) return NamedLockResult::Failed;
  NamedLockResult result = WaitAt(*gate, stops, start, timeOutMs);
  if (result != NamedLockResult::Held) return result;
  gate->HasComeThrough();
  CUniqueHandle mutex = OpenMutexIn(space, name);
  if (!mutex) return NamedLockResult::Failed;
  const CBorrowedEvent waited(NativeOf(mutex.get()));
  result = WaitFor(waited, stops, RestOf(timeOutMs, start));
  if (result != NamedLockResult::Held) return result;
  lock = std::make_unique<CMutexLock>(std::move(gate), std::move(mutex));
  return NamedLockResult::Held;
}

}  // namespace kestra::os
