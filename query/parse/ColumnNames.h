// The names that a result's columns have for a reader.
#pragma once

#include <string>
#include <vector>

#include "query/parse/ParseTree.h"

namespace kestra {

// For SELECT x, y FROM ...: one name per value of a row. Empty for every other form.
std::vector<std::string> ColumnNames(const ParseNode& top);

}  // namespace kestra
