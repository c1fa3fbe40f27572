// The classes of security products: virus scanners and firewalls.
#pragma once

#include "model/classes/Class.h"

namespace kestra {

extern const ClassDecl kAntivirusModule;
extern const ClassDecl kFirewallsModule;

}  // namespace kestra
