// What the handles of the C interface are: small heap objects, each holding a copy or a counted
// reference of what it stands for, and the texts that were given out from it.
//
// Threads: a handle is used by one thread at a time; what it refers to may be shared by many.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "front/capi/Barrier.h"
#include "front/capi/SessionUse.h"
#include "front/session/SorrelCOM.h"
#include "include/kestra/kestra.h"
#include "platform/machine/Machine.h"

struct kestra_session {
  explicit kestra_session(kestra::SessionSetup setup)
      : notices(setup.notices),
        isReadOnly(setup.machine->IsReadOnly()),
        session(std::move(setup)) {}
  const kestra::Ref<kestra::CNotices> notices;  // null for a machine that says nothing
  const bool isReadOnly;
  // Shared: the session may be destroyed by a callback, while a thread is in it.
  const kestra::Ref<kestra::CSessionUse> use = kestra::MakeRef<kestra::CSessionUse>();
  kestra::CSorrelCOM session;
  std::string lastNotice{};
  std::string lastMessage;
  std::string lastPlan{};  // of the last explanation
  kestra::QueryReport lastReport;
};

struct kestra_value {
  kestra::Value value;
  std::string text{};  // made at the first question for it; an empty text is made again each time
};

struct kestra_values {
  kestra::Ref<kestra::ValueVector> vector;
};

struct kestra_item {
  kestra::Ref<kestra::CVDiagItem> item;
  std::string dump{};  // the last one
};

// The list belongs to its item, so the item is what is held.
struct kestra_items {
  kestra::Ref<kestra::CVDiagItem> owner;
};

struct kestra_params {
  kestra::Ref<kestra::CVDiagItem> owner;
};

struct kestra_param {
  kestra::Ref<kestra::DiagParam> param;
  std::string text{};
};

struct kestra_columns {
  std::vector<std::string> names;
};

struct kestra_diagnosis {
  kestra::Diagnosis diagnosis;
};

struct kestra_completions {
  kestra::Completions completions;
};

struct kestra_class {
  explicit kestra_class(kestra::Ref<kestra::DiagClass> theClass)
      : diagClass(std::move(theClass)), options(diagClass->Params->Count()) {}
  kestra::Ref<kestra::DiagClass> diagClass;
  std::string dump;                          // the last one
  mutable std::vector<std::string> options;  // of each property, joined, once it was asked for
  // The texts of arguments that were asked for, by action (-1: the class's own) and number.
  struct ArgumentTexts {
    std::string options;
    std::string defaultText;
  };
  std::map<std::pair<int32_t, int32_t>, ArgumentTexts> arguments{};
};

namespace kestra {

// The option texts of an Enum or Bitmask, joined by "|"; empty for other types.
std::string JoinedOptions(const DiagParamDef& def);

// The barrier of what may be called by one thread at a time; KESTRA_E_BUSY for another one. Chosen
// wherever a session is the first of the pointers.
class CSessionBarrier {
 public:
  CSessionBarrier(const kestra_session* pSession, bool isAnyNull)
      : m_barrier(isAnyNull), m_use(pSession ? pSession->use : nullptr) {}

  template <class Body>
  kestra_status operator()(Body&& body) const noexcept {
    if (m_use && !m_use->Enter()) return KESTRA_E_BUSY;
    const kestra_status status = m_barrier(body);
    if (m_use) m_use->Leave();
    return status;
  }

 private:
  CBarrier m_barrier;
  Ref<CSessionUse> m_use;
};

template <class... Pointers>
CSessionBarrier Barrier(kestra_session* pSession, const Pointers*... pointers) {
  return {pSession, !pSession || ((pointers == nullptr) || ...)};
}

// The barrier of what any thread may call at any time.
inline CBarrier BarrierOfAnyThread(const kestra_session* pSession) {
  return CBarrier(pSession == nullptr);
}

// A session over a machine and modules of the caller's choice, to be destroyed like any other.
kestra_session* MakeSession(SessionSetup setup);

}  // namespace kestra
