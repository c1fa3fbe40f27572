#include "query/explain/PlanWriter.h"

#include "query/eval/Actions.h"
#include "query/eval/compiled/NodeNeeds.h"

namespace kestra {
namespace {

constexpr size_t kMostDepth = 40;

// How a SELECT makes its value out of the rows.
const char* WhatComesOf(const ParseNode& select) {
  const SemanticAction action = select.Rule->Action;
  if (action == RowsOfSource) return "the rows";
  if (action == ValuePerRow) return "for each row";
  if (action == FirstRowValue) return "of the only row; an Error unless there is exactly one";
  return "one value of all rows";
}

}  // namespace

void CPlanWriter::Line(std::string_view text) {
  m_plan.append(2 * m_depth, ' ').append(text).append(1, '\n');
}

void CPlanWriter::Write(const ParseNode& top) {
  if (PartOf(top) != PlanPart::None) {
    WritePart(top);
    return;
  }
  const std::vector<const ParseNode*> parts = PartsBelow(top);
  const bool isStatement = !parts.empty() && PartOf(*parts.front()) >= PlanPart::Change &&
                           PartOf(*parts.front()) <= PlanPart::Procedure;
  if (isStatement) {
    for (const ParseNode* pPart : parts) WritePart(*pPart);
    return;
  }
  Line("value: " + TextOf(m_context, {0, m_context.Tokens.size()}));
  const CIndent indent(*this);
  WriteNested(top, "run once");
}

void CPlanWriter::WritePart(const ParseNode& node) {
  if (m_depth > kMostDepth) {
    Line("...");
    return;
  }
  switch (PartOf(node)) {
    case PlanPart::Select:
      return WriteSelect(node);
    case PlanPart::From:
      return WriteFrom(node);
    case PlanPart::Source:
      return WriteSource({&node, {}, nullptr, false}, false);
    case PlanPart::Change:
      return WriteChange(node);
    case PlanPart::Drop:
      return WriteHead(node, "forgets what modules were filled with; needs no permission");
    case PlanPart::Procedure:
      Line("procedure " +
           TextOf(m_context, {node.Children[2].position, node.Children[2].position + 1}) +
           ": runs its statements and gives their answer that name");
      return WriteIndented(node);
    case PlanPart::Call:
      WriteHead(node, "runs code of a library; needs no permission");
      break;
    case PlanPart::None:
      return;
  }
  const CIndent indent(*this);
  WriteNested(node, "run once");
}

// The text of the node up to what is told below it.
void CPlanWriter::WriteHead(const ParseNode& node, std::string_view remark) {
  TokenRange range = RangeOf(node).value_or(TokenRange{});
  const ParseNode* pLast = node.ChildNode(node.Rule->Length - size_t{1});
  if (pLast && PartOf(*pLast) == PlanPart::From) {
    range.end = pLast->Children[0].position;
  } else {
    range = WithClosings(m_context, range);
    const std::vector<int> depths = DepthsOf(m_context, range);
    for (size_t i = range.first; i < range.end; ++i) {
      const bool isWhere = m_context.Tokens[i].keyword == kKwWhere;
      if (isWhere && depths[i - range.first] == 0) range.end = i;
    }
  }
  Line(TextOf(m_context, range).append(": ").append(remark));
}

void CPlanWriter::WriteSelect(const ParseNode& select) {
  WriteHead(select, WhatComesOf(select));
  const CIndent indent(*this);
  const size_t from = select.Rule->Length - size_t{1};
  WriteFrom(*select.ChildNode(from));
  for (size_t i = 0; i < from; ++i) {
    const ParseNode* pValues = select.ChildNode(i);
    if (!pValues) continue;
    if (PartOf(*pValues) == PlanPart::None)
      WriteNested(*pValues, "run for each row");
    else
      WriteNested(select, "run for each row");
  }
}

void CPlanWriter::WriteChange(const ParseNode& change) {
  WriteHead(change, "changes the machine, which needs permission");
  const CIndent indent(*this);
  const SemanticAction action = change.Rule->Action;
  if (action == UpdateRows || action == DeleteRows) {
    WriteSources(*change.ChildNode(1), change.ChildNode(action == UpdateRows ? 4 : 2));
    if (action == UpdateRows) WriteNested(*change.ChildNode(3), "run for each row");
    return;
  }
  WriteBelow(change);
}

void CPlanWriter::WriteIndented(const ParseNode& node) {
  const CIndent indent(*this);
  WriteBelow(node);
}

void CPlanWriter::WriteBelow(const ParseNode& node) {
  for (const ParseNode* pPart : PartsBelow(node)) WritePart(*pPart);
}

void CPlanWriter::WriteNested(const ParseNode& node, std::string_view often) {
  for (const ParseNode* pPart : PartsBelow(node)) {
    if (PartOf(*pPart) == PlanPart::Select) {
      const auto outer = OuterAliases(*pPart);
      std::string line = "sub-select, ";
      line += IsSteadySelect(*pPart) ? "run once" : often;
      const char* pBetween = outer.empty() ? "" : "; it names ";
      for (const std::string_view alias : outer) {
        line.append(pBetween).append(alias);
        pBetween = ", ";
      }
      Line(line + ":");
      const CIndent indent(*this);
      WritePart(*pPart);
    } else if (PartOf(*pPart) != PlanPart::From && PartOf(*pPart) != PlanPart::Source) {
      WritePart(*pPart);
    }
  }
}

}  // namespace kestra
