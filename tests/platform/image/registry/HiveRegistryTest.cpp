#include <gmock/gmock.h>

#include <thread>

#include "tests/platform/image/registry/RegistryFixture.h"

namespace kestra::test {
namespace {

using image::CVolumeRegistry;
using image::VolumeUser;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const std::string kNarrow = KESTRA_MADE_VOLUMES "/narrow";

TEST(HiveRegistry, JoinsTheHives) {
  CRegistryFiles files(kWide);
  const auto registry = files.Hives("alice");
  const Question questions[] = {
      {"HKLM", 0, "SAM|SECURITY|SOFTWARE|SYSTEM"},
      {"HKLM\\SAM\\SAM\\Domains", 0, "Account"},
      {"HKLM\\system", 0,
       "ControlSet001|ControlSet002|MountedDevices|Select|Setup|"
       "CurrentControlSet"},
      {"HKLM\\SYSTEM\\CurrentControlSet\\Services", 0, "Dhcp|disk|Spooler"},
      {"HKLM\\SYSTEM\\CurrentControlSet\\Hardware Profiles\\Current\\Software", 0, "Fonts"},
      {"HKCC", 0, "Software"},
      {"HKCC\\Software", 0, "Fonts"},
      {"HKU", 0,
       ".DEFAULT|S-1-5-18|S-1-5-21-1-2-3-1001|S-1-5-21-1-2-3-1001_Classes|"
       "S-1-5-21-1-2-3-1002|S-1-5-21-1-2-3-1002_Classes|S-1-5-19"},
      {"HKU\\s-1-5-18", 0, "Control Panel"},
      {"HKU\\S-1-5-19", 0, "Control Panel|Environment|Software|Volatile Environment"},
      {"HKCU\\Software", 0, "Microsoft|Classes"},
      {"HKCU\\Software\\Classes", 0, ".alice|.txt|CLSID|Wow6432Node"},
      {"HKU\\S-1-5-21-1-2-3-1001_classes", 0, ".alice|.txt|CLSID|Wow6432Node"},
      {"HKCR", 0, ".alice|.txt|CLSID|txtfile|Wow6432Node"},
      {"HKCR\\CLSID", 0, "{0000-64}|{0000-USER}"},
      {"HKLM\\Software\\Kestra\\Links", 0,
       "About|Below|Good|NoTarget|Nowhere|Outside|Round|ToDefault"},
      {"HKLM\\Software\\Kestra\\Links\\Good\\\xd0\xba\xd0\xbb\xd1\x8e\xd1\x87", 0, ""},
      {"HKLM\\Software\\Kestra\\Links\\ToDefault", 0, "Control Panel"},
      {"HKLM\\Software\\Kestra\\Links\\Round", 0, "error 1921"},
      {"HKLM\\Software\\Kestra\\Links\\Below", 0, "error 1921"},
      {"HKLM\\Software\\Kestra\\Links\\Nowhere", 0, "error 2"},
      {"HKLM\\Software\\Kestra\\Links\\NoTarget", 0, "error 2"},
      {"HKLM\\Software\\Kestra\\Links\\Outside", 0, "error 2"},
      {"HKLM\\Software\\Not\\There", 0, "error 2"},
      {"HKLM\\HARDWARE", 0, "error 2"},
      {"HKU\\S-1-5-21-1-2-3-9999", 0, "error 2"},
      {"HKU\\_Classes", 0, "error 2"},
      {"HKPD", 0, "error 2"},
      {"HKLM\\Software\\Classes", k32 | k64, "error 87"},
  };
  for (const Question& each : questions) {
    EXPECT_EQ(SubKeys(*registry, each.path, each.access), each.answer) << each.path;
  }
  EXPECT_THAT(files.Notices(), IsEmpty());
}

TEST(HiveRegistry, GivesValuesAsStored) {
  CRegistryFiles files(kWide);
  const auto registry = files.Hives("Alice");
  const Question questions[] = {
      {"HKLM\\SYSTEM\\CurrentControlSet\\Control\\ComputerName\\ComputerName|ComputerName", 0,
       "1:VOLUME-1\\0"},
      {"HKCR\\.txt|", 0, "1:alice.txtfile\\0"},
      {"HKCR\\txtfile\\shell\\open\\command|", 0, "2:%SystemRoot%\\notepad.exe %1\\0"},
      {"HKCU\\Control Panel\\Desktop|Owner", 0, "1:alice\\0"},
      {"HKU\\.DEFAULT\\Control Panel\\Desktop|owner", 0, "1:.DEFAULT\\0"},
      {"HKLM\\Software\\Kestra|", 0, "1:the default value\\0"},
      {"HKLM\\Software\\Kestra|NoTerminator", 0, "1:abc"},
      {"HKLM\\Software\\Kestra|OddLength", 0, "1:abc\\0"},
      {"HKLM\\Software\\Kestra|OneByte", 0, "1:"},
      {"HKLM\\Software\\Kestra|Empty", 0, "1:"},
      {"HKLM\\Software\\Kestra|List", 0, "7:one\\0\\0three\\0\\0\\0"},
      {"HKLM\\Software\\Kestra|ListOpen", 0, "7:one\\0two"},
      {"HKLM\\Software\\Kestra|Half", 0,
       "1:a\xed\xa0\x80"
       "b\\0"},
      {"HKLM\\Software\\Kestra|ShortNumber", 0, "4:\\x01\\x02"},
      {"HKLM\\Software\\Kestra|LongNumber", 0, "4:\\x01\\x02\\x03\\x04\\x05\\x06\\x07\\x08"},
      {"HKLM\\Software\\Kestra|Quad", 0, "b:\\x00\\x01\\x02\\x03\\x04\\x05\\x06\\x07"},
      {"HKLM\\Software\\Kestra|None", 0, "0:"},
      {"HKLM\\Software\\Kestra|Strange", 0, "80000001:\\x01\\x02\\x03\\x04\\x05"},
      {"HKLM\\Software\\Kestra|\xd0\x98\xd0\x9c\xd0\xaf", 0,
       "1:\xd0\xb7\xd0\xbd\xd0\xb0\xd1\x87\xd0\xb5\xd0\xbd\xd0\xb8\xd0\xb5\\0"},
      {"HKLM\\Software\\Kestra|Not there", 0, "error 2"},
  };
  for (const Question& each : questions) {
    EXPECT_EQ(Value(*registry, each.path, each.access), each.answer) << each.path;
  }
}

TEST(HiveRegistry, TellsClassCountsAndTime) {
  CRegistryFiles files(kWide);
  const auto registry = files.Hives();
  std::unique_ptr<CRegistryKey> key;
  ASSERT_EQ(OpenKey(*registry, "HKLM\\SYSTEM\\ControlSet001\\Control\\Lsa", 0, key), 0u);
  RegistryKeyInfo info;
  ASSERT_EQ(key->QueryInfo(info), kErrorSuccess);
  EXPECT_EQ(info.subKeyCount, 1u);
  EXPECT_EQ(info.valueCount, 0u);
  EXPECT_EQ(info.lastWriteTime.ticks, 0x01D5B2F0A3C40000u);
  ASSERT_EQ(key->OpenSubKey("JD", 0, key), kErrorSuccess);
  ASSERT_EQ(key->QueryInfo(info), kErrorSuccess);
  EXPECT_EQ(info.className, "4f8aa1c2");
}

// In every view, and wherever it leads; a link on the way is followed.
TEST(HiveRegistry, OpensALinkItself) {
  CRegistryFiles files(kWide);
  const auto registry = files.Hives("alice");
  std::unique_ptr<CRegistryKey> root;
  ASSERT_EQ(registry->OpenRoot(RegistryRoot::LocalMachine, root), kErrorSuccess);
  const std::string links = "Software\\Kestra\\Links\\";
  for (const char* pName : {"Good", "ToDefault", "Round", "Nowhere", "Outside"}) {
    SCOPED_TRACE(pName);
    std::unique_ptr<CRegistryKey> key;
    std::string data;
    uint32_t type = 0;
    ASSERT_EQ(root->OpenLinkItself(links + pName, 0, key), kErrorSuccess);
    EXPECT_EQ(key->QueryValue("SymbolicLinkValue", type, data), kErrorSuccess);
    EXPECT_EQ(type, kRegLink);
    EXPECT_EQ(key->EnumSubKey(0, data), kErrorNoMoreItems);
  }
  std::unique_ptr<CRegistryKey> key;
  std::string name;
  ASSERT_EQ(root->OpenLinkItself(links + "ToDefault\\Control Panel", 0, key), kErrorSuccess);
  EXPECT_EQ(key->EnumSubKey(0, name), kErrorSuccess);
  EXPECT_EQ(name, "Desktop");
  EXPECT_EQ(root->OpenLinkItself(links + "Round\\x", 0, key), kErrorCannotResolveFilename);
}

TEST(HiveRegistry, ShowsThe32BitView) {
  CRegistryFiles files(kWide);
  const auto registry = files.Hives("alice");
  EXPECT_TRUE(registry->IsWide());
  const Question questions[] = {
      {"HKLM\\Software", 0, "Classes|Kestra|Microsoft|Wow6432Node"},
      {"HKLM\\Software", k64, "Classes|Kestra|Microsoft|Wow6432Node"},
      {"HKLM\\Software", k32, "Classes|Microsoft"},
      {"HKLM\\Software\\Wow6432Node", k32, "Classes|Microsoft"},
      {"HKLM\\Software\\Kestra", k32, "error 2"},
      {"HKLM\\Software\\Microsoft\\Windows NT\\CurrentVersion\\ProfileList", k32,
       "S-1-5-18|S-1-5-19|S-1-5-21-1-2-3-1001|S-1-5-21-1-2-3-1002"},
      {"HKLM\\Software\\Classes", k32, ".txt|CLSID|txtfile|Wow6432Node"},
      {"HKLM\\Software\\Classes\\CLSID", 0, "{0000-64}"},
      {"HKLM\\Software\\Classes\\clsid", k32, "{0000-32}"},
      {"HKLM\\Software\\Classes\\Interface", k32, "error 2"},
      {"HKLM\\Software\\Classes\\Wow6432Node\\CLSID", k32, "{0000-32}"},
      {"HKCR\\CLSID", k32, "{0000-32}|{0000-USER32}"},
      {"HKCR\\.txt", k32, ""},
      {"HKCU\\Software\\Classes\\CLSID", k32, "{0000-USER32}"},
      {"HKCU\\Software", k32, "Microsoft|Classes"},
      {"HKLM\\SYSTEM\\Select", k32, ""},
  };
  for (const Question& each : questions) {
    EXPECT_EQ(SubKeys(*registry, each.path, each.access), each.answer) << each.path;
    // Piece by piece it is the same.
    std::unique_ptr<CRegistryKey> key;
    const std::string path = each.path;
    size_t end = path.find('\\');
    SystemError error = OpenKey(*registry, path.substr(0, end), 0, key);
    while (error == kErrorSuccess && end != std::string::npos) {
      const size_t begin = end + 1;
      end = path.find('\\', begin);
      error = key->OpenSubKey(path.substr(begin, end - begin), each.access, key);
    }
    std::string names;
    std::string name;
    for (uint32_t i = 0; error == 0 && (error = key->EnumSubKey(i, name)) == 0; ++i) {
      names += (i ? "|" : "") + name;
    }
    if (error != kErrorNoMoreItems) names = "error " + std::to_string(error);
    EXPECT_EQ(names, each.answer) << each.path << " in pieces";
  }
}

TEST(HiveRegistry, HasOneViewOnASystemOf32Bits) {
  CRegistryFiles files(kNarrow);
  const auto registry = files.Hives("alice");
  EXPECT_FALSE(registry->IsWide());
  EXPECT_EQ(SubKeys(*registry, "HKLM\\Software", k32), "Classes|Kestra|Microsoft");
  EXPECT_EQ(SubKeys(*registry, "HKCR\\CLSID", k32), "{0000-64}|{0000-USER}");
}

TEST(HiveRegistry, ReadsNoHiveBeforeItIsNeeded) {
  CRegistryFiles files(kWide);
  const auto registry = files.Hives();
  EXPECT_EQ(SubKeys(*registry, "HKLM"), "SAM|SECURITY|SOFTWARE|SYSTEM");
  EXPECT_THAT(files.Opened(), IsEmpty());
  SubKeys(*registry, "HKLM\\SYSTEM\\CurrentControlSet", k32);
  SubKeys(*registry, "HKLM\\SYSTEM");
  SubKeys(*registry, "HKLM\\SAM");
  EXPECT_THAT(files.Opened(), ElementsAre("SYSTEM", "SAM"));
}

TEST(HiveRegistry, KnowsTheUsers) {
  CRegistryFiles files(kWide);
  std::vector<VolumeUser> users;
  ASSERT_EQ(files.Hives()->Users(users), kErrorSuccess);
  ASSERT_EQ(users.size(), 2u);
  EXPECT_EQ(users[0].name, "alice");
  EXPECT_EQ(users[0].profilePath, "C:\\Users\\alice");
  EXPECT_EQ(users[0].sid, "S-1-5-21-1-2-3-1001");
  EXPECT_EQ(users[1].name, "B\u00f6b");
  struct {
    const char* name;
    const char* sid;
  } const choices[] = {{"ALICE", "S-1-5-21-1-2-3-1001"},
                       {"b\u00d6b", "S-1-5-21-1-2-3-1002"},
                       {"s-1-5-21-1-2-3-1002", "S-1-5-21-1-2-3-1002"},
                       {"localservice", "S-1-5-19"},
                       {"carol", nullptr},
                       {"", nullptr}};
  for (const auto& each : choices) {
    VolumeUser user;
    const SystemError error = files.Hives(each.name)->CurrentUser(user);
    EXPECT_EQ(error, each.sid ? kErrorSuccess : kErrorNoSuchUser) << each.name;
    EXPECT_EQ(user.sid, each.sid ? each.sid : "") << each.name;
  }
  const auto notices = files.Notices();
  ASSERT_EQ(notices.size(), 2u);
  EXPECT_EQ(notices[0],
            "No user of the volume is named carol; there is "
            "alice (S-1-5-21-1-2-3-1001), B\u00f6b (S-1-5-21-1-2-3-1002)");
  EXPECT_THAT(notices[1], HasSubstr("none of them is named"));
}

TEST(HiveRegistry, ShowsTheMachinesClassesWhereNoUserIsChosen) {
  CRegistryFiles files(kWide);
  const auto registry = files.Hives();
  EXPECT_EQ(SubKeys(*registry, "HKCR"), ".txt|CLSID|txtfile|Wow6432Node");
  EXPECT_EQ(Value(*registry, "HKCR\\.txt|"), "1:txtfile\\0");
  EXPECT_THAT(files.Notices(), ElementsAre(HasSubstr("classes of the machine alone")));
  EXPECT_EQ(SubKeys(*registry, "HKCU"), "error 1317");
}

TEST(HiveRegistry, TakesTheOnlyUserWithAHive) {
  CRegistryFiles files(kWide);
  files.Remove("C:\\Users\\alice\\NTUSER.DAT");
  EXPECT_EQ(Value(*files.Hives(), "HKCU\\Control Panel\\Desktop|Owner"), "1:B\u00f6b\\0");
  EXPECT_THAT(files.Notices(), IsEmpty());
  EXPECT_EQ(SubKeys(*files.Hives("alice"), "HKCU"), "error 2");
  EXPECT_THAT(files.Notices(), ElementsAre(HasSubstr("no registry hive in the profile")));
}

TEST(HiveRegistry, FindsTheClassesOfOlderSystems) {
  CRegistryFiles files(kWide);
  const std::string profile = "C:\\Users\\alice\\";
  const std::string newer = profile + "AppData\\Local\\Microsoft\\Windows\\UsrClass.dat";
  files[profile + "Local Settings\\Application Data\\Microsoft\\Windows\\UsrClass.dat"] =
      files[newer];
  files.Remove(newer);
  EXPECT_EQ(SubKeys(*files.Hives("alice"), "HKCR\\.alice"), "");
}

// The first sequence number runs ahead, and the checksum follows.
void MakeDirty(std::string& hive) {
  hive[4] ^= 1;
  hive[508] ^= 1;
}

void Replace(std::string& bytes, const std::string& from, const std::string& to) {
  for (size_t at = 0; (at = bytes.find(from, at)) != std::string::npos;) {
    bytes.replace(at, from.size(), to);
  }
}

TEST(HiveRegistry, TellsNoneFromUnreadable) {
  struct Case {
    std::function<void(CRegistryFiles&)> damage;
    const char* path;
    const char* answer;
    const char* notice;  // in the only one; null: none
  };
  const std::string software = kConfig + "SOFTWARE";
  const std::string system = kConfig + "SYSTEM";
  const Case cases[] = {
      {[&](auto& files) { files.Remove(software); }, "HKLM", "SAM|SECURITY|SYSTEM", nullptr},
      {[&](auto& files) { files.Remove(software); }, "HKLM\\SOFTWARE", "error 2", "is missing"},
      {[&](auto& files) { files.Remove(software); }, "HKU", ".DEFAULT|S-1-5-18", "is missing"},
      {[&](auto& files) { files[software] = "regf"; }, "HKU", ".DEFAULT|S-1-5-18",
       "is no registry file"},
      {[&](auto& files) { Replace(files[software], "ProfileList", "ProfileLizt"); }, "HKU",
       ".DEFAULT|S-1-5-18", "does not tell who has a profile"},
      {[&](auto& files) { files.Fail(software, kErrorAccessDenied); }, "HKLM",
       "SAM|SECURITY|SOFTWARE|SYSTEM", nullptr},
      {[&](auto& files) { files.Fail(software, kErrorAccessDenied); }, "HKLM\\SOFTWARE", "error 5",
       "SOFTWARE cannot be read"},
      {[&](auto& files) { files[software] = "nothing like a hive"; }, "HKLM\\SOFTWARE",
       "error 1015", "is no registry file"},
      {[&](auto& files) { files[software].clear(); }, "HKLM\\SOFTWARE", "error 1015",
       "is no registry file"},
      {[&](auto& files) { MakeDirty(files[system]); }, "HKLM\\SYSTEM\\Select", "",
       "was not closed properly"},
      {[&](auto& files) { ++files[system][508]; }, "HKLM\\SYSTEM\\Select", "", "is damaged"},
      {[&](auto& files) { files.CutShort(software, 4096); },
       "HKLM\\SOFTWARE\\Microsoft\\Windows NT", "CurrentVersion", "is damaged"},
      {[&](auto& files) { files.CutShort(software, uint64_t{1} << 40); }, "HKLM\\SOFTWARE",
       "error 223", "larger than any"},
  };
  for (const Case& each : cases) {
    CRegistryFiles files(kWide);
    each.damage(files);
    const auto registry = files.Hives();
    EXPECT_EQ(SubKeys(*registry, each.path), each.answer) << each.path;
    EXPECT_EQ(SubKeys(*registry, each.path), each.answer) << each.path;
    if (each.notice) {
      EXPECT_THAT(files.Notices(), ElementsAre(HasSubstr(each.notice))) << each.path;
    } else {
      EXPECT_THAT(files.Notices(), IsEmpty()) << each.path;
    }
  }
}

// Every byte of the header and of the first cells, one after the other, stands for something else.
TEST(HiveRegistry, LivesThroughDamageEverywhere) {
  CRegistryFiles files(KESTRA_MADE_VOLUMES "/spoiled");
  const auto spoiled = files.Hives("alice");
  SubKeys(*spoiled, "HKLM\\SOFTWARE\\Microsoft\\Windows NT");
  EXPECT_THAT(files.Notices(), testing::Contains(HasSubstr("SOFTWARE is")));

  CRegistryFiles small(kWide);
  std::string& bytes = small[kConfig + "SAM"];
  const std::string whole = bytes;
  int notices = 0;
  int unchanged = 0;
  const image::VolumeRegistryOptions options{"alice", [&](const std::string&) { ++notices; }};
  for (size_t place = 0; place < std::min<size_t>(whole.size(), 0x1400); ++place) {
    if (place == 600) place = 0x1000;  // nobody reads what is between
    for (const char byte : {'\0', '\x7F', '\xFF'}) {
      bytes = whole;
      bytes[place] = byte;
      const auto registry = image::MakeHiveRegistry(small.Opener(), "C:\\Windows", options);
      notices = 0;
      for (const char* pPath : {"HKLM\\SAM", "HKLM\\SAM\\SAM\\Domains\\Account"}) {
        // What cannot be read is told of, and is never the same as what is not there.
        const std::string answer = SubKeys(*registry, pPath);
        unchanged += answer == "SAM";
        EXPECT_TRUE(answer != "error 1015" || notices > 0) << place;
        EXPECT_TRUE(answer != "error 2" || pPath != std::string("HKLM\\SAM")) << place;
        ValueNames(*registry, pPath);
        Value(*registry, std::string(pPath) + "|F");
      }
    }
  }
  // Most of these bytes matter to no name below the root.
  EXPECT_GT(unchanged, 2000);
}

TEST(HiveRegistry, TellsOnceThatThereIsNoControlSet) {
  CRegistryFiles files(kWide);
  std::string& bytes = files[kConfig + "SYSTEM"];
  const size_t select = bytes.find("Select");
  bytes.replace(select, 6, "Zelect");
  const auto registry = files.Hives("alice");
  EXPECT_EQ(SubKeys(*registry, "HKLM\\SYSTEM\\CurrentControlSet\\Services"), "error 2");
  EXPECT_EQ(SubKeys(*registry, "HKLM\\SYSTEM"),
            "ControlSet001|ControlSet002|MountedDevices|Zelect|Setup");
  EXPECT_TRUE(registry->IsWide());  // as its SOFTWARE shows
  EXPECT_THAT(files.Notices(), ElementsAre(HasSubstr("current control set")));
}

TEST(HiveRegistry, ChangesNothing) {
  CRegistryFiles files(kWide);
  const auto registry = files.Hives("alice");
  std::unique_ptr<CRegistryKey> key;
  for (const char* pPath : {"HKLM", "HKCR", "HKCU\\Environment"}) {
    ASSERT_EQ(OpenKey(*registry, pPath, kKeySetValue, key), kErrorSuccess);
    std::unique_ptr<CRegistryKey> made;
    EXPECT_EQ(key->CreateSubKey("New", 0, made), kErrorWriteProtect);
    EXPECT_EQ(key->DeleteSubKey("Software", 0), kErrorWriteProtect);
    EXPECT_EQ(key->SetValue("TEMP", kRegSz, "x"), kErrorWriteProtect);
    EXPECT_EQ(key->DeleteValue("TEMP"), kErrorWriteProtect);
  }
}

TEST(HiveRegistry, RefusesPathsDeeperThanARegistry) {
  CRegistryFiles files(kWide);
  const auto registry = files.Hives("alice");
  std::string path = "HKLM";
  for (int i = 0; i < 600; ++i) path += "\\x";
  EXPECT_EQ(SubKeys(*registry, path), "error 123");
}

TEST(HiveRegistry, AnswersManyThreads) {
  CRegistryFiles files(kWide);
  const auto registry = files.Hives("alice");
  std::vector<std::thread> threads;
  std::atomic<int> wrong = 0;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < 20; ++round) {
        wrong += SubKeys(*registry, "HKCR\\CLSID", k32) != "{0000-32}|{0000-USER32}";
        wrong +=
            SubKeys(*registry, "HKLM\\SYSTEM\\CurrentControlSet\\Services") != "Dhcp|disk|Spooler";
        wrong += Value(*registry, "HKLM\\Software\\Kestra|OddLength") != "1:abc\\0";
      }
    });
  }
  for (std::thread& each : threads) each.join();
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(files.Opened().size(), 4u);
}

}  // namespace
}  // namespace kestra::test
