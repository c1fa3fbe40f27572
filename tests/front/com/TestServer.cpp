// What the tests' KESTRA.DLL is made of: the modules of the language's tests, and two that behave
// badly.
//
//   Angry  one item of class Entry; creating, filling, naming, showing and dumping it throw while
//          the switch SetAngry is on
//   Deaf   fills for Duration milliseconds without looking at the termination event
#include <atomic>
#include <stdexcept>
#include <vector>

#include "front/session/Sorrel.h"
#include "platform/machine/Machine.h"
#include "platform/os/Clock.h"
#include "tests/query/support/TestModules.h"

namespace kestra {
namespace {

std::atomic<int> g_angry{0};

void ThrowIfAngry() {
  if (g_angry) throw std::runtime_error("angry");
}

constexpr ParamDecl kAngryParams[] = {{.name = "Text", .type = ParamType::String},
                                      {.name = "Late", .type = ParamType::String}};
constinit const ClassDecl kAngryEntry{.name = "AngryEntry", .params = kAngryParams};
constexpr const ClassDecl* kAngryChildren[] = {&kAngryEntry};
constinit const ClassDecl kAngry{.name = "Angry", .children = kAngryChildren};

class CAngryItem : public CFilledItem, private CLateValues {
 public:
  CAngryItem() : CFilledItem(kAngryEntry.Get()) {
    Params.SetText("Text", "calm");
    Params.Defer(*this);
    IsInitialized = true;
  }
  using CVDiagItem::Init;
  const std::string& GetName() override {
    ThrowIfAngry();
    return CFilledItem::GetName();
  }
  Ref<DiagClass> GetTypeInfo() override {
    ThrowIfAngry();
    return CFilledItem::GetTypeInfo();
  }
  bool Init(bool) override {
    ThrowIfAngry();
    return true;
  }

 private:
  bool MayHold(const DiagParamDef& def) const override { return def.Name == "Late"; }
  void ReadLate(DiagParams& values) override {
    ThrowIfAngry();
    values.SetText("Late", "calm too");
  }
};

class CAngryModule : public DiagModule {
 public:
  using CVDiagItem::Init;
  using DiagModule::DiagModule;
  bool Init(bool) override {
    ThrowIfAngry();
    Children.Clear();
    Children.Add(MakeRef<CAngryItem>(), false);
    return IsInitialized = true;
  }
};

constexpr ArgDecl kDeafArgs[] = {
    {.name = "Duration", .type = ParamType::Dword, .text = "ms", .defaultNumber = 60000}};
constinit const ClassDecl kDeaf{.name = "Deaf", .children = kAngryChildren, .args = kDeafArgs};

class CDeafModule : public DiagModule {
 public:
  using CVDiagItem::Init;
  using DiagModule::DiagModule;
  bool Init(bool) override {
    uint32_t duration = 0;
    GetArg("Duration", duration);
    os::Sleep(duration);
    return IsInitialized = true;
  }
};

template <class T>
Ref<DiagModule> Create(Ref<DiagClass> diagClass, Ref<CMachine> machine) {
  ThrowIfAngry();
  return MakeRef<T>(std::move(diagClass), std::move(machine));
}

ModuleTable ServerModules() {
  static const auto* pTable = [] {
    const ModuleTable others = test::ModulesWithTests();
    auto* pRows = new std::vector<ModuleRow>(others.begin(), others.end());
    pRows->push_back({&kAngry, Create<CAngryModule>});
    pRows->push_back({&kDeaf, Create<CDeafModule>});
    return pRows;
  }();
  return *pTable;
}

}  // namespace

// Takes the place of the library's own, which is in an object of its own for this.
SessionSetup LiveSetup() {
  ThrowIfAngry();
  return {ServerModules(), LiveMachine()};
}

}  // namespace kestra

// Switches the throwing on and off.
extern "C" __declspec(dllexport) void SetAngry(int angry) {
  kestra::g_angry = angry;
}
