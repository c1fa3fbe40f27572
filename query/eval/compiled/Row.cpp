#include "query/eval/compiled/Row.h"

#include "query/eval/Operands.h"

namespace kestra {

CCompiledRow::CCompiledRow(ParseNode& node, size_t symbol, const CScopeShape& shape) {
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

bool CCompiledRow::Read(QueryContext& context, Value& out) const {
  if (m_operands.empty()) return false;
  if (!m_isList) return m_operands.front().Read(context, out);
  auto list = ValueVector::WithRoomFor(static_cast<uint32_t>(m_operands.size()));
  Value value;
  for (const CCompiledOperand& operand : m_operands) {
    if (!operand.Read(context, value)) return false;
    list->Append(std::move(value));
  }
  out.SetVector(std::move(list));
  return true;
}

}  // namespace kestra
