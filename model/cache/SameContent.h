// Comparing what two items hold.
#pragma once

#include "model/items/Item.h"

namespace kestra {

// Whether two items have the same names, values (in the same order, of the same declarations) and
// children. Also false when the message is terminated meanwhile. Deep trees cost no stack.
bool IsSameContent(const CVDiagItem& a, const CVDiagItem& b, QueryMessage& message);

}  // namespace kestra
