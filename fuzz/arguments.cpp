// The text of a module's arguments, as a host gives it: what could be set is given back as a text
// that sets the same.
#include <cstdint>
#include <string>

#include "fuzz/support/Require.h"
#include "model/root/Root.h"
#include "tests/query/support/TestModules.h"
#include "tests/support/FakeMachine.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace kestra;
  static const auto* pRoot = new Ref<DiagRoot>(MakeRef<DiagRoot>(
      "*", test::ModulesWithTests(), Ref<CMachine>(MakeRef<test::CFakeMachine>())));
  const std::string text(reinterpret_cast<const char*>(data), size);
  const Ref<DiagClass> diagClass(FindClass((*pRoot)->GetTypeInfo().get(), "Test"));
  DiagModule module(diagClass, (*pRoot)->Machine());
  if (!module.SetArgs(text)) return 0;
  fuzz::Require(module.SameArgs(*module.Args, true));
  const std::string written = module.FormatArgs("", ",");
  if (written.find('\'') != std::string::npos) return 0;  // a text may have a quote in it
  DiagModule again(diagClass, (*pRoot)->Machine());
  fuzz::Require(again.SetArgs(written) && again.SameArgs(*module.Args, true));
  return 0;
}
