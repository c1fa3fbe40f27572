#include <gtest/gtest.h>

#include <string>

#include "VLib/src/time/Datime.h"
#include "model/items/Param.h"
#include "model/items/QueryMessage.h"
#include "tests/support/ScopedTimeZone.h"

namespace kestra {
namespace {

std::string Options(size_t count) {
  std::string text = "o0";
  for (size_t i = 1; i < count; ++i) text += "|o" + std::to_string(i);
  return text;
}

Ref<DiagParamDef> Def(ParamType type, const char* pText) {
  return MakeRef<DiagParamDef>("Name", type, pText, true);
}

TEST(DiagParamDef, ReadsItsOptions) {
  const struct {
    ParamType type;
    const char* pText;
    size_t options;
    const char* pUnit;
  } cases[] = {
      {ParamType::Enum, "A|||D", 4, ""},     {ParamType::Enum, "", 1, ""},
      {ParamType::Enum, nullptr, 0, ""},     {ParamType::Bitmask, "|", 2, ""},
      {ParamType::Dword, "KB|x", 1, "KB|x"}, {ParamType::Dword, nullptr, 0, ""},
      {ParamType::String, "A|B", 0, ""},     {ParamType::Version, "A|B", 0, ""},
      {ParamType::Datime, "A|B", 0, ""},
  };
  for (const auto& c : cases) {
    const auto def = Def(c.type, c.pText);
    EXPECT_EQ(def->Options.size(), c.options) << def->GetTypeName() << (c.pText ? c.pText : "");
    EXPECT_EQ(def->GetUnit(), c.pUnit);
    EXPECT_EQ(def->GetOptionText(static_cast<uint32_t>(c.options)), "");
    EXPECT_EQ(def->GetOptionText(0xFFFFFFFF), "");
  }
  const auto def = Def(ParamType::Enum, "A||b|B");
  EXPECT_EQ(def->GetOptionIndex("a"), 0u);
  EXPECT_EQ(def->GetOptionIndex("B"), 2u) << "the first that fits";
  EXPECT_EQ(def->GetOptionIndex(""), 1u);
  EXPECT_EQ(def->GetOptionIndex("c"), kNoOption);
}

TEST(DiagParamDef, HasAWordForEachType) {
  for (uint32_t type = 1; type <= 6; ++type) {
    const std::string word = ParamTypeName(static_cast<ParamType>(type));
    EXPECT_EQ(ParamTypeFromName(word), static_cast<ParamType>(type)) << word;
  }
  EXPECT_STREQ(ParamTypeName(ParamType::None), "Unknown");
  EXPECT_STREQ(ParamTypeName(static_cast<ParamType>(7)), "Unknown");
  EXPECT_EQ(ParamTypeFromName("bItMaSk"), ParamType::Bitmask);
  EXPECT_EQ(ParamTypeFromName("Unknown"), ParamType::None);
  EXPECT_EQ(ParamTypeFromName(""), ParamType::None);
}

// A setter's answer, and then the number and the two texts of the record.
struct Outcome {
  bool accepted;
  uint32_t number;
  std::string text;
  std::string stored;
  bool operator==(const Outcome&) const = default;
};
void PrintTo(const Outcome& o, std::ostream* pStream) {
  *pStream << o.accepted << ", " << o.number << ", '" << o.text << "', '" << o.stored << "'";
}

TEST(DiagParam, SetText) {
  const std::string many = Options(33);
  const struct {
    ParamType type;
    const char* pOptions;
    const char* pText;
    Outcome expected;  // the record holds 2 and "old" before
  } cases[] = {
      {ParamType::String, nullptr, "new", {true, 2, "new", "new"}},
      {ParamType::String, nullptr, "", {true, 2, "", ""}},
      {ParamType::Version, nullptr, "not a version", {true, 2, "not a version", "not a version"}},
      {ParamType::Dword, "KB", "5", {false, 2, "old", "old"}},
      {ParamType::Datime, nullptr, "2006-01-01", {false, 2, "1970-01-01 00:00:02", "old"}},
      {ParamType::Enum, "A|B|C", "b", {true, 1, "B", "old"}},
      {ParamType::Enum, "A|B|C", "x", {false, 2, "C", "old"}},
      {ParamType::Enum, "A|B|C", "A|B", {false, 2, "C", "old"}},
      {ParamType::Enum, "A|B|C", " A", {false, 2, "C", "old"}},
      {ParamType::Enum, nullptr, "", {false, 2, "", "old"}},
      {ParamType::Bitmask, "A|||D", "A|D", {true, 9, "A|D", "old"}},
      {ParamType::Bitmask, "A|||D", "d|a|d", {true, 9, "A|D", "old"}},
      {ParamType::Bitmask, "A|||D", "A|X", {false, 2, "", "old"}},
      {ParamType::Bitmask, "A|||D", "", {true, 2, "", "old"}},  // the first empty option
      {ParamType::Bitmask, "A|B", "", {false, 2, "B", "old"}},
      {ParamType::Bitmask, "A|B", "A|", {false, 2, "B", "old"}},
      {ParamType::Bitmask, many.c_str(), "o31", {true, 0x80000000, "o31", "old"}},
      {ParamType::Bitmask, many.c_str(), "o32", {true, 1, "o0", "old"}},  // modulo 32
  };
  const test::CScopedTimeZone zone("UTC");
  for (const auto& c : cases) {
    const auto def = Def(c.type, c.pOptions);
    DiagParam param(def.get(), std::string("old"));
    param.DWordValue = 2;
    const bool accepted = param.SetText(c.pText);
    EXPECT_EQ((Outcome{accepted, param.DWordValue, param.GetText(), param.StringValue}), c.expected)
        << def->GetTypeName() << " " << c.pText;
  }
  EXPECT_FALSE(DiagParam().SetText("a"));
}

TEST(DiagParam, SetNumberAndIsValidAgree) {
  const std::string thirtyOne = Options(31), thirtyTwo = Options(32), forty = Options(40);
  const struct {
    ParamType type;
    const char* pOptions;
    uint32_t number;
    bool accepted;
    bool valid;  // of a record that holds the number anyway
  } cases[] = {
      {ParamType::Dword, nullptr, 0xFFFFFFFF, true, true},
      {ParamType::String, nullptr, 0, false, true},
      {ParamType::Version, nullptr, 0, false, true},
      {ParamType::Datime, nullptr, 0, false, true},
      {ParamType::Enum, "A|B|C", 2, true, true},
      {ParamType::Enum, "A|B|C", 3, false, false},
      {ParamType::Enum, "A|B|C", 0xFFFFFFFF, false, false},
      {ParamType::Enum, nullptr, 0, false, false},
      {ParamType::Bitmask, "A|B|C", 7, true, true},
      {ParamType::Bitmask, "A|B|C", 8, false, false},
      {ParamType::Bitmask, nullptr, 0, true, true},
      {ParamType::Bitmask, nullptr, 1, false, false},
      {ParamType::Bitmask, thirtyOne.c_str(), 0x7FFFFFFF, true, true},
      {ParamType::Bitmask, thirtyOne.c_str(), 0x80000000, false, false},
      {ParamType::Bitmask, thirtyTwo.c_str(), 0xFFFFFFFF, true, true},
      {ParamType::Bitmask, forty.c_str(), 0xFFFFFFFF, true, true},
      {static_cast<ParamType>(7), nullptr, 0, false, false},
      {ParamType::None, nullptr, 0, false, false},
  };
  for (const auto& c : cases) {
    const auto def = Def(c.type, c.pOptions);
    SCOPED_TRACE(def->GetTypeName() + std::string(" ") + std::to_string(c.number));
    DiagParam param(def.get(), 77u);
    EXPECT_EQ(param.SetNumber(c.number), c.accepted);
    EXPECT_EQ(param.DWordValue, c.accepted ? c.number : 77u);
    EXPECT_EQ(DiagParam(def.get(), c.number).IsValid(), c.valid);
  }
  EXPECT_FALSE(DiagParam().SetNumber(0));
  EXPECT_FALSE(DiagParam().IsValid());
}

TEST(DiagParam, TextOfABitmask) {
  const auto three = Def(ParamType::Bitmask, "A||C");
  const std::string forty = Options(40);
  const auto many = Def(ParamType::Bitmask, forty.c_str());
  EXPECT_EQ(DiagParam(three.get(), 0u).GetText(), "");
  EXPECT_EQ(DiagParam(three.get(), 0xFFFFFFF8u).GetText(), "") << "no option for any bit";
  EXPECT_EQ(DiagParam(three.get(), 0xFFFFFFFFu).GetText(), "A||C");
  EXPECT_EQ(DiagParam(three.get(), 2u).GetText(), "");
  EXPECT_EQ(DiagParam(three.get(), 6u).GetText(), "|C");
  EXPECT_EQ(DiagParam(many.get(), 0x80000001u).GetText(), "o0|o31");
}

TEST(DiagParam, ComesFromTimes) {
  const test::CScopedTimeZone zone("XYZ-2");  // two hours east of Greenwich
  const auto def = Def(ParamType::Datime, nullptr);
  SystemTime time;
  time.wYear = 1970;
  time.wMonth = 1;
  time.wDay = 1;
  time.wHour = 3;
  EXPECT_EQ(DiagParam(def.get(), time, false).DWordValue, 10800u);
  EXPECT_EQ(DiagParam(def.get(), time, true).DWordValue, 3600u);
  EXPECT_EQ(DiagParam(def.get(), 3600u).GetText(), "1970-01-01 03:00:00");
  time.wHour = 1;  // still 1969 in Greenwich
  EXPECT_EQ(DiagParam(def.get(), time, true).DWordValue, 0u);
  time.wMonth = 2;
  time.wDay = 30;
  EXPECT_EQ(DiagParam(def.get(), time, false).DWordValue, 0u);
  FileTime fileTime = FileTimeFromDatime(10800);
  EXPECT_EQ(DiagParam(def.get(), fileTime, false).DWordValue, 10800u);
  EXPECT_EQ(DiagParam(def.get(), fileTime, true).DWordValue, 3600u);
  EXPECT_EQ(DiagParam(def.get(), FileTime{}, false).DWordValue, 0u) << "1601";
}

TEST(DiagParam, DiffersInDeclarationNumberOrText) {
  const auto def = Def(ParamType::String, nullptr), same = Def(ParamType::String, nullptr);
  const DiagParam param(def.get(), std::string("a"));
  EXPECT_FALSE(param.Differs(DiagParam(def.get(), std::string("a"))));
  EXPECT_TRUE(param.Differs(DiagParam(def.get(), std::string("A")))) << "exactly";
  EXPECT_TRUE(param.Differs(DiagParam(same.get(), std::string("a")))) << "another declaration";
  DiagParam number(def.get(), std::string("a"));
  number.DWordValue = 1;
  EXPECT_TRUE(param.Differs(number));
}

Ref<DiagParamDefs> Defs() {
  auto defs = MakeRef<DiagParamDefs>();
  defs->Add("Text", ParamType::String, nullptr, true);
  defs->Add("Number", ParamType::Dword, nullptr, true);
  defs->Add("Kind", ParamType::Enum, "A|B", true);
  defs->Add("Time", ParamType::Datime, nullptr, true);
  defs->Add("Release", ParamType::Version, nullptr, true);
  return defs;
}

TEST(DiagParams, AppendsAndFindsTheFirst) {
  DiagParams params{Ref<const DiagParamDefs>(Defs())};
  EXPECT_TRUE(params.SetText("text", "first"));
  EXPECT_TRUE(params.SetText("TEXT", "second"));
  EXPECT_FALSE(params.SetText("Nothing", "x"));
  EXPECT_FALSE(params.SetTextIfAny("Text", ""));
  EXPECT_FALSE(params.SetVersionIfAny("Release", "not a version"));
  EXPECT_TRUE(params.SetVersionIfAny("Release", "1.2"));
  ASSERT_EQ(params.Count(), 3u);
  EXPECT_EQ(params.Find("Text", false)->StringValue, "first");
  EXPECT_EQ(params.Find("tExT", true)->StringValue, "first");
  EXPECT_FALSE(params.Find("tExT", false));
  EXPECT_FALSE(params.Get(3));
}

TEST(DiagParams, FindsTheFirstInAnyOrder) {
  const Ref<DiagParamDefs> defs = Defs();
  DiagParams params{Ref<const DiagParamDefs>(defs)};
  params.SetNumber("Number", 1);
  params.SetNumber("Number", 2);
  params.SetText("Text", "x");
  EXPECT_EQ(params.Find(*defs->Get(0))->StringValue, "x");
  EXPECT_EQ(params.Find(*defs->Get(1))->DWordValue, 1u);
  EXPECT_FALSE(params.Find(*defs->Get(2)));
  EXPECT_FALSE(params.Find(*Defs()->Get(0))) << "declared by another list";
}

TEST(DiagParams, SetReplacesInItsPlace) {
  const Ref<DiagParamDefs> defs = Defs();
  DiagParams params{Ref<const DiagParamDefs>(defs)};
  params.SetNumber("Number", 1);
  params.SetText("Text", "a");
  params.Set(nullptr, true);
  params.Set(MakeRef<DiagParam>(defs->Get(1), 5u), true);
  ASSERT_EQ(params.Count(), 2u);
  EXPECT_EQ(params.Get(0)->DWordValue, 5u);
  params.Set(MakeRef<DiagParam>(defs->Get(1), 6u), false);
  ASSERT_EQ(params.Count(), 3u);
  EXPECT_EQ(params.Find("Number", true)->DWordValue, 5u);
  params.Set(MakeRef<DiagParam>(defs->Get(2), 1u), true);
  EXPECT_EQ(params.Count(), 4u) << "nothing to replace";
  params.Bind(Ref<const DiagParamDefs>(Defs()));
  EXPECT_EQ(params.Count(), 0u);
  EXPECT_FALSE(params.Defs() == Ref<const DiagParamDefs>(defs));
}

TEST(DiagParams, CheckValuesNamesTheFirstInvalidOne) {
  DiagParams params{Ref<const DiagParamDefs>(Defs())};
  QueryMessage message;
  params.SetNumber("Number", 99);
  params.SetNumber("Kind", 1);
  EXPECT_TRUE(params.CheckValues(message));
  EXPECT_TRUE(message.Success);
  params.SetNumber("Kind", 2);
  EXPECT_FALSE(params.CheckValues(message));
  EXPECT_FALSE(message.Success);
  EXPECT_EQ(message.MessageId, 11002u);
  EXPECT_EQ(message.Args, (std::vector<std::string>{"Kind", ""}));
}

}  // namespace
}  // namespace kestra
