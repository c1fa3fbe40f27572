#include "query/eval/compiled/Row.h"

#include "query/eval/Operands.h"

namespace kestra {

CCompiledRow::CCompiledRow(ParseNode& node, size_t symbol, const CScopeShape& shape)
    : m_node(node), m_symbol(symbol) {
  ParseNode* pList = node.ChildNode(symbol);
  // What fails here is evaluated again by the actions. A call would be made twice.
  if (pList && NeedsOf(*pList).hasCall) return;
  m_isList = pList && pList->Is(NonTerminal::ValueList);
  if (!m_isList) {
    m_operands.emplace_back(node, symbol, shape);
    return;
  }
  const std::vector<ParseNode*> chain = LeftChain(*pList);
  // The list of one value that the chain begins with.
  ParseNode* pFirst = chain.front()->Rule->Length > 1 ? chain.front()->ChildNode(0) : pList;
  m_operands.reserve(chain.size() + 1);
  m_operands.emplace_back(*pFirst, 0, shape);
  if (pFirst == pList) return;
  for (ParseNode* pNode : chain) m_operands.emplace_back(*pNode, pNode->Rule->Length - 1u, shape);
}

Known CCompiledRow::ReadOperands(QueryContext& context, Value& out) const {
  if (m_operands.empty()) return Known::Unknown;
  if (!m_isList) return m_operands.front().Read(context, out);
  auto list = ValueVector::WithRoomFor(static_cast<uint32_t>(m_operands.size()));
  for (const CCompiledOperand& operand : m_operands) {
    const Known known = operand.Read(context, out);
    if (known == Known::Unknown || known == Known::Failed) return known;
    list->Append(std::move(out));
  }
  out.SetVector(std::move(list));
  return Known::Ready;
}

// What failed was asked already.
bool CCompiledRow::Read(QueryContext& context, Value& out) const {
  const Known known = ReadOperands(context, out);
  if (known == Known::Unknown) return Child(m_node, out, m_symbol);
  return known != Known::Failed || FailKeepingMessage(out);
}

}  // namespace kestra
