// The classes of what answers on the local networks.
#pragma once

#include "model/classes/Class.h"

namespace kestra {

extern const ClassDecl kNetworkMapModule;

}  // namespace kestra
