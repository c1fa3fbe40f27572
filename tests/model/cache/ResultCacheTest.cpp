#include <gtest/gtest.h>

#include "model/cache/ResultCache.h"
#include "model/dump/Dump.h"
#include "model/root/Root.h"
#include "platform/os/Clock.h"
#include "tests/support/FailingMachine.h"
#include "tests/support/FakeMachine.h"

namespace kestra::test {
namespace {

constexpr ParamDecl kRowParams[] = {
    {.name = "Label", .type = ParamType::String},
    {.name = "Size", .type = ParamType::Dword},
    {.name = "Colour", .type = ParamType::Enum, .text = "red|green"},
    {.name = "Made", .type = ParamType::Datime},
};
constinit ClassDecl kRow{.name = "Row", .params = kRowParams};
constexpr const ClassDecl* kChildren[] = {&kRow};
constexpr ArgDecl kArgs[] = {{.name = "Seed", .type = ParamType::Dword},
                             {.name = "Path", .type = ParamType::String}};
constinit ClassDecl kCounted{.name = "Counted", .children = kChildren, .args = kArgs};

int g_fills = 0;
std::string g_label = "first";
bool g_cancelAfterFill = false;
bool g_cutsShort = false;
bool g_cannotReadAll = false;
Ref<os::CEvent> g_event;

// Tells by what it holds which filling it was.
class CCountedModule : public DiagModule {
 public:
  using CVDiagItem::Init;
  using DiagModule::DiagModule;
  bool Init(bool, QueryMessage& message) override {
    DropContent();
    ++g_fills;
    if (g_cutsShort) message.NoteCutShort();
    if (g_cannotReadAll) {
      message.NoteProblem("a", kErrorAccessDenied);
      message.NoteProblem("b", kErrorAccessDenied, Missing::Properties);
    }
    for (uint32_t i = 0; i < 3; ++i) {
      auto row = MakeRef<CFilledItem>(kRow.Get());
      row->Params.SetText("Label", g_label);
      row->Params.SetNumber("Size", 0xFFFFFFF0u + i);
      row->Params.SetNumber("Colour", i % 2);
      row->Params.SetNumber("Made", 1'000'000'000 + i);
      row->IsInitialized = true;
      Children.Add(std::move(row), false);
    }
    if (g_cancelAfterFill) g_event->Set();
    return IsInitialized = true;
  }
};

const ModuleRow kTable[] = {
    {&kCounted, [](Ref<DiagClass> diagClass, Ref<CMachine> machine) {
       return Ref<DiagModule>(MakeRef<CCountedModule>(std::move(diagClass), std::move(machine)));
     }}};

struct Asked {
  bool result;
  bool fromCache;
  int fills;
  std::string label;
};

class ResultCacheTest : public testing::Test {
 protected:
  void SetUp() override {
    g_fills = 0;
    g_label = "first";
    g_cancelAfterFill = g_cutsShort = g_cannotReadAll = false;
    machine->files.AddDirectory("/var/cache");
    machine->files.now = os::SystemTimeAsFileTime();
  }

  // What a host that starts now gets.
  Asked Ask(const char* pArgs = "", int32_t timeToLive = 60, bool anyUser = false,
            const char* pDirectory = "/var/cache/k", Ref<CMachine> over = nullptr) {
    auto root = MakeRef<DiagRoot>("*", ModuleTable(kTable), over ? over : machine);
    if (pDirectory) root->SetCacheDir(pDirectory);
    const Ref<DiagModule> module = root->GetDiagModule("Counted", pArgs);
    g_event = MakeRef<os::CEvent>();
    QueryMessage message(g_event, false);
    const int before = g_fills;
    const bool result = module->CachedInit(true, false, timeToLive, anyUser, false, *root, message);
    CVDiagItem* pRow = module->Children.Get(1);
    return {result, module->FromCache, g_fills - before,
            pRow ? pRow->Params.Find("Label", true)->GetText() : ""};
  }
  // Filled by the machine, or read back.
  std::string How(const Asked& asked) {
    if (!asked.result) return "failed";
    return (asked.fills ? "filled " : asked.fromCache ? "read " : "nothing ") + asked.label;
  }
  std::string File(const std::string& name) {
    return machine->files.Content("/var/cache/k/" + name);
  }
  void Put(const std::string& name, FakeFile file) {
    file.lastWriteTime = machine->files.now;
    machine->files.Add("/var/cache/k/" + name, std::move(file));
  }

  Ref<CFakeMachine> machine = MakeRef<CFakeMachine>(SystemFamily::Linux);
};

TEST_F(ResultCacheTest, ReadsBackWhatItWrote) {
  EXPECT_EQ(How(Ask()), "filled first");
  g_label = "second";
  auto root = MakeRef<DiagRoot>("*", ModuleTable(kTable), machine);
  ASSERT_TRUE(root->SetCacheDir("/var/cache/k"));
  const Ref<DiagModule> module = root->GetDiagModule("Counted", "");
  QueryMessage message;
  ASSERT_TRUE(module->CachedInit(true, false, 60, false, false, *root, message));
  EXPECT_EQ(module->GetFillSource(), 2);
  EXPECT_EQ(module->Children.Get(0)->GetFillSource(), 2);
  std::string dump;
  Dump(*module, dump, message, DumpFormat::XmlRaw);
  EXPECT_EQ(dump.substr(0, dump.find("</I>")),
            "<I n=\"Counted\">\r\n<I n=\"Row\">\r\n<P n=\"Label\">first</P>\r\n"
            "<P n=\"Size\">-16</P>\r\n<P n=\"Colour\">0</P>\r\n<P n=\"Made\">1000000000</P>\r\n");
  EXPECT_EQ(module->Children.Count(), 3u);
  // A second statement takes what stands in memory; an active one wants it from the machine.
  ASSERT_TRUE(module->CachedInit(true, false, 60, false, false, *root, message));
  EXPECT_EQ(g_fills, 1);
  ASSERT_TRUE(module->CachedInit(true, false, 60, false, true, *root, message));
  EXPECT_EQ(g_fills, 2);
  EXPECT_FALSE(module->FromCache);
}

// What a limit ended is an answer, but not one for those who ask later.
TEST_F(ResultCacheTest, KeepsOnlyWhatIsWhole) {
  g_cutsShort = true;
  EXPECT_EQ(How(Ask()), "filled first");
  EXPECT_EQ(How(Ask()), "filled first");
  g_cutsShort = false;
  EXPECT_EQ(How(Ask()), "filled first");
  g_cutsShort = true;
  g_label = "second";
  EXPECT_EQ(How(Ask("", 0)), "filled second");
  EXPECT_EQ(How(Ask()), "read first") << "the older one, which is whole, stays";
}

TEST_F(ResultCacheTest, RemembersWhatCouldNotBeRead) {
  g_cannotReadAll = true;
  Ask();
  g_cannotReadAll = false;
  auto root = MakeRef<DiagRoot>("*", ModuleTable(kTable), machine);
  ASSERT_TRUE(root->SetCacheDir("/var/cache/k"));
  const Ref<DiagModule> module = root->GetDiagModule("Counted", "");
  QueryMessage message;
  ASSERT_TRUE(module->CachedInit(true, false, 60, false, false, *root, message));
  EXPECT_TRUE(module->FromCache);
  EXPECT_EQ(module->ProblemCount, 2u);
  EXPECT_EQ(module->HidingCount, 1u);
  const std::string good = File("Counted_0.cfg");
  std::string changed = good;
  changed[changed.find('2')] = '0';
  Put("Counted_0.cfg", {.content = changed});
  EXPECT_EQ(How(Ask()), "filled first") << "the numbers are part of what is believed";
}

TEST_F(ResultCacheTest, KeepsApartWhatDiffers) {
  Ask();
  g_label = "second";
  EXPECT_EQ(How(Ask("Seed=1")), "filled second");
  EXPECT_EQ(How(Ask("Path='x'")), "filled second");
  EXPECT_EQ(How(Ask("", 60, true)), "filled second");  // shared by all users: another entry
  g_label = "third";
  EXPECT_EQ(How(Ask()), "read first");
  EXPECT_EQ(How(Ask("Seed=0")), "read first");
  EXPECT_EQ(How(Ask("Seed=1")), "read second");
  EXPECT_EQ(How(Ask("", 60, true)), "read second");
  EXPECT_EQ(How(Ask("", -1)), "filled third");
  EXPECT_EQ(How(Ask("", 60, false, "/var/cache/other")), "filled third");
  EXPECT_EQ(How(Ask("", 60, false, nullptr)), "filled third");
}

TEST_F(ResultCacheTest, AgesByTheFilesTime) {
  constexpr uint64_t kSecond = 10'000'000;
  machine->files.now.ticks -= 100 * kSecond;
  Ask();
  g_label = "second";
  EXPECT_EQ(How(Ask("", 1000)), "read first");
  EXPECT_EQ(How(Ask("", 99)), "filled second");
  EXPECT_EQ(How(Ask("", 0)), "filled second");
  EXPECT_EQ(How(Ask("", INT32_MAX)), "read second");
}

// Whatever lies where the entry should be, it is filled anew, and the entry is whole again.
TEST_F(ResultCacheTest, BelievesNoDamagedEntry) {
  Ask();
  const std::string good = File("Counted_0.cfg");
  ASSERT_FALSE(good.empty());
  const size_t head = good.find('\n') + 1;
  std::string noise;
  for (int i = 0; i < 5000; ++i) noise += static_cast<char>(i * 167 + i / 7);
  std::string changed = good;
  changed[changed.find("first")] = 'F';
  const FakeFile kCases[] = {
      {.content = noise},
      {.content = "[Counted]\r\n[]\r\n"},
      {.content = good.substr(head)},
      {.content = good.substr(0, head)},
      {.content = changed},
      {.content = good + "[Counted]\r\n[]\r\n"},
      {.isTrusted = false, .content = good},
      {.kind = FileKind::Link, .linkTarget = "/etc/passwd"},
      {.kind = FileKind::Other},
      {.error = kErrorIoDevice},
      {.error = kErrorAccessDenied},
  };
  int number = 0;
  g_label = "second";
  for (FakeFile file : kCases) {
    Put("Counted_0.cfg", std::move(file));
    EXPECT_EQ(How(Ask()), "filled second") << number;
    machine->files.Remove("/var/cache/k/Counted_0.cfg");
    ++number;
  }
  for (size_t length = 0; length < good.size(); ++length) {
    Put("Counted_0.cfg", {.content = good.substr(0, length)});
    ASSERT_EQ(How(Ask()), "filled second") << length;
  }
  EXPECT_EQ(How(Ask()), "read second");
}

// An index that was lost starts again at the first number, where another key's entry may still lie.
TEST_F(ResultCacheTest, TakesNoEntryOfAnotherKey) {
  Ask();
  const std::string others = File("Counted_0.cfg");
  g_label = "second";
  for (const char* pIndex : {"", "LastFileNumber = -5", "\xFF\xFE", "[Counted_0]\r\nModule = x"}) {
    machine->files.Remove("/var/cache/k/CACHE.CFG");
    if (*pIndex) Put("CACHE.CFG", {.content = pIndex});
    Put("Counted_0.cfg", {.content = others});
    EXPECT_EQ(How(Ask("Seed=1")), "filled second") << pIndex;
    EXPECT_EQ(How(Ask("Seed=1")), "read second") << pIndex;
  }
  // Also when the other one is written after the number was given anew.
  Put("Counted_0.cfg", {.content = others});
  machine->files.Remove("/var/cache/k/CACHE.CFG");
  Ask("Seed=2");
  Put("Counted_0.cfg", {.content = others});
  EXPECT_EQ(How(Ask("Seed=2")), "filled second");
}

TEST_F(ResultCacheTest, WritesNothingThatWouldNotReadBack) {
  for (const char* pLabel : {"two\nlines", " blank", "blank ", "tab\t", "\r", "\v"}) {
    g_label = pLabel;
    EXPECT_EQ(How(Ask()), std::string("filled ") + pLabel);
    EXPECT_EQ(File("Counted_0.cfg"), "") << pLabel;
  }
  g_label = "[Row]=;\"quoted\"\xFF";
  Ask();
  EXPECT_EQ(How(Ask()), "read " + g_label);
  // Nor is an argument kept that would not be found again.
  EXPECT_EQ(How(Ask("Path='a\nb'")), "filled " + g_label);
  EXPECT_EQ(File("CACHE.CFG").find("Counted_1"), std::string::npos);
}

TEST_F(ResultCacheTest, KeepsTheOldEntryWhenCancelled) {
  Ask();
  const std::string before = File("Counted_0.cfg");
  g_label = "second";
  g_cancelAfterFill = true;
  EXPECT_EQ(How(Ask("", 0)), "failed");
  EXPECT_EQ(File("Counted_0.cfg"), before);
}

TEST_F(ResultCacheTest, NamesThatCannotBeDirectories) {
  for (const char* pDirectory : {"", "relative/dir", "C:\\cache", "\\var"}) {
    auto root = MakeRef<DiagRoot>("*", ModuleTable(kTable), machine);
    EXPECT_FALSE(root->SetCacheDir(pDirectory)) << pDirectory;
  }
  // One that can, and cannot be made.
  EXPECT_EQ(How(Ask("", 60, false, "/no/such/place")), "filled first");
}

TEST_F(ResultCacheTest, ForgetsEntries) {
  const auto clear = [&](const char* pName, const char* pArgs) {
    auto root = MakeRef<DiagRoot>("*", ModuleTable(kTable), machine);
    EXPECT_TRUE(root->SetCacheDir("/var/cache/k"));
    const Ref<DiagModule> module = root->GetDiagModule("Counted", pArgs ? pArgs : "");
    QueryMessage message;
    const bool cleared =
        root->Cache()->ClearEntries(pName, pArgs ? module->Args.get() : nullptr, message);
    return cleared ? std::string("cleared") : message.GetText();
  };
  EXPECT_EQ(clear("*", nullptr), "cleared");  // there is nothing
  Ask();
  Ask("Seed=1");
  EXPECT_EQ(clear("counted", nullptr), "cleared");  // in exactly that spelling
  EXPECT_EQ(clear("Counted", "Seed=2"), "cleared");
  EXPECT_NE(File("Counted_1.cfg"), "");
  EXPECT_EQ(clear("Counted", "Seed=1"), "cleared");
  EXPECT_EQ(File("Counted_1.cfg"), "");
  EXPECT_EQ(How(Ask()), "read first");
  Put("Counted_0.cfg", {.error = kErrorWriteProtect});
  EXPECT_NE(clear("Counted", nullptr), "cleared");
  EXPECT_NE(File("CACHE.CFG"), "");
  Put("Counted_0.cfg", {.content = "x"});
  EXPECT_EQ(clear("*", nullptr), "cleared");
  EXPECT_EQ(File("Counted_0.cfg") + File("CACHE.CFG"), "");
  // An index may name files that are none of ours.
  Put("CACHE.CFG", {.content = "[../../etc/passwd]\r\nModule = Counted\r\n[]\r\n"});
  machine->files.Add("/var/etc/passwd.cfg", {.content = "keep"});
  EXPECT_EQ(clear("*", nullptr), "cleared");
  EXPECT_EQ(machine->files.Content("/var/etc/passwd.cfg"), "keep");
}

// Each call of the file facility fails once. The answer is right all the same, and what is kept
// afterwards is right or not there.
TEST_F(ResultCacheTest, SurvivesEveryFault) {
  for (uint32_t n = 1;; ++n) {
    for (const char* pName : {"CACHE.CFG", "Counted_0.cfg", "Counted_1.cfg"}) {
      machine->files.Remove(std::string("/var/cache/k/") + pName);
    }
    g_label = "first";
    Ask();
    g_label = "second";
    const auto failing = MakeRef<CFailingMachine>(machine);
    failing->FailCall(n, kErrorDiskFull, Facility::Files);
    const std::string kept = How(Ask("", 60, false, "/var/cache/k", failing));
    EXPECT_TRUE(kept == "read first" || kept == "filled second") << n << kept;
    EXPECT_EQ(How(Ask("", 0, false, "/var/cache/k", failing)), "filled second") << n;
    EXPECT_EQ(How(Ask("Seed=1", 60, false, "/var/cache/k", failing)), "filled second") << n;
    EXPECT_EQ(Ask("Seed=1").label, "second") << n;
    const std::string after = How(Ask());
    EXPECT_TRUE(after == "read first" || after == "read second" || after == "filled second")
        << n << after;
    if (!failing->HasFailed()) {
      EXPECT_GT(n, 20u);
      break;
    }
  }
}

}  // namespace
}  // namespace kestra::test
