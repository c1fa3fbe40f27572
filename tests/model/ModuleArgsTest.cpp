#include <gtest/gtest.h>

#include <string>

#include "tests/model/TestTree.h"

namespace kestra::test {
namespace {

Ref<DiagModule> NewKeys() {
  return NewTestRoot("")->CreateModule("Keys");
}

TEST(ModuleArgs, SetArgs) {
  constexpr struct {
    const char* pText;
    bool accepted;
    const char* pResult;  // the arguments that differ from their defaults afterwards
  } kCases[] = {
      {"", true, ""},
      {"    ", true, ""},
      {"Levels=2", true, "Levels=2"},
      {"lEVELS=2", true, "Levels=2"},
      {"  Levels=2  ", true, "Levels=2"},
      {"Levels=2 , Mask=1", true, "Levels=2,Mask=1"},
      {"Mask=1,Levels=2", true, "Levels=2,Mask=1"},
      {"Levels=0", true, ""},
      {"Levels=1,Levels=2", true, "Levels=2"},
      {"Levels=", false, ""},
      {"Levels", false, ""},
      {"Levels=2x", false, ""},
      {"Levels=x", false, ""},
      {"Levels=0x10", false, ""},
      {"Levels=1;Mask=1", false, ""},
      {"Levels =2", false, ""},
      {"Levels='2'", false, ""},
      {"=2", false, ""},
      {"NoSuch=2", false, ""},
      {"Levels=2,", false, "Levels=2"},
      {",Levels=2", false, ""},
      {"Levels=2,KeyPath=x", false, "Levels=2"},
      {"Levels=2,KeyPath=x,Mask=1", false, "Levels=2"},
      {"KeyPath='x'", true, "KeyPath='x'"},
      {"KeyPath=''", true, ""},
      {"KeyPath='a''b'", true, "KeyPath='a'b'"},
      {"KeyPath=''''", true, "KeyPath='''"},
      {"KeyPath='a=b'", true, "KeyPath='a=b'"},
      {"KeyPath='a,b',Levels=1", true, "Levels=1,KeyPath='a,b'"},
      {"KeyPath=' a '", true, "KeyPath=' a '"},
      {"KeyPath=5", false, ""},
      {"KeyPath=x'a'", false, ""},
      {"KeyPath='a'x", false, ""},
      // A quote that is not closed leaves nothing to apply.
      {"KeyPath='a", true, ""},
      {"Levels=1,KeyPath='a", true, ""},
      {"Levels=x,'", true, ""},
      {"Format='cfg'", true, "Format=0"},
      {"Format=0", true, "Format=0"},
      {"Format='Ini'", true, ""},
      {"Format=2", false, ""},
      {"Format='x'", false, ""},
      {"Format=''", false, ""},
      {"Mask='One|three'", true, "Mask=5"},
      {"Mask='One|x'", false, ""},
      {"Mask=8", false, ""},
      {"Mask=0", true, "Mask=0"},
      {"Compress=4294967295", true, ""},
      {"Compress=4294967294", true, "Compress=4294967294"},
      {"Compress=4294967296", false, ""},
      {"Compress=04294967295", false, ""},
      {"Compress=99999999999999999999", false, ""},
      {"Compress=-1", false, ""},
      {"Least='1.2'", true, "Least='1.2'"},
      {"Least=1", false, ""},
  };
  for (const auto& c : kCases) {
    const Ref<DiagModule> module = NewKeys();
    EXPECT_EQ(module->SetArgs(c.pText), c.accepted) << c.pText;
    EXPECT_EQ(module->FormatArgs("", ","), c.pResult) << c.pText;
  }
}

// What FormatArgs writes makes the same module again, as long as no text holds a quote.
TEST(ModuleArgs, FormatArgs) {
  const Ref<DiagModule> module = NewKeys();
  EXPECT_EQ(module->FormatArgs("-", " "), "");
  ASSERT_TRUE(module->SetArgs("Mask='Two',KeyPath='x y',Compress=1,Format=0,Levels=7,Least='1.0'"));
  EXPECT_EQ(module->FormatArgs("-", " "),
            "-Levels=7 -KeyPath='x y' -Format=0 -Mask=2 -Compress=1 -Least='1.0'");
  EXPECT_EQ(module->FormatArgs("", ""), "Levels=7KeyPath='x y'Format=0Mask=2Compress=1Least='1.0'");
  const Ref<DiagModule> other = NewKeys();
  ASSERT_TRUE(other->SetArgs(module->FormatArgs("", ",")));
  EXPECT_TRUE(other->SameArgs(*module->Args, true));
}

TEST(ModuleArgs, AreThisModulesOwn) {
  const Ref<DiagModule> module = NewKeys();
  ASSERT_TRUE(module->SetArgs("Levels=5,KeyPath='x'"));
  EXPECT_EQ(kKeysClass.Get()->Args->Find("Levels", false)->DWordValue, 0u);
  EXPECT_EQ(NewKeys()->FormatArgs("", ","), "");
  uint32_t number = 77;
  std::string text = "old";
  EXPECT_TRUE(module->GetArg("levels", number));
  EXPECT_EQ(number, 5u);
  EXPECT_TRUE(module->GetArg("KeyPath", text));
  EXPECT_EQ(text, "x");
  EXPECT_TRUE(module->GetArg("Format", text));
  EXPECT_EQ(text, "Ini") << "an enumeration reads as its option";
  EXPECT_TRUE(module->GetArg("Mask", number));
  EXPECT_EQ(number, 7u);
  EXPECT_FALSE(module->GetArg("NoSuch", number));
  EXPECT_FALSE(module->GetArg("NoSuch", text));
}

TEST(ModuleArgs, SameArgs) {
  constexpr struct {
    const char* pOwn;
    const char* pOther;  // only what it names
    bool withDefaults, without;
  } kCases[] = {
      {"", "", true, true},
      {"Levels=1", "", false, true},
      {"Levels=1", "Levels=1", true, true},
      {"Levels=1", "Levels=0", false, false},
      {"Levels=1,Mask=1", "Levels=1", false, true},
      {"", "Levels=0,Format='Ini',Mask='One|Two|Three'", true, true},
      {"", "Levels=2", false, false},
      {"KeyPath='a'", "KeyPath='A'", false, false},
      {"Levels=1,KeyPath='a'", "KeyPath='a',Levels=1", true, true},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.pOwn + std::string(" and ") + c.pOther);
    const Ref<DiagModule> module = NewKeys();
    ASSERT_TRUE(module->SetArgs(c.pOwn));
    DiagParams other(module->Args->Defs());
    ASSERT_TRUE(SetArgsFromText(other, c.pOther));
    EXPECT_EQ(module->SameArgs(other, true), c.withDefaults);
    EXPECT_EQ(module->SameArgs(other, false), c.without);
  }
  EXPECT_FALSE(NewKeys()->SameArgs(DiagParams(), true)) << "no declarations";
  const Ref<DiagModule> plain = NewTestRoot("")->CreateModule("Plain");
  EXPECT_FALSE(NewKeys()->SameArgs(*plain->Args, false)) << "other declarations";
  EXPECT_TRUE(plain->SameArgs(*plain->GetDefaultArgs(), true)) << "also without any arguments";
}

TEST(ModuleArgs, CopyArgs) {
  const Ref<DiagModule> from = NewKeys(), to = NewKeys();
  ASSERT_TRUE(from->SetArgs("Levels=3,KeyPath='p'"));
  EXPECT_TRUE(to->CopyArgs(*from->Args));
  EXPECT_EQ(to->FormatArgs("", ","), "Levels=3,KeyPath='p'");
  EXPECT_TRUE(to->CopyArgs(DiagParams()));
  EXPECT_EQ(to->FormatArgs("", ","), "Levels=3,KeyPath='p'");
  ASSERT_TRUE(from->SetArgs("Levels=4"));
  EXPECT_EQ(to->FormatArgs("", ","), "Levels=3,KeyPath='p'") << "records of its own";

  auto defs = MakeRef<DiagParamDefs>();
  defs->Add("Levels", ParamType::Dword, nullptr, false);
  defs->Add("NoSuch", ParamType::Dword, nullptr, false);
  DiagParams foreign{Ref<const DiagParamDefs>(defs)};
  foreign.SetNumber("Levels", 9);
  foreign.SetNumber("NoSuch", 9);
  EXPECT_FALSE(to->CopyArgs(foreign));
  EXPECT_EQ(to->FormatArgs("", ","), "Levels=9,KeyPath='p'");
}

TEST(ModuleArgs, OfAModuleWithoutAny) {
  const Ref<DiagModule> plain = NewTestRoot("")->CreateModule("Plain");
  EXPECT_TRUE(plain->HasArgs());
  EXPECT_TRUE(plain->SetArgs(" "));
  EXPECT_FALSE(plain->SetArgs("A=1"));
  EXPECT_EQ(plain->FormatArgs("", ","), "");
}

}  // namespace
}  // namespace kestra::test
