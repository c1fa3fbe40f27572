// The built-in modules, in the order of the class tree under the root.
#pragma once

#include "model/root/ModuleTable.h"

namespace kestra {

// All 53, those that are only declared among them. The table is constant and lives for ever.
ModuleTable BuiltInModules();

}  // namespace kestra
