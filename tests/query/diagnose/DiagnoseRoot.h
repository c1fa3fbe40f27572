// The class tree for the tests of diagnosis and completion.
#pragma once

#include "model/root/Root.h"
#include "tests/query/support/TestModules.h"
#include "tests/support/FakeMachine.h"

namespace kestra::test {

inline const Ref<DiagRoot>& DiagnoseRoot() {
  static const auto* pRoot = new Ref<DiagRoot>(
      MakeRef<DiagRoot>("", ModulesWithTests(), Ref<CMachine>(MakeRef<CFakeMachine>())));
  return *pRoot;
}

}  // namespace kestra::test
