#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <filesystem>
#include <optional>

#include "platform/linux/machine/Facilities.h"
#include "platform/machine/Processes.h"
#include "platform/os/HostEnvironment.h"
#include "tests/support/TempDirectory.h"
#include "tests/support/linux/ChildProcess.h"

namespace kestra {
namespace {

using test::CChildProcess;
using test::CTempDirectory;
namespace fs = std::filesystem;

constexpr uint32_t kWantAll = kProcessWantUser | kProcessWantCommandLine;

std::vector<ProcessRecord> List(CProcesses& processes, uint32_t wanted) {
  std::vector<ProcessRecord> records;
  std::unique_ptr<CProcessList> list;
  EXPECT_EQ(processes.Enumerate(wanted, list), kErrorSuccess);
  ProcessRecord record;
  SystemError error = kErrorSuccess;
  while (list && (error = list->Next(record)) == kErrorSuccess) records.push_back(record);
  EXPECT_EQ(error, kErrorNoMoreItems);
  return records;
}

std::optional<ProcessRecord> Find(const std::vector<ProcessRecord>& records, uint32_t pid) {
  for (const ProcessRecord& record : records) {
    if (record.PID == pid) return record;
  }
  return std::nullopt;
}

std::optional<ProcessRecord> FindLive(uint32_t pid, uint32_t wanted = kWantAll) {
  return Find(List(*MakeLinuxProcesses(), wanted), pid);
}

std::string SleepPath() {
  return fs::canonical("/bin/sleep").string();
}

TEST(LinuxProcesses, KnowsAChildOfOurs) {
  CChildProcess child(SleepPath(), {"sl eep", "1000"});
  child.AwaitExec();
  const auto record = FindLive(child.Pid());
  ASSERT_TRUE(record);
  EXPECT_EQ(record->ParentPID, os::CurrentProcessId());
  EXPECT_EQ(record->ImageName, fs::path(SleepPath()).filename());
  EXPECT_EQ(record->FilePath, SleepPath());
  EXPECT_EQ(record->CommandLine, "\"sl eep\" 1000");
  EXPECT_EQ(record->Width, sizeof(void*) * 8);
  EXPECT_GT(record->WorkingSetKB.value_or(0), 100u);
  EXPECT_GE(record->HandleCount.value_or(0), 1u);
  EXPECT_EQ(record->User, std::string(getpwuid(getuid())->pw_name));
  EXPECT_NE(record->StartTime, 0u);
  EXPECT_FALSE(record->ThreadID);
  const auto plain = FindLive(child.Pid(), 0);
  ASSERT_TRUE(plain);
  EXPECT_EQ(plain->CommandLine, std::nullopt);
  EXPECT_EQ(plain->User, std::nullopt);
  EXPECT_EQ(plain->ImageName, record->ImageName);
}

TEST(LinuxProcesses, AreListedOnceInRisingOrder) {
  const auto records = List(*MakeLinuxProcesses(), 0);
  ASSERT_GE(records.size(), 2u);
  for (size_t i = 1; i < records.size(); ++i) EXPECT_LT(records[i - 1].PID, records[i].PID);
  const auto self = Find(records, os::CurrentProcessId());
  ASSERT_TRUE(self);
  EXPECT_EQ(self->ParentPID, static_cast<uint32_t>(getppid()));
  EXPECT_EQ(self->FilePath, os::ExecutablePath());
  for (const ProcessRecord& record : records) EXPECT_NE(record.ImageName, "") << record.PID;
}

TEST(LinuxProcesses, CountsHandlesOfItself) {
  const auto before = FindLive(os::CurrentProcessId(), 0)->HandleCount;
  const int copies[] = {dup(0), dup(0), dup(0)};
  const auto after = FindLive(os::CurrentProcessId(), 0)->HandleCount;
  for (const int copy : copies) close(copy);
  ASSERT_TRUE(before && after);
  EXPECT_EQ(*after - *before, 3u);
}

TEST(LinuxProcesses, ExecutableOfAnOddNameThatIsGone) {
  const CTempDirectory directory;
  const std::string path = directory / "a) R 1 (b c";
  fs::copy_file(SleepPath(), path);
  CChildProcess child(path, {"", "1000"});
  child.AwaitExec();
  fs::remove(path);
  const auto record = FindLive(child.Pid());
  ASSERT_TRUE(record);
  EXPECT_EQ(record->FilePath, path);
  EXPECT_EQ(record->ImageName, "a) R 1 (b c");
  EXPECT_EQ(record->ParentPID, os::CurrentProcessId());
  EXPECT_EQ(record->CommandLine, "\"\" 1000");
}

TEST(LinuxProcesses, EndsAProcess) {
  const auto processes = MakeLinuxProcesses();
  for (const bool isPolite : {true, false}) {
    CChildProcess child(SleepPath(), {"sleep", "1000"});
    child.AwaitExec();
    const auto record = FindLive(child.Pid(), 0);
    ASSERT_TRUE(record);
    std::unique_ptr<CProcess> process;
    ASSERT_EQ(processes->Open(child.Pid(), record->StartTime, process), kErrorSuccess);
    EXPECT_EQ(os::WaitAny({process.get()}, 0), os::kWaitTimeOut);
    EXPECT_EQ(isPolite ? process->RequestClose() : process->Terminate(), kErrorSuccess);
    EXPECT_EQ(os::WaitAny({process.get()}, 10000), 0);
    // A zombie still, since nobody has asked for it: it has ended, and is listed with what is
    // known.
    const auto zombie = FindLive(child.Pid());
    ASSERT_TRUE(zombie);
    EXPECT_EQ(zombie->ImageName, "sleep");
    EXPECT_EQ(zombie->FilePath, std::nullopt);
    EXPECT_EQ(zombie->CommandLine, std::nullopt);
    EXPECT_EQ(zombie->WorkingSetKB, std::nullopt);
    std::unique_ptr<CProcess> again;
    ASSERT_EQ(processes->Open(child.Pid(), record->StartTime, again), kErrorSuccess);
    EXPECT_EQ(os::WaitAny({again.get()}, 0), 0);
    EXPECT_EQ(again->Terminate(), kErrorSuccess);
    child.Reap();
    EXPECT_EQ(process->RequestClose(), kErrorSuccess);
    EXPECT_EQ(process->Terminate(), kErrorSuccess);
    EXPECT_EQ(os::WaitAny({process.get()}, 0), 0);
  }
}

TEST(LinuxProcesses, RefusesAnotherProcessUnderThePid) {
  const auto processes = MakeLinuxProcesses();
  CChildProcess child(SleepPath(), {"sleep", "1000"});
  child.AwaitExec();
  const uint64_t startTime = FindLive(child.Pid(), 0)->StartTime;
  std::unique_ptr<CProcess> process;
  EXPECT_EQ(processes->Open(child.Pid(), startTime + 1, process), kErrorInvalidHandle);
  EXPECT_EQ(processes->Open(child.Pid(), startTime - 1, process), kErrorInvalidHandle);
  EXPECT_EQ(processes->Open(child.Pid(), 0, process), kErrorSuccess);
  process.reset();
  const uint32_t pid = child.Pid();
  {
    CChildProcess gone(SleepPath(), {"sleep", "0"});
    const uint32_t gonePid = gone.Pid();
    gone.Reap();
    EXPECT_EQ(processes->Open(gonePid, 0, process), kErrorInvalidHandle);
    EXPECT_EQ(processes->Open(gonePid, startTime, process), kErrorInvalidHandle);
  }
  for (const uint32_t wrong : {0u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu})
    EXPECT_EQ(processes->Open(wrong, 0, process), kErrorInvalidHandle) << wrong;
  EXPECT_FALSE(process);
  EXPECT_TRUE(FindLive(pid));
}

// A process of another user: what he may not see stays without value, and he may not end it.
TEST(LinuxProcesses, OfAnotherUser) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can become another user";
  CChildProcess child(SleepPath(), {"sleep", "1000"});
  child.AwaitExec();
  EXPECT_TRUE(test::RunAsOrdinaryUser([&] {
    const auto record = FindLive(child.Pid());
    if (!record || record->FilePath || record->Width != 0) return false;
    std::unique_ptr<CProcess> process;
    return record->ImageName == "sleep" && record->CommandLine == "sleep 1000" &&
           record->User == "root" && record->WorkingSetKB && record->ParentPID &&
           MakeLinuxProcesses()->Open(child.Pid(), record->StartTime, process) == kErrorSuccess &&
           process->RequestClose() == kErrorAccessDenied &&
           process->Terminate() == kErrorAccessDenied;
  }));
}

// A tree in the form of /proc, for what cannot be brought about on a running machine.
class FakeProcTest : public testing::Test {
 protected:
  void Add(const std::string& pid, const std::string& stat, const std::string& status,
           const std::string& commandLine) {
    fs::create_directory(m_root / pid);
    if (!stat.empty()) m_root.Write(pid + "/stat", stat);
    m_root.Write(pid + "/status", status);
    m_root.Write(pid + "/cmdline", commandLine);
  }
  std::vector<ProcessRecord> ListAll() {
    return List(*MakeLinuxProcesses(m_root.Path()), kWantAll);
  }
  static std::string Stat(const std::string& name, const std::string& parent = "1") {
    return "9 (" + name + ") S " + parent +
           " 0 0 0 -1 0 0 0 0 0 0 0 0 0 20 0 1 0 500 0 25 0 0 0 0 0 0 0 0 0 0\n";
  }

  CTempDirectory m_root;
};

TEST_F(FakeProcTest, PassesOverWhatVanishes) {
  Add("3", "", "", "");  // gone when stat is opened
  Add("20", Stat("twenty"), "Name:\tx\nUid:\t0\t4000000000\t0\t0\n", std::string("a\0b\0", 4));
  Add("100", Stat("hundred", "0"), "Name:\tx\nUid:\t0\t0\t0\t0\n", "");
  Add("101", Stat("no-status"), "", "");
  fs::remove(m_root / "101/status");
  fs::create_directory(m_root / "7x");
  fs::create_directory(m_root / "99999999999");
  const auto records = ListAll();
  ASSERT_EQ(records.size(), 2u);
  EXPECT_EQ(records[0].PID, 20u);
  EXPECT_EQ(records[0].ParentPID, 1u);
  EXPECT_EQ(records[0].ImageName, "twenty");
  EXPECT_EQ(records[0].User, "4000000000");  // no account has the number
  EXPECT_EQ(records[0].CommandLine, "a b");
  EXPECT_EQ(records[1].PID, 100u);
  EXPECT_EQ(records[1].ParentPID, 0u);
  EXPECT_EQ(records[1].CommandLine, std::nullopt);
}

// One that cannot be made out is listed with its number and keeps nobody else from being listed.
TEST_F(FakeProcTest, ADamagedLineLeavesTheNumber) {
  Add("3", "3 (x S", "", "");
  Add("4", Stat("four"), "Name:\tx\nUid:\t0\t0\t0\t0\n", "");
  const auto records = ListAll();
  ASSERT_EQ(records.size(), 2u);
  EXPECT_EQ(records[0].PID, 3u);
  EXPECT_EQ(records[0].ParentPID, std::nullopt);
  EXPECT_EQ(records[0].StartTime, 0u);
  EXPECT_EQ(records[1].ImageName, "four");
}

TEST_F(FakeProcTest, CountsHandlesByNameAndReadsTheClassOfTheFile) {
  Add("5", Stat("five"), "Name:\tx\nUid:\t0\t0\t0\t0\n", "");
  fs::create_directory(m_root / "5/fd");
  for (int i = 0; i < 2000; ++i) m_root.Write("5/fd/" + std::to_string(i), "");
  const std::string program = m_root.Write("program",
                                           "\x7f"
                                           "ELF\x01 and more");
  fs::create_symlink(program, m_root / "5/exe");
  Add("6", Stat("six"), "Name:\tx\nUid:\t0\t0\t0\t0\n", "");
  fs::create_symlink("/dev/zero", m_root / "6/exe");  // not opened
  const auto records = ListAll();
  ASSERT_EQ(records.size(), 2u);
  EXPECT_EQ(records[0].HandleCount, 2000u);
  EXPECT_EQ(records[0].Width, 32u);
  EXPECT_EQ(records[0].ImageName, "program");
  EXPECT_EQ(records[0].WorkingSetKB, 25u * static_cast<uint32_t>(sysconf(_SC_PAGESIZE)) / 1024);
  EXPECT_EQ(records[1].Width, 0u);
}

TEST(LinuxProcesses, WithoutProcFileSystem) {
  std::unique_ptr<CProcessList> list;
  std::unique_ptr<CProcess> process;
  const auto processes = MakeLinuxProcesses("/no/proc/here");
  EXPECT_EQ(processes->Enumerate(0, list), kErrorPathNotFound);
  EXPECT_EQ(processes->Open(os::CurrentProcessId(), 5, process), kErrorPathNotFound);
  EXPECT_FALSE(list || process);
}

}  // namespace
}  // namespace kestra
