// The reader of a process's own block, over memory of every width, and over what a hostile process
// may write there.
#include <gtest/gtest.h>

#include <functional>

#include "Modules/Processes/windows/inspect/ProcessBlock.h"
#include "tests/Modules/Processes/windows/inspect/BlockImage.h"

namespace kestra {
namespace {

using test::BlockView;
using test::CFakeWindowsProcesses;
using test::FakeWindowsProcess;
using test::kBlockAddress;
using test::kParametersAddress;
using test::kTextsAddress;
using test::StoreLittle;

const test::BlockTexts kTexts = {"C:\\a.exe", "a.exe -x", "A title"};

std::string Shown(const ProcessBlock& block) {
  return std::string(block.isNarrow ? "32|" : "|") + block.imagePath + "|" + block.commandLine +
         "|" + block.windowTitle;
}

std::string ReadShown(const FakeWindowsProcess& process, const BlockReader& reader,
                      CFakeWindowsProcesses& windows) {
  windows.processes = {process};
  std::unique_ptr<CProcessHandle> handle;
  EXPECT_EQ(windows.OpenHandle(process.pid, kProcessQueryAndRead, handle), kErrorSuccess);
  windows.calls.clear();
  return Shown(ReadProcessBlock(*handle, reader, true));
}

struct ViewCase {
  BlockView view;
  BlockReader reader;
  const char* missing;  // function
  const char* expected;
};

TEST(ProcessBlock, IsReadByEachWidthFromEach) {
  const ViewCase cases[] = {
      {BlockView::Wide, {64, true}, "", "|C:\\a.exe|a.exe -x|A title"},
      {BlockView::Wide, {64, true}, "IsWow64Process", "|C:\\a.exe|a.exe -x|A title"},
      {BlockView::NarrowFromWide, {64, true}, "", "32|C:\\a.exe|a.exe -x|A title"},
      {BlockView::Across, {32, true}, "", "|C:\\a.exe|a.exe -x|A title"},
      {BlockView::Across, {32, true}, "IsWow64Process", "|C:\\a.exe|a.exe -x|A title"},
      {BlockView::Across, {32, true}, "NtWow64QueryInformationProcess64", "|||"},
      {BlockView::Across, {32, true}, "NtWow64ReadVirtualMemory64", "|||"},
      {BlockView::Narrow, {32, false}, "", "|C:\\a.exe|a.exe -x|A title"},
      {BlockView::Narrow, {32, false}, "IsWow64Process", "|C:\\a.exe|a.exe -x|A title"},
      {BlockView::Narrow, {32, false}, "NtQueryInformationProcess", "|||"},
  };
  for (const ViewCase& c : cases) {
    SCOPED_TRACE(testing::Message() << static_cast<int>(c.view) << " without " << c.missing);
    CFakeWindowsProcesses windows;
    windows.missing.insert(c.missing);
    FakeWindowsProcess process{.pid = 12};
    PutBlock(process, c.view, kTexts);
    EXPECT_EQ(ReadShown(process, c.reader, windows), c.expected);
  }
}

// A program of 32 bits looks at another one of 32 bits as it would on a system of 32 bits.
TEST(ProcessBlock, ARedirectedCallerReadsItsLike) {
  CFakeWindowsProcesses windows;
  FakeWindowsProcess process{.pid = 12};
  PutBlock(process, BlockView::Narrow, kTexts);
  process.isRedirected = true;
  EXPECT_EQ(ReadShown(process, {32, true}, windows), "32|C:\\a.exe|a.exe -x|A title");
}

struct HostileCase {
  const char* what;
  std::function<void(FakeWindowsProcess&)> spoil;
  const char* expected;
};

TEST(ProcessBlock, AReadThatFailsLeavesTheRestEmpty) {
  const HostileCase cases[] = {
      {"no block", [](auto& p) { StoreLittle(p.information[0], 8, 8, 0); }, "|||"},
      {"a block outside the memory",
       [](auto& p) { StoreLittle(p.information[0], 8, 8, UINT64_MAX - 8); }, "|||"},
      {"a block that is cut before the pointer",
       [](auto& p) { p.memory[kBlockAddress].resize(0x27); }, "|||"},
      {"no parameters", [](auto& p) { StoreLittle(p.memory[kBlockAddress], 0x20, 8, 0); }, "|||"},
      {"parameters outside",
       [](auto& p) { StoreLittle(p.memory[kBlockAddress], 0x20, 8, UINT64_MAX); }, "|||"},
      {"parameters cut before the second text's end",
       [](auto& p) { p.memory[kParametersAddress].resize(0x7F); }, "|||"},
      {"parameters cut before the title",
       [](auto& p) { p.memory[kParametersAddress].resize(0x80); }, "|C:\\a.exe|a.exe -x|"},
      {"a path that is nowhere",
       [](auto& p) { StoreLittle(p.memory[kParametersAddress], 0x68, 8, 1); }, "|||"},
      {"a path at null", [](auto& p) { StoreLittle(p.memory[kParametersAddress], 0x68, 8, 0); },
       "|||"},
      {"a path longer than the memory",
       [](auto& p) { StoreLittle(p.memory[kParametersAddress], 0x60, 2, 0xFFFF); }, "|||"},
      {"an empty path", [](auto& p) { StoreLittle(p.memory[kParametersAddress], 0x60, 2, 0); },
       "||a.exe -x|A title"},
      {"a command line that goes on behind its end",
       [](auto& p) { StoreLittle(p.memory[kParametersAddress], 0x70, 2, 30); },
       "|C:\\a.exe|a.exe -x|A title"},
      {"a title of an odd length",
       [](auto& p) { StoreLittle(p.memory[kParametersAddress], 0xB0, 2, 3); },
       "|C:\\a.exe|a.exe -x|A "},
      {"a title whose terminator is not readable",
       [](auto& p) { p.memory[kTextsAddress].resize(p.memory[kTextsAddress].size() - 2); },
       "|C:\\a.exe|a.exe -x|A title"},
      {"half a surrogate", [](auto& p) { StoreLittle(p.memory[kTextsAddress], 0, 2, 0xD800); },
       "|\xED\xA0\x80:\\a.exe|a.exe -x|A title"},
  };
  for (const HostileCase& c : cases) {
    SCOPED_TRACE(c.what);
    CFakeWindowsProcesses windows;
    FakeWindowsProcess process{.pid = 12};
    PutBlock(process, BlockView::Wide, kTexts);
    c.spoil(process);
    EXPECT_EQ(ReadShown(process, {64, true}, windows), c.expected);
  }
}

// The process has ended, or changed, between two reads.
TEST(ProcessBlock, AnyCallMayFail) {
  for (uint32_t call = 2;; ++call) {  // the first one opens it
    SCOPED_TRACE(call);
    CFakeWindowsProcesses windows;
    FakeWindowsProcess process{.pid = 12};
    PutBlock(process, BlockView::NarrowFromWide, kTexts);
    windows.plan.FailCall(call, kErrorAccessDenied, test::Facility::Any);
    const std::string shown = ReadShown(process, {64, true}, windows);
    if (!windows.plan.HasFailed()) {
      EXPECT_EQ(shown, "32|C:\\a.exe|a.exe -x|A title");
      EXPECT_EQ(call, 9u);  // the width, the block, and five pieces of memory
      break;
    }
    EXPECT_FALSE(shown.ends_with("A title")) << shown;
  }
}

}  // namespace
}  // namespace kestra
