#include "query/rows/index/EqualityPlan.h"

namespace kestra {
namespace {

using Form = CCompiledCondition::Form;
using Part = CCompiledCondition::Part;

bool IsColumnOf(const CCompiledOperand& operand, Form form, size_t slot) {
  if (!operand.IsColumn() || operand.Slot() != slot) return false;
  const DiagParamDef& def = operand.Def();
  if (form == Form::Numbers) return def.HoldsNumber();
  return form == Form::Datimes ? def.Type == ParamType::Datime : def.HoldsText();
}

std::optional<EqualityPlan> PlanOf(const CCompiledCondition& condition, const Part& part,
                                   size_t lastSlot) {
  const bool isComparison =
      part.form == Form::Numbers || part.form == Form::Datimes || part.form == Form::Texts;
  if (!isComparison || part.outcomes != CCompiledCondition::kEqual) return std::nullopt;
  const CCompiledOperand& left = condition.OperandAt(part.first);
  const CCompiledOperand& right = condition.OperandAt(part.first + 1);
  if (IsColumnOf(left, part.form, lastSlot) && right.IsFreeOfLast())
    return EqualityPlan{part.form, &left, &right, false, {}};
  if (IsColumnOf(right, part.form, lastSlot) && left.IsFreeOfLast())
    return EqualityPlan{part.form, &right, &left, false, {}};
  return std::nullopt;
}

}  // namespace

// An AND whose part is false or NULL is so too, if nothing before the part fails.
std::optional<EqualityPlan> FindEquality(const CCompiledCondition& condition, size_t lastSlot) {
  const Part& top = condition.Top();
  if (top.form != Form::And) {
    auto plan = PlanOf(condition, top, lastSlot);
    if (plan) plan->isWhole = true;
    return plan;
  }
  std::vector<const CCompiledOperand*> columnsBefore;
  for (uint32_t i = 0; i < top.count; ++i) {
    const Part& part = condition.PartAt(top.first + i);
    if (auto plan = PlanOf(condition, part, lastSlot)) {
      plan->columnsBefore = std::move(columnsBefore);
      return plan;
    }
    if (!condition.IsSafe(part, columnsBefore)) break;
  }
  return std::nullopt;
}

}  // namespace kestra
