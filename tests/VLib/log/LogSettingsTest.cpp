#include <gtest/gtest.h>

#include "VLib/src/log/LogSettings.h"
#include "tests/VLib/log/LogTestHost.h"
#include "tests/support/FailingMachine.h"
#include "tests/support/FakeMachine.h"

namespace kestra {
namespace {

using namespace test;

struct HeadCase {
  std::string head;
  bool errorsOnly;
  uint32_t maxSize;
  bool append;
};

TEST(LogSettings, OutOfTheHeadOfTheLastFile) {
  const std::string longBlank(99, ' ');
  const HeadCase cases[] = {
      {"", true, 100, false},
      {SettingsBlock("0", "7", "1") + "\r\nSTART\t", false, 7, true},
      {"MAX_SIZE = 5", true, 5, false},
      {"max_size=5\nAppend= 1 \r\r\n\r\n  \r\nerrors_only=0", false, 5, true},
      {"APPEND=1\nAPPEND=0", true, 100, false},  // a later one wins
      {"ERRORS_ONLY=2", false, 100, false},
      {"ERRORS_ONLY=", false, 100, false},
      {"APPEND=11", true, 100, false},
      {"MAX_SIZE=text", true, 0, false},
      {"MAX_SIZE=12kB", true, 12, false},
      {"MAX_SIZE=-1", true, 4294967295u, false},
      {"MAX_SIZE=99999999999999", true, 2147483647, false},
      {"some text\r\nMAX_SIZE=5", true, 100, false},
      {"MAX_SIZE=5\n---\nAPPEND=1", true, 5, false},
      {"\tMAX_SIZE=5", true, 100, false},         // only blanks are removed
      {longBlank + "APPEND=1", true, 100, true},  // lines are read in pieces of 99
      {std::string(150, 'x') + "\nAPPEND=1", true, 100, false},
      {std::string("MAX_SIZE=5\0x\nAPPEND=1", 21), true, 5, true},
      {std::string("\0junk\nAPPEND=1", 14), true, 100, true},
      {"\xFF\xFE\n", true, 100, false},
  };
  for (const HeadCase& test : cases) {
    LogSettings settings;
    ReadLogSettings(test.head, settings);
    EXPECT_EQ(settings.errorsOnly, test.errorsOnly) << test.head;
    EXPECT_EQ(settings.maxSize, test.maxSize) << test.head;
    EXPECT_EQ(settings.append, test.append) << test.head;
  }
}

TEST(LogSettings, BlockHasAlwaysTheSameLength) {
  EXPECT_EQ(LogSettingsBlock({true, 0, false}).size(), kSettingsBlockBytes - 3);
  EXPECT_EQ(LogSettingsBlock({false, 4294967295u, true}).size(), kSettingsBlockBytes - 3);
}

constexpr RegistryRoot kMachine = RegistryRoot::LocalMachine;
constexpr RegistryRoot kUser = RegistryRoot::CurrentUser;

uint32_t MaxSizeOf(CRegistry* pRegistry, const std::string& path = "Soft\\Log") {
  LogSettings settings;
  ReadLogSettings(pRegistry, path, "name", settings);
  return settings.maxSize;
}

TEST(LogSettings, RegistryByStrength) {
  CFakeRegistry registry;
  EXPECT_EQ(MaxSizeOf(nullptr), 100u);
  EXPECT_EQ(MaxSizeOf(&registry), 100u);
  // The value's name has the equals sign in it.
  registry.SetNumber(kMachine, "Soft\\Log", "MAX_SIZE", 1);
  EXPECT_EQ(MaxSizeOf(&registry), 100u);
  registry.SetNumber(kMachine, "Soft\\Log", "MAX_SIZE=", 2);
  EXPECT_EQ(MaxSizeOf(&registry), 2u);
  EXPECT_EQ(MaxSizeOf(&registry, ""), 100u);
  registry.SetNumber(kUser, "Soft\\Log", "MAX_SIZE=", 3);
  EXPECT_EQ(MaxSizeOf(&registry), 3u);
  registry.SetNumber(kMachine, "Soft\\Log", "MAX_SIZE=name", 4);
  EXPECT_EQ(MaxSizeOf(&registry), 4u);
  registry.SetNumber(kUser, "Soft\\Log", "MAX_SIZE=name", 5);
  EXPECT_EQ(MaxSizeOf(&registry), 5u);
}

TEST(LogSettings, RegistryTypesAndSizes) {
  CFakeRegistry registry;
  registry.SetValue(kUser, "Soft\\Log", "MAX_SIZE=", kRegBinary, std::string("\x01\x02\0\0", 4));
  EXPECT_EQ(MaxSizeOf(&registry), 0x201u);
  registry.SetValue(kUser, "Soft\\Log", "MAX_SIZE=", kRegSz, std::string("12345", 6));
  EXPECT_EQ(MaxSizeOf(&registry), 100u);  // does not fit four bytes
  registry.SetValue(kUser, "Soft\\Log", "MAX_SIZE=", kRegBinary, "");
  EXPECT_EQ(MaxSizeOf(&registry), 100u);

  registry.SetNumber(kUser, "Soft\\Log", "ERRORS_ONLY=", 2);
  registry.SetNumber(kUser, "Soft\\Log", "APPEND=", 1);
  LogSettings settings;
  ReadLogSettings(&registry, "Soft\\Log", "name", settings);
  EXPECT_FALSE(settings.errorsOnly);
  EXPECT_TRUE(settings.append);
}

// A registry that fails anywhere costs no more than the setting.
TEST(LogSettings, RegistryFailuresAreQuiet) {
  const auto fake = MakeRef<CFakeMachine>();
  fake->registry.SetNumber(kMachine, "Soft\\Log", "MAX_SIZE=", 2);
  fake->registry.SetNumber(kUser, "Soft\\Log", "MAX_SIZE=name", 3);
  const auto machine = MakeRef<CFailingMachine>(fake);
  for (uint32_t number = 1;; ++number) {
    ASSERT_LT(number, 100u);
    machine->FailCall(number, kErrorAccessDenied, Facility::Registry);
    const uint32_t maxSize = MaxSizeOf(machine->Registry());
    EXPECT_TRUE(maxSize == 2 || maxSize == 3 || maxSize == 100) << maxSize;
    if (!machine->HasFailed()) break;
  }
}

}  // namespace
}  // namespace kestra
