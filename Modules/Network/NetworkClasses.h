// The classes of the machine's network configuration: adapters, protocols, services, addresses,
// routes.
#pragma once

#include "model/classes/Class.h"

namespace kestra {

extern const ClassDecl kNetworkModule;

}  // namespace kestra
