#include "query/eval/compiled/Condition.h"

#include "VLib/src/text/Text.h"
#include "query/eval/Actions.h"
#include "query/eval/Operands.h"

namespace kestra {
namespace {

using Form = CCompiledCondition::Form;

// What nests deeper is left to the actions, which look at the stack.
constexpr int kMostDepth = 50;

struct FormRow {
  SemanticAction action;
  Form form;
};
constexpr FormRow kForms[] = {
    {And, Form::And},
    {Or, Form::Or},
    {Not, Form::Not},
    {IsNullTest, Form::IsNull},
    {IsNotNullTest, Form::IsNotNull},
    {CompareAsNumbers, Form::Numbers},
    {CompareAsDatimes, Form::Datimes},
    {CompareAsStrings, Form::Texts},
    {Like, Form::Like},
};

Form FormOf(const ParseNode& node) {
  for (const FormRow& row : kForms) {
    if (row.action == node.Rule->Action) return row.form;
  }
  return Form::Plain;
}

uint8_t OutcomesOf(std::string_view operation) {
  uint8_t outcomes = 0;
  if (operation.find('<') != std::string_view::npos) outcomes |= CCompiledCondition::kBelow;
  if (operation.find('=') != std::string_view::npos) outcomes |= CCompiledCondition::kEqual;
  if (operation.find('>') != std::string_view::npos) outcomes |= CCompiledCondition::kAbove;
  return outcomes;
}

Verdict Truth(bool isTrue) {
  return isTrue ? Verdict::True : Verdict::False;
}

Verdict Outcome(uint8_t outcomes, int order) {
  const uint8_t outcome = order == 0  ? CCompiledCondition::kEqual
                          : order < 0 ? CCompiledCondition::kBelow
                                      : CCompiledCondition::kAbove;
  return Truth((outcomes & outcome) != 0);
}

// What an operator gives whose operand is not ready.
Verdict Pass(Known known) {
  if (known == Known::Null) return Verdict::Null;
  if (known == Known::Failed) return Verdict::Failed;
  return known == Known::Any ? Verdict::Any : Verdict::Unknown;
}

Verdict TestNumbers(QueryContext& context, const CCompiledOperand& left,
                    const CCompiledOperand& right, uint8_t outcomes) {
  int32_t a = 0, b = 0;
  if (const Known known = left.ReadNumber(context, a); known != Known::Ready) return Pass(known);
  if (const Known known = right.ReadNumber(context, b); known != Known::Ready) return Pass(known);
  // The sign of the wrapping difference, as everywhere in the language.
  return Outcome(outcomes,
                 static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b)));
}

Verdict TestDatimes(QueryContext& context, const CCompiledOperand& left,
                    const CCompiledOperand& right, uint8_t outcomes) {
  uint32_t a = 0, b = 0;
  if (const Known known = left.ReadDatime(context, a); known != Known::Ready) return Pass(known);
  if (const Known known = right.ReadDatime(context, b); known != Known::Ready) return Pass(known);
  return Outcome(outcomes, a < b ? -1 : static_cast<int32_t>(a - b));
}

Verdict TestTexts(QueryContext& context, const CCompiledOperand& left,
                  const CCompiledOperand& right, uint8_t outcomes) {
  CTextHolder leftHolder, rightHolder;
  std::string_view a, b;
  if (const Known known = left.ReadText(context, leftHolder, a); known != Known::Ready)
    return Pass(known);
  if (const Known known = right.ReadText(context, rightHolder, b); known != Known::Ready)
    return Pass(known);
  return Outcome(outcomes, CompareNoCase(a, b));
}

Verdict TestNull(QueryContext& context, const CCompiledOperand& operand, bool wanted) {
  const Known known = operand.Look(context);
  if (known != Known::Ready && known != Known::Null) return Pass(known);
  return Truth((known == Known::Null) == wanted);
}

Verdict TestPlain(ParseNode& node) {
  Value value;
  if (!RunNode(node, value)) return Verdict::Failed;
  if (value.IsBoolean()) return Truth(value.asBool());
  if (value.IsUndefined()) return Verdict::Null;
  return value.IsAny() ? Verdict::Any : Verdict::Unknown;
}

bool HoldsFor(Form form, const DiagParamDef& def) {
  if (form == Form::Numbers) return def.HoldsNumber();
  if (form == Form::Datimes) return def.Type == ParamType::Datime;
  return form == Form::IsNull || form == Form::IsNotNull || def.HoldsText();
}

bool HoldsFor(Form form, const Value& value) {
  if (value.IsUndefined() || value.IsAny()) return true;
  if (form == Form::Numbers) return value.IsNumber();
  if (form == Form::Datimes) return value.IsDatime();
  return form == Form::IsNull || form == Form::IsNotNull || value.IsString();
}

}  // namespace

std::unique_ptr<CCompiledCondition> CCompiledCondition::Make(ParseNode& node,
                                                             const CScopeShape& shape) {
  // What is not known here is evaluated again by the actions. A call would be made twice.
  if (NeedsOf(node).hasCall) return nullptr;
  std::unique_ptr<CCompiledCondition> condition(new CCompiledCondition());
  condition->m_pShape = &shape;
  condition->m_top = condition->MakePart(node, 0);
  condition->m_pShape = nullptr;
  if (condition->m_top.form == Form::Plain) return nullptr;
  return condition;
}

CCompiledCondition::Part CCompiledCondition::MakePart(ParseNode& node, int depth) {
  Part part;
  part.pNode = &node;
  part.form = depth > kMostDepth ? Form::Plain : FormOf(node);
  switch (part.form) {
    case Form::And:
    case Form::Or:
      return MakeChain(node, part.form, depth);
    case Form::Not: {
      const Part operand = MakePart(*node.ChildNode(1), depth + 1);
      part.first = static_cast<uint32_t>(m_parts.size());
      part.count = 1;
      m_parts.push_back(operand);
      break;
    }
    case Form::IsNull:
    case Form::IsNotNull:
      AddOperands(part, node, 1);
      break;
    case Form::Plain:
      break;
    default:
      AddOperands(part, node, 2);
      break;
  }
  return part;
}

CCompiledCondition::Part CCompiledCondition::MakeChain(ParseNode& node, Form form, int depth) {
  const std::vector<ParseNode*> chain = LeftChain(node);
  std::vector<Part> parts{MakePart(*chain.front()->ChildNode(0), depth + 1)};
  for (ParseNode* pNode : chain) parts.push_back(MakePart(*pNode->ChildNode(2), depth + 1));
  Part part;
  part.form = form;
  part.pNode = &node;
  part.first = static_cast<uint32_t>(m_parts.size());
  part.count = static_cast<uint32_t>(parts.size());
  m_parts.insert(m_parts.end(), parts.begin(), parts.end());
  return part;
}

void CCompiledCondition::AddOperands(Part& part, ParseNode& node, size_t count) {
  part.first = static_cast<uint32_t>(m_operands.size());
  for (size_t i = 0; i < count; ++i)
    m_operands.push_back(std::make_unique<CCompiledOperand>(node, i * 2, *m_pShape));
  if (count < 2) return;
  if (part.form != Form::Like) {
    part.outcomes = OutcomesOf(node.Context->Tokens[node.Children[1].position].text);
    return;
  }
  const Value* pPattern = m_operands.back()->Constant();
  if (!pPattern || !pPattern->IsString()) return;
  m_patterns.push_back(std::make_unique<CLikePattern>(pPattern->asString()));
  part.pPattern = m_patterns.back().get();
}

// NULL on the left ends a chain, as does the operand that decides it.
Verdict CCompiledCondition::TestChain(QueryContext& context, const Part& part,
                                      Verdict deciding) const {
  Verdict verdict = TestPart(context, m_parts[part.first]);
  for (uint32_t i = 1; i < part.count; ++i) {
    const bool isOpen =
        verdict == Verdict::True || verdict == Verdict::False || verdict == Verdict::Any;
    if (!isOpen || verdict == deciding) return verdict;
    const Verdict next = TestPart(context, m_parts[part.first + i]);
    const bool staysOpen = verdict == Verdict::Any &&
                           (next == Verdict::True || next == Verdict::False) && next != deciding;
    verdict = staysOpen ? Verdict::Any : next;
  }
  return verdict;
}

Verdict CCompiledCondition::TestLike(QueryContext& context, const Part& part) const {
  CTextHolder textHolder, patternHolder;
  std::string_view text, pattern;
  if (const Known known = OperandAt(part.first).ReadText(context, textHolder, text);
      known != Known::Ready)
    return Pass(known);
  if (!part.pPattern) {
    if (const Known known = OperandAt(part.first + 1).ReadText(context, patternHolder, pattern);
        known != Known::Ready)
      return Pass(known);
  }
  const auto matches = part.pPattern ? part.pPattern->Matches(text, context)
                                     : MatchesUnlessStopped(text, pattern, true, false,
                                                            [&] { return context.IsCancelled(); });
  return matches ? Truth(*matches) : Verdict::Unknown;
}

Verdict CCompiledCondition::TestPart(QueryContext& context, const Part& part) const {
  switch (part.form) {
    case Form::And:
      return TestChain(context, part, Verdict::False);
    case Form::Or:
      return TestChain(context, part, Verdict::True);
    case Form::Not: {
      const Verdict verdict = TestPart(context, m_parts[part.first]);
      if (verdict == Verdict::True) return Verdict::False;
      return verdict == Verdict::False ? Verdict::True : verdict;
    }
    case Form::IsNull:
    case Form::IsNotNull:
      return TestNull(context, OperandAt(part.first), part.form == Form::IsNull);
    case Form::Numbers:
      return TestNumbers(context, OperandAt(part.first), OperandAt(part.first + 1), part.outcomes);
    case Form::Datimes:
      return TestDatimes(context, OperandAt(part.first), OperandAt(part.first + 1), part.outcomes);
    case Form::Texts:
      return TestTexts(context, OperandAt(part.first), OperandAt(part.first + 1), part.outcomes);
    case Form::Like:
      return TestLike(context, part);
    case Form::Plain:
      return TestPlain(*part.pNode);
  }
  return Verdict::Unknown;
}

bool CCompiledCondition::IsSafeOperand(Form form, const CCompiledOperand& operand,
                                       std::vector<const CCompiledOperand*>& columns) const {
  if (const Value* pValue = operand.Constant()) return HoldsFor(form, *pValue);
  if (!operand.IsColumn() || !HoldsFor(form, operand.Def())) return false;
  columns.push_back(&operand);
  return true;
}

bool CCompiledCondition::IsSafe(const Part& part,
                                std::vector<const CCompiledOperand*>& columns) const {
  switch (part.form) {
    case Form::And:
    case Form::Or:
    case Form::Not:
      for (uint32_t i = 0; i < part.count; ++i) {
        if (!IsSafe(m_parts[part.first + i], columns)) return false;
      }
      return true;
    case Form::IsNull:
    case Form::IsNotNull:
      return IsSafeOperand(part.form, OperandAt(part.first), columns);
    case Form::Plain:
      return false;
    default:
      return IsSafeOperand(part.form, OperandAt(part.first), columns) &&
             IsSafeOperand(part.form, OperandAt(part.first + 1), columns);
  }
}

}  // namespace kestra
