// The parse tree, which is also the plan: each node stands for a rule, and its action asks for the
// value of a child whenever it needs it, as often as it needs it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "query/QueryContext.h"
#include "query/parse/Grammar.h"

namespace kestra {

// What stands for one symbol: a nonterminal's node, or the position of a terminal's token.
union ParseSlot {
  ParseNode* pNode;
  uint32_t position;
};

struct ParseNode {
  QueryContext* Context;
  ParseNode* Parent;  // null at the top
  const struct Rule* Rule;
  ParseSlot* Children;  // one per symbol

  bool Is(NonTerminal table) const { return Rule->Table == table; }
  bool IsEmptyRule() const { return Rule->Length == 0; }
  // The node of symbol i; null if the symbol is no nonterminal.
  ParseNode* ChildNode(size_t i) const {
    return i < Rule->Length && Rule->Symbols[i].Kind == SymbolKind::NonTerminal ? Children[i].pNode
                                                                                : nullptr;
  }
};

// Owns the nodes of one tree, in blocks, so that the deepest tree is freed without recursion.
class ParseTree {
 public:
  ParseNode* Top() const { return m_pTop; }
  void SetTop(ParseNode* pTop) { m_pTop = pTop; }
  ParseNode* NewNode(QueryContext& context, ParseNode* pParent, const Rule& rule);

 private:
  void* Allocate(size_t bytes);

  // Most trees fit the first block; those of long texts take few blocks.
  static constexpr size_t kFirstBlockBytes = 2048;
  static constexpr size_t kMostBlockBytes = 65536;
  std::vector<std::unique_ptr<std::byte[]>> m_blocks;
  size_t m_blockBytes = 0;  // of the last block
  size_t m_used = 0;
  ParseNode* m_pTop = nullptr;
};

// The single way in which an action reads its rule's symbols: runs a nonterminal's action, gives a
// keyword as the grammar spells it, and runs a predicate. False with an Error without text for a
// symbol that the rule does not have, and for a text that nests deeper than the thread's stack
// allows.
bool Child(ParseNode& node, Value& out, size_t i);

// Runs a node's own action, with the same guard.
bool RunNode(ParseNode& node, Value& out);

}  // namespace kestra
