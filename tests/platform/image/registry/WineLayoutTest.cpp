#include <gmock/gmock.h>

#include "tests/platform/image/registry/RegistryFixture.h"

namespace kestra::test {
namespace {

using image::VolumeUser;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// A link's value, as Wine writes it.
std::string Link(const std::string& target) {
  std::string text = "#link\n\"SymbolicLinkValue\"=hex(6):";
  for (const char each : target) {
    constexpr const char* kDigits = "0123456789abcdef";
    if (text.back() != ':') text += ',';
    text += kDigits[each >> 4];
    text += kDigits[each & 15];
    text += ",00";
  }
  return text + "\n";
}

// A prefix in small: what a new one has at the places that matter.
CRegistryFiles& Fill(CRegistryFiles& files, const std::string& arch = "win64") {
  const std::string head = "WINE REGISTRY Version 2\n;; All keys relative to REGISTRY\\\\";
  const std::string options = "\n\n#arch=" + arch + "\n\n";
  const std::string machine = "\\Registry\\Machine\\";
  files["system.reg"] =
      head + "Machine" + options +
      "[Software\\\\Classes\\\\.chm] 1\n@=\"chm.file\"\n"
      "[Software\\\\Classes\\\\CLSID\\\\{64}] 1\n"
      "[Software\\\\Classes\\\\TypeLib\\\\{T}] 1\n"
      "[Software\\\\Classes\\\\Wow6432Node\\\\CLSID\\\\{32}] 1\n"
      "[Software\\\\Classes\\\\Wow6432Node\\\\TypeLib] 1\n" +
      Link(machine + "Software\\Classes\\TypeLib") +
      "[Software\\\\Microsoft\\\\Windows NT\\\\CurrentVersion] 1\n\"Width\"=\"64\"\n"
      "[Software\\\\Microsoft\\\\Windows NT\\\\CurrentVersion\\\\ProfileList\\\\"
      "S-1-5-21-0-0-0-1000] 1\n\"ProfileImagePath\"=\"C:\\\\users\\\\carol\"\n"
      "[Software\\\\Wow6432Node\\\\Classes] 1\n" +
      Link(machine + "Software\\Classes\\Wow6432Node") +
      "[Software\\\\Wow6432Node\\\\Microsoft\\\\Windows NT\\\\CurrentVersion] 1\n\"Width\"=\"32\"\n"
      "[Software\\\\Wow6432Node\\\\Microsoft\\\\Windows NT\\\\CurrentVersion\\\\ProfileList] 1\n" +
      Link(machine + "Software\\Microsoft\\Windows NT\\CurrentVersion\\ProfileList") +
      "[System\\\\CurrentControlSet\\\\Hardware Profiles\\\\Current\\\\Software\\\\Fonts] 1\n"
      "[System\\\\Select] 1\n\"Current\"=dword:00000001\n";
  files["user.reg"] = head + "User\\\\S-1-5-21-0-0-0-1000" + options +
                      "[Software\\\\Wine] 1\n[Volatile Environment] 1\n\"USERNAME\"=\"dave\"\n";
  files["userdef.reg"] = head + "User\\\\.Default" + options + "[Environment] 1\n";
  return files;
}

TEST(WineLayout, ShowsTheTreeOfTheRunningPrefix) {
  CRegistryFiles files;
  const auto registry = Fill(files).Texts();
  EXPECT_TRUE(registry->IsWide());
  const Question questions[] = {
      {"HKLM", 0, "Software|System"},
      {"HKLM\\System", 0, "CurrentControlSet|Select"},
      {"HKLM\\Software", 0, "Classes|Microsoft|Wow6432Node"},
      {"HKLM\\Software", k32, "Classes|Microsoft"},
      {"HKLM\\Software\\Wow6432Node", k32, "Classes|Microsoft"},
      {"HKLM\\Software\\Classes", 0, ".chm|CLSID|TypeLib|Wow6432Node"},
      {"HKLM\\Software\\Classes", k32, "CLSID|TypeLib"},
      {"HKLM\\Software\\Classes\\.chm", k32, "error 2"},
      {"HKLM\\Software\\Classes\\CLSID", k32, "{32}"},
      {"HKLM\\Software\\Classes\\TypeLib", k32, "{T}"},
      {"HKLM\\Software\\Classes\\Wow6432Node", k32, "error 2"},
      {"HKLM\\Software\\Microsoft\\Windows NT\\CurrentVersion\\ProfileList", k32,
       "S-1-5-21-0-0-0-1000"},
      {"HKCR", k32, ".chm|CLSID|TypeLib|Wow6432Node"},
      {"HKCR\\CLSID", 0, "{64}"},
      {"HKCR\\CLSID", k32, "{32}"},
      {"HKCR\\.chm", k32, ""},
      {"HKCR\\TypeLib", k32, "{T}"},
      {"HKCR\\Wow6432Node", k32, "CLSID|TypeLib"},
      {"HKCR\\.not", k32, "error 2"},
      {"HKU", 0, ".Default|S-1-5-21-0-0-0-1000"},
      {"HKU\\.DEFAULT", 0, "Environment"},
      {"HKU\\S-1-5-18", 0, "error 2"},
      {"HKCU", 0, "Software|Volatile Environment"},
      {"HKCU\\Software", k32, "Wine"},
      {"HKCC\\Software", 0, "Fonts"},
  };
  for (const Question& each : questions) {
    EXPECT_EQ(SubKeys(*registry, each.path, each.access), each.answer) << each.path;
  }
  const std::string width = "HKLM\\Software\\Microsoft\\Windows NT\\CurrentVersion|Width";
  EXPECT_EQ(Value(*registry, width), "1:64\\0");
  EXPECT_EQ(Value(*registry, width, k32), "1:32\\0");
  EXPECT_THAT(files.Notices(), IsEmpty());
}

TEST(WineLayout, HasOneViewInAPrefixOf32Bits) {
  CRegistryFiles files;
  const auto registry = Fill(files, "win32").Texts();
  EXPECT_FALSE(registry->IsWide());
  EXPECT_EQ(SubKeys(*registry, "HKLM\\Software\\Classes\\CLSID", k32), "{64}");
}

TEST(WineLayout, PutsTheUsersClassesOverTheMachines) {
  CRegistryFiles files;
  Fill(files)["user.reg"] +=
      "[Software\\\\Classes\\\\.CHM] 1\n@=\"own\"\n"
      "[Software\\\\Classes\\\\.dat] 1\n";
  const auto registry = files.Texts();
  EXPECT_EQ(SubKeys(*registry, "HKCR"), ".CHM|.dat|CLSID|TypeLib|Wow6432Node");
  EXPECT_EQ(Value(*registry, "HKCR\\.chm|"), "1:own\\0");
}

TEST(WineLayout, KnowsItsOneUser) {
  struct {
    const char* name;
    SystemError error;
  } const choices[] = {{"", kErrorSuccess},
                       {"Carol", kErrorSuccess},
                       {"s-1-5-21-0-0-0-1000", kErrorSuccess},
                       {"dave", kErrorNoSuchUser}};
  for (const auto& each : choices) {
    CRegistryFiles files;
    VolumeUser user;
    EXPECT_EQ(Fill(files).Texts(each.name)->CurrentUser(user), each.error) << each.name;
    EXPECT_EQ(user.name, each.error ? "" : "carol");
  }
  CRegistryFiles files;
  std::string& text = Fill(files)["system.reg"];
  text.replace(text.find("ProfileImagePath"), 16, "ProfileXmagePath");
  std::vector<VolumeUser> users;
  ASSERT_EQ(files.Texts()->Users(users), kErrorSuccess);
  ASSERT_EQ(users.size(), 1u);
  EXPECT_EQ(users[0].name, "dave");
}

TEST(WineLayout, TellsNoneFromUnreadable) {
  struct Case {
    std::function<void(CRegistryFiles&)> damage;
    const char* path;
    const char* answer;
    const char* notice;
  };
  const Case cases[] = {
      {[](auto& files) { files.Remove("user.reg"); }, "HKCU", "error 1317", "user.reg is missing"},
      {[](auto& files) { files.Remove("user.reg"); }, "HKU", ".Default", "user.reg is missing"},
      {[](auto& files) { files.Fail("user.reg", kErrorAccessDenied); }, "HKCU", "error 5",
       "user.reg cannot be read"},
      {[](auto& files) { files["user.reg"] = "REGEDIT4\n"; }, "HKU", ".Default",
       "user.reg is no registry file"},
      {[](auto& files) { files["system.reg"] = "REGEDIT4\n"; }, "HKLM", "error 1015",
       "is no registry file"},
      {[](auto& files) { files["system.reg"] += "\"x\"=hex(\n"; }, "HKLM", "Software|System",
       "system.reg is damaged: 1 lines"},
      {[](auto& files) { files.CutShort("system.reg", 1); }, "HKLM", "Software|System",
       "system.reg is damaged"},
  };
  for (const Case& each : cases) {
    CRegistryFiles files;
    each.damage(Fill(files));
    const auto registry = files.Texts();
    EXPECT_EQ(SubKeys(*registry, each.path), each.answer) << each.path;
    EXPECT_THAT(files.Notices(), testing::Contains(HasSubstr(each.notice))) << each.path;
  }
}

}  // namespace
}  // namespace kestra::test
