// The comparison of the machine's clock with a time server: all of it stands on the module itself.
#pragma once

#include "model/classes/Class.h"

namespace kestra {

extern const ClassDecl kAtomTimeModule;

}  // namespace kestra
