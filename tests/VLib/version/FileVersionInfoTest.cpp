#include <gtest/gtest.h>

#include "VLib/src/version/FileVersionInfo.h"
#include "platform/os/Event.h"
#include "tests/VLib/version/BlockWriter.h"
#include "tests/support/FailingMachine.h"
#include "tests/support/FakeMachine.h"
#include "tests/support/TempDirectory.h"

namespace kestra {
namespace {

using namespace test;

constexpr char kPath[] = "C:\\Windows\\sample.dll";

std::string Sample() {
  return ReadWholeFile(std::string(KESTRA_PE_SAMPLES) + "/sample_wide.dll");
}

Ref<CFakeMachine> MachineWith(const std::string& content) {
  auto machine = MakeRef<CFakeMachine>();
  machine->files.Add(kPath, {.content = content});
  return machine;
}

TEST(FileVersionInfo, ReadsAProgram) {
  FileVersionInfo info;
  ASSERT_EQ(info.Load(*MachineWith(Sample()), kPath), kErrorSuccess);
  EXPECT_EQ(info.GetString("\\StringFileInfo\\040904b0\\CompanyName"), "Example Works");
  EXPECT_EQ(info.GetString("CompanyName"), "Example Works");
  EXPECT_EQ(info.GetString("FileDescription"), "Wetterf\u00fchler \U0001F326");
  EXPECT_EQ(info.GetString("PrivateBuild"), std::nullopt);
  EXPECT_EQ(info.GetFixedVersion(FileVersionInfo::kFile), "1.2.3.65535");
  EXPECT_EQ(info.GetFixedVersion(FileVersionInfo::kProduct), "4.0.5.6");
  EXPECT_EQ(info.GetFixedVersion(7), std::nullopt);
  EXPECT_EQ(info.GetVersionText(FileVersionInfo::kFile), "1.2.3.65535");
}

TEST(FileVersionInfo, VersionsOutOfStrings) {
  const std::string whole = Sample();
  const size_t fixed = 0xA80;  // VS_FIXEDFILEINFO in the file
  std::string zero = whole, none = whole, silent = whole;
  zero.replace(fixed + 8, 16, 16, '\0');
  none[fixed] = '\0';
  silent.replace(fixed + 8, 16, 16, '\0');
  silent.replace(silent.find(Utf16(u"FileVersion")), 2, Utf16(u"f"));
  silent.replace(silent.find(Utf16(u"Translation")), 2, Utf16(u"?"));
  struct Case {
    const std::string* file;
    const char* fileVersion;
    const char* productVersion;
  };
  for (const Case& test :
       {Case{&zero, "1.2 beta", "4.0"}, Case{&none, "1.2 beta", "4.0"}, Case{&silent, "", ""}}) {
    FileVersionInfo info;
    ASSERT_EQ(info.Load(*MachineWith(*test.file), kPath), kErrorSuccess);
    EXPECT_EQ(info.GetVersionText(FileVersionInfo::kFile), test.fileVersion);
    EXPECT_EQ(info.GetVersionText(FileVersionInfo::kProduct), test.productVersion);
  }
}

TEST(FileVersionInfo, NoneIsNotUnreadable) {
  auto machine = MachineWith("#!/bin/sh\n");
  FileVersionInfo info;
  EXPECT_EQ(info.Load(*machine, kPath), kErrorResourceTypeNotFound);
  EXPECT_EQ(info.GetString("CompanyName"), std::nullopt);
  EXPECT_EQ(info.GetVersionText(FileVersionInfo::kFile), "");
  EXPECT_EQ(info.Load(*machine, "C:\\missing.dll"), kErrorFileNotFound);
  machine->files.Add("C:\\denied.dll", {.error = kErrorAccessDenied});
  EXPECT_EQ(info.Load(*machine, "C:\\denied.dll"), kErrorAccessDenied);
  machine->files.Add("C:\\pipe", {.kind = FileKind::Other});
  EXPECT_EQ(info.Load(*machine, "C:\\pipe"), kErrorAccessDenied);
  machine->hasFiles = false;
  EXPECT_EQ(info.Load(*machine, kPath), kErrorCallNotImplemented);
}

// A large program costs a few reads of its headers and of its resource; any other file one.
TEST(FileVersionInfo, CostsLittle) {
  const auto machine = MakeRef<CFailingMachine>(MachineWith(Sample() + std::string(1 << 24, 'x')));
  FileVersionInfo info;
  machine->FailCall(0, 0);
  ASSERT_EQ(info.Load(*machine, kPath), kErrorSuccess);
  EXPECT_LE(machine->Calls(), 8u);
  const auto other = MakeRef<CFailingMachine>(MachineWith(std::string(1 << 20, 'x')));
  other->FailCall(0, 0);
  EXPECT_EQ(info.Load(*other, kPath), kErrorResourceTypeNotFound);
  EXPECT_EQ(other->Calls(), 2u);  // it is opened and read
}

TEST(FileVersionInfo, EveryFailingCallIsTold) {
  const auto machine = MakeRef<CFailingMachine>(MachineWith(Sample()));
  for (uint32_t n = 1;; ++n) {
    machine->FailCall(n, kErrorIoDevice);
    FileVersionInfo info;
    const SystemError error = info.Load(*machine, kPath);
    if (!machine->HasFailed()) {
      EXPECT_EQ(error, kErrorSuccess);
      EXPECT_GT(n, 3u);
      break;
    }
    EXPECT_EQ(error, kErrorIoDevice) << n;
    EXPECT_EQ(info.GetVersionText(FileVersionInfo::kFile), "") << n;
  }
}

TEST(FileVersionInfo, CancelEndsIt) {
  os::CEvent cancel;
  cancel.Set();
  FileVersionInfo info;
  EXPECT_EQ(info.Load(*MachineWith(Sample()), kPath, &cancel), kErrorCancelled);
}

}  // namespace
}  // namespace kestra
