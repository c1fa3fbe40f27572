// The command's engine, with the test modules behind the built-in ones.
#include "front/session/SorrelCOM.h"
#include "platform/machine/Machine.h"
#include "tests/query/support/TestModules.h"

namespace kestra {

// Takes the place of the library's own, which is in an object of its own for this.
SessionSetup LiveSetup() {
  return {test::ModulesWithTests(), LiveMachine()};
}

}  // namespace kestra
