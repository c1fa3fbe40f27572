// A machine whose n-th call fails, for every n: a query ends in rows or in an Error, and the next
// one is as if nothing had been.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "query/Evaluate.h"
#include "tests/query/support/TestModules.h"
#include "tests/support/FailingMachine.h"
#include "tests/support/FakeMachine.h"

namespace kestra::test {
namespace {

Ref<CFakeMachine> FilledMachine() {
  const auto machine = MakeRef<CFakeMachine>();
  for (const uint32_t pid : {0u, 4u, 12u, 40u, 41u}) {
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
  for (const char* pName : {"a.txt", "b.txt", "c.log", ".hidden"}) {
    machine->files.Add(std::string("C:\\Dir\\") + pName, {.size = 5});
  }
  machine->files.AddDirectory("C:\\Dir\\Sub");
  machine->files.Add("C:\\Dir\\d.ini", {.content = "[s]\r\nk=v\r\nl=2\r\n[t]\r\nk=w\r\n"});
  for (const char* pName : {"a", "b", "c"}) {
    machine->registry.SetString(RegistryRoot::LocalMachine, std::string("Soft\\") + pName, "v",
                                "x");
  }
  return machine;
}

// The result with all that stands in it.
std::string WholeText(const Value& value) {
  if (value.IsVDiagItem()) {
    std::string text;
    const CVDiagItem& item = *value.asVDIagItem();
    for (size_t i = 0; i < item.Params.Count(); ++i) {
      const DiagParam& param = *item.Params.Get(i);
      text += param.Def->Name + "=" + std::to_string(param.DWordValue) + param.StringValue + " ";
    }
    return text;
  }
  if (!value.IsVector()) return value.asString();
  std::string text;
  for (size_t i = 0; i < value.asVector().Count(); ++i) {
    text += WholeText(value.asVector()[i]) + "\n";
  }
  return text;
}

class Faults : public testing::TestWithParam<const char*> {};

TEST_P(Faults, EndInRowsOrAnError) {
  const auto machine = MakeRef<CFailingMachine>(Ref<CMachine>(FilledMachine()));
  const auto answer = [&](const Ref<DiagRoot>& root) {
    Value value;
    EvaluateQuery(value, GetParam(), root, kNoTimeOut, nullptr);
    EXPECT_TRUE(value.IsVector() || value.IsError()) << value.asString();
    return value;
  };
  machine->FailCall(0, kErrorSuccess);
  const std::string whole =
      WholeText(answer(MakeRef<DiagRoot>("", ModulesWithTests(), Ref<CMachine>(machine))));
  ASSERT_NE(whole, "");
  const uint32_t calls = machine->Calls();
  ASSERT_GT(calls, 0u);
  const size_t wholeRows = static_cast<size_t>(std::count(whole.begin(), whole.end(), '\n'));
  for (const SystemError error : {kErrorAccessDenied, kErrorFileNotFound, kErrorNotEnoughMemory}) {
    for (uint32_t n = 1; n <= calls; ++n) {
      SCOPED_TRACE("call " + std::to_string(n) + " fails with " + std::to_string(error));
      const auto root = MakeRef<DiagRoot>("", ModulesWithTests(), Ref<CMachine>(machine));
      machine->FailCall(n, error);
      const Value value = answer(root);
      EXPECT_TRUE(machine->HasFailed());
      if (value.IsVector()) {
        EXPECT_LE(value.asVector().Count(), wholeRows);
      } else {
        EXPECT_EQ(value.asString(), "<ERROR>");
      }
      machine->FailCall(0, kErrorSuccess);
      // What was filled with a hole in it stays until it is dropped; what failed is tried again.
      if (value.IsVector()) root->DropAll();
      EXPECT_EQ(WholeText(answer(root)), whole);
    }
  }
}

// The query is cancelled while the n-th call is made, for every n: it is an Error, or it was over
// already, and the next one is as if nothing had been.
TEST_P(Faults, EndWhenCancelledAtAnyCall) {
  const auto machine = MakeRef<CFailingMachine>(Ref<CMachine>(FilledMachine()));
  Ref<os::CEvent> event;
  machine->OnFailure([&] { event->Set(); });
  const auto answer = [&](const Ref<DiagRoot>& root) {
    event = MakeRef<os::CEvent>();
    Value value;
    EvaluateQuery(value, GetParam(), root, kNoTimeOut, MakeRef<QueryMessage>(event, false));
    return value;
  };
  machine->FailCall(0, kErrorSuccess);
  const std::string whole =
      WholeText(answer(MakeRef<DiagRoot>("", ModulesWithTests(), Ref<CMachine>(machine))));
  const uint32_t calls = machine->Calls();
  for (uint32_t n = 1; n <= calls; ++n) {
    SCOPED_TRACE("cancelled at call " + std::to_string(n));
    const auto root = MakeRef<DiagRoot>("", ModulesWithTests(), Ref<CMachine>(machine));
    machine->FailCall(n, kErrorSuccess);
    const Value value = answer(root);
    EXPECT_TRUE(machine->HasFailed());
    EXPECT_TRUE(value.IsError() || WholeText(value) == whole) << value.asString();
    machine->FailCall(0, kErrorSuccess);
    EXPECT_EQ(WholeText(answer(root)), whole);
  }
}

// A file that may be listed and not looked at is a row whose size is not known, and not 0.
TEST(FaultsOfFiles, WhatCannotBeReadIsNotSet) {
  const auto machine = FilledMachine();
  machine->files.Add("C:\\Dir\\secret.txt", {.size = 9, .error = kErrorAccessDenied});
  const auto root = MakeRef<DiagRoot>("", ModulesWithTests(), Ref<CMachine>(machine));
  Value value;
  EvaluateQuery(value, "SELECT f.FileName, f.Size FROM FILES.FILE('C:\\Dir\\*.txt') f", root,
                kNoTimeOut, nullptr);
  ASSERT_EQ(value.asVector().Count(), 3u) << value.asString();
  const ValueVector& row = value.asVector()[2].asVector();
  EXPECT_EQ(row[0].asString(), "secret.txt");
  EXPECT_TRUE(row[1].IsUndefined()) << row[1].asString();
}

INSTANTIATE_TEST_SUITE_P(
    Queries, Faults,
    testing::Values("SELECT * FROM Processes(ShowUserAndComLine=1).Process",
                    "SELECT PID, ImageName FROM Processes.Process WHERE MemoryUsage > 110",
                    "SELECT * FROM FILES.FILE('C:\\Dir\\*')",
                    "SELECT * FROM FILES.FILE('C:\\Dir\\a.txt')",
                    "SELECT * FROM REGISTRY.REGISTRYKEY('HKLM\\Soft\\*')",
                    "SELECT * FROM REGISTRY.REGISTRYVALUE('HKLM\\Soft\\*\\v')",
                    "SELECT * FROM REGISTRY.REGISTRYVALUE('HKLM\\Soft\\*\\*')",
                    "SELECT * FROM Registry(KeyPath='HKLM\\*', Levels=2).RegistryValue",
                    "SELECT * FROM Files(DirPath='C:\\Dir', Levels=2).File",
                    "SELECT * FROM Files(DirPath='C:\\', Levels=3).Directory",
                    "SELECT FileText FROM Files(FilePath='C:\\Dir\\d.ini').File",
                    "SELECT Number, Text FROM Files(FilePath='C:\\Dir\\d.ini', LineFrom=1, "
                    "LineCount=9).FileLine",
                    "SELECT * FROM IniFile(Path='C:\\Dir\\d.ini').IniKey",
                    "SELECT * FROM IniFile(Path='C:\\Dir\\d.ini').IniSection",
                    "SELECT * FROM INIFILES.IniKey('C:\\Dir\\d.ini')",
                    "SELECT f.FileName, p.PID FROM FILES.FILE('C:\\Dir\\*.txt') f JOIN "
                    "Processes.Process p ON p.PID > 4"));

}  // namespace
}  // namespace kestra::test
