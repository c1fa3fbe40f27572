// What a volume's registry does with much, with too much, and when it is to stop.
#include <gmock/gmock.h>

#include <atomic>
#include <thread>

#include "platform/image/registry/tree/LoadOnce.h"
#include "platform/os/Clock.h"
#include "platform/os/Event.h"
#include "tests/platform/image/registry/RegistryFixture.h"
#include "tests/support/EventAtLook.h"
#include "tests/support/TempDirectory.h"

namespace kestra::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::string Made(const std::string& name) {
  return ReadWholeFile(KESTRA_MADE_HIVES "/" + name);
}

// A prefix whose key "Big" has that many subkeys.
CRegistryFiles& FillBig(CRegistryFiles& files, int count) {
  std::string text = "WINE REGISTRY Version 2\n";
  for (int i = 0; i < count; ++i) text += "[Big\\\\" + std::to_string(i) + "\\\\Below] 1\n";
  files["system.reg"] = text;
  return files;
}

// Listing the large key anew for every key below it would take many minutes.
TEST(RegistryLimits, KeepsTheListingOfALargeKey) {
  constexpr int kCount = 70'000;
  CRegistryFiles files;
  const auto registry = FillBig(files, kCount).Texts();
  const uint32_t begin = os::TickCount();
  int wrong = 0;
  for (int i = 0; i < kCount; ++i) {
    wrong += SubKeys(*registry, "HKLM\\Big\\" + std::to_string(i)) != "Below";
  }
  EXPECT_EQ(wrong, 0);
  EXPECT_LT(os::TickCount() - begin, 30'000u);
}

TEST(RegistryLimits, ListsNothingThatNoPathCanName) {
  CRegistryFiles files;
  files[kConfig + "SAM"] = Made("bad_names");
  const auto registry = files.Hives();
  EXPECT_EQ(SubKeys(*registry, "HKLM\\SAM"), "Fine|Twin");
  EXPECT_EQ(ValueNames(*registry, "HKLM\\SAM"), "Same");
  EXPECT_THAT(files.Notices(),
              ElementsAre(HasSubstr("SAM has 2 keys that no path can name below its key \"ROOT\""),
                          HasSubstr("SAM has 1 keys or values with the name of another one")));
}

TEST(RegistryLimits, ReadsAHiveOfSeveralProfilesOnce) {
  CRegistryFiles files;
  files[kConfig + "SOFTWARE"] = Made("shared_profiles");
  files["C:\\Users\\Both\\NTUSER.DAT"] = Made("names");
  const auto registry = files.Hives();
  const std::string keys = SubKeys(*registry, "HKU\\S-1-5-21-1-2-3-0");
  EXPECT_THAT(keys, HasSubstr("Stra"));
  EXPECT_EQ(SubKeys(*registry, "HKU\\S-1-5-21-1-2-3-1"), keys);
  EXPECT_EQ(SubKeys(*registry, "HKU\\S-1-5-21-1-2-3-2"), keys);
  EXPECT_THAT(files.Opened(), ElementsAre("SOFTWARE", "NTUSER.DAT"));
}

TEST(RegistryLimits, LooksAtTenThousandProfiles) {
  CRegistryFiles files;
  files[kConfig + "SOFTWARE"] = Made("many_profiles");
  std::vector<image::VolumeUser> users;
  ASSERT_EQ(files.Hives()->Users(users), kErrorSuccess);
  EXPECT_EQ(users.size(), 10'000u);
  EXPECT_THAT(files.Notices(), ElementsAre(HasSubstr("10002 profiles")));
  EXPECT_EQ(SubKeys(*files.Hives(), "HKCU"), "error 1317");
  EXPECT_LT(files.Notices().back().size(), 4000u);  // not all of them are named
}

TEST(RegistryLimits, HasNoMoreInMemoryThanItMay) {
  CRegistryFiles files(kWide);
  for (const char* pName : {"SOFTWARE", "SYSTEM", "SAM"}) {
    files.CutShort(kConfig + pName, 900'000'000);
  }
  const auto registry = files.Hives();
  EXPECT_EQ(SubKeys(*registry, "HKLM\\SYSTEM\\Select"), "");
  EXPECT_EQ(SubKeys(*registry, "HKLM\\SOFTWARE\\Microsoft\\Windows NT"), "CurrentVersion");
  EXPECT_EQ(SubKeys(*registry, "HKLM\\SAM"), "error 8");
  EXPECT_EQ(SubKeys(*registry, "HKLM\\SECURITY").find("error"), std::string::npos);
  EXPECT_THAT(files.Notices(), testing::Contains(HasSubstr("SAM is not read: with it")));
}

// What a cancel cut short is whole for the next who asks, and nobody is told of it.
TEST(RegistryLimits, ForgetsWhatWasCancelled) {
  const char* const paths[] = {"HKLM\\SOFTWARE",
                               "HKLM\\SYSTEM\\CurrentControlSet",
                               "HKU",
                               "HKCU\\Software",
                               "HKCR\\CLSID",
                               "HKCC"};
  for (const char* pPath : paths) {
    for (const uint32_t access : {0u, kKeyWow64Key32}) {
      CRegistryFiles fresh(kWide);
      const std::string expected = SubKeys(*fresh.Hives("alice"), pPath, access);
      CRegistryFiles files(kWide);
      const auto registry = files.Hives("alice");
      {
        const CEventAtLook event(1);
        const os::CTerminationScope scope(&event);
        EXPECT_EQ(SubKeys(*registry, pPath, access), "error 1223") << pPath;
      }
      EXPECT_THAT(files.Notices(), IsEmpty()) << pPath;
      EXPECT_EQ(SubKeys(*registry, pPath, access), expected) << pPath;
    }
  }
}

TEST(RegistryLimits, CancelsTheListingOfALargeKey) {
  CRegistryFiles files;
  const auto registry = FillBig(files, 5000).Texts();
  std::unique_ptr<CRegistryKey> key;
  ASSERT_EQ(OpenKey(*registry, "HKLM\\Big", 0, key), kErrorSuccess);
  std::string name;
  {
    const CEventAtLook event(1);
    const os::CTerminationScope scope(&event);
    EXPECT_EQ(key->EnumSubKey(0, name), kErrorCancelled);
  }
  EXPECT_EQ(key->EnumSubKey(4999, name), kErrorSuccess);
  EXPECT_EQ(key->EnumSubKey(5000, name), kErrorNoMoreItems);
}

TEST(LoadOnce, DoesNotFailWhoWaitsForACancelledOne) {
  image::CLoadOnce once;
  os::CEvent isRunning;
  std::atomic<int> runs = 0;
  std::thread first([&] {
    EXPECT_EQ(once.Run([&] {
      ++runs;
      isRunning.Set();
      os::Sleep(60);
      return kErrorCancelled;
    }),
              kErrorCancelled);
  });
  os::WaitAny({&isRunning}, 10'000);
  EXPECT_EQ(once.Run([&] {
    ++runs;
    return kErrorAccessDenied;
  }),
            kErrorAccessDenied);
  first.join();
  EXPECT_EQ(once.Run([] { return kErrorSuccess; }), kErrorAccessDenied);
  EXPECT_EQ(runs, 2);
}

TEST(LoadOnce, LetsWhoIsCancelledGoWhileAnotherOneLoads) {
  image::CLoadOnce once;
  os::CEvent isRunning, end;
  std::thread first([&] {
    once.Run([&] {
      isRunning.Set();
      os::WaitAny({&end}, 10'000);
      return kErrorSuccess;
    });
  });
  os::WaitAny({&isRunning}, 10'000);
  const CEventAtLook event(3);
  const os::CTerminationScope scope(&event);
  EXPECT_EQ(once.Run([] { return kErrorSuccess; }), kErrorCancelled);
  end.Set();
  first.join();
}

TEST(CurrentTermination, CountsTheInnerScopeAlone) {
  EXPECT_FALSE(os::IsWorkTerminated());
  os::CEvent event;
  event.Set();
  const os::CTerminationScope outer(&event);
  EXPECT_TRUE(os::IsWorkTerminated());
  {
    const os::CTerminationScope inner(nullptr);
    EXPECT_FALSE(os::IsWorkTerminated());
  }
  EXPECT_TRUE(os::IsWorkTerminated());
  std::thread([] { EXPECT_FALSE(os::IsWorkTerminated()); }).join();
}

}  // namespace
}  // namespace kestra::test
