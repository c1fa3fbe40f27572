// The classes of the registry: keys, their values, and the module that shows them.
#pragma once

#include "model/classes/Class.h"

namespace kestra {

extern const ClassDecl kRegistryModule;
extern const ClassDecl kRegistryKeyClass;
extern const ClassDecl kRegistryValueClass;

}  // namespace kestra
