#include "fuzz/support/QueryMachine.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "tests/query/support/TestModules.h"
#include "tests/support/FakeMachine.h"

namespace kestra::fuzz {
namespace {

using test::CFakeMachine;

// Another machine that is only read.
class CReadMachine final : public CMachine {
 public:
  explicit CReadMachine(Ref<CMachine> inner) : m_inner(std::move(inner)) {}
  bool IsReadOnly() const override { return true; }
  CSystemFacts& System() override { return m_inner->System(); }
  CFileSystem* Files() override { return m_inner->Files(); }
  CRegistry* Registry() override { return m_inner->Registry(); }
  CProcesses* Processes() override { return m_inner->Processes(); }

 private:
  const Ref<CMachine> m_inner;
};

ModuleTable Modules() {
  static const auto* pRows = [] {
    auto* pNew = new std::vector<ModuleRow>;
    for (const ModuleRow& row : test::ModulesWithTests()) {
      const std::string_view name = row.pClass->name;
      if (name != "Many" && name != "Slow") pNew->push_back(row);
    }
    return pNew;
  }();
  return *pRows;
}

Ref<CFakeMachine> MakeMachine() {
  auto machine = MakeRef<CFakeMachine>();
  for (const uint32_t pid : {0u, 4u, 12u}) {
    machine->processes.Add({.PID = pid,
                            .ParentPID = pid / 4,
                            .ImageName = "p" + std::to_string(pid) + ".exe",
                            .FilePath = "C:\\p.exe",
                            .CommandLine = "p.exe -x",
                            .Width = 32,
                            .User = "me",
                            .WorkingSetKB = 100 + pid,
                            .HandleCount = 7,
                            .StartTime = 5});
  }
  machine->files.Add("C:\\Dir\\a.txt", {.size = 5});
  machine->files.Add("C:\\Dir\\b.ini", {.content = "[s]\r\nk=v\r\n[t]\r\nk=w\r\n"});
  machine->files.AddDirectory("C:\\Dir\\Sub");
  for (const char* pName : {"a", "b"}) {
    machine->registry.SetString(RegistryRoot::LocalMachine, std::string("Soft\\") + pName, "v",
                                "x");
    machine->registry.SetNumber(RegistryRoot::CurrentUser, std::string("Soft\\") + pName, "n", 7);
  }
  return machine;
}

}  // namespace

bool CallsLibrary(const TokenList& tokens) {
  return std::any_of(tokens.begin(), tokens.end(), [](const Token& token) {
    return token.keyword == kKwCallDll || token.keyword == kKwCallDllV;
  });
}

Ref<DiagRoot> MakeQueryRoot(bool isReadOnly) {
  Ref<CMachine> machine = MakeMachine();
  if (isReadOnly) machine = MakeRef<CReadMachine>(std::move(machine));
  return MakeRef<DiagRoot>("", Modules(), std::move(machine));
}

void RestoreModules() {
  test::RestoreTestRows();
}

}  // namespace kestra::fuzz
