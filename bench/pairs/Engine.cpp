#include "bench/pairs/Engine.h"

#include <fmt/format.h>

#include <stdexcept>
#include <utility>
#include <vector>

#include "model/classes/Module.h"
#include "platform/machine/Machine.h"
#include "tests/query/support/TestModules.h"

namespace kestra::bench {
namespace {

constexpr ParamDecl kItemParams[] = {
    {.name = "Id", .type = ParamType::Dword},
    {.name = "Name", .type = ParamType::String},
    {.name = "Path", .type = ParamType::String},
    {.name = "Size", .type = ParamType::Dword},
    {.name = "LastWriteTime", .type = ParamType::Datime},
};
constexpr ArgDecl kFiveArgs[] = {
    {.name = "Count", .type = ParamType::Dword, .defaultNumber = 1000}};
constinit const ClassDecl kItem{.name = "Item", .params = kItemParams};
constexpr const ClassDecl* kFiveChildren[] = {&kItem};
constinit const ClassDecl kFive{.name = "Five", .children = kFiveChildren, .args = kFiveArgs};

class CFiveModule : public DiagModule {
 public:
  using CVDiagItem::Init;
  using DiagModule::DiagModule;
  bool Init(bool, QueryMessage& message) override {
    uint32_t count = 0;
    GetArg("Count", count);
    Children.Clear();
    Children.Reserve(count);
    const Ref<DiagClass> itemClass = kItem.Get();
    for (uint32_t i = 0; i < count; ++i) {
      if (message.IsTerminatedInLoop()) return false;
      Children.Add(MakeItem(itemClass, i), false);
    }
    return IsInitialized = true;
  }

 private:
  static Ref<CVDiagItem> MakeItem(const Ref<DiagClass>& itemClass, uint32_t number) {
    const DiagParamDefs& defs = *itemClass->Params;
    auto item = MakeRef<CFilledItem>(itemClass);
    DiagParams& params = item->Params;
    params.Reserve(defs.Count());
    params.Set(MakeRef<DiagParam>(defs.Get(0), number), false);
    params.Set(MakeRef<DiagParam>(defs.Get(1), FiveName(number)), false);
    params.Set(MakeRef<DiagParam>(defs.Get(2), FivePath(number)), false);
    params.Set(MakeRef<DiagParam>(defs.Get(3), FiveSize(number)), false);
    params.Set(MakeRef<DiagParam>(defs.Get(4), FiveTime(number)), false);
    item->IsInitialized = true;
    return item;
  }
};

Ref<DiagModule> MakeFive(Ref<DiagClass> diagClass, Ref<CMachine> machine) {
  return MakeRef<CFiveModule>(std::move(diagClass), std::move(machine));
}

ModuleTable Modules() {
  static const std::vector<ModuleRow> rows = [] {
    const ModuleTable others = test::ModulesWithTests();
    std::vector<ModuleRow> all(others.begin(), others.end());
    all.push_back({&kFive, MakeFive});
    return all;
  }();
  return rows;
}

}  // namespace

std::string FiveName(uint32_t number) {
  return fmt::format("file-{:07}.txt", number);
}
std::string FivePath(uint32_t number) {
  return fmt::format("/srv/data/dir{:03}/file-{:07}.txt", number / 1000, number);
}

CEngine::CEngine() : m_root(MakeRef<DiagRoot>("*", Modules(), LiveMachine())) {}

int64_t CEngine::Parse(const std::string& text) {
  EvaluateQuery(m_value, text, m_root, 0, nullptr);
  if (m_value.IsUndefined()) return 0;
  throw std::runtime_error(fmt::format("does not parse: {:.200}: {}", text, m_value.asString()));
}

const Value& CEngine::Run(const std::string& text) {
  EvaluateQuery(m_value, text, m_root, kNoTimeOut, nullptr);
  if (!m_value.IsError()) return m_value;
  throw std::runtime_error(fmt::format("{:.200}: {}", text, m_value.asString()));
}

int64_t CEngine::Number(const std::string& text) {
  return Run(text).asLong();
}

}  // namespace kestra::bench
