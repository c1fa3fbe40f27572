// The decoder of the kernel's process list.
#include <gtest/gtest.h>

#include <functional>

#include "Modules/Processes/windows/SystemInformationList.h"
#include "tests/support/FakeWindowsProcesses.h"

namespace kestra {
namespace {

using test::StoreLittle;

constexpr uint64_t kAddress = 0x5000;

std::vector<test::FakeWindowsProcess> ThreeProcesses() {
  return {{.pid = 0, .exeName = "Idle"},
          {.pid = 4, .parentPid = 0, .exeName = "System", .workingSet = 0x1000},
          {.pid = 600,
           .parentPid = 4,
           .exeName = "a.exe",
           .workingSet = 0x80000000,
           .handleCount = 77,
           .startTime = 132000000000000000}};
}

std::string Shown(const std::vector<ListedProcess>& processes) {
  std::string text;
  for (const ListedProcess& p : processes) {
    text += p.imageName + "(" + std::to_string(p.pid) + "," + std::to_string(p.parentPid) + "," +
            std::to_string(p.handleCount) + "," + std::to_string(p.workingSet) + "," +
            std::to_string(p.startTime) + ")";
  }
  return text;
}

constexpr const char* kAllThree =
    "(0,0,0,0,0)System(4,0,0,4096,0)a.exe(600,4,77,2147483648,132000000000000000)";

TEST(SystemInformationList, IsDecodedInBothWidths) {
  for (const uint32_t width : {32u, 64u}) {
    SCOPED_TRACE(width);
    const SystemBytes list{test::ProcessListBytes(ThreeProcesses(), width, kAddress), kAddress};
    std::vector<ListedProcess> processes;
    EXPECT_EQ(DecodeProcessList(list, width, processes), kErrorSuccess);
    EXPECT_EQ(Shown(processes), kAllThree);
  }
}

struct SpoiltCase {
  const char* what;
  std::function<void(SystemBytes&)> spoil;
  SystemError error;
  size_t count;  // of processes
};

TEST(SystemInformationList, AListThatLeadsAstrayIsAnError) {
  const SpoiltCase cases[] = {
      {"nothing", [](auto& l) { l.bytes.clear(); }, kErrorInvalidData, 0},
      {"leads into itself", [](auto& l) { StoreLittle(l.bytes, 0, 4, 8); }, kErrorInvalidData, 1},
      {"leads out of the list", [](auto& l) { StoreLittle(l.bytes, 0, 4, 0xFFFFFFF0); },
       kErrorInvalidData, 1},
      {"leads to its end", [](auto& l) { StoreLittle(l.bytes, 0, 4, l.bytes.size()); },
       kErrorInvalidData, 1},
      {"a name before the list", [](auto& l) { l.address += 0x10000; }, kErrorSuccess, 3},
      {"a name behind the list", [](auto& l) { l.address = 0; }, kErrorSuccess, 3},
      {"a name that is too long", [](auto& l) { StoreLittle(l.bytes, 0x108 + 0x38, 2, 0xFFFE); },
       kErrorSuccess, 3},
      {"names that lie over each other",
       [](auto& l) {
         for (const uint64_t entry : {0x108u, 0x218u}) {
           StoreLittle(l.bytes, entry + 0x38, 2, 0x300);
           StoreLittle(l.bytes, entry + 0x40, 8, kAddress);
         }
       },
       kErrorInvalidData, 2},
  };
  for (const SpoiltCase& c : cases) {
    SCOPED_TRACE(c.what);
    SystemBytes list{test::ProcessListBytes(ThreeProcesses(), 64, kAddress), kAddress};
    c.spoil(list);
    std::vector<ListedProcess> processes;
    EXPECT_EQ(DecodeProcessList(list, 64, processes), c.error);
    EXPECT_EQ(processes.size(), c.count);
  }
}

// However much of it came, nothing is read behind its end (the address sanitizer looks on), and a
// process whose members have all come is there.
TEST(SystemInformationList, MayBeCutAnywhere) {
  const std::string whole = test::ProcessListBytes(ThreeProcesses(), 64, kAddress);
  for (size_t size = 0; size < whole.size(); ++size) {
    const SystemBytes list{std::string(whole, 0, size), kAddress};
    std::vector<ListedProcess> processes;
    const SystemError error = DecodeProcessList(list, 64, processes);
    EXPECT_EQ(error == kErrorSuccess, processes.size() == 3) << size;
  }
}

}  // namespace
}  // namespace kestra
