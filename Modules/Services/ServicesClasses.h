// The classes of the system's services.
#pragma once

#include "model/classes/Class.h"

namespace kestra {

extern const ClassDecl kServicesModule;

}  // namespace kestra
