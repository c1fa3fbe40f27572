#include <chrono>
#include <thread>

#include "model/plugins/Plugin.h"
#include "model/root/GetDiagRoot.h"
#include "platform/os/Clock.h"
#include "platform/os/HostEnvironment.h"
#include "tests/model/plugins/PluginFixture.h"

namespace kestra::test {
namespace {

bool Fill(DiagModule& module) {
  QueryMessage message;
  return module.CVDiagItem::Init(true, false, message);
}

std::string CallsOf(DiagModule& module) {
  const DiagParam* pCalls = module.Params.Find("Calls", true);
  return pCalls ? pCalls->GetText() : "none";
}

TEST_F(PluginTest, AddsAndReplacesModules) {
  EXPECT_EQ(Names(*NewRoot()), "Keys Plain Broken Last");
  m_directory.Write("readme.txt", "no library");
  test::WriteWholeFile(PathOf("text"), "no library either");
  std::filesystem::create_directory(PathOf("folder"));
  Install("probe");
  Install("probe_plain");  // a module named "plain"
  const Ref<DiagRoot> root = NewRoot();
  EXPECT_EQ(Names(*root), "Keys plain Broken Last Probe");
  EXPECT_EQ(root->GetModuleClass("PROBE")->Name, "Probe");
  EXPECT_EQ(root->GetDiagModule("Plain", "Limit=3")->FormatArgs("", ","), "Limit=3");
  EXPECT_FALSE(root->GetDiagModule("Probe", "Limit=x"));
  EXPECT_FALSE(root->GetDiagModule("Probe", "NoSuch=1"));
  EXPECT_EQ(root->GetDiagModule("probe", "Limit=7"), root->GetDiagModule("Probe", ""));
  // An empty name changes nothing, another directory everything, and a file is none.
  EXPECT_TRUE(root->SetPluginsDir(""));
  EXPECT_EQ(Names(*root), "Keys plain Broken Last Probe");
  EXPECT_FALSE(root->SetPluginsDir(PathOf("text")));
  EXPECT_EQ(Names(*root), "Keys Plain Broken Last");
  EXPECT_FALSE(root->SetPluginsDir(m_directory / "missing"));
}

TEST_F(PluginTest, RootsOfTheirOwn) {
  Install("probe");
  const auto get = [&](const std::string& directory) {
    return GetDiagRoot("Probe(Limit=3)|Plain", directory, TestModuleTable(), LiveMachine());
  };
  QueryMessage message;
  const Ref<DiagRoot> root = get(m_directory.Path());
  ASSERT_TRUE(root);
  EXPECT_TRUE(static_cast<CVDiagItem&>(*root).Init(true, false, message));
  EXPECT_EQ(CallsOf(static_cast<DiagModule&>(*root->Children.Get(0))),
            "GetModule(Probe,Limit=3,1,1,1) ");
  EXPECT_FALSE(static_cast<CVDiagItem&>(*get("")).Init(true, false, message));
  EXPECT_FALSE(get(m_directory / "missing"));
}

TEST_F(PluginTest, TheYoungerOneWins) {
  const auto origin = [this] {
    const Ref<DiagModule> module = NewRoot()->GetDiagModule("Probe", "");
    EXPECT_TRUE(Fill(*module));
    return module->Params.Find("Origin", true)->GetText();
  };
  Install("probe_old", "b");  // names the modules "Probe" and "Other"
  Install("probe", "c");
  EXPECT_EQ(origin(), "probe_old");  // of one age: the first
  Remove("c");
  Install("probe", "c", 1);
  EXPECT_EQ(origin(), "Probe");
  Install("probe", "a", -1);
  EXPECT_EQ(origin(), "Probe");
  Remove("b");
  Install("probe_old", "b", 2);
  EXPECT_EQ(origin(), "probe_old");
  EXPECT_EQ(Names(*NewRoot()), "Keys Plain Broken Last Probe Other");
}

TEST_F(PluginTest, ModuleLists) {
  Install("probe");
  const auto init = [this](const char* pList) {
    const Ref<DiagRoot> root = NewRoot(pList);
    QueryMessage message;
    std::string names = static_cast<CVDiagItem&>(*root).Init(false, false, message) ? "" : "failed";
    for (size_t i = 0; i < root->Children.Count(); ++i) {
      names += " " + root->Children.Get(i)->GetName();
    }
    return names;
  };
  EXPECT_EQ(init("*"), " Keys Plain Broken Last Probe");
  EXPECT_EQ(init("probe(Limit=2)|*"), " Probe Keys Plain Broken Last");
  Install("faulty_type_null");
  EXPECT_EQ(init("Plain|Faulty|Keys"), "failed Plain");
  // One that nobody asked for by name takes nobody with it.
  EXPECT_EQ(init("*"), " Keys Plain Broken Last Probe");
}

TEST_F(PluginTest, FillsFromItsText) {
  Install("probe");
  const Ref<DiagRoot> root = NewRoot();
  const Ref<DiagModule> module = root->GetDiagModule("Probe", "Limit=5,Place='a,b'");
  ASSERT_TRUE(Fill(*module));
  EXPECT_EQ(DumpOf(*module),
            "<I n=\"Probe\"> <P n=\"Calls\">GetModule(Probe,Limit=5,Place='a,b',1,1,1) </P> "
            "<P n=\"Origin\">Probe</P> <I n=\"Leaf\"> <P n=\"Label\"> kept </P> "
            "<P n=\"Weight\">-294967296</P> <P n=\"Release\">1.2.3</P> <I n=\"Leaf\"> "
            "<P n=\"Label\">inner</P> </I> </I> <I n=\"Leaf\"> <P n=\"Label\">second</P> </I> "
            "</I> ");
  EXPECT_EQ(module->Children.Get(0)->Params.Find("Weight", true)->DWordValue, 4000000000u);
  // Filled anew, it lets the plug-in forget first.
  QueryMessage message;
  ASSERT_TRUE(module->CVDiagItem::Init(true, true, message));
  EXPECT_NE(CallsOf(*module).find("ClearModule(M1) GetModule("), std::string::npos);
}

TEST_F(PluginTest, SendsOperations) {
  Install("probe");
  const Ref<DiagRoot> root = NewRoot();
  const Ref<DiagModule> module = root->GetDiagModule("Probe", "");
  ASSERT_TRUE(Fill(*module));
  QueryMessage message(MakeRef<os::CEvent>(), true);
  CVDiagItem& leaf = *module->Children.Get(0);
  DiagParams params(leaf.Params.Defs());
  params.SetText("Label", "new");
  params.SetNumber("Weight", 4000000000);
  EXPECT_TRUE(leaf.Update(params, message));
  EXPECT_TRUE(leaf.Children.Get(0)->Delete(message));
  EXPECT_TRUE(module->Children.Get(1)->Add("Leaf", params, message));
  EXPECT_TRUE(module->Execute("Reset", nullptr, message));
  ASSERT_TRUE(module->CVDiagItem::Init(true, true, message));
  const std::string calls = CallsOf(*module);
  for (const char* pExpected :
       {"Update(_Op = Change;_Item = M1-0;[_Params];Label = new;Weight = -294967296;[];[_Ops];"
        "_Active = 1;[];)",
        "Update(_Op = Delete;_Item = M1-0-0;[_Ops];_Active = 1;[];)",
        "Update(_NewItemType = Leaf;_Op = Add;_Item = M1-1;[_Params];Label = new;",
        "Update(_Action = Reset;_Op = Action;_Item = M1;[_Params];Hard = 1;[];"}) {
    EXPECT_NE(calls.find(pExpected), std::string::npos) << pExpected << "\n" << calls;
  }
}

TEST_F(PluginTest, TellsTheOutcomeOfAnOperation) {
  Install("probe");
  const Ref<DiagRoot> root = NewRoot();
  const Ref<DiagModule> module = root->GetDiagModule("Probe", "");
  ASSERT_TRUE(Fill(*module));
  CVDiagItem& leaf = *module->Children.Get(0);
  const auto update = [&leaf](const char* pLabel, QueryMessage& message) {
    DiagParams params(leaf.Params.Defs());
    params.SetText("Label", pLabel);
    return leaf.Update(params, message);
  };
  QueryMessage message(MakeRef<os::CEvent>(), true);
  EXPECT_FALSE(update("fail", message));
  EXPECT_EQ(message.MessageId, 11006u);
  EXPECT_EQ(message.Args, (std::vector<std::string>{"Label", "is good"}));
  EXPECT_EQ(message.Source, 0u);  // the source that it names is no module
  EXPECT_EQ(message.SystemError, 5u);
  EXPECT_TRUE(message.Restart);
  for (const char* pLabel : {"silent", "nothing"}) {
    QueryMessage other(MakeRef<os::CEvent>(), true);
    EXPECT_FALSE(update(pLabel, other)) << pLabel;
  }
  for (const char* pLabel : {"two\nlines", " blank", "blank "}) {  // would not come through
    QueryMessage other(MakeRef<os::CEvent>(), true);
    EXPECT_FALSE(update(pLabel, other)) << pLabel;
    EXPECT_EQ(other.SystemError, kErrorInvalidParameter) << pLabel;
  }
  QueryMessage passive;
  EXPECT_FALSE(update("new", passive));
  EXPECT_EQ(passive.MessageId, 11015u);
}

// What each of them comes to: the module is not there, or it fails to fill, or it is good.
TEST_F(PluginTest, FaultyOnesHarmNobody) {
  constexpr struct {
    const char* pLibrary;
    const char* pOutcome;
  } kCases[] = {
      {"faulty_none", "good"},
      {"faulty_mark", "absent"},
      {"faulty_no_names", "absent"},
      {"faulty_names_null", "absent"},
      {"faulty_names_literal", "absent"},
      {"faulty_no_getmodule", "no class"},
      {"faulty_type_null", "no class"},
      {"faulty_type_noise", "no class"},
      {"faulty_type_half", "no class"},
      {"faulty_no_clear", "fails"},
      {"faulty_content_null", "fails"},
      {"faulty_content_literal", "fails"},
      {"faulty_content_noise", "fails"},
      {"faulty_content_unknown", "fails"},
      {"faulty_content_half", "good"},  // the text form has no way to tell
      {"faulty_content_deep", "fails"},
      {"faulty_content_not_whole", "fails"},
      {"faulty_content_argument", "good"},  // an empty text
      {"faulty_type_argument", "fails"},    // a class that declares nothing
      {"throws_names", "absent"},
      {"throws_type", "no class"},
      {"throws_content", "throws"},  // the query catches it
  };
  for (const auto& c : kCases) {
    // OLE cannot tell a literal from a string of its own: whoever frees one is lost on Windows.
    if (os::PathSeparator() == '\\' && std::string_view(c.pLibrary).ends_with("literal")) continue;
    Install(c.pLibrary);
    const Ref<DiagRoot> root = NewRoot();
    const Ref<DiagModule> module = root->GetDiagModule("Faulty", "");
    std::string outcome = NamesItsModule() ? "no class" : "absent";
    try {
      if (module) outcome = Fill(*module) ? "good" : "fails";
    } catch (...) {
      outcome = "throws";
    }
    EXPECT_EQ(outcome, c.pOutcome) << c.pLibrary;
    if (module && outcome == "fails") {
      EXPECT_EQ(module->Children.Count() + module->Params.Count(), 0u) << c.pLibrary;
    }
    EXPECT_TRUE(Names(*root).starts_with("Keys Plain Broken Last")) << c.pLibrary;
    Remove(c.pLibrary);
  }
}

TEST_F(PluginTest, ACancelLeavesASleepingOneBehind) {
  Install("faulty_sleeps");
  const Ref<DiagRoot> root = NewRoot();
  const Ref<DiagModule> module = root->GetDiagModule("Faulty", "");
  ASSERT_TRUE(module);
  const auto event = MakeRef<os::CEvent>();
  QueryMessage message(event, false);
  std::thread canceller([event] {
    os::Sleep(100);
    event->Set();
  });
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(module->CVDiagItem::Init(true, false, message));
  canceller.join();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
  EXPECT_EQ(message.SystemError, kErrorCancelled);
  EXPECT_EQ(module->Params.Count(), 0u);
}

}  // namespace
}  // namespace kestra::test
