// The table of built-in modules, as the root is given it. model/ names no module.
#pragma once

#include <span>

#include "model/classes/Class.h"
#include "model/classes/Module.h"

namespace kestra {

struct ModuleRow {
  const ClassDecl* pClass;
  // Makes the module with its default arguments. Null for a module that is declared and not built
  // yet: it fills to nothing, with success.
  Ref<DiagModule> (*create)(Ref<DiagClass> diagClass, Ref<CMachine> machine);
};

using ModuleTable = std::span<const ModuleRow>;

}  // namespace kestra
