// Looking through a parse tree without running it.
#pragma once

#include <string_view>
#include <vector>

#include "query/parse/ParseTree.h"

namespace kestra {

// The token of a terminal, as typed.
inline std::string_view TokenOf(const ParseNode& node, size_t symbol) {
  return node.Context->Tokens[node.Children[symbol].position].text;
}

// Calls visit for each node of a tree, in the order of the text; its false leaves out what is
// below. A tree is as deep as its text, so it is walked from a list.
template <class Visit>
void WalkTree(const ParseNode& top, Visit visit) {
  std::vector<const ParseNode*> open{&top};
  while (!open.empty()) {
    const ParseNode& node = *open.back();
    open.pop_back();
    if (!visit(node)) continue;
    for (size_t i = node.Rule->Length; i-- > 0;) {
      if (const ParseNode* pChild = node.ChildNode(i)) open.push_back(pChild);
    }
  }
}

}  // namespace kestra
