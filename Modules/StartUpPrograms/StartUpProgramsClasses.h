// The classes of what the machine starts on its own.
#pragma once

#include "model/classes/Class.h"

namespace kestra {

extern const ClassDecl kStartUpProgramsModule;

}  // namespace kestra
