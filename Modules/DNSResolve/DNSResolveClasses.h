// The classes of a name server's answer, one per kind of record.
#pragma once

#include "model/classes/Class.h"

namespace kestra {

extern const ClassDecl kDNSResolveModule;

}  // namespace kestra
