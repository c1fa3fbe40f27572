#include <gtest/gtest.h>

#include <string>

#include "tests/model/TestTree.h"

namespace kestra::test {
namespace {

// The modules under the root: "Keys(Levels=1) Plain".
std::string ModulesOf(DiagRoot& root) {
  std::string text;
  for (size_t i = 0; i < root.Children.Count(); ++i) {
    auto& module = static_cast<DiagModule&>(*root.Children.Get(i));
    const std::string args = module.FormatArgs("", ",");
    text += (i ? " " : "") + module.GetName() + (args.empty() ? "" : "(" + args + ")");
  }
  return text;
}

bool InitRoot(DiagRoot& root, bool bInitChild = false) {
  QueryMessage message;
  return static_cast<CVDiagItem&>(root).Init(bInitChild, false, message);
}

TEST(ModuleList, MakesModules) {
  constexpr struct {
    const char* pList;
    bool result;
    const char* pModules;
  } kCases[] = {
      {"", true, ""},
      {"*", true, "Keys Plain Broken Last"},
      {"plain", true, "Plain"},
      {" Plain | Keys ", true, "Plain Keys"},
      {"Plain|Plain", true, "Plain Plain"},
      {"Plain|*", true, "Plain Keys Broken Last"},
      {"*|Plain", true, "Keys Broken Last Plain"},
      {"Last|*|Keys", true, "Last Plain Broken Keys"},
      {"Keys(KeyPath='c:\\x')#3600*|*", true, "Keys(KeyPath='c:\\x') Plain Broken Last"},
      {"Keys(KeyPath='a|b#c(d)')#5", true, "Keys(KeyPath='a|b#c(d)')"},
      {"Keys(Levels=1,Mask='Two')|Keys(Levels=2)", true, "Keys(Levels=1,Mask=2) Keys(Levels=2)"},
      {"Keys()", true, "Keys"},
      {"Plain#5", true, "Plain"},
      {"Plain#5*", true, "Plain"},
      {"*#60", true, "Keys Plain Broken Last"},
      {"*#*60", true, "Keys Plain Broken Last"},
      {"*##60", true, "Keys Plain Broken Last"},
      // What does not fit. The modules before it stay.
      {"*|*", false, ""},
      {"*#1|Plain|*#2", false, ""},
      {"*#", false, ""},
      {"*#x", false, ""},
      {"*#60*", false, ""},
      {"*#60x", false, ""},
      {"Plain#", false, ""},
      {"Plain#*", false, ""},
      {"Plain#x", false, ""},
      {"Plain#5x", false, ""},
      {"Plain#5**", false, ""},
      {"Plain#5#6", false, ""},
      {"Keys(Levels=1", false, ""},
      {"Keys(Levels=1)x", false, ""},
      {"NoSuch", false, ""},
      {"Plain|NoSuch|Keys", false, "Plain"},
      {"Plain||Keys", false, "Plain"},
      {"Plain|Keys(Levels=x)|Last", false, "Plain"},
      {"Plain|Keys(NoSuch=1)", false, "Plain"},
      {"Plain|Plain(Levels=1)", false, "Plain"},
  };
  for (const auto& c : kCases) {
    const Ref<DiagRoot> root = NewTestRoot(c.pList);
    EXPECT_EQ(InitRoot(*root), c.result) << c.pList;
    EXPECT_EQ(ModulesOf(*root), c.pModules) << c.pList;
    EXPECT_EQ(root->IsInitialized, c.result) << c.pList;
  }
}

TEST(ModuleList, FillsTheModulesAndGoesOnAfterOneThatFails) {
  const Ref<DiagRoot> root = NewTestRoot("Plain|Broken|Last");
  EXPECT_FALSE(InitRoot(*root, true));
  EXPECT_TRUE(root->IsInitialized);
  EXPECT_EQ(ModulesOf(*root), "Plain Broken Last");
  EXPECT_TRUE(root->Children.Get(0)->IsInitialized);
  EXPECT_FALSE(root->Children.Get(1)->IsInitialized);
  EXPECT_TRUE(root->Children.Get(2)->IsInitialized) << "not built, but nothing to show is success";
  EXPECT_TRUE(InitRoot(*NewTestRoot("Plain|Last"), true));
}

TEST(ModuleList, IsNotReadByACancelledQuery) {
  const Ref<DiagRoot> root = NewTestRoot("*");
  const auto event = MakeRef<os::CEvent>();
  event->Set();
  QueryMessage message(event, false);
  EXPECT_FALSE(static_cast<CVDiagItem&>(*root).Init(false, false, message));
  EXPECT_EQ(message.SystemError, kErrorCancelled);
  EXPECT_EQ(ModulesOf(*root), "");
  EXPECT_TRUE(InitRoot(*root)) << "the next query makes them";
  EXPECT_EQ(ModulesOf(*root), "Keys Plain Broken Last");
}

TEST(Root, HandsOutOneModulePerArguments) {
  const Ref<DiagRoot> root = NewTestRoot("");
  const Ref<DiagModule> first = root->GetDiagModule("Keys", "Levels=1");
  ASSERT_TRUE(first);
  constexpr struct {
    const char* pName;
    const char* pArgs;
    bool isFirst;
  } kCases[] = {
      {"Keys", "Levels=1", true},
      {"kEYS", " levels=1 ", true},
      {"Keys", "Format='ini',Levels=1,KeyPath=''", true},
      {"Keys", "Levels=0,Levels=1", true},
      {"Keys", "Levels=2", false},
      {"Keys", "", false},
      {"Keys", "Levels=1,KeyPath='x'", false},
  };
  for (const auto& c : kCases) {
    const Ref<DiagModule> module = root->GetDiagModule(c.pName, c.pArgs);
    EXPECT_EQ(module == first, c.isFirst) << c.pArgs;
    EXPECT_TRUE(module == root->GetDiagModule(c.pName, c.pArgs)) << c.pArgs;
  }
  EXPECT_EQ(root->Children.Count(), 4u);
  for (const char* pArgs : {"Levels=x", "NoSuch=1", "Levels"}) {
    EXPECT_FALSE(root->GetDiagModule("Keys", pArgs)) << pArgs;
  }
  EXPECT_FALSE(root->GetDiagModule("NoSuch", ""));
  EXPECT_FALSE(root->GetDiagModule("", ""));
  EXPECT_EQ(root->Children.Count(), 4u) << "nothing was added";
}

TEST(Root, FindsModulesOfTheListAndByTypedArguments) {
  const Ref<DiagRoot> root = NewTestRoot("Keys(Levels=3)|Plain");
  const Ref<DiagModule> keys = root->GetDiagModule("Keys", "Levels=3");
  EXPECT_EQ(root->Children.Count(), 2u);
  EXPECT_EQ(keys.get(), root->Children.Get(0));
  EXPECT_EQ(root->GetDiagModule("Plain", "").get(), root->Children.Get(1));
  DiagParams typed(keys->Args->Defs());
  typed.SetNumber("Levels", 3);
  QueryMessage message;
  EXPECT_TRUE(root->GetDiagModule("Keys", typed, message) == keys);
  typed.SetNumber("NoSuch", 1);
  typed.SetText("KeyPath", "x");
  EXPECT_FALSE(root->GetDiagModule("Keys", typed, message) == keys);
  EXPECT_EQ(ModulesOf(*root), "Keys(Levels=3) Plain Keys(Levels=3,KeyPath='x')");
}

TEST(Root, DropsModules) {
  const Ref<DiagRoot> root = NewTestRoot("Keys|Plain");
  const Ref<DiagModule> held = root->GetDiagModule("Keys", "Levels=1");
  root->GetDiagModule("Keys", "Levels=1,Mask=1");
  DiagParams args(held->Args->Defs());
  args.SetNumber("Levels", 1);
  args.SetNumber("Mask", 7);
  EXPECT_EQ(root->DropModules("NoSuch", nullptr), 0u);
  EXPECT_EQ(root->DropModules("kEYs", nullptr), 0u) << "without arguments the name is exact";
  EXPECT_EQ(root->DropModules("kEYs", &args), 1u);
  EXPECT_EQ(ModulesOf(*root), "Keys Plain Keys(Levels=1,Mask=1)");
  EXPECT_EQ(held->FormatArgs("", ","), "Levels=1") << "a holder keeps what was dropped";
  EXPECT_EQ(root->DropModules("Keys", nullptr), 2u);
  EXPECT_EQ(ModulesOf(*root), "Plain");
  EXPECT_EQ(root->DropAll(), 1u);
  EXPECT_EQ(root->DropAll(), 0u);
  EXPECT_FALSE(root->GetDiagModule("Keys", "Levels=1") == held);
}

TEST(Root, HasOneClassTree) {
  const Ref<DiagRoot> root = NewTestRoot("");
  const Ref<DiagClass> tree = root->GetTypeInfo();
  EXPECT_TRUE(tree == root->GetTypeInfo());
  EXPECT_EQ(tree->Name, root->GetName());
  EXPECT_EQ(tree->ChildClasses().size(), 4u);
  EXPECT_EQ(FindClass(tree.get(), "ROOT"), tree.get());
  EXPECT_EQ(FindClass(tree.get(), "pLAIN"), kPlainClass.Get().get());
  EXPECT_EQ(FindClass(tree.get(), "NoSuch"), nullptr);
  EXPECT_EQ(FindClass(nullptr, "Root"), nullptr);
  EXPECT_TRUE(root->GetModuleClass("plain") == kPlainClass.Get());
  EXPECT_FALSE(root->GetModuleClass("Root"));
}

}  // namespace
}  // namespace kestra::test
