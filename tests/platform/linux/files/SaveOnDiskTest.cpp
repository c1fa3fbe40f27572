// Saving data files on a real disk: a full one, and by a process that is killed.
#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "VLib/src/data/CfgNode.h"
#include "platform/linux/machine/Facilities.h"
#include "platform/os/Clock.h"
#include "tests/support/NamesIn.h"
#include "tests/support/TempDirectory.h"
#include "tests/support/linux/ChildProcess.h"

namespace kestra {
namespace {

using test::CTempDirectory;
using test::NamesIn;
using test::ReadWholeFile;
namespace fs = std::filesystem;

constexpr uint32_t kKey = 4711;

Ref<CfgNode> Tree(const std::string& text, int sections) {
  auto root = MakeRef<CfgNode>();
  for (int i = 0; i < sections; ++i)
    root->AddSection("S" + std::to_string(i)).SetText("text", text + std::to_string(i));
  return root;
}

// What a save to a disk without room does to a file of little size: nothing.
int SaveWithoutRoom(const std::string& path) {
  const auto files = MakeLinuxFileSystem();
  if (!Tree("old", 10)->SaveFile(*files, path, 0, false, CfgLayout::Cfg)) return 1;
  const std::string before = ReadWholeFile(path);
  if (Tree("new", 100'000)->SaveFile(*files, path, 0, false, CfgLayout::Cfg)) return 2;
  if (ReadWholeFile(path) != before || before.empty()) return 3;
  if (NamesIn(fs::path(path).parent_path()).size() != 1) return 4;
  return Tree("new", 10)->SaveFile(*files, path, 0, false, CfgLayout::Cfg) ? 0 : 5;
}

TEST(SaveOnDisk, AFileThatMayNotGrowThatFar) {
  const CTempDirectory directory;
  EXPECT_EQ(test::RunInChild([&] {
              constexpr rlimit kLimit{100'000, 100'000};
              signal(SIGXFSZ, SIG_IGN);  // so that the write fails instead
              return setrlimit(RLIMIT_FSIZE, &kLimit) == 0 ? SaveWithoutRoom(directory / "f") : 9;
            }),
            0);
}

TEST(SaveOnDisk, AFullDisk) {
  const CTempDirectory directory;
  constexpr int kNoRights = 77;
  const int status = test::RunInChild([&] {
    if (unshare(CLONE_NEWNS | (geteuid() == 0 ? 0 : CLONE_NEWUSER)) != 0) return kNoRights;
    if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return kNoRights;
    const std::string disk = directory.Path();
    if (mount("tmpfs", disk.c_str(), "tmpfs", 0, "size=256k") != 0) return kNoRights;
    return SaveWithoutRoom(directory / "f");
  });
  if (status == kNoRights) GTEST_SKIP() << "needs the right to mount";
  EXPECT_EQ(status, 0);
}

// A child that saves one tree after the other until it is killed.
class CSaver {
 public:
  CSaver(const std::string& path, CfgNode& a, CfgNode& b) {
    const pid_t parent = getpid();
    m_pid = fork();
    if (m_pid != 0) return;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(1);
    const auto files = MakeLinuxFileSystem();
    for (bool isSaved = true; isSaved;) {
      isSaved = a.SaveFile(*files, path, kKey, true, CfgLayout::Cfg) &&
                b.SaveFile(*files, path, kKey, false, CfgLayout::Cfg);
    }
    _exit(1);
  }
  // True if it was killed, rather than that it gave up.
  bool Kill() const {
    kill(m_pid, SIGKILL);
    int status = 0;
    waitpid(m_pid, &status, 0);
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
  }

 private:
  pid_t m_pid;
};

TEST(SaveOnDisk, KilledInTheMiddleItLeavesTheOldOrTheNew) {
  constexpr uint32_t kRounds = 60;
  const CTempDirectory directory;
  const std::string path = directory / "data.cfg";
  const Ref<CfgNode> trees[] = {Tree("first", 1000), Tree("second", 3000)};
  const auto files = MakeLinuxFileSystem();
  const uint32_t start = os::TickCount();
  ASSERT_TRUE(trees[1]->SaveFile(*files, path, kKey, false, CfgLayout::Cfg));
  ASSERT_TRUE(trees[0]->SaveFile(*files, path, kKey, true, CfgLayout::Cfg));
  // Kills fall anywhere in the first few saves, however long one takes here.
  const auto pairMs = os::TickCount() - start;
  const uint32_t longestMs = 10 + 4 * std::min(pairMs, 100u);
  std::string texts[2];
  for (int i = 0; i < 2; ++i) trees[i]->Dump(texts[i], 0, 0, CfgLayout::Cfg);
  int found[2] = {};
  for (uint32_t round = 0; round < kRounds; ++round) {
    const CSaver saver(path, *trees[0], *trees[1]);
    os::Sleep(1 + longestMs * round / kRounds);
    ASSERT_TRUE(saver.Kill());
    CfgNode read;
    ASSERT_TRUE(read.LoadFile(*files, path, "", CfgMode::All, kKey, CfgLayout::Cfg)) << round;
    std::string text;
    read.Dump(text, 0, 0, CfgLayout::Cfg);
    ASSERT_TRUE(text == texts[0] || text == texts[1]) << round;
    ++found[text == texts[1] ? 1 : 0];
  }
  // Both were met, so that the kills did fall between.
  EXPECT_GT(found[0], 0);
  EXPECT_GT(found[1], 0);
  // A temporary file has a name for a moment only, and at most one is left by each kill.
  EXPECT_LE(NamesIn(directory.Path()).size(), size_t{1} + kRounds);
  RecordProperty("leftTemporaries", static_cast<int>(NamesIn(directory.Path()).size() - 1));
}

}  // namespace
}  // namespace kestra
