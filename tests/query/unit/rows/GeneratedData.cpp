#include "tests/query/unit/rows/GeneratedData.h"

#include <random>
#include <vector>

#include "Modules/ModuleTable.h"
#include "model/classes/Module.h"

namespace kestra::test {
namespace {

constexpr ParamDecl kEntryParams[] = {
    {.name = "Id", .type = ParamType::Dword},
    {.name = "Num", .type = ParamType::Dword},
    {.name = "Text", .type = ParamType::String},
    {.name = "Kind", .type = ParamType::Enum, .text = "Alpha|Beta|a"},
    {.name = "Bits", .type = ParamType::Bitmask, .text = "a|b|K"},
    {.name = "At", .type = ParamType::Datime},
    {.name = "Rel", .type = ParamType::Version},
};
constexpr ParamDecl kOddParams[] = {
    {.name = "Id", .type = ParamType::Dword},
    {.name = "Num", .type = ParamType::String},
    {.name = "Text", .type = ParamType::String},
};
constexpr ArgDecl kArgs[] = {
    {.name = "Seed", .type = ParamType::Dword, .defaultNumber = 1},
    {.name = "Count", .type = ParamType::Dword, .defaultNumber = 20},
    {.name = "Odd", .type = ParamType::Dword, .defaultNumber = 0},
};
constinit const ClassDecl kEntry{.name = "Entry", .params = kEntryParams};
constinit const ClassDecl kOdd{.name = "Entry", .params = kOddParams};
constexpr const ClassDecl* kChildren[] = {&kEntry};
constinit const ClassDecl kData{.name = "Data", .children = kChildren, .args = kArgs};

// Equal without regard to case, across ASCII too: the sign of the kelvin is a "k". "costarring" and
// "liquid" have one FNV-1a hash.
constexpr const char* kTexts[] = {"a",     "A",     "\xC3\xA4", "\xC3\x84",  "k",  "\xE2\x84\xAA",
                                  "1",     "10",    "1.2",      "",          "ab", "AB*",
                                  "Alpha", "x\xFF", "liquid",   "costarring"};
constexpr const char* kVersions[] = {"1", "1.0", "1.2", "1.2.0", "2a", "2A", "10"};
constexpr uint32_t kNumbers[] = {0, 1, 2, 3, 10, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};

class CDataModule : public DiagModule {
 public:
  using CVDiagItem::Init;
  using DiagModule::DiagModule;
  bool Init(bool) override {
    uint32_t seed = 0, count = 0, odd = 0;
    GetArg("Seed", seed);
    GetArg("Count", count);
    GetArg("Odd", odd);
    m_random.seed(seed);
    Children.Clear();
    for (uint32_t i = 0; i < count; ++i) {
      const bool isOdd = odd != 0 && Pick(5) == 0;
      auto item = MakeRef<CFilledItem>(isOdd ? kOdd.Get() : kEntry.Get());
      isOdd ? FillOdd(item->Params, i) : Fill(item->Params, i);
      item->IsInitialized = true;
      const bool isNested = odd != 0 && Pick(4) == 0 && Children.Count() > 0;
      DiagItems& place = isNested ? Children.Get(Pick(Children.Count()))->Children : Children;
      place.Add(std::move(item), false);
    }
    return IsInitialized = true;
  }

 private:
  size_t Pick(size_t count) { return static_cast<size_t>(m_random() % count); }
  template <class T, size_t count>
  T PickOf(const T (&values)[count]) {
    return values[Pick(count)];
  }
  bool IsThere() { return Pick(4) != 0; }

  // In any order, since a list may be in any.
  void Fill(DiagParams& params, uint32_t id) {
    const bool isLateId = Pick(3) == 0;
    if (!isLateId) params.SetNumber("Id", id);
    if (IsThere()) params.SetNumber("Num", PickOf(kNumbers));
    if (IsThere()) params.SetText("Text", PickOf(kTexts));
    if (IsThere()) params.SetNumber("Kind", static_cast<uint32_t>(Pick(4)));
    if (IsThere()) params.SetNumber("Bits", static_cast<uint32_t>(Pick(8)));
    if (IsThere()) params.SetNumber("At", 1136073600u + 86400u * static_cast<uint32_t>(Pick(3)));
    if (IsThere()) params.SetVersionIfAny("Rel", PickOf(kVersions));
    if (isLateId) params.SetNumber("Id", id);
    if (Pick(10) == 0) params.SetNumber("Num", PickOf(kNumbers));  // the first one counts
  }
  void FillOdd(DiagParams& params, uint32_t id) {
    params.SetNumber("Id", id);
    if (IsThere()) params.SetText("Num", PickOf(kTexts));
    if (IsThere()) params.SetText("Text", PickOf(kTexts));
  }

  std::mt19937 m_random;  // the same numbers everywhere
};

Ref<DiagModule> Create(Ref<DiagClass> diagClass, Ref<CMachine> machine) {
  return MakeRef<CDataModule>(std::move(diagClass), std::move(machine));
}

}  // namespace

ModuleTable ModulesWithData() {
  static const auto* pTable = [] {
    const ModuleTable builtIn = BuiltInModules();
    auto* pRows = new std::vector<ModuleRow>(builtIn.begin(), builtIn.end());
    pRows->push_back({&kData, Create});
    return pRows;
  }();
  return *pTable;
}

}  // namespace kestra::test
