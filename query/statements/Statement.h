// What the active statements share.
#pragma once

#include "query/eval/Operands.h"
#include "query/rows/FromResult.h"

namespace kestra {

// An Error with the sentence of the query's message, and false: how a failed item operation ends a
// statement.
bool FailWithMessage(Value& out, ParseNode& node);
// Raises a message first.
bool FailWithMessage(Value& out, ParseNode& node, uint32_t id,
                     std::initializer_list<std::string> inserts);

// How many rows a statement reached, and true.
bool CountResult(Value& out, size_t count);

// The text of a symbol: an alias, a name. Empty if it has none.
std::string TextOf(ParseNode& node, size_t symbol);

// The rows of an alias in a FROM clause at a symbol, as a Vector of items. Keeps the clause's value
// in fromResult, for binding.
bool ReadRows(Value& out, ParseNode& node, size_t fromSymbol, const std::string& alias,
              Value& fromResult);

}  // namespace kestra
