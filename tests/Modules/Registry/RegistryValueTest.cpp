// What the values of every type show, whatever bytes they hold, and what is written.
#include <gtest/gtest.h>

#include <optional>

#include "Modules/Registry/RegistryValueText.h"
#include "tests/Modules/Registry/RegistryFixture.h"
#include "tests/Modules/Show.h"

namespace kestra {
namespace {

using namespace test;
using namespace std::string_literals;

struct TypeCase {
  uint32_t type;
  std::string data;
  const char* shown;  // behind the type
};

TEST(RegistryValue, ShowsEveryType) {
  const TypeCase cases[] = {
      {kRegSz, "text\0"s, " StringValue=text"},
      {kRegSz, "no end", " StringValue=no end"},
      {kRegSz, "ab\0cd\0"s, " StringValue=ab"},
      {kRegSz, "", " StringValue="},
      {kRegExpandSz, "%TEMP%\\x\0"s, " StringValue=%TEMP%\\x"},
      {kRegBinary, "\x0A\xFF\0\x7F"s, " StringValue=0A FF 00 7F"},
      {kRegBinary, "", " StringValue="},
      {kRegResourceList, "\x01"s, " StringValue=01"},
      {kRegFullResourceDescriptor, "\x02"s, " StringValue=02"},
      {kRegResourceRequirementsList, "\x03"s, " StringValue=03"},
      {kRegDword, "\x04\x03\x02\x81"s, " DWORDValue=2164392708"},
      {kRegDword, "\x04\x03\x02"s, ""},
      {kRegDword, "\x04\x03\x02\x01\0"s, ""},
      {kRegDword, "", ""},
      {kRegMultiSz, "a\0bc\0\0"s, " StringValue=a|bc"},
      {kRegMultiSz, "a\0bc\0"s, " StringValue=a|bc"},
      {kRegMultiSz, "a\0bc"s, " StringValue=a|bc"},
      {kRegMultiSz, "a\0\0b\0\0"s, " StringValue=a||b"},
      {kRegMultiSz, "\0\0"s, " StringValue="},
      {kRegMultiSz, "\0"s, " StringValue="},
      {kRegMultiSz, "", " StringValue="},
      {kRegNone, "abc", ""},
      {kRegDwordBigEndian, "\0\0\0\x01"s, ""},
      {kRegLink, "l\0"s, ""},
      {kRegQword, "\0\0\0\0\0\0\0\x01"s, ""},
      {0xFFFFFFFF, "abc", ""},
  };
  for (const TypeCase& c : cases) {
    SCOPED_TRACE(c.type);
    auto machine = MakeRef<CFakeMachine>();
    machine->registry.SetValue(kHklm, "K", "v", c.type, c.data);
    auto module = MakeRegistry(machine, "KeyPath='HKLM\\K',MultiSZSeparator='|'");
    QueryMessage message;
    ASSERT_TRUE(Fill(*module, message));
    EXPECT_EQ(Show(*module->Children.Get(0)->Children.Get(0)),
              "Name=v Path=HKLM\\K\\v Type=" + std::to_string(c.type) + c.shown);
  }
}

// What cannot be read has no type; what is gone is no item.
TEST(RegistryValue, NoneAndUnreadDiffer) {
  auto machine = MakeRef<CFakeMachine>();
  machine->registry.SetString(kHklm, "K", "a", "x");
  machine->registry.SetString(kHklm, "K", "b", "x");
  machine->registry.Find(kHklm, "K")->FindValue("a")->readError = kErrorAccessDenied;
  machine->registry.Find(kHklm, "K")->FindValue("b")->readError = kErrorFileNotFound;
  auto module = MakeRegistry(machine, "KeyPath='HKLM\\K'");
  QueryMessage message;
  ASSERT_TRUE(Fill(*module, message));
  EXPECT_EQ(ShowKeys(*module), "K(a)");
  CVDiagItem& value = *module->Children.Get(0)->Children.Get(0);
  EXPECT_EQ(Show(value), "Name=a Path=HKLM\\K\\a");

  // Filled anew it shows what there is then, and nothing when it is gone.
  machine->registry.Find(kHklm, "K")->FindValue("a")->readError = kErrorSuccess;
  EXPECT_TRUE(value.Init(false, true, message));
  EXPECT_EQ(Show(value), "Name=a Path=HKLM\\K\\a Type=1 StringValue=x");
  machine->registry.Find(kHklm, "")->subKeys.clear();
  EXPECT_FALSE(value.Init(false, true, message));
  EXPECT_EQ(Show(value), "");
}

struct WriteCase {
  uint32_t type;
  const char* text;  // null: not given
  std::optional<uint32_t> number;
  std::string data;  // what is stored, or the message and its inserts behind "!"
};

TEST(RegistryValue, WritesWhatTheTypeTakes) {
  const WriteCase cases[] = {
      {kRegSz, "text", {}, "text\0"s},
      {kRegSz, "", {}, "\0"s},
      {kRegSz, nullptr, {}, "!11000 StringValue"},
      {kRegSz, nullptr, 1, "!11000 StringValue"},
      {kRegSz, "t", 1, "!11010 StringValue DWORDValue"},
      {kRegExpandSz, "%x%", {}, "%x%\0"s},
      {kRegExpandSz, "t", 1, "!11010 StringValue DWORDValue"},
      {kRegBinary, "0a FF 1 2", {}, "\x0A\xFF\x12"s},
      {kRegBinary, "", {}, ""},
      {kRegBinary, nullptr, 1, "!11000 StringValue"},
      {kRegBinary, "0A", 1, "!11000 DWORDValue"},
      {kRegBinary, "0A F", {}, "!11000 0A F"},
      {kRegBinary, "-1", {}, "!11000 -1"},
      {kRegBinary, "+1", {}, "!11000 +1"},
      {kRegBinary, "0x", {}, "!11000 0x"},
      {kRegBinary, "0G", {}, "!11000 0G"},
      {kRegDword, nullptr, 0x81020304, "\x04\x03\x02\x81"s},
      {kRegDword, "4294967295", {}, "\xFF\xFF\xFF\xFF"s},
      {kRegDword, "-1", {}, "\xFF\xFF\xFF\xFF"s},
      {kRegDword, "-2147483648", {}, "\0\0\0\x80"s},
      {kRegDword, "5", 5, "\x05\0\0\0"s},
      {kRegDword, "5", 6, "!11010 StringValue DWORDValue"},
      {kRegDword, nullptr, {}, "!11000 StringValue or DWORDValue"},
      {kRegDword, "", {}, "!11002 StringValue "},
      {kRegDword, "4294967296", {}, "!11002 StringValue 4294967296"},
      {kRegDword, "-2147483649", {}, "!11002 StringValue -2147483649"},
      {kRegDword, "1 ", {}, "!11002 StringValue 1 "},
      {kRegDword, "0x10", {}, "!11002 StringValue 0x10"},
      {kRegMultiSz, "a; b;;c", {}, "a; b\0c\0\0"s},
      {kRegMultiSz, "a", {}, "a\0\0"s},
      {kRegMultiSz, "a;;", {}, "a\0\0"s},
      {kRegMultiSz, "", {}, "\0"s},
      {kRegMultiSz, "a;;;;b", {}, "!16003"},
      {kRegMultiSz, ";;b", {}, "!16003"},
      {kRegMultiSz, ";;", {}, "!16003"},
      {kRegMultiSz, nullptr, {}, "!11000 StringValue"},
      {kRegMultiSz, "a", 1, "!11010 StringValue DWORDValue"},
      {kRegNone, "a", {}, "!11007 Type"},
      {kRegDwordBigEndian, nullptr, 1, "!11007 Type"},
      {kRegResourceList, "00", {}, "!11007 Type"},
  };
  for (const WriteCase& c : cases) {
    SCOPED_TRACE(std::to_string(c.type) + " " + (c.text ? c.text : "-"));
    auto machine = MakeRef<CFakeMachine>();
    machine->registry.SetValue(kHklm, "K", "v", kRegSz, "old");
    std::unique_ptr<CRegistryKey> root, key;
    ASSERT_EQ(machine->registry.OpenRoot(kHklm, root), kErrorSuccess);
    ASSERT_EQ(root->OpenSubKey("K", kKeySetValue, key), kErrorSuccess);
    DiagParams params{Ref<const DiagParamDefs>(kRegistryValueClass.Get()->Params)};
    if (c.text) params.SetText("StringValue", c.text);
    if (c.number) params.SetNumber("DWORDValue", *c.number);
    QueryMessage message;
    const bool isWritten = WriteValue(*key, "v", c.type, ";;", params, message);
    std::string result = machine->registry.Find(kHklm, "K")->FindValue("v")->data;
    if (!isWritten) {
      EXPECT_EQ(result, "old");
      result = "!" + std::to_string(message.MessageId);
      for (const std::string& insert : message.Args) result += " " + insert;
    }
    EXPECT_EQ(result, c.data);
  }
}

}  // namespace
}  // namespace kestra
