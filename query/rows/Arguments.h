// Typed arguments and columns: [name, value] pairs into a parameter list.
#pragma once

#include <string_view>

#include "model/items/Param.h"
#include "query/Value.h"

namespace kestra {

// Adds one named value to params, whose declarations say its type. A fault makes out an Error with
// its message and answers false: 10000 for a name that params has already, 10001 for one that is
// not declared, 10002 for a value of the wrong type.
bool ApplyArgument(Value& out, std::string_view name, const Value& value, DiagParams& params);

// The same for every pair of a Vector, in order.
bool ApplyArguments(Value& out, const ValueVector& pairs, DiagParams& params);

}  // namespace kestra
