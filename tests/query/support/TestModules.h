// Modules for tests of the language: every declared type, NULLs, nested items, actions, slow and
// failing fillings. What they hold is fixed, so scripts can name it.
//
//   Test    rows of class Row (see TestModules.cpp for their values), with Part items and one
//           nested Row below them; what is added, changed and deleted stays in the tree
//   Many    Count items of class Entry, for measuring
//   Slow    fills for Duration milliseconds, looking at the termination event
//   Broken  fails to fill
//   Throws  throws while it fills
#pragma once

#include "model/root/ModuleTable.h"

namespace kestra::test {

// The built-in modules and, behind them, the ones above.
ModuleTable ModulesWithTests();
// Undoes for every root what was changed in Test. Modules that are filled stay as they are.
void RestoreTestRows();

}  // namespace kestra::test
