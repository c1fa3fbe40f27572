// What files and processes show of a version resource.
#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "Modules/Files/FileItem.h"
#include "Modules/Processes/ProcessesModule.h"
#include "tests/Modules/Show.h"
#include "tests/support/FailingMachine.h"
#include "tests/support/FakeMachine.h"
#include "tests/support/TempDirectory.h"

namespace kestra {
namespace {

using test::CFailingMachine;
using test::CFakeMachine;
using test::FakeFile;

constexpr size_t kFixed = 0xA80;  // VS_FIXEDFILEINFO in the sample

std::string Sample() {
  return test::ReadWholeFile(std::string(KESTRA_PE_SAMPLES) + "/sample_wide.dll");
}

std::string ShowFile(const Ref<CMachine>& machine) {
  auto file = MakeRef<CFileItem>(machine, "C:\\x", "a.dll");
  QueryMessage message;
  EXPECT_TRUE(file->Init(false, false, message));
  return Show(*file);
}

const std::string kHead = "Path=C:\\x\\a.dll FileName=a.dll ";
const std::string kStrings =
    "FileDescription=Wetterf\u00fchler \U0001F326 Copyright=(c) 2004 Comments=Diagnostic plugin "
    "CompanyName=Example Works InternalName=wf OriginalFilename=SAMPLE.DLL ProductName=Weather";
const std::string kTail = "Size=3584 Attributes=0";  // and what is read late stands behind

TEST(VersionProperties, OfFiles) {
  const std::string sample = Sample();
  std::string zero = sample;
  zero.replace(kFixed + 8, 16, 16, '\0');
  const std::pair<FakeFile, std::string> cases[] = {
      {{.content = sample},
       kHead + kTail + " FileVersion=1.2.3.65535 ProductVersion=4.0.5.6 " + kStrings},
      // The string of the file's version is "1.2 beta", which is no version.
      {{.content = zero}, kHead + kTail + " ProductVersion=4.0 " + kStrings},
      {{.content = std::string(3584, 'x')}, kHead + kTail},
  };
  for (const auto& [file, expected] : cases) {
    auto machine = MakeRef<CFakeMachine>();
    machine->files.Add("C:\\x\\a.dll", file);
    EXPECT_EQ(ShowFile(machine), expected);
  }
}

// A file that cannot be read is shown as one without a resource is.
TEST(VersionProperties, OfFilesThatCannotBeRead) {
  auto inner = MakeRef<CFakeMachine>();
  inner->files.Add("C:\\x\\a.dll", {.content = Sample()});
  auto machine = MakeRef<CFailingMachine>(inner);
  for (uint32_t n = 3;; ++n) {  // behind the question for the file, and for its short name
    machine->FailCall(n, kErrorAccessDenied);
    const std::string shown = ShowFile(machine);
    if (!machine->HasFailed()) break;
    EXPECT_EQ(shown, kHead + kTail) << n;
    ASSERT_LT(n, 20u);
  }
}

// A FIFO, a link, a short file and what is made up while it is read are not opened.
TEST(VersionProperties, OnlyWhatCanBeAProgramIsOpened) {
  auto inner = MakeRef<CFakeMachine>();
  inner->files.Add("C:\\x\\a.dll", {.content = Sample()});
  auto machine = MakeRef<CFailingMachine>(inner);
  struct Case {
    FileInfo info;
    bool isOpened;
  };
  for (const auto& [info, isOpened] :
       {Case{{.size = 3584}, true}, Case{{.size = 64}, true}, Case{{.size = 63}, false},
        Case{{.kind = FileKind::Link, .size = 3584}, false},
        Case{{.kind = FileKind::Other, .size = 3584}, false},
        Case{{.size = 3584, .isStored = false}, false}}) {
    auto file = MakeRef<CFileItem>(machine, "C:\\x", "a.dll", info);
    machine->FailCall(0, kErrorSuccess);
    QueryMessage message;
    EXPECT_TRUE(file->Init(false, false, message));
    EXPECT_TRUE(file->Params.Find("Size", false));
    EXPECT_FALSE(file->Params.Find("FileText", false));
    EXPECT_EQ(machine->Calls(), 1u);  // for the short name, and nobody looked yet
    EXPECT_EQ(file->Params.Find("FileVersion", false) != nullptr, isOpened);
    EXPECT_EQ(machine->Calls() > 1, isOpened);
  }
}

TEST(VersionProperties, OfProcesses) {
  const std::string shown =
      "FilePath=C:\\x\\a.exe Description=Wetterf\u00fchler \U0001F326 FileVersion=1.2.3.65535 "
      "ProductName=Weather ProductVersion=4.0.5.6 CompanyName=Example Works";
  struct Case {
    SystemFamily family;
    uint32_t pid;
    const char* path;
    std::string expected;
  };
  const Case cases[] = {
      {SystemFamily::Windows, 5, "C:\\x\\a.exe", "PID=5 " + shown},
      {SystemFamily::Windows, 4, "C:\\x\\a.exe", "PID=4 ImageName=System"},
      // A process tells its path itself, and may name a server, or what is no file at all.
      {SystemFamily::Windows, 5, "\\\\server\\share\\a.exe",
       "PID=5 FilePath=\\\\server\\share\\a.exe"},
      {SystemFamily::Windows, 5, "\\\\?\\C:\\x\\a.exe", "PID=5 FilePath=\\\\?\\C:\\x\\a.exe"},
      {SystemFamily::Windows, 5, "\\Device\\Mup\\a.exe", "PID=5 FilePath=\\Device\\Mup\\a.exe"},
      {SystemFamily::Windows, 5, "a.exe", "PID=5 FilePath=a.exe"},
      {SystemFamily::Windows, 5, "C:a.exe", "PID=5 FilePath=C:a.exe"},
      {SystemFamily::Windows, 5, "C:\\gone.exe", "PID=5 FilePath=C:\\gone.exe"},
      {SystemFamily::Linux, 5, "/x/a", "PID=5 FilePath=/x/a"},
  };
  for (const Case& c : cases) {
    auto machine = MakeRef<CFakeMachine>(c.family);
    machine->files.Add(c.family == SystemFamily::Windows ? "C:\\x\\a.exe" : "/x/a",
                       {.content = Sample()});
    if (std::string_view(c.path) != "C:\\gone.exe")
      machine->files.Add(c.path, {.content = Sample()});
    ProcessRecord record;
    record.PID = c.pid;
    record.FilePath = c.path;
    machine->processes.Add(record);
    auto module = MakeRef<CProcessesModule>(kProcessesModule.Get(), machine);
    QueryMessage message;
    ASSERT_TRUE(module->Init(true, false, message));
    ASSERT_EQ(module->Children.Count(), 1u);
    EXPECT_EQ(Show(*module->Children.Get(0)), c.expected);
  }
}

}  // namespace
}  // namespace kestra
