// A module of generated rows for queries that are compared: values of every type in few variants,
// so that many are equal, and many absent.
#pragma once

#include "model/root/ModuleTable.h"

namespace kestra::test {

// The built-in modules and Data(Seed, Count, Odd). Its class Entry has Id, Num (Dword), Text, Kind
// (Enum), Bits (Bitmask), At (Datime) and Rel (Version). With Odd, some items of that name are of
// another class, where Num is a text and others are missing; and some have children.
ModuleTable ModulesWithData();

}  // namespace kestra::test
