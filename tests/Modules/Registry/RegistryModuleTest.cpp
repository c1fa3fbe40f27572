// Which keys and values the module finds, over a registry in memory.
#include <gtest/gtest.h>

#include "VLib/src/text/Text.h"
#include "platform/os/Clock.h"
#include "tests/Modules/Registry/RegistryFixture.h"
#include "tests/Modules/Show.h"
#include "tests/support/FailingMachine.h"

namespace kestra {
namespace {

using namespace test;

Ref<CFakeMachine> Machine() {
  auto machine = MakeRef<CFakeMachine>();
  CFakeRegistry& registry = machine->registry;
  registry.SetString(kHklm, "Soft\\Acme", "Version", "1.0");
  registry.SetString(kHklm, "Soft\\Acme", "", "default");
  registry.SetNumber(kHklm, "Soft\\Acme\\Deep\\Deeper", "n", 1);
  registry.SetString(kHklm, "Soft\\Apex", "Version", "2.0");
  registry.SetString(kHklm, "Soft\\Beta", "back\\slash", "x");
  registry.SetString(kHklm, "Soft\\Beta", "a*b", "x");
  registry.AddKey(kHklm, "Soft\\wild*card");
  registry.AddKey(kHklm, "Secret\\In");
  registry.DenyKey(kHklm, "Soft\\Closed", kErrorAccessDenied);
  registry.DenyKey(kHklm, "Secret", kErrorAccessDenied);
  return machine;
}

struct FillCase {
  const char* args;
  bool isFilled;
  const char* tree;
};

TEST(RegistryModule, FindsKeysAndValues) {
  const FillCase cases[] = {
      {"KeyPath='HKLM\\Soft\\Acme'", true, "Acme(Version @)"},
      {"KeyPath='hkey_local_machine\\SOFT\\acme\\'", true, "acme(Version @)"},
      {"KeyPath='HKLM\\Soft\\A*'", true, "Acme(Version @) Apex(Version)"},
      {"KeyPath='HKLM\\*\\A?ex'", true, "Apex(Version)"},
      {"KeyPath='HKLM\\*\\Acme\\Deep'", true, "Deep()"},
      {"KeyPath='HKLM\\Soft\\*\\*\\*'", true, "Deeper(n)"},
      {"KeyPath='HKLM\\Soft\\No*'", true, ""},
      {"KeyPath='HKLM\\No\\*'", true, ""},
      {"KeyPath='HKLM\\Soft\\Nope'", true, ""},
      {"KeyPath='HKLM\\Soft\\\\Acme'", true, ""},
      {"KeyPath='HKLM\\Soft\\Acme',Levels=1", true, "Acme(Version @ Deep())"},
      {"KeyPath='HKLM\\Soft\\Acme',Levels=100", true, "Acme(Version @ Deep(Deeper(n)))"},
      {"KeyPath='HKLM\\Soft\\Acme',ValueName='V*'", true, "Acme(Version)"},
      {"KeyPath='HKLM\\Soft\\Acme',ValueName=''", true, "Acme(@)"},
      {"KeyPath='HKLM'", true, "HKLM()"},
      {"KeyPath='HKLM\\'", true, "HKLM()"},
      // A name with a wildcard is found by one.
      {"KeyPath='HKLM\\Soft\\wild*card'", true, "wild*card()"},
      {"ValuePath='HKLM\\Soft\\*\\ver*'", true, "Acme(Version) Apex(Version) Beta() wild*card()"},
      {"ValuePath='HKLM\\Soft\\Acme\\'", true, "Acme(@)"},
      {"ValuePath='HKLM\\Soft\\Beta\\a*b'", true, "Beta(a*b)"},
      // The name begins behind the last backslash, and there is no such key.
      {"ValuePath='HKLM\\Soft\\Beta\\back\\slash'", true, ""},
      {"ValueName='x'", false, ""},
      {"KeyPath='HKLM\\Soft',ValuePath='HKLM\\Soft\\x'", false, ""},
      {"ValuePath='HKLM'", false, ""},
      {"KeyPath='HKLX\\Soft'", false, ""},
      {"KeyPath='H\\Soft'", false, ""},
      {"KeyPath='64\\Soft'", false, ""},
      {"KeyPath='*\\Soft'", false, ""},
      {"KeyPath='HKLM\\Soft\\Acme',Levels=101", false, ""},
      {"KeyPath='HKLM\\Soft\\Acme',Timeout=3600001", false, ""},
      {"KeyPath='HKLM\\Soft\\Apex',Timeout=3600000", true, "Apex(Version)"},
      // What is named and may not be read is no empty key; behind a wildcard it is passed over.
      {"KeyPath='HKLM\\Secret'", false, ""},
      {"KeyPath='HKLM\\Soft\\Closed'", false, ""},
      {"KeyPath='HKLM\\Secret\\*'", true, ""},
      {"KeyPath='HKLM\\S*',Levels=1,ValueName='Version'", true,
       "Soft(Acme(Version) Apex(Version) Beta() wild*card() Closed())"},
  };
  for (const FillCase& c : cases) {
    SCOPED_TRACE(c.args);
    auto module = MakeRegistry(Machine(), c.args);
    ASSERT_TRUE(module);
    QueryMessage message;
    EXPECT_EQ(Fill(*module, message), c.isFilled);
    EXPECT_EQ(module->IsInitialized, c.isFilled);
    EXPECT_EQ(ShowKeys(*module), c.tree);
  }
}

TEST(RegistryModule, AMachineWithoutRegistryHasNothing) {
  auto machine = MakeRef<CFakeMachine>(SystemFamily::Linux);
  QueryMessage message;
  EXPECT_TRUE(Fill(*MakeRegistry(machine, "KeyPath='HKLM\\Soft'"), message));
  EXPECT_FALSE(Fill(*MakeRegistry(machine, "KeyPath='HKLX\\Soft'"), message));
}

// Deeper than any stack: a path has as many parts as its writer likes.
TEST(RegistryModule, FindsWhatLiesDeep) {
  auto machine = MakeRef<CFakeMachine>();
  std::string path = "k", pattern = "*";
  for (int i = 0; i < 3000; ++i) {
    path += "\\k";
    pattern += "\\*";
  }
  machine->registry.AddKey(kHklm, path);
  auto module = MakeRegistry(machine, "Timeout=3600000,KeyPath='HKLM\\" + pattern + "'");
  QueryMessage message;
  EXPECT_TRUE(Fill(*module, message));
  EXPECT_EQ(ShowKeys(*module), "k()");
}

TEST(RegistryModule, KeysShowWhatTheyAre) {
  auto machine = Machine();
  auto key = machine->registry.Find(kHklm, "Soft\\Apex");
  key->className = "Shell";
  key->lastWriteTime = {116444736000000000 + 10 * 10000000ull};
  auto module = MakeRegistry(machine, "KeyPath='HKEY_LOCAL_MACHINE\\soft\\Ap*'");
  for (const bool initChild : {true, false}) {
    QueryMessage message;
    ASSERT_TRUE(module->Init(initChild, true, message));
    EXPECT_EQ(Show(*module->Children.Get(0)),
              "Name=Apex Path=HKEY_LOCAL_MACHINE\\soft\\Apex Class=Shell LastWriteTime=10");
  }
}

struct ViewCase {
  const char* word;
  bool isWide;
  uint32_t view;
};

TEST(RegistryModule, TheHiveChoosesTheView) {
  const ViewCase cases[] = {{"HKLM", true, kKeyWow64Key32},
                            {"HKLM64", true, kKeyWow64Key64},
                            {"HKEY_LOCAL_MACHINE64", true, kKeyWow64Key64},
                            {"hklm", false, 0},
                            {"HKLM64", false, 0}};
  for (const ViewCase& c : cases) {
    SCOPED_TRACE(c.word);
    auto machine = MakeRef<CFakeMachine>();
    machine->system.width.isWide = c.isWide;
    machine->registry.AddViewKey(kKeyWow64Key32, kHklm, "S")->values.push_back({.name = "v32"});
    machine->registry.AddViewKey(kKeyWow64Key64, kHklm, "S")->values.push_back({.name = "v64"});
    machine->registry.SetString(kHklm, "S", "all", "");
    auto module = MakeRegistry(machine, "KeyPath='" + std::string(c.word) + "\\?'");
    QueryMessage message;
    ASSERT_TRUE(Fill(*module, message));
    const char* tree = c.view == 0 ? "S(all)" : c.view == kKeyWow64Key32 ? "S(v32)" : "S(v64)";
    EXPECT_EQ(ShowKeys(*module), tree);
  }
}

// The filling fails when its time is over, and says so; what was found by then is there.
TEST(RegistryModule, ATimeOutFails) {
  auto module = MakeRegistry(Machine(), "KeyPath='HKLM\\Soft\\*',Timeout=0");
  QueryMessage message;
  EXPECT_FALSE(Fill(*module, message));
  EXPECT_FALSE(module->IsInitialized);
  EXPECT_EQ(message.SystemError, kErrorTimeout);

  auto machine = Machine();
  auto slow = MakeRegistry(machine, "KeyPath='HKLM\\Soft',Levels=9,Timeout=500");
  uint32_t calls = 0;
  machine->registry.onCall = [&] {
    if (++calls == 6) os::Sleep(510);
  };
  EXPECT_FALSE(Fill(*slow, message));
  EXPECT_EQ(message.SystemError, kErrorTimeout);
  EXPECT_EQ(slow->Children.Count(), 1u);
  // An item that is filled anew has all its time again.
  EXPECT_TRUE(slow->Children.Get(0)->Init(true, true, message));
}

TEST(RegistryModule, ACancelLeavesNothing) {
  auto machine = Machine();
  for (uint32_t n = 1;; ++n) {
    auto event = MakeRef<os::CEvent>();
    uint32_t calls = 0;
    machine->registry.onCall = [&] {
      if (++calls == n) event->Set();
    };
    auto module = MakeRegistry(machine, "KeyPath='HKLM\\S*\\A*',Levels=9");
    QueryMessage message(event, false);
    const bool isFilled = Fill(*module, message);
    if (calls < n) {
      EXPECT_TRUE(isFilled);
      EXPECT_GT(n, 20u);
      break;
    }
    EXPECT_FALSE(isFilled) << n;
    EXPECT_EQ(message.SystemError, kErrorCancelled);
    EXPECT_EQ(module->Children.Count(), 0u);
    EXPECT_FALSE(module->IsInitialized);
  }
}

// Whichever call fails: what is shown is right, or the filling says that it is not whole.
// Whether a tree shows nothing but names of another, in its order.
bool IsPartOf(std::string tree, const std::string& whole) {
  for (char& c : tree) c = c == '(' || c == ')' ? ' ' : c;
  size_t at = 0;
  for (const std::string& name : Split(tree, ' ')) {
    if (name == "?") continue;  // one that shows no name, since it could not be read
    at = whole.find(name, at);
    if (at == std::string::npos) return false;
    at += name.size();
  }
  return true;
}

TEST(RegistryModule, FailuresAreNoContent) {
  const std::string args = "KeyPath='HKLM\\Soft\\A*',Levels=9,ValueName='?*'";
  const std::string whole = "Acme(Version Deep(Deeper(n))) Apex(Version)";
  auto machine = MakeRef<CFailingMachine>(Machine());
  for (const SystemError error : {kErrorNotEnoughMemory, kErrorAccessDenied, kErrorFileNotFound}) {
    for (uint32_t n = 1;; ++n) {
      SCOPED_TRACE(std::to_string(error) + " at " + std::to_string(n));
      machine->FailCall(n, error);
      auto module = MakeRegistry(machine, args);
      QueryMessage message;
      const bool isFilled = Fill(*module, message);
      if (!machine->HasFailed()) break;
      if (error == kErrorNotEnoughMemory && isFilled) {
        // Only what a key shows beside its values can be left out.
        EXPECT_EQ(ShowKeys(*module), whole);
      } else if (!isFilled) {
        EXPECT_EQ(message.SystemError, error);
      }
      EXPECT_TRUE(IsPartOf(ShowKeys(*module), whole)) << ShowKeys(*module);
      machine->FailCall(0, 0);
      QueryMessage again;
      EXPECT_TRUE(module->Init(true, true, again));
      EXPECT_EQ(ShowKeys(*module), whole);
    }
  }
}

}  // namespace
}  // namespace kestra
