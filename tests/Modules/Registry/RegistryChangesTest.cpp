// Making, changing and removing keys and values over a registry in memory: the limits of names, the
// fault harness and cancels. The refusals stand with the queries that meet them.
#include <gtest/gtest.h>

#include "Modules/Registry/RegistryChanges.h"
#include "tests/Modules/Registry/RegistryFixture.h"
#include "tests/support/FailingMachine.h"

namespace kestra {
namespace {

using namespace test;

QueryMessage Active(Ref<os::CEvent> event = {}) {
  return {std::move(event), true};
}

DiagParams Named(const ClassDecl& decl, const std::string& name) {
  DiagParams params{Ref<const DiagParamDefs>(decl.Get()->Params)};
  params.SetText("Name", name);
  return params;
}

struct NameCase {
  const char* what;
  std::string parent;
  std::string name;
  uint32_t osKind;
  SystemError error;
};

TEST(RegistryChanges, LimitsOfKeyNames) {
  std::string deep = "a", deeper = "a\\a";
  for (int i = 1; i < 32; ++i) {
    deep += "\\a";
    deeper += "\\a";
  }
  std::string umlauts;  // two bytes each
  for (int i = 0; i < 200; ++i) umlauts += "\xC3\xBC";
  const NameCase cases[] = {
      {"a name", "K", "n", 9, 0},
      {"as long as it may be", "K", std::string(248, 'n'), 9, 0},
      {"with its parent too long", "K", std::string(249, 'n'), 9, kErrorFilenameExceedsRange},
      {"too long", "", std::string(256, 'n'), 9, kErrorFilenameExceedsRange},
      {"counted in characters", "K", umlauts, 9, 0},
      {"a path", "K", "n\\m", 9, 0},
      {"32 levels", "K", deep, 11, 0},
      {"33 levels", "K", deeper, 11, kErrorFilenameExceedsRange},
      {"33 levels elsewhere", "K", deeper, 9, 0},
      {"an empty part", "K", "n\\\\m", 9, kErrorInvalidName},
      {"one in front", "K", "\\m", 9, kErrorInvalidName},
      {"one at the end", "K", "m\\", 9, kErrorInvalidName},
      {"a NUL", "K", std::string("m\0", 2), 9, kErrorInvalidName},
      {"no parent", "No", "n", 9, kErrorFileNotFound},
  };
  for (const NameCase& c : cases) {
    SCOPED_TRACE(c.what);
    auto machine = MakeRef<CFakeMachine>();
    machine->system.windows = VersionOfKind(c.osKind);
    machine->registry.AddKey(kHklm, "K");
    QueryMessage message = Active();
    const RegistryHive hive{kHklm, 0, "HKLM"};
    EXPECT_EQ(AddRegistryKey(*machine, hive, c.parent, Named(kRegistryKeyClass, c.name), message),
              c.error == 0);
    EXPECT_EQ(message.SystemError, c.error);
    const std::string path = c.parent.empty() ? c.name : c.parent + "\\" + c.name;
    EXPECT_EQ(machine->registry.Find(kHklm, path) != nullptr, c.error == 0);
  }
}

TEST(RegistryChanges, LimitsOfValueNames) {
  for (const size_t length : {0u, 255u, 256u}) {
    auto machine = MakeRef<CFakeMachine>();
    machine->registry.AddKey(kHklm, "K");
    RegistryOptions options;
    options.hive = {kHklm, 0, "HKLM"};
    const std::string name(length, 'n');
    DiagParams params = Named(kRegistryValueClass, name);
    params.SetNumber("Type", kRegSz);
    params.SetText("StringValue", "x");
    QueryMessage message = Active();
    EXPECT_EQ(AddRegistryValue(*machine, options, "K", params, message), length < 256);
    EXPECT_EQ(message.SystemError, length < 256 ? 0 : kErrorFilenameExceedsRange);
    EXPECT_EQ(machine->registry.Find(kHklm, "K")->FindValue(name) != nullptr, length < 256);
  }
}

// A tree with a shared part and one that the 32-bit view has for itself.
Ref<CFakeMachine> TreeMachine() {
  auto machine = MakeRef<CFakeMachine>();
  machine->system.width.isWide = true;
  machine->registry.AddKey(kHklm, "Top\\A\\B");
  machine->registry.SetString(kHklm, "Top\\A\\C", "v", "x");
  machine->registry.AddKey(kHklm, "Top\\D");
  machine->registry.AddViewKey(kKeyWow64Key32, kHklm, "Top");
  machine->registry.AddViewKey(kKeyWow64Key32, kHklm, "Top\\In32");
  machine->registry.AddKey(kHklm, "Other");
  return machine;
}

constexpr const char* kPaths[] = {"Top", "Top\\A", "Top\\A\\B", "Top\\A\\C", "Top\\D"};

size_t CountKeys(CFakeMachine& machine) {
  size_t count = 0;
  for (const char* pPath : kPaths) count += machine.registry.Find(kHklm, pPath) != nullptr;
  return count;
}

bool DeleteTop(const Ref<CMachine>& machine, const char* pArgs, QueryMessage& message) {
  auto module = MakeRegistry(machine, pArgs);
  QueryMessage filling;
  EXPECT_TRUE(Fill(*module, filling));
  return module->Children.Get(0)->Delete(message);
}

TEST(RegistryChanges, DeletesWhatTheViewShows) {
  auto machine = TreeMachine();
  QueryMessage message = Active();
  EXPECT_TRUE(DeleteTop(machine, "KeyPath='HKLM\\Top'", message));
  EXPECT_EQ(machine->registry.Find(kHklm, "Top\\In32", kKeyWow64Key32), nullptr);
  EXPECT_EQ(CountKeys(*machine), 5u);
  EXPECT_TRUE(DeleteTop(machine, "KeyPath='HKLM64\\Top'", message));
  EXPECT_EQ(CountKeys(*machine), 0u);
  EXPECT_TRUE(machine->registry.Find(kHklm, "Other"));
}

// What a link leads to belongs to another tree: below the key that goes, in its place, and above
// it.
TEST(RegistryChanges, DeletesALinkAndNotWhatItLeadsTo) {
  const struct {
    const char* path;
    std::vector<const char*> gone, left;
  } cases[] = {
      {"Top", {"Top", "Top\\Link"}, {"Other\\In\\Deep", "Link"}},
      {"Link", {"Link"}, {"Other\\In\\Deep", "Top\\Link"}},
      {"Link\\In", {"Other\\In"}, {"Other", "Link", "Top\\Link"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.path);
    auto machine = MakeRef<CFakeMachine>();
    machine->registry.AddKey(kHklm, "Other\\In\\Deep");
    machine->registry.AddKey(kHklm, "Top\\Plain");
    machine->registry.AddLink(kHklm, "Top\\Link", "Other");
    machine->registry.AddLink(kHklm, "Link", "Other");
    QueryMessage message = Active();
    const std::string args = "KeyPath='HKLM\\" + std::string(c.path) + "'";
    EXPECT_TRUE(DeleteTop(machine, args.c_str(), message));
    for (const char* pPath : c.gone) EXPECT_FALSE(machine->registry.Find(kHklm, pPath)) << pPath;
    for (const char* pPath : c.left) EXPECT_TRUE(machine->registry.Find(kHklm, pPath)) << pPath;
  }
}

TEST(RegistryChanges, AHiveIsNeverDeleted) {
  auto machine = TreeMachine();
  QueryMessage message = Active();
  EXPECT_FALSE(DeleteTop(machine, "KeyPath='HKLM64'", message));
  EXPECT_EQ(message.SystemError, kErrorAccessDenied);
  EXPECT_EQ(CountKeys(*machine), 5u);
}

TEST(RegistryChanges, DeletesADeepTree) {
  auto machine = MakeRef<CFakeMachine>();
  std::string path = "Top";
  for (int i = 0; i < 2000; ++i) path += "\\k";
  machine->registry.AddKey(kHklm, path);
  QueryMessage message = Active();
  EXPECT_TRUE(DeleteTop(machine, "KeyPath='HKLM\\Top'", message));
  EXPECT_EQ(machine->registry.Find(kHklm, "Top"), nullptr);
}

// From the bottom: a key that is left has all the keys above it.
TEST(RegistryChanges, ADeleteThatFailsLeavesTheRest) {
  for (uint32_t n = 1;; ++n) {
    SCOPED_TRACE(n);
    auto inner = TreeMachine();
    auto machine = MakeRef<CFailingMachine>(inner);
    auto module = MakeRegistry(machine, "KeyPath='HKLM64\\Top'");
    QueryMessage message = Active();
    ASSERT_TRUE(Fill(*module, message));
    machine->FailCall(n, kErrorGenFailure);
    const bool isDone = module->Children.Get(0)->Delete(message);
    EXPECT_EQ(isDone, !machine->HasFailed());
    if (isDone) {
      EXPECT_EQ(CountKeys(*inner), 0u);
      break;
    }
    EXPECT_EQ(message.SystemError, kErrorGenFailure);
    EXPECT_TRUE(inner->registry.Find(kHklm, "Top"));
    machine->FailCall(0, 0);
    EXPECT_TRUE(module->Children.Get(0)->Delete(message));
    EXPECT_EQ(CountKeys(*inner), 0u);
  }
}

TEST(RegistryChanges, ACancelEndsADelete) {
  for (uint32_t n = 1;; ++n) {
    SCOPED_TRACE(n);
    auto machine = TreeMachine();
    auto module = MakeRegistry(machine, "KeyPath='HKLM64\\Top'");
    auto event = MakeRef<os::CEvent>();
    QueryMessage message = Active(event);
    ASSERT_TRUE(Fill(*module, message));
    uint32_t calls = 0;
    machine->registry.onCall = [&] {
      if (++calls == n) event->Set();
    };
    const bool isDone = module->Children.Get(0)->Delete(message);
    if (calls < n) {
      EXPECT_TRUE(isDone);
      break;
    }
    EXPECT_LE(calls, n + 1);  // a key that was just opened is listed no further
    if (isDone) continue;     // it came with the last call
    EXPECT_EQ(message.SystemError, kErrorCancelled);
    EXPECT_TRUE(machine->registry.Find(kHklm, "Top"));
  }
}

// Writing is one call: it fails with the value as it was.
TEST(RegistryChanges, AnUpdateThatFailsChangesNothing) {
  uint32_t n = 1;
  for (;; ++n) {
    auto inner = MakeRef<CFakeMachine>();
    inner->registry.SetString(kHklm, "K", "v", "old");
    auto machine = MakeRef<CFailingMachine>(inner);
    auto module = MakeRegistry(machine, "ValuePath='HKLM\\K\\v'");
    QueryMessage message = Active();
    ASSERT_TRUE(Fill(*module, message));
    DiagParams params{Ref<const DiagParamDefs>(kRegistryValueClass.Get()->Params)};
    params.SetText("StringValue", "new");
    machine->FailCall(n, kErrorGenFailure);
    const bool isDone = module->Children.Get(0)->Children.Get(0)->Update(params, message);
    EXPECT_EQ(isDone, !machine->HasFailed());
    const std::string data = inner->registry.Find(kHklm, "K")->FindValue("v")->data;
    EXPECT_EQ(data, isDone ? std::string("new\0", 4) : std::string("old\0", 4));
    if (isDone) break;
    EXPECT_EQ(message.SystemError, kErrorGenFailure);
  }
  EXPECT_EQ(n, 5u);  // the hive, the key, the look at the value, the writing
}

// Adding looks whether the value is there: a look that fails is no "no".
TEST(RegistryChanges, AnAddThatFailsAddsNothing) {
  for (const bool isKey : {true, false}) {
    for (uint32_t n = 1;; ++n) {
      auto inner = MakeRef<CFakeMachine>();
      inner->registry.AddKey(kHklm, "K");
      auto machine = MakeRef<CFailingMachine>(inner);
      auto module = MakeRegistry(machine, "KeyPath='HKLM\\K'");
      QueryMessage message = Active();
      ASSERT_TRUE(Fill(*module, message));
      const ClassDecl& decl = isKey ? kRegistryKeyClass : kRegistryValueClass;
      DiagParams params = Named(decl, "n");
      if (!isKey) {
        params.SetNumber("Type", kRegDword);
        params.SetNumber("DWORDValue", 7);
      }
      machine->FailCall(n, kErrorGenFailure);
      const bool isDone = module->Children.Get(0)->Add(decl.name, params, message);
      EXPECT_EQ(isDone, !machine->HasFailed());
      const auto key = inner->registry.Find(kHklm, "K");
      EXPECT_EQ(isKey ? key->subKeys.size() : key->values.size(), isDone ? 1u : 0u);
      if (isDone) break;
      EXPECT_EQ(message.SystemError, kErrorGenFailure);
    }
  }
}

// What vanished meanwhile: a value is not made anew, and a key that is gone is as good as deleted.
TEST(RegistryChanges, OfWhatIsGone) {
  auto machine = MakeRef<CFakeMachine>();
  machine->registry.SetString(kHklm, "K\\Sub", "v", "old");
  auto module = MakeRegistry(machine, "KeyPath='HKLM\\K',Levels=1");
  QueryMessage message = Active();
  ASSERT_TRUE(Fill(*module, message));
  const Ref<CVDiagItem> sub(module->Children.Get(0)->Children.Get(0));
  const Ref<CVDiagItem> value(sub->Children.Get(0));
  DiagParams params{Ref<const DiagParamDefs>(kRegistryValueClass.Get()->Params)};
  params.SetText("StringValue", "new");
  machine->registry.Find(kHklm, "K\\Sub")->values.clear();
  EXPECT_FALSE(value->Update(params, message));
  EXPECT_EQ(message.SystemError, kErrorFileNotFound);
  EXPECT_FALSE(value->Delete(message));
  EXPECT_EQ(machine->registry.Find(kHklm, "K\\Sub")->FindValue("v"), nullptr);
  EXPECT_TRUE(module->Children.Get(0)->Delete(message));
  EXPECT_TRUE(sub->Delete(message));
}

}  // namespace
}  // namespace kestra
