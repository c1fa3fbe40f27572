#include "query/parse/ParseTree.h"

#include <algorithm>

#include "platform/os/Thread.h"
#include "query/parse/Predicates.h"

namespace kestra {
namespace {

// What a module's filling, and everything else below an action, may use of the stack.
constexpr size_t kStackReserve = 96 * 1024;

}  // namespace

void* ParseTree::Allocate(size_t bytes) {
  if (m_used + bytes > m_blockBytes) {
    const size_t next = m_blocks.empty() ? kFirstBlockBytes : m_blockBytes * 2;
    m_blockBytes = std::min(next, kMostBlockBytes);
    m_blocks.push_back(std::make_unique_for_overwrite<std::byte[]>(m_blockBytes));
    m_used = 0;
  }
  void* pMemory = m_blocks.back().get() + m_used;
  m_used += bytes;
  return pMemory;
}

ParseNode* ParseTree::NewNode(QueryContext& context, ParseNode* pParent, const Rule& rule) {
  static_assert(sizeof(ParseNode) % alignof(ParseSlot) == 0);
  static_assert(alignof(ParseNode) == alignof(ParseSlot));
  auto* pNode =
      static_cast<ParseNode*>(Allocate(sizeof(ParseNode) + rule.Length * sizeof(ParseSlot)));
  auto* pSlots = reinterpret_cast<ParseSlot*>(pNode + 1);
  for (size_t i = 0; i < rule.Length; ++i) new (pSlots + i) ParseSlot{nullptr};
  return new (pNode) ParseNode{&context, pParent, &rule, pSlots};
}

bool RunNode(ParseNode& node, Value& out) {
  if (os::RemainingStack() < kStackReserve) {
    out.SetError();
    return false;
  }
  return node.Rule->Action(out, node);
}

bool Child(ParseNode& node, Value& out, size_t i) {
  if (!node.Children || i >= node.Rule->Length) {
    out.SetError();
    return false;
  }
  const Symbol symbol = node.Rule->Symbols[i];
  const ParseSlot slot = node.Children[i];
  switch (symbol.Kind) {
    case SymbolKind::NonTerminal:
      return RunNode(*slot.pNode, out);
    case SymbolKind::Keyword:
      out.SetString(std::string(KeywordText(symbol.Number)));
      return true;
    default:
      return RunPredicate(static_cast<Predicate>(symbol.Number), out, *node.Context, slot.position);
  }
}

}  // namespace kestra
