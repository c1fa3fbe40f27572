#include "query/eval/compiled/Operand.h"

#include <algorithm>

#include "query/eval/Actions.h"
#include "query/parse/Predicates.h"

namespace kestra {
namespace {

Known KindOf(const Value& value) {
  if (value.IsUndefined()) return Known::Null;
  return value.IsAny() ? Known::Any : Known::Ready;
}

// Whether the value of a simple node is the same with and without the last row of a shape.
bool IsFreeOfLastRow(const NodeNeeds& needs, const CScopeShape& shape) {
  return needs.isSimple &&
         std::all_of(needs.columns.begin(), needs.columns.end(), [&](const ParseNode* pColumn) {
           return shape.FindSlot(AliasOfColumn(*pColumn)) + 1 < shape.Count();
         });
}

}  // namespace

CCompiledOperand::CCompiledOperand(ParseNode& node, size_t symbol, const CScopeShape& shape)
    : m_symbol(symbol), m_node(node) {
  const ParseNode* pNode = node.ChildNode(symbol);
  if (pNode && pNode->Rule->Action == ColumnValue) {
    if (SetColumn(*pNode, shape)) return;
  } else if (!pNode) {
    SetConstant(node, symbol);
    return;
  }
  const NodeNeeds needs = NeedsOf(*pNode);
  m_isFreeOfLast = IsFreeOfLastRow(needs, shape);
  if (needs.IsConstant()) SetConstant(node, symbol);
}

bool CCompiledOperand::SetColumn(const ParseNode& column, const CScopeShape& shape) {
  const size_t slot = shape.FindSlot(AliasOfColumn(column));
  const ColumnBinding& binding = column.Context->Predicates->Column(column.Children[1].position);
  if (slot == CScopeShape::kNone || !binding.pClass || !binding.pDef) return false;
  m_kind = Kind::Column;
  m_slot = slot;
  m_pDef = binding.pDef;
  m_pDefs = binding.pClass->Params.get();
  m_isFreeOfLast = slot + 1 < shape.Count();
  return true;
}

// One that fails stays what it is, so that it fails where it is asked for and not before.
void CCompiledOperand::SetConstant(ParseNode& node, size_t symbol) {
  Value value;
  m_isFreeOfLast = true;
  if (!Child(node, value, symbol) || value.IsVector()) return;
  m_value = std::move(value);
  m_kind = Kind::Constant;
}

inline Known CCompiledOperand::FindParam(const QueryContext& context,
                                         const DiagParam*& pParam) const {
  const CVDiagItem& item = *context.Scope[m_slot].Item;
  if (item.Params.Defs().get() != m_pDefs) return Known::Unknown;
  pParam = item.Params.Find(*m_pDef);
  return pParam ? Known::Ready : Known::Null;
}

Known CCompiledOperand::ReadPlain(QueryContext&, Value& value) const {
  if (m_kind == Kind::Constant) {
    value = m_value;
  } else if (!Child(m_node, value, m_symbol)) {
    return Known::Failed;
  }
  return KindOf(value);
}

Known CCompiledOperand::ReadNumber(QueryContext& context, int32_t& number) const {
  if (m_kind == Kind::Column) {
    const DiagParam* pParam = nullptr;
    const Known known = FindParam(context, pParam);
    if (known != Known::Ready) return known;
    number = static_cast<int32_t>(pParam->DWordValue);
    return m_pDef->HoldsNumber() ? Known::Ready : Known::Unknown;
  }
  if (m_kind == Kind::Constant && m_value.Kind() == ValueKind::Number) {
    number = m_value.asLong();
    return Known::Ready;
  }
  Value value;
  const Known known = ReadPlain(context, value);
  if (known != Known::Ready) return known;
  number = value.asLong();
  return value.IsNumber() ? Known::Ready : Known::Unknown;
}

Known CCompiledOperand::ReadDatime(QueryContext& context, uint32_t& datime) const {
  if (m_kind == Kind::Column) {
    const DiagParam* pParam = nullptr;
    const Known known = FindParam(context, pParam);
    if (known != Known::Ready) return known;
    datime = pParam->DWordValue;
    return m_pDef->Type == ParamType::Datime ? Known::Ready : Known::Unknown;
  }
  Value value;
  const Known known = ReadPlain(context, value);
  if (known != Known::Ready) return known;
  datime = value.asDatime();
  return value.IsDatime() ? Known::Ready : Known::Unknown;
}

std::string_view CCompiledOperand::TextOf(const DiagParam& param, CTextHolder& holder) {
  switch (param.Def->Type) {
    case ParamType::Enum:
      return param.Def->GetOptionText(param.DWordValue);
    case ParamType::Bitmask:
      holder.buffer = param.GetText();
      return holder.buffer;
    default:
      return param.StringValue;
  }
}

Known CCompiledOperand::ReadText(QueryContext& context, CTextHolder& holder,
                                 std::string_view& text) const {
  if (m_kind == Kind::Column) {
    const DiagParam* pParam = nullptr;
    const Known known = FindParam(context, pParam);
    if (known != Known::Ready) return known;
    if (!m_pDef->HoldsText()) return Known::Unknown;
    text = TextOf(*pParam, holder);
    return Known::Ready;
  }
  const Value* pValue = Constant();
  if (!pValue) {
    const Known known = ReadPlain(context, holder.value);
    if (known != Known::Ready) return known;
    pValue = &holder.value;
  } else if (const Known known = KindOf(*pValue); known != Known::Ready) {
    return known;
  }
  if (!pValue->IsString()) return Known::Unknown;
  text = pValue->asText(holder.buffer);
  return Known::Ready;
}

Known CCompiledOperand::Look(QueryContext& context) const {
  if (m_kind == Kind::Column) {
    const DiagParam* pParam = nullptr;
    return FindParam(context, pParam);
  }
  Value value;
  return ReadPlain(context, value);
}

Known CCompiledOperand::Read(QueryContext& context, Value& out) const {
  if (m_kind != Kind::Column) return ReadPlain(context, out);
  const CVDiagItem& item = *context.Scope[m_slot].Item;
  if (item.Params.Defs().get() != m_pDefs) return Known::Unknown;
  DiagParam* pParam = item.Params.Find(*m_pDef);
  if (pParam) {
    out.SetParameter(Ref<DiagParam>(pParam));
    return Known::Ready;
  }
  out.Clear();
  return Known::Null;
}

}  // namespace kestra
