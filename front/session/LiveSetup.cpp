// A file of its own, so that a test program that defines LiveSetup itself gets sessions over other
// modules out of the C interface.
#include "Modules/ModuleTable.h"
#include "front/session/Sorrel.h"
#include "platform/machine/Machine.h"

namespace kestra {

SessionSetup LiveSetup() {
  return {BuiltInModules(), LiveMachine()};
}

}  // namespace kestra
