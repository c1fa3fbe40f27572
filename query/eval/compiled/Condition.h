// Conditions that are tried on many rows, in a form that says at once where each value is found. It
// answers what the condition's actions would, or that they have to be asked. Where an action of a
// part was asked and failed, the whole fails, and nothing is asked again.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "query/eval/compiled/LikePattern.h"
#include "query/eval/compiled/Operand.h"

namespace kestra {

enum class Verdict : uint8_t { False, True, Null, Any, Unknown, Failed };

// What a WHERE's verdict means for its row: whether it stays, and decided becomes false where that
// is not known yet. False if the verdict says nothing of the row.
inline bool Decides(Verdict verdict, bool& passes, bool& decided) {
  passes = verdict == Verdict::True || verdict == Verdict::Any;
  if (verdict == Verdict::Any) decided = false;
  return verdict != Verdict::Unknown && verdict != Verdict::Failed;
}

class CCompiledCondition {
 public:
  enum class Form : uint8_t {
    And,
    Or,
    Not,
    IsNull,
    IsNotNull,
    Numbers,
    Datimes,
    Texts,
    Like,
    Plain,
  };
  struct Part {
    Form form = Form::Plain;
    uint8_t outcomes = 0;  // of a comparison: a set of kBelow, kEqual, kAbove
    uint32_t first = 0;    // its parts in PartAt, or its first operand
    uint32_t count = 0;    // how many parts
    ParseNode* pNode = nullptr;
    const CLikePattern* pPattern = nullptr;  // of LIKE with a constant pattern
  };
  static constexpr uint8_t kBelow = 1, kEqual = 2, kAbove = 4;

  // Null for a condition that has to be left to its actions. The node must outlive the object.
  static std::unique_ptr<CCompiledCondition> Make(ParseNode& node, const CScopeShape& shape);

  // Wants the rows of the shape to be bound.
  Verdict Test(QueryContext& context) const { return TestPart(context, m_top); }

  const Part& Top() const { return m_top; }
  const Part& PartAt(size_t index) const { return m_parts[index]; }
  const CCompiledOperand& OperandAt(size_t index) const { return *m_operands[index]; }
  // Whether a part cannot fail on rows of the classes that its columns are declared by. Those
  // columns are appended to columns.
  bool IsSafe(const Part& part, std::vector<const CCompiledOperand*>& columns) const;

 private:
  CCompiledCondition() = default;

  Part MakePart(ParseNode& node, int depth);
  Part MakeChain(ParseNode& node, Form form, int depth);
  void AddOperands(Part& part, ParseNode& node, size_t count);
  Verdict TestPart(QueryContext& context, const Part& part) const;
  Verdict TestChain(QueryContext& context, const Part& part, Verdict deciding) const;
  Verdict TestLike(QueryContext& context, const Part& part) const;
  bool IsSafeOperand(Form form, const CCompiledOperand& operand,
                     std::vector<const CCompiledOperand*>& columns) const;

  const CScopeShape* m_pShape = nullptr;  // while it is made
  Part m_top;
  std::vector<Part> m_parts;
  std::vector<std::unique_ptr<CCompiledOperand>> m_operands;
  std::vector<std::unique_ptr<CLikePattern>> m_patterns;
};

}  // namespace kestra
