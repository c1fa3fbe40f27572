#include <gtest/gtest.h>

#include "VLib/src/registry/RegKey.h"
#include "tests/support/FailingMachine.h"
#include "tests/support/FakeMachine.h"

namespace kestra {
namespace {

using test::CFailingMachine;
using test::CFakeMachine;
using test::CFakeRegistry;
using test::Facility;

constexpr RegistryRoot kMachine = RegistryRoot::LocalMachine;

template <class Operation>
SystemError ErrorOf(Operation operation) {
  try {
    operation();
  } catch (const CVRegKey::CSystemException& error) {
    return error.ErrorCode;
  }
  return kErrorSuccess;
}

TEST(CVRegKey, ReadsNumbersAndStringsByType) {
  CFakeRegistry registry;
  registry.SetNumber(kMachine, "Soft", "Number", 0x80000001u);
  registry.SetValue(kMachine, "Soft", "Short", kRegDword, "\x05");
  registry.SetValue(kMachine, "Soft", "Long", kRegDword, "12345");
  registry.SetValue(kMachine, "Soft", "None", kRegNone, "abcd");
  registry.SetString(kMachine, "Soft", "Text", "abc");
  registry.SetValue(kMachine, "Soft", "Cut", kRegSz, std::string("ab\0cd\0", 6));
  registry.SetValue(kMachine, "Soft", "Bare", kRegSz, "no end");
  registry.SetValue(kMachine, "Soft", "Empty", kRegSz, "");
  registry.SetValue(kMachine, "Soft", "Expand", kRegExpandSz, "%x%");
  const CVRegKey key = CVRegKey(registry, kMachine).OpenSubKey("SOFT", kKeyQueryValue);

  EXPECT_EQ(key.ReadNumber("number", 7), 0x80000001u);
  EXPECT_EQ(key.ReadNumber("Missing", 7), 7u);
  EXPECT_EQ(key.ReadNumber("None", 7), 7u);
  EXPECT_EQ(key.ReadNumber("Short", 7), 5u);
  EXPECT_EQ(ErrorOf([&] { key.ReadNumber("Text", 7); }), kErrorInvalidData);
  EXPECT_EQ(ErrorOf([&] { key.ReadNumber("Long", 7); }), kErrorMoreData);

  EXPECT_EQ(key.ReadString("Text", "d"), "abc");
  EXPECT_EQ(key.ReadString("Cut", "d"), "ab");
  EXPECT_EQ(key.ReadString("Bare", "d"), "no end");
  EXPECT_EQ(key.ReadString("Empty", "d"), "d");
  EXPECT_EQ(key.ReadString("Missing", "d"), "d");
  EXPECT_EQ(key.ReadString("None", "d"), "d");
  try {
    key.ReadString("Number", "d");
    FAIL();
  } catch (const CVRegKey::CInvalidType& error) {
    EXPECT_EQ(error.Text, "Attempt to treat registry value \"Number\" with invalid type");
  }
  EXPECT_THROW(key.ReadString("Expand", "d"), CVRegKey::CInvalidType);

  EXPECT_EQ(key.ReadRaw("Cut"), std::string("ab\0cd\0", 6));
  EXPECT_EQ(ErrorOf([&] { key.ReadRaw("Missing"); }), kErrorFileNotFound);
  EXPECT_EQ(key.ValueType("Missing"), 0u);
  EXPECT_EQ(key.ValueType("Expand"), kRegExpandSz);
}

TEST(CVRegKey, WritesAndDeletes) {
  CFakeRegistry registry;
  CVRegKey copy;
  {
    const CVRegKey key =
        CVRegKey(registry, kMachine).CreateSubKey("A\\B", kKeyQueryValue | kKeySetValue);
    copy = key;  // keeps the key open
  }
  copy.SetNumber("n", 258);
  copy.SetRaw("r", kRegBinary, "xyz");
  EXPECT_EQ(copy.ReadRaw("n"), std::string("\x02\x01\0\0", 4));
  EXPECT_EQ(copy.ValueType("n"), kRegDword);
  copy.DeleteValue("R");
  EXPECT_EQ(ErrorOf([&] { copy.DeleteValue("r"); }), kErrorFileNotFound);
  EXPECT_TRUE(registry.Find(kMachine, "a\\b"));
}

TEST(CVRegKey, EveryFailureIsAnException) {
  CFakeRegistry registry;
  registry.DenyKey(kMachine, "Denied", kErrorAccessDenied);
  const CVRegKey root(registry, kMachine);
  EXPECT_EQ(ErrorOf([&] { root.OpenSubKey("Denied", 0); }), kErrorAccessDenied);
  EXPECT_EQ(ErrorOf([&] { root.OpenSubKey("Missing", 0); }), kErrorFileNotFound);
  EXPECT_EQ(ErrorOf([] { CVRegKey().ReadNumber("n", 0); }), kErrorInvalidHandle);

  const auto fake = MakeRef<CFakeMachine>();
  fake->registry.SetNumber(kMachine, "K", "n", 1);
  const auto machine = MakeRef<CFailingMachine>(fake);
  uint32_t number = 1;
  for (;; ++number) {
    machine->FailCall(number, kErrorNotReady, Facility::Registry);
    const SystemError error = ErrorOf([&] {
      const CVRegKey key = CVRegKey(*machine->Registry(), kMachine)
                               .OpenSubKey("K", kKeyQueryValue | kKeySetValue | kKeyCreateSubKey);
      key.ReadNumber("n", 0);
      key.ReadString("missing", "");
      key.ValueType("n");
      key.ReadRaw("n");
      key.SetNumber("n", 2);
      key.CreateSubKey("S", 0);
    });
    EXPECT_EQ(error, machine->HasFailed() ? kErrorNotReady : kErrorSuccess);
    if (!machine->HasFailed()) break;
  }
  EXPECT_EQ(number, 9u);
}

}  // namespace
}  // namespace kestra
