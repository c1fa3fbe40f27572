// Filling the module IniFile.
#include <gtest/gtest.h>

#include "Modules/IniFile/IniItems.h"
#include "VLib/src/data/CfgLayers.h"
#include "tests/Modules/IniFile/IniFixture.h"
#include "tests/support/FailingMachine.h"

namespace kestra::test {
namespace {

std::string Filled(const Ref<CMachine>& machine, const std::string& args) {
  const Ref<CIniFileModule> module = MakeIni(machine, args);
  if (!module) return "arguments";
  QueryMessage message;
  CVDiagItem& item = *module;
  const bool isFilled = item.Init(true, false, message);
  EXPECT_EQ(isFilled, item.IsInitialized);
  return isFilled ? ShowIni(item) : ShowOutcome(false, message);
}

std::string Scrambled(const std::string& text, uint32_t key) {
  std::string bytes;
  CTerminationLook never(nullptr);
  EXPECT_TRUE(EncodeCfgLayers(text, key, true, never, bytes));
  return bytes;
}

std::string Repeated(const std::string& text, size_t times) {
  std::string out;
  for (; times > 0; --times) out += text;
  return out;
}

TEST(IniFileModule, ContentByArguments) {
  const auto machine = MakeRef<CFakeMachine>(SystemFamily::Linux);
  CFakeFileSystem& files = machine->files;
  files.Add("/d/x.ini", {.content = "top=1\n[a]\nx=12\ny=\"q\"\n[a]\nz=\n[B\\c]\n"});
  files.Add("/d/x.cfg", {.content = "[a]\nx=1\n[b]\ny=2\n[c]\nz=3\n[]\n[]\n[d]\nw=4\n[]\n[]\n"});
  files.Add("/d/mark.ini", {.content = "\xEF\xBB\xBF[a]\nx=1\n"});
  files.Add("/d/wide.ini", {.content = std::string("\xFF\xFE[\0", 4)});
  files.Add("/d/empty.ini", {});
  files.Add("/d/layers", {.content = Scrambled("[a]\nx=1\n" + std::string(200, '\n'), 77)});
  files.Add("/d/link", {.kind = FileKind::Link, .linkTarget = "/d/mark.ini"});
  files.Add("/d/loose", {.kind = FileKind::Link});
  files.Add("/d/pipe", {.kind = FileKind::Other});
  files.Add("/d/locked", {.error = kErrorAccessDenied});
  files.Add("/d/huge", {.size = uint64_t{1} << 40});
  files.Add("/d/many", {.content = Repeated("=\n", kCfgMostEntries + 1)});
  const std::pair<const char*, const char*> cases[] = {
      {"Path='/d/x.ini'", "top=1#1 [a x=12#12 y=\"q\"] [a z=] [B\\c]"},
      {"Path='\\d\\x.ini'", "top=1#1 [a x=12#12 y=\"q\"] [a z=] [B\\c]"},
      {"Path='/d/x.ini',Section='A'", "[a x=12#12 y=\"q\"] [a z=]"},
      {"Path='/d/x.ini',Section='none'", ""},
      {"Path='/d/x.ini',API=1", "[a x=12#12 y=q] [a z=] [B\\c]"},
      {"Path='/d/x.ini',API=1,Section='a',Format='Cfg',ScrambleKey=3", "[a x=12#12 y=q] [a z=]"},
      {"Path='/d/x.cfg',Format='Cfg'", "[a x=1#1 [b y=2#2 [c z=3#3]] [d w=4#4]]"},
      {"Path='/d/x.cfg',Format='Cfg',Section='a\\b'", "[a [b y=2#2 [c]]]"},
      {"Path='/d/mark.ini'", "[a x=1#1]"},
      {"Path='/d/link'", "[a x=1#1]"},
      {"Path='/d/layers',ScrambleKey=77", "[a x=1#1]"},
      {"Path='/d/empty.ini'", ""},
      {"Path='/d/no.ini'", ""},
      {"Path='/no/no.ini'", ""},
      {"Path='/d/loose'", ""},
      {"Path='/d/wide.ini'", "15004 /d/wide.ini error 13"},
      {"Path='/d/pipe'", " error 5"},
      {"Path='/d'", " error 5"},
      {"Path='/d/locked'", " error 5"},
      {"Path='/d/huge'", " error 223"},
      {"Path='/d/many'", " error 223"},
      {"Path='/d/many',Section='a'", " error 223"},
      {"Path='/d/'", " error 123"},
      {"Path=''", " error 123"},
      {"Path='x.ini'", " error 123"},
      {"Path='d/x.ini'", " error 123"},
      {"Path='%nosuch%/x.ini'", " error 123"},
  };
  for (const auto& [args, expected] : cases) EXPECT_EQ(Filled(machine, args), expected) << args;
}

TEST(IniFileModule, PathsOnWindows) {
  const auto machine = MakeRef<CFakeMachine>();
  machine->files.Add("C:\\Windows\\win.ini", {.content = "[fonts]\r\n"});
  machine->system.folders[Folder::Windows] = "C:\\Windows";
  const std::pair<const char*, const char*> cases[] = {
      {"win.ini", "[fonts]"},
      {"%windows%\\WIN.INI", "[fonts]"},
      {"\\Windows\\win.ini", "[fonts]"},
      {"C:/Windows/win.ini", " error 123"},
      {"C:win.ini", " error 123"},
      {"Windows\\win.ini", " error 123"},
      {"C:\\Windows\\", " error 123"},
  };
  for (const auto& [path, expected] : cases)
    EXPECT_EQ(Filled(machine, "Path='" + std::string(path) + "'"), expected) << path;
  const auto module = MakeIni(machine, "Path='win.ini'");
  QueryMessage message;
  static_cast<CVDiagItem&>(*module).Init(true, false, message);
  EXPECT_EQ(module->Params.Find("Path", false)->StringValue, "C:\\Windows\\win.ini");
}

TEST(IniFileModule, Numbers) {
  const std::pair<const char*, const char*> cases[] = {
      {"0", "k=0#0"},
      {"007", "k=007#7"},
      {"4294967294", "k=4294967294#4294967294"},
      {"", "k="},
      {"-1", "k=-1"},
      {"+1", "k=+1"},
      {"1 2", "k=1 2"},
      {"0x10", "k=0x10"},
      {"4294967295", "k=4294967295"},
      {"4294967296", "k=4294967296"},
      {"99999999999999999999", "k=99999999999999999999"},
      {"00000000000000000000012", "k=00000000000000000000012#12"},
  };
  for (const auto& [text, expected] : cases) {
    const auto machine = MakeRef<CFakeMachine>(SystemFamily::Linux);
    machine->files.Add("/x", {.content = "k=" + std::string(text)});
    EXPECT_EQ(Filled(machine, "Path='/x'"), expected);
  }
}

TEST(IniFileModule, EveryCallThatFailsAndEveryCancelLeavesNothing) {
  const auto inner = MakeRef<CFakeMachine>(SystemFamily::Linux);
  inner->files.Add("/x", {.content = "[a]\n" + Repeated("k=some value\n", 100'000)});
  const auto failing = MakeRef<CFailingMachine>(inner);
  uint32_t call = 1;
  for (;; ++call) {
    failing->FailCall(call, kErrorIoDevice);
    const std::string shown = Filled(failing, "Path='/x'");
    if (!failing->HasFailed()) break;
    EXPECT_EQ(shown, " error 1117") << call;
  }
  EXPECT_GT(call, 2u);
  // A file as long as this is looked at while it is read, behind the last call too.
  for (uint32_t n = 1; n < call; ++n) {
    const auto event = MakeRef<os::CEvent>();
    failing->FailCall(n, kErrorSuccess);
    failing->OnFailure([&] { event->Set(); });
    QueryMessage message(event, false);
    const auto module = MakeIni(failing, "Path='/x'");
    CVDiagItem& item = *module;
    EXPECT_FALSE(item.Init(true, false, message)) << n;
    EXPECT_TRUE(failing->HasFailed());
    EXPECT_EQ(message.SystemError, kErrorCancelled);
    EXPECT_EQ(item.Children.Count(), 0u);
    EXPECT_FALSE(item.IsInitialized);
  }
}

// The items of what was read are not made either.
TEST(IniFileModule, ACancelEndsTheMakingOfItems) {
  const auto file =
      MakeRef<CIniFile>(MakeRef<CFakeMachine>(SystemFamily::Linux), "/x", CfgForm{}, true);
  for (const bool hasSections : {false, true}) {
    CfgNode top;
    for (int i = 0; i < 1000; ++i) {
      if (hasSections)
        top.AddSection("s");
      else
        top.SetText(std::to_string(i), "v");
    }
    const auto event = MakeRef<os::CEvent>();
    event->Set();
    QueryMessage message(event, false);
    DiagItems items;
    EXPECT_FALSE(FillFromNode(file, top, true, items, message));
    EXPECT_EQ(items.Count(), 0u);
    EXPECT_EQ(message.SystemError, kErrorCancelled);
  }
}

TEST(IniFileModule, SectionsInSectionsAsDeepAsAFileLikes) {
  const auto machine = MakeRef<CFakeMachine>(SystemFamily::Linux);
  std::string text;
  for (int i = 0; i < 100'000; ++i) text += "[a]\n";
  machine->files.Add("/x", {.content = text});
  const auto module = MakeIni(machine, "Path='/x',Format='Cfg'");
  QueryMessage message;
  EXPECT_TRUE(static_cast<CVDiagItem&>(*module).Init(true, false, message));
  size_t depth = 0;
  for (CVDiagItem* pItem = module.get(); pItem->Children.Count() > 0; ++depth)
    pItem = pItem->Children.Get(0);
  EXPECT_EQ(depth, 100'000u);
}

}  // namespace
}  // namespace kestra::test
