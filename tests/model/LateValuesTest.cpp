// Parameters whose dear values are read at the first look at one of them.
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "model/items/Param.h"

namespace kestra {
namespace {

class CCountingValues final : public CLateValues {
 public:
  bool MayHold(const DiagParamDef& def) const override { return def.Name.starts_with("Late"); }
  void ReadLate(DiagParams& values) override {
    ++reads;
    values.SetText("Late1", "one");
    values.SetText("Late2", "two");
  }

  std::atomic<int> reads{0};
};

struct Fixture {
  Fixture() {
    for (const char* name : {"Early", "Unset", "Late1", "Late2", "Late3"}) {
      defs->Add(name, ParamType::String, nullptr, true, "");
    }
    params.Bind(defs);
    params.SetText("Early", "e");
    params.Defer(source);
  }

  Ref<DiagParamDefs> defs = MakeRef<DiagParamDefs>();
  CCountingValues source;  // outlives the parameters
  DiagParams params;
};

std::string Text(const DiagParam* pParam) {
  return pParam ? pParam->StringValue : "none";
}

TEST(LateValues, AreReadAtTheFirstLookAtOneOfThem) {
  struct Look {
    const char* what;
    std::string (*look)(const DiagParams&);
    const char* expected;
    int reads;
  };
  const Look looks[] = {
      {"one that is there", [](const DiagParams& p) { return Text(p.Find("early", true)); }, "e",
       0},
      {"one that is unset", [](const DiagParams& p) { return Text(p.Find("Unset", false)); },
       "none", 0},
      {"no such name", [](const DiagParams& p) { return Text(p.Find("Late9", false)); }, "none", 0},
      {"a wrong case", [](const DiagParams& p) { return Text(p.Find("late2", false)); }, "none", 0},
      {"the first", [](const DiagParams& p) { return Text(p.Get(0)); }, "e", 0},
      {"a late one", [](const DiagParams& p) { return Text(p.Find("late2", true)); }, "two", 1},
      {"by its declaration",
       [](const DiagParams& p) { return Text(p.Find(*p.Defs()->Find("Late1", false))); }, "one", 1},
      {"a late one that is unset", [](const DiagParams& p) { return Text(p.Find("Late3", false)); },
       "none", 1},
      {"how many", [](const DiagParams& p) { return std::to_string(p.Count()); }, "3", 1},
      {"the third", [](const DiagParams& p) { return Text(p.Get(2)); }, "two", 1},
      {"the fourth", [](const DiagParams& p) { return Text(p.Get(3)); }, "none", 1},
  };
  for (const Look& look : looks) {
    Fixture fixture;
    EXPECT_EQ(look.look(fixture.params), look.expected) << look.what;
    EXPECT_EQ(look.look(fixture.params), look.expected) << look.what;
    EXPECT_EQ(fixture.source.reads, look.reads) << look.what;
  }
}

TEST(LateValues, GoWithAClearAndGiveUpTheirPlace) {
  Fixture fixture;
  const auto pDef = fixture.defs->Find("Late1", false);
  fixture.params.Set(MakeRef<DiagParam>(pDef, std::string("new")), true);
  EXPECT_EQ(fixture.params.Count(), 3u);
  EXPECT_EQ(Text(fixture.params.Find("Late1", false)), "new");
  EXPECT_EQ(Text(fixture.params.Find("Late2", false)), "two");
  Fixture second;
  second.params.Clear();
  EXPECT_EQ(second.params.Count(), 0u);
  EXPECT_EQ(second.params.Find("Late1", false), nullptr);
  EXPECT_EQ(second.source.reads, 0);
}

TEST(LateValues, AreReadOnceByManyThreads) {
  Fixture fixture;
  std::vector<std::jthread> threads;
  std::atomic<int> right{0};
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([&, i] {
      const char* name = i % 2 ? "Late1" : "Late2";
      right += Text(fixture.params.Find(name, false)) == (i % 2 ? "one" : "two");
      right += fixture.params.Count() == 3;
    });
  }
  threads.clear();
  EXPECT_EQ(right, 16);
  EXPECT_EQ(fixture.source.reads, 1);
}

}  // namespace
}  // namespace kestra
