// Pieces of a query's own text, by its tokens.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "query/QueryContext.h"
#include "query/parse/ParseTree.h"

namespace kestra {

// The tokens from first up to and without end.
struct TokenRange {
  size_t first = 0;
  size_t end = 0;
};

// The tokens below a node; nothing for one that stands for no text. Parentheses around it, and some
// at its ends, may be missing, since they leave no node.
std::optional<TokenRange> RangeOf(const ParseNode& node);
// The same with the parentheses that belong to it: begin is the token that stands before it, such
// as WHERE.
TokenRange ConditionRange(const ParseNode& condition, KeywordId begin);
// The range up to where the parentheses that it opens are closed.
TokenRange WithClosings(const QueryContext& context, TokenRange range);

// About how long a text may become, in bytes, before it is cut.
inline constexpr size_t kMostText = 500;
// On one line: what parts two tokens becomes one blank. A long text is cut behind a token.
std::string TextOf(const QueryContext& context, TokenRange range);

// By token of the range: how many parentheses are open in front of it, of those in the range.
std::vector<int> DepthsOf(const QueryContext& context, TokenRange range);

}  // namespace kestra
