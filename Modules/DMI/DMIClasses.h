// The classes of the firmware's structure table, one per structure type of the SMBIOS standard.
#pragma once

#include "model/classes/Class.h"

namespace kestra {

extern const ClassDecl kDMIModule;

}  // namespace kestra
