// Operands of a condition that is tried on many rows: where to find each value is worked out once.
// Each answers what the operand's action would, or that the action itself has to be asked.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "query/Value.h"
#include "query/eval/compiled/NodeNeeds.h"
#include "query/eval/compiled/ScopeShape.h"

namespace kestra {

// How far an operand is known. Unknown: only its action can tell, and whether that fails. Failed:
// its action was asked, and failed.
enum class Known : uint8_t { Ready, Null, Any, Unknown, Failed };

// What a text that was read lies in, unless it lies in the row.
struct CTextHolder {
  Value value;
  std::string buffer;
};

class CCompiledOperand {
 public:
  // The operand that is symbol i of node, for a scope of that shape.
  CCompiledOperand(ParseNode& node, size_t symbol, const CScopeShape& shape);

  // Each wants the rows of the shape to be bound.
  Known ReadNumber(QueryContext& context, int32_t& number) const;
  Known ReadDatime(QueryContext& context, uint32_t& datime) const;
  // The text lives as long as the holder and the row.
  Known ReadText(QueryContext& context, CTextHolder& holder, std::string_view& text) const;
  // Only whether it is there.
  Known Look(QueryContext& context) const;
  // The value itself, or the Error of one that failed.
  Known Read(QueryContext& context, Value& out) const;

  // A constant's value; null for what is none.
  const Value* Constant() const { return m_kind == Kind::Constant ? &m_value : nullptr; }
  bool IsColumn() const { return m_kind == Kind::Column; }
  // Of a column: whose row it reads, and what. For rows of that class it cannot fail.
  size_t Slot() const { return m_slot; }
  const DiagParamDef& Def() const { return *m_pDef; }
  const DiagParamDefs* Defs() const { return m_pDefs; }
  // Whether it can be read while the last row of the shape is not bound.
  bool IsFreeOfLast() const { return m_isFreeOfLast; }

  // The same of a row at hand, whose class is the column's.
  static std::string_view TextOf(const DiagParam& param, CTextHolder& holder);

 private:
  enum class Kind : uint8_t { Column, Constant, Plain };

  bool SetColumn(const ParseNode& column, const CScopeShape& shape);
  void SetConstant(ParseNode& node, size_t symbol);
  Known FindParam(const QueryContext& context, const DiagParam*& pParam) const;
  Known ReadPlain(QueryContext& context, Value& value) const;

  Kind m_kind = Kind::Plain;
  bool m_isFreeOfLast = false;
  const size_t m_symbol;
  ParseNode& m_node;
  size_t m_slot = 0;
  const DiagParamDef* m_pDef = nullptr;  // lives in the class tree, which the query holds
  const DiagParamDefs* m_pDefs = nullptr;
  Value m_value;
};

}  // namespace kestra
