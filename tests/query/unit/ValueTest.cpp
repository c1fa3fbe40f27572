#include <gtest/gtest.h>

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "query/Value.h"
#include "tests/support/ScopedTimeZone.h"

namespace kestra {
namespace {

Ref<DiagParamDefs> Defs() {
  static const auto* pDefs = [] {
    auto defs = MakeRef<DiagParamDefs>();
    defs->Add("String", ParamType::String, nullptr, false);
    defs->Add("Dword", ParamType::Dword, "KB", false);
    defs->Add("Enum", ParamType::Enum, "Alpha|Beta", false);
    defs->Add("Bitmask", ParamType::Bitmask, "Red|Green|Blue", false);
    defs->Add("Datime", ParamType::Datime, nullptr, false);
    defs->Add("Version", ParamType::Version, nullptr, false);
    defs->Add("Second", ParamType::Dword, nullptr, false);
    return new Ref<DiagParamDefs>(std::move(defs));
  }();
  return *pDefs;
}

template <class T>
Ref<DiagParam> Param(const char* pName, T value) {
  return MakeRef<DiagParam>(Defs()->Find(pName, false), value);
}

template <class F>
Value Make(F fill) {
  Value value;
  fill(value);
  return value;
}
Value Number(int32_t n) {
  return Make([&](Value& v) { v.SetNumber(n); });
}
Value Text(const char* pText) {
  return Make([&](Value& v) { v.SetString(pText); });
}
Value Boolean(bool b) {
  return Make([&](Value& v) { v.SetBoolean(b); });
}
Value Datime(uint32_t t) {
  return Make([&](Value& v) { v.SetDatime(t); });
}
Value Parameter(Ref<DiagParam> param) {
  return Make([&](Value& v) { v.SetParameter(std::move(param)); });
}
Value Vector() {
  return Make([](Value& v) { v.SetVector(MakeRef<ValueVector>()); });
}
Value Item() {
  return Make(
      [](Value& v) { v.SetDiagItem(MakeRef<CVDiagItem>(Ref<const DiagParamDefs>(Defs()))); });
}
Value Any() {
  return Make([](Value& v) { v.SetAny(); });
}
Value ErrorWith(const char* pText) {
  return Make([&](Value& v) { v.SetError(pText); });
}
Value Error() {
  return Make([](Value& v) { v.SetError(); });
}

// What a value is taken for: N number, S string, T date and time.
std::string Families(const Value& value) {
  return std::string(value.IsNumber() ? "N" : "") + (value.IsString() ? "S" : "") +
         (value.IsDatime() ? "T" : "");
}

TEST(Value, HasATextFamiliesAndNumbers) {
  const test::CScopedTimeZone zone("UTC");
  const struct {
    Value value;
    const char* pText;
    const char* pFamilies;
    int32_t number;
    uint32_t datime;
    bool boolean;
  } cases[] = {
      {Value(), "<NULL>", "", 0, 0, false},
      {Error(), "<ERROR>", "", 0, 0, false},
      {ErrorWith("x"), "<ERROR: x>", "", 0, 0, false},
      {ErrorWith(""), "<ERROR: >", "", 0, 0, false},
      {Boolean(true), "True", "", 0, 0, true},
      {Boolean(false), "False", "", 0, 0, false},
      {Number(5), "5", "N", 5, 0, false},
      {Number(-1), "4294967295", "N", -1, 0, false},
      {Number(INT32_MIN), "2147483648", "N", INT32_MIN, 0, false},
      {Text("a"), "a", "S", 0, 0, false},
      {Text(""), "", "S", 0, 0, false},
      {Text("7"), "7", "S", 0, 0, false},
      {Datime(86400), "1970-01-02 00:00:00", "T", 0, 86400, false},
      {Datime(0xFFFFFFFF), "2106-02-07 06:28:15", "T", 0, 0xFFFFFFFF, false},
      {Any(), "<Any value>", "", 0, 0, false},
      {Vector(), "<Vector>", "", 0, 0, false},
      {Item(), "<Diagnostics Item>", "", 0, 0, false},
      {Parameter(nullptr), "", "", 0, 0, false},
      {Parameter(MakeRef<DiagParam>()), "", "", 0, 0, false},
      {Parameter(Param("String", "t")), "t", "S", 0, 0, false},
      {Parameter(Param("Dword", 0xFFFFFFFFu)), "4294967295", "N", -1, 0, false},
      {Parameter(Param("Enum", 1u)), "Beta", "NS", 1, 0, false},
      {Parameter(Param("Enum", 2u)), "", "NS", 2, 0, false},
      {Parameter(Param("Bitmask", 5u)), "Red|Blue", "NS", 5, 0, false},
      {Parameter(Param("Bitmask", 0u)), "", "NS", 0, 0, false},
      {Parameter(Param("Datime", 60u)), "1970-01-01 00:01:00", "T", 0, 60, false},
      {Parameter(Param("Version", "1.2b")), "1.2b", "S", 0, 0, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.pText + std::string(" ") + c.pFamilies);
    EXPECT_EQ(c.value.asString(), c.pText);
    std::string buffer;
    EXPECT_EQ(c.value.asText(buffer), c.pText);
    EXPECT_EQ(Families(c.value), c.pFamilies);
    EXPECT_EQ(c.value.asLong(), c.number);
    EXPECT_EQ(c.value.asDatime(), c.datime);
    EXPECT_EQ(c.value.asBool(), c.boolean);
    EXPECT_EQ(c.value.asVDIagItem() != nullptr, c.value.Kind() == ValueKind::DiagItem);
    EXPECT_EQ(c.value.asVector().Count(), 0u);
    EXPECT_EQ(Value(c.value).asString(), c.pText);  // a copy is the same
  }
}

TEST(Value, EqualsInBothOrders) {
  const std::vector<std::pair<std::string, Value>> values = {
      {"error", Error()},
      {"error x", ErrorWith("x")},
      {"null", Value()},
      {"any", Any()},
      {"true", Boolean(true)},
      {"true too", Boolean(true)},
      {"false", Boolean(false)},
      {"1", Number(1)},
      {"5", Number(5)},
      {"-1", Number(-1)},
      {"'ABC'", Text("ABC")},
      {"'abc'", Text("abc")},
      {"'1'", Text("1")},
      {"'5'", Text("5")},
      {"'BETA'", Text("BETA")},
      {"'red|blue'", Text("red|blue")},
      {"time 5", Datime(5)},
      {"String abc", Parameter(Param("String", "abc"))},
      {"String Abc", Parameter(Param("String", "Abc"))},
      {"Dword 5", Parameter(Param("Dword", 5u))},
      {"Dword 5 too", Parameter(Param("Dword", 5u))},
      {"Second 5", Parameter(Param("Second", 5u))},
      {"Dword max", Parameter(Param("Dword", 0xFFFFFFFFu))},
      {"Enum 1", Parameter(Param("Enum", 1u))},
      {"Bitmask 5", Parameter(Param("Bitmask", 5u))},
      {"Datime 5", Parameter(Param("Datime", 5u))},
      {"Version 1", Parameter(Param("Version", "1"))},
      {"no parameter", Parameter(nullptr)},
      {"item", Item()},
      {"vector", Vector()},
  };
  // Besides each value that equals itself. Two parameters are equal only under one declaration.
  const std::set<std::pair<std::string, std::string>> equalPairs = {
      {"true", "true too"},
      {"'ABC'", "'abc'"},
      {"'ABC'", "String abc"},
      {"'abc'", "String abc"},
      {"'ABC'", "String Abc"},
      {"'abc'", "String Abc"},
      {"String abc", "String Abc"},
      {"5", "Dword 5"},
      {"5", "Dword 5 too"},
      {"5", "Second 5"},
      {"Dword 5", "Dword 5 too"},
      {"-1", "Dword max"},
      {"1", "Enum 1"},
      {"'BETA'", "Enum 1"},
      {"5", "Bitmask 5"},
      {"'red|blue'", "Bitmask 5"},
      {"time 5", "Datime 5"},
      {"'1'", "Version 1"},
  };
  const std::set<std::string> unequalToItself = {"error",        "error x", "null",  "any",
                                                 "no parameter", "item",    "vector"};
  for (const auto& [nameA, a] : values) {
    for (const auto& [nameB, b] : values) {
      const bool expected = nameA == nameB ? !unequalToItself.contains(nameA)
                                           : equalPairs.contains({nameA, nameB}) ||
                                                 equalPairs.contains({nameB, nameA});
      EXPECT_EQ(Equals(a, b), expected) << nameA << " and " << nameB;
    }
  }
}

TEST(Value, AssignsToItself) {
  std::vector<Value> values = {Text("text"), ErrorWith("e"), Parameter(Param("Dword", 1u)),
                               Item(),       Vector(),       Number(3)};
  for (Value& value : values) {
    const std::string text = value.asString();
    const Value& same = value;
    value = same;
    EXPECT_EQ(value.asString(), text);
    value = std::move(const_cast<Value&>(same));
    EXPECT_EQ(value.asString(), text);
  }
}

// The value that is assigned may be owned by the one that it is assigned to.
TEST(Value, TakesItsOwnElement) {
  Value value = Vector();
  value.asVector().Append(Text("element"));
  value = value.asVector()[0];
  EXPECT_EQ(value.asString(), "element");

  value = Vector();
  value.asVector().Append(Text("moved"));
  value = std::move(const_cast<Value&>(value.asVector()[0]));
  EXPECT_EQ(value.asString(), "moved");
}

TEST(Value, MovedFromIsUndefined) {
  Value value = Text("a");
  const Value taken = std::move(value);
  EXPECT_TRUE(value.IsUndefined());  // NOLINT(bugprone-use-after-move)
  EXPECT_EQ(taken.asString(), "a");
}

TEST(Value, CopiesShareVectorsAndKeepTexts) {
  Value first = Vector();
  const Value second = first;
  Value element = Text("a");
  first.asVector().Append(element);
  element.Clear();
  ASSERT_EQ(second.asVector().Count(), 1u);
  EXPECT_EQ(second.asVector()[0].asString(), "a");
  first.Clear();
  EXPECT_EQ(second.asVector().Count(), 1u);

  Value text = Text("a");
  const Value copy = text;
  text.AppendText("b");
  EXPECT_EQ(text.asString(), "ab");
  EXPECT_EQ(copy.asString(), "a");
  text.AppendText("c");
  EXPECT_EQ(text.asString(), "abc");
  Value number = Number(1);
  number.AppendText("x");
  EXPECT_EQ(number.asString(), "1");
}

TEST(Value, KeepsWhatItRefersToAlive) {
  Value item = Item();
  item.asVDIagItem()->Params.SetNumber("Dword", 7);
  Value parameter = Parameter(Ref<DiagParam>(item.asVDIagItem()->Params.Get(0)));
  item.Clear();
  EXPECT_EQ(parameter.asLong(), 7);
}

}  // namespace
}  // namespace kestra
