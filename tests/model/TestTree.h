// A few classes and modules of the tests' own, so that the model is tested without the real ones.
#pragma once

#include "model/root/Root.h"

namespace kestra::test {

// Levels Dword 0, KeyPath String empty, Format Enum (Cfg|Ini) 1, Mask Bitmask (One|Two|Three) 7,
// Compress Dword 4294967295, Least Version "0".
extern const ClassDecl kKeysClass;
extern const ClassDecl kPlainClass;   // no arguments
extern const ClassDecl kBrokenClass;  // fails to fill
extern const ClassDecl kLastClass;    // declared and not built

// Keys, Plain, Broken and Last, in this order.
ModuleTable TestModuleTable();
Ref<DiagRoot> NewTestRoot(std::string_view modules);

}  // namespace kestra::test
