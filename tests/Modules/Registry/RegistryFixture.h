// The module Registry over a registry in memory, for the tests beside this file.
#pragma once

#include <string>

#include "Modules/Registry/RegistryClasses.h"
#include "Modules/Registry/RegistryModule.h"
#include "tests/support/FakeMachine.h"

namespace kestra::test {

inline constexpr RegistryRoot kHklm = RegistryRoot::LocalMachine;

// Null for arguments that do not parse.
inline Ref<CRegistryModule> MakeRegistry(const Ref<CMachine>& machine, const std::string& args) {
  auto module = MakeRef<CRegistryModule>(kRegistryModule.Get(), machine);
  return module->SetArgs(args) ? module : nullptr;
}

inline bool Fill(CVDiagItem& item, QueryMessage& message) {
  return item.Init(true, false, message);
}

// What stands below an item: a key as "Name(...)", a value as its name, the default value as "@".
inline std::string ShowKeys(const CVDiagItem& item) {
  std::string out;
  for (size_t i = 0; i < item.Children.Count(); ++i) {
    CVDiagItem& child = *item.Children.Get(i);
    if (i > 0) out += ' ';
    const DiagParam* pName = child.Params.Find("Name", false);
    out += !pName ? "?" : pName->StringValue.empty() ? "@" : pName->StringValue;
    if (child.GetName() == "RegistryKey") out += "(" + ShowKeys(child) + ")";
  }
  return out;
}

}  // namespace kestra::test
