// Columns: which source of the query's own text a name belongs to, and so what type it has. The
// parser asks while it recognises the text; a name of the wrong type in a place is a syntax error.
#pragma once

#include "query/parse/TokenMap.h"
#include "query/QueryContext.h"

#include <cstddef>
#include <string>

namespace kestra {

struct ColumnBinding {
  const DiagParamDef* pDef = nullptr;  // null: the name belongs to no source
  DiagClass* pClass = nullptr;         // the class that declares it; class objects outlive queries
};

// The column that the token at position p names. The sources are searched in this order: those of
// the name's own select list to the right, then those to the left, which are the ones of enclosing
// statements. The first that declares the name decides.
ColumnBinding ResolveColumn(QueryContext& context, const CTokenMap& map, size_t p);

}  // namespace kestra
