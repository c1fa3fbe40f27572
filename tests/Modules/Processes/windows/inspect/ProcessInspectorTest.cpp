// What a record of a Windows process has when the system tells only some of it.
#include <gtest/gtest.h>

#include <functional>

#include "Modules/Processes/ProcessList.h"
#include "tests/Modules/Processes/windows/inspect/BlockImage.h"
#include "tests/support/FakeMachine.h"

namespace kestra {
namespace {

using test::BlockView;
using test::CFakeMachine;
using test::CFakeWindowsProcesses;
using test::FakeWindowsProcess;

// A SID's bytes: revision, count, authority 5, and its parts.
std::string Sid(std::initializer_list<uint32_t> parts) {
  std::string bytes = {1, static_cast<char>(parts.size()), 0, 0, 0, 0, 0, 5};
  for (const uint32_t part : parts) test::StoreLittle(bytes, bytes.size(), 4, part);
  return bytes;
}

const std::string kAnn = Sid({21, 1, 2, 3, 1001});
const std::string kWindowDrawer = Sid({90, 0, 1});
const std::string kSystem = Sid({18});

struct Stage {
  explicit Stage(bool isWide = true) {
    machine->system.windows = test::VersionOfKind(11);
    machine->system.width.isWide = isWide;
    machine->processes.windows = &windows;
    windows.callerWidth = isWide ? 64 : 32;
    windows.accounts = {{kAnn, "HOME\\Ann"}, {kSystem, "NT AUTHORITY\\SYSTEM"}};
    windows.accounts[kWindowDrawer] = "Window Manager\\DWM-1";
    windows.devices = {{"C:", "\\Device\\HarddiskVolume1"}, {"D:", "\\Device\\HarddiskVolume12"}};
  }

  // The record of one process.
  ProcessRecord Inspect(const FakeWindowsProcess& process, bool wantUser = true) {
    windows.processes = {process};
    std::vector<ProcessRecord> records;
    QueryMessage message;
    EXPECT_TRUE(EnumProcessList(*machine, records, wantUser, true, message));
    EXPECT_EQ(records.size(), 1u);
    return records.empty() ? ProcessRecord() : records[0];
  }

  CFakeWindowsProcesses windows;
  Ref<CFakeMachine> machine = MakeRef<CFakeMachine>();
};

struct UserCase {
  const char* what;
  std::function<void(Stage&, FakeWindowsProcess&)> spoil;
  const char* user;
};

TEST(ProcessInspector, NamesTheUserOrSaysWhyNot) {
  const UserCase cases[] = {
      {"its token's", [](auto&, auto&) {}, "HOME\\Ann"},
      {"another's than the session's", [](auto&, auto& p) { p.sid = kSystem; },
       "NT AUTHORITY\\SYSTEM"},
      {"an account without a name", [](auto& s, auto&) { s.windows.accounts.clear(); }, "S-1-5-21"},
      {"nor text",
       [](auto& s, auto&) {
         s.windows.accounts.clear();
         s.windows.sidTexts.clear();
       },
       "UnknownUser_Session1"},
      {"nor text, where somebody else is logged on",
       [](auto&, auto& p) {
         p.sid = Sid({21, 1, 2, 3, 1002});
       },
       "UnknownUser_Session1"},
      {"a token that is denied", [](auto&, auto& p) { p.tokenError = kErrorAccessDenied; },
       "<access denied>"},
      {"a token that fails: the session's", [](auto&, auto& p) { p.tokenError = kErrorIoDevice; },
       "HOME\\Ann"},
      {"may not be read, but opened", [](auto&, auto& p) { p.mayBeRead = false; }, "HOME\\Ann"},
      {"may not be opened: the session's",
       [](auto&, auto& p) {
         p.mayBeRead = p.mayBeOpened = false;
         p.sid = kSystem;
       },
       "HOME\\Ann"},
      {"nor is anybody logged on there",
       [](auto&, auto& p) {
         p.mayBeRead = p.mayBeOpened = false;
         p.session = 7;
       },
       "UnknownUser_Session7"},
      {"nor does the system tell who is",
       [](auto& s, auto& p) {
         p.mayBeRead = p.mayBeOpened = false;
         s.windows.missing.insert("LsaEnumerateLogonSessions");
       },
       "UnknownUser_Session1"},
      {"services have no user of their session",
       [](auto&, auto& p) {
         p.mayBeRead = p.mayBeOpened = false;
         p.session = 0;
       },
       "UnknownUser_Session0"},
      {"nor is the session known",
       [](auto&, auto& p) {
         p.mayBeRead = p.mayBeOpened = false;
         p.session.reset();
       },
       "UnknownUser_SessionUnknown"},
  };
  for (const UserCase& c : cases) {
    SCOPED_TRACE(c.what);
    Stage stage;
    stage.windows.sidTexts[kAnn] = "S-1-5-21";
    // The one that draws the session's windows comes before the user.
    stage.windows.logonSessions = {
        {0, 0, kSystem}, {1, 2, kWindowDrawer}, {1, 3, kSystem}, {1, 2, ""}, {1, 2, kAnn}};
    FakeWindowsProcess process{.pid = 600, .exeName = "a.exe", .session = 1, .sid = kAnn};
    c.spoil(stage, process);
    EXPECT_EQ(stage.Inspect(process).User, c.user);
    EXPECT_EQ(stage.Inspect(process, false).User, std::nullopt);
  }
}

struct PathCase {
  const char* what;
  const char* inBlock;
  const char* imageFileName;
  const char* expected;  // null: none
};

TEST(ProcessInspector, ShowsPathsAsProgramsKnowThem) {
  const PathCase cases[] = {
      {"plain", "C:\\a.exe", "", "C:\\a.exe"},
      {"system root", "\\SystemRoot\\System32\\smss.exe", "", "C:\\Windows\\System32\\smss.exe"},
      {"in another case", "\\systemroot\\a.exe", "", "C:\\Windows\\a.exe"},
      {"only the beginning of a name", "\\SystemRooted\\a.exe", "", "\\SystemRooted\\a.exe"},
      {"DOS devices", "\\??\\C:\\a.exe", "", "C:\\a.exe"},
      {"a server", "\\??\\UNC\\server\\share\\a.exe", "", "\\\\server\\share\\a.exe"},
      {"in another case", "\\??\\unc\\server\\a.exe", "", "\\\\server\\a.exe"},
      {"only the beginning of its name", "\\??\\UNCLE\\a.exe", "", "UNCLE\\a.exe"},
      {"a volume", "\\Device\\HarddiskVolume1\\a.exe", "", "C:\\a.exe"},
      {"one whose number begins like it", "\\device\\harddiskvolume12\\a.exe", "", "D:\\a.exe"},
      {"a volume without drive", "\\Device\\HarddiskVolume3\\a.exe", "",
       "\\Device\\HarddiskVolume3\\a.exe"},
      {"a volume without number", "\\Device\\HarddiskVolume\\a.exe", "",
       "\\Device\\HarddiskVolume\\a.exe"},
      {"none in the block", "", "\\Device\\HarddiskVolume1\\b.exe", "C:\\b.exe"},
      {"a mere name is searched for", "a.exe", "", "C:\\found\\a.exe"},
      {"and is no path if it is nowhere", "z.exe", "", nullptr},
  };
  for (const PathCase& c : cases) {
    SCOPED_TRACE(c.what);
    Stage stage;
    stage.windows.searched["a.exe"] = "C:\\found\\a.exe";
    FakeWindowsProcess process{.pid = 600, .exeName = "x.exe", .imageFileName = c.imageFileName};
    PutBlock(process, BlockView::Wide, {c.inBlock, "", ""});
    EXPECT_EQ(stage.Inspect(process).FilePath,
              c.expected ? std::optional<std::string>(c.expected) : std::nullopt);
  }
}

struct WidthCase {
  const char* what;
  bool isWideSystem;
  bool isRedirected;
  bool mayBeRead;
  bool mayBeOpened;
  uint32_t width;
  const char* searches;  // the call, if a search was made for a process that tells no path
};

// The path of a process that tells none is searched for by its name, on a system of 32 bits.
TEST(ProcessInspector, TellsTheWidthAndRepairsThePath) {
  const WidthCase cases[] = {
      {"32 on 32", false, false, true, true, 32, "SearchPath"},
      {"refused on 32", false, false, false, false, 32, "SearchPath"},
      {"64 on 64", true, false, true, true, 64, ""},
      {"32 on 64", true, true, true, true, 32, ""},
      {"32 on 64, not to be read", true, true, false, true, 32, ""},
      {"64 on 64, not to be read", true, false, false, true, 64, ""},
      {"refused on 64: not known", true, true, false, false, 0, ""},
  };
  for (const WidthCase& c : cases) {
    SCOPED_TRACE(c.what);
    Stage stage(c.isWideSystem);
    stage.windows.searched["a.exe"] = "C:\\found\\a.exe";
    const ProcessRecord record = stage.Inspect({.pid = 600,
                                                .exeName = "a.exe",
                                                .mayBeRead = c.mayBeRead,
                                                .mayBeOpened = c.mayBeOpened,
                                                .isRedirected = c.isRedirected});
    EXPECT_EQ(record.Width, c.width);
    EXPECT_EQ(record.FilePath,
              *c.searches ? std::optional<std::string>("C:\\found\\a.exe") : std::nullopt);
    EXPECT_EQ(stage.windows.counts.contains("SearchPath"), *c.searches != '\0');
  }
}

// A bare name on a system of 64 bits is searched for without redirection, and only for a program
// of 64 bits.
TEST(ProcessInspector, SearchesTheFolderOfTheProgramsWidth) {
  for (const bool isRedirected : {false, true}) {
    Stage stage;
    stage.windows.searched["a.exe"] = "C:\\found\\a.exe";
    FakeWindowsProcess process{.pid = 600, .exeName = "a.exe"};
    PutBlock(process, isRedirected ? BlockView::NarrowFromWide : BlockView::Wide,
             {"a.exe", "", ""});
    EXPECT_EQ(stage.Inspect(process).FilePath,
              isRedirected ? std::nullopt : std::optional<std::string>("C:\\found\\a.exe"));
    EXPECT_EQ(stage.windows.counts["SearchPath 64"], isRedirected ? 0u : 1u);
    EXPECT_EQ(stage.windows.counts["SearchPath"], 0u);
  }
}

TEST(ProcessInspector, CountsHandlesByTheKernelThenByTheLibrary) {
  Stage stage;
  FakeWindowsProcess process{.pid = 600, .workingSet = uint64_t{1} << 50, .handleCount = 5};
  EXPECT_EQ(stage.Inspect(process).HandleCount, 5u);
  test::StoreLittle(process.information[kProcessHandleCount], 0, 4, 9);
  const ProcessRecord record = stage.Inspect(process);
  EXPECT_EQ(record.HandleCount, 9u);
  EXPECT_EQ(record.WorkingSetKB, std::nullopt);  // more than 32 bits hold
}

struct SessionCase {
  std::optional<uint32_t> caller;
  bool allSessions;
  const char* listed;
};

// 10 is of the services' session, 11 and 12 of others, and of 13 the system does not tell.
TEST(ProcessInspector, FiltersBySession) {
  const SessionCase cases[] = {
      {1, false, "10 11 "},
      {2, false, "10 12 "},
      {0, false, "10 "},
      {1, true, "10 11 12 13 "},
      {std::nullopt, false, "10 11 12 13 "},
  };
  for (const uint32_t systemClass : {11u, 10u}) {
    for (const SessionCase& c : cases) {
      Stage stage;
      stage.machine->system.windows = test::VersionOfKind(systemClass);
      stage.windows.callerSession = c.caller;
      stage.windows.processes = {{.pid = 10, .session = 0},
                                 {.pid = 11, .session = 1},
                                 {.pid = 12, .session = 2},
                                 {.pid = 13}};
      std::vector<ProcessRecord> records;
      QueryMessage message;
      EXPECT_TRUE(EnumProcessList(*stage.machine, records, false, c.allSessions, message));
      std::string listed;
      for (const ProcessRecord& record : records) listed += std::to_string(record.PID) + " ";
      EXPECT_EQ(listed, c.listed) << systemClass << " " << c.caller.value_or(99);
    }
  }
}

}  // namespace
}  // namespace kestra
