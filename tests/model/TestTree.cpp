#include "tests/model/TestTree.h"

namespace kestra::test {
namespace {

constexpr ArgDecl kKeysArgs[] = {
    {.name = "Levels", .type = ParamType::Dword},
    {.name = "KeyPath", .type = ParamType::String},
    {.name = "Format", .type = ParamType::Enum, .text = "Cfg|Ini", .defaultNumber = 1},
    {.name = "Mask", .type = ParamType::Bitmask, .text = "One|Two|Three", .defaultNumber = 7},
    {.name = "Compress", .type = ParamType::Dword, .defaultNumber = 4294967295},
    {.name = "Least", .type = ParamType::Version, .defaultText = "0"},
};

class CFilledModule : public DiagModule {
 public:
  using CVDiagItem::Init;
  using DiagModule::DiagModule;
  bool Init(bool) override { return IsInitialized = true; }
};

class CBrokenModule : public DiagModule {
 public:
  using CVDiagItem::Init;
  using DiagModule::DiagModule;
  bool Init(bool, QueryMessage& message) override { return message.Fail(kErrorNotReady); }
};

template <class T>
Ref<DiagModule> Create(Ref<DiagClass> diagClass, Ref<CMachine> machine) {
  return MakeRef<T>(std::move(diagClass), std::move(machine));
}

}  // namespace

constinit const ClassDecl kKeysClass{.name = "Keys", .args = kKeysArgs};
constinit const ClassDecl kPlainClass{.name = "Plain"};
constinit const ClassDecl kBrokenClass{.name = "Broken"};
constinit const ClassDecl kLastClass{.name = "Last"};

ModuleTable TestModuleTable() {
  static constexpr ModuleRow kRows[] = {
      {&kKeysClass, Create<CFilledModule>},
      {&kPlainClass, Create<CFilledModule>},
      {&kBrokenClass, Create<CBrokenModule>},
      {&kLastClass, nullptr},
  };
  return kRows;
}

Ref<DiagRoot> NewTestRoot(std::string_view modules) {
  return MakeRef<DiagRoot>(modules, TestModuleTable(), nullptr);
}

}  // namespace kestra::test
