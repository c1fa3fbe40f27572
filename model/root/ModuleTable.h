// The table of built-in modules, as the root is given it. model/ names no module.
#pragma once

#include <span>

#include "model/classes/Class.h"
#include "model/classes/Module.h"

namespace kestra {

// Whether a module can have anything to show.
enum class ModuleState {
  Ready = 0,
  NotBuilt = 1,  // it is declared, and fills to nothing
  NotHere = 2,   // the machine has nothing of what it shows
};

struct ModuleRow {
  const ClassDecl* pClass;
  // Makes the module with its default arguments. Null for a module that is declared and not built
  // yet: it fills to nothing, with success.
  Ref<DiagModule> (*create)(Ref<DiagClass> diagClass, Ref<CMachine> machine);
  // Whether that machine has what the module shows; null: every machine has.
  bool (*serves)(CMachine& machine) = nullptr;
};

using ModuleTable = std::span<const ModuleRow>;

}  // namespace kestra
