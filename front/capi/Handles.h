// What the handles of the C interface are: small heap objects, each holding a copy or a counted
// reference of what it stands for, and the texts that were given out from it.
//
// Threads: a handle is used by one thread at a time; what it refers to may be shared by many.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

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

// A session over a machine and modules of the caller's choice, to be destroyed like any other.
kestra_session* MakeSession(SessionSetup setup);

}  // namespace kestra
