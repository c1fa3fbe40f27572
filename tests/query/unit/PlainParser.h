// The chart parser written down plainly: a recursive closure, a linear search for duplicates, every
// prediction made, no verdict of a predicate kept. Slow and easy to check by eye: the reference
// that the product's parser is compared with.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "query/QueryContext.h"
#include "query/parse/ParseTree.h"

namespace kestra::test {

// A tree as a list of numbers: a node is its rule's index, and then, symbol by symbol, the child
// node or the token's position.
using TreeForm = std::vector<uint32_t>;

// The tree of the context's tokens; nothing if they have none. pUsed gets the rules of the whole
// derivation, also those that leave no node.
std::optional<TreeForm> PlainParse(QueryContext& context, std::set<size_t>* pUsed = nullptr);

// The form of a tree that the product's parser made; an empty one if a node's parent or context is
// not what it should be.
TreeForm FormOf(const ParseTree& tree, QueryContext& context);

// For a person: rules in brackets, token positions between them.
std::string TextOf(const TreeForm& form);

}  // namespace kestra::test
