// Joins: the rows of what stands on the left, each with what fits it on the right, in the order of
// the text.
#include "VLib/src/text/Text.h"
#include "query/eval/Actions.h"
#include "query/eval/Operands.h"
#include "query/rows/FromResult.h"
#include "query/rows/RowSource.h"
#include "query/rows/index/RowFilter.h"
#include "query/rows/index/RowFinder.h"

namespace kestra {
namespace {

// The rows of a join under construction: those of the left sources, and of the one on the right.
class CJoinRows {
 public:
  CJoinRows(ParseNode& node, const CFromReader& left, int32_t limit)
      : m_context(*node.Context),
        m_left(left),
        m_filter(m_context, m_context.FilterStack.empty() ? nullptr : m_context.FilterStack.back()),
        m_limit(limit),
        m_isOnlyCounted(node.Context->UsesShortcuts && IsOnlyCounted(node)) {
    for (size_t i = 0; i < left.SourceCount(); ++i) m_leftRows.push_back(MakeRef<ValueVector>());
    m_rightRows = MakeRef<ValueVector>();
  }

  // With row r of the left and the right item bound: tries the WHERE and keeps the pair if it
  // passes. False for a failure.
  bool AddIfPasses(size_t r, CVDiagItem& item) {
    bool passes = true;
    if (!m_filter.Test(passes, m_decided)) return false;
    if (!passes) return true;
    if (m_isOnlyCounted) {
      for (const Ref<ValueVector>& rows : m_leftRows) rows->Append(Value());
      m_rightRows->Append(Value());
      return true;
    }
    for (size_t i = 0; i < m_leftRows.size(); ++i) {
      m_leftRows[i]->Append((*m_left.Source(i).pRows)[r]);
    }
    Value row;
    row.SetDiagItem(Ref<CVDiagItem>(&item));
    m_rightRows->Append(std::move(row));
    return true;
  }

  bool IsFull() const { return m_rightRows->Count() >= static_cast<size_t>(m_limit); }

  // The result: undecided rows are of use only to a further join.
  void Finish(Value& out, bool isChained, const std::string& alias) {
    if (!isChained && !m_decided) {
      out.SetAny();
      return;
    }
    auto fromResult = MakeRef<ValueVector>();
    Value rows;
    for (size_t i = 0; i < m_leftRows.size(); ++i) {
      rows.SetVector(m_leftRows[i]);
      AppendSource(*fromResult, std::string(m_left.Source(i).alias), rows);
    }
    rows.SetVector(m_rightRows);
    AppendSource(*fromResult, alias, rows);
    out.SetVector(std::move(fromResult));
  }

 private:
  QueryContext& m_context;
  const CFromReader& m_left;
  CRowFilter m_filter;
  const int32_t m_limit;
  const bool m_isOnlyCounted;
  bool m_decided = true;
  std::vector<Ref<ValueVector>> m_leftRows;
  Ref<ValueVector> m_rightRows;
};

// Both operands of a join: the left rows, and what the right source is.
bool ReadOperands(Value& out, ParseNode& node, Value& left, SourceDescriptor& right) {
  if (!Child(node, left, 0)) {
    out = std::move(left);
    return FailKeepingMessage(out);
  }
  if (!Child(node, out, 2)) return FailKeepingMessage(out);
  return left.IsVector() && ReadDescriptor(out, right) ? true : Fail(out);
}

// The children of row r of the parent source that are of the right source's class.
bool JoinChildren(size_t r, const CFromReader& left, size_t parent, const SourceDescriptor& right,
                  QueryContext& context, CJoinRows& rows) {
  const CBoundRow bound(left, context, r);
  CVDiagItem& parentItem = *(*left.Source(parent).pRows)[r].asVDIagItem();
  for (size_t c = 0; c < parentItem.Children.Count(); ++c) {
    CVDiagItem& child = *parentItem.Children.Get(c);
    if (context.IsCancelled()) return false;
    if (!EqualsNoCase(child.GetName(), right.className)) continue;
    const CBoundItem boundChild(context, right.alias, child);
    if (!rows.AddIfPasses(r, child)) return false;
    if (rows.IsFull()) return true;
  }
  return true;
}

bool RunJoinByParent(Value& out, ParseNode& node, bool isChained, int32_t limit) {
  Value leftResult;
  SourceDescriptor right;
  if (!ReadOperands(out, node, leftResult, right)) return false;
  std::string childAlias, parentAlias;
  if (ReadString(node, out, 4, childAlias) != Operand::Ready ||
      ReadString(node, out, 8, parentAlias) != Operand::Ready) {
    return Fail(out);
  }
  const CFromReader left(leftResult);
  const size_t parent = left.FindAlias(parentAlias);
  if (!left.IsValid() || childAlias != right.alias || parent == left.SourceCount())
    return Fail(out);
  CJoinRows rows(node, left, limit);
  for (size_t r = 0; r < left.Source(parent).pRows->Count() && !rows.IsFull(); ++r) {
    if (!JoinChildren(r, left, parent, right, *node.Context, rows)) return Fail(out);
  }
  rows.Finish(out, isChained, right.alias);
  return true;
}

// Whether the condition holds for the rows that are bound. It must be known: both sides are.
bool TestPair(CRowFinder& finder, ParseNode& node, bool& holds) {
  const Verdict verdict = finder.Test();
  holds = verdict == Verdict::True;
  if (holds || verdict == Verdict::False || verdict == Verdict::Null) return true;
  if (verdict == Verdict::Failed) return false;
  Value value;
  if (!Child(node, value, 4) || !(value.IsBoolean() || value.IsUndefined())) return false;
  holds = value.asBool();
  return true;
}

// The pairs of row r of the left with the rows of the right for which the condition holds.
bool JoinMatching(size_t r, const CFromReader& left, const ValueVector& rightRows,
                  const SourceDescriptor& right, ParseNode& node, CRowFinder& finder,
                  CJoinRows& rows) {
  QueryContext& context = *node.Context;
  const CBoundRow bound(left, context, r);
  if (!finder.Begin()) return false;
  for (size_t i = finder.Next(); i != CRowFinder::kNoRow; i = finder.Next()) {
    if (context.IsCancelled()) return false;
    CVDiagItem& item = *rightRows[i].asVDIagItem();
    const CBoundItem boundItem(context, right.alias, item);
    bool holds = false;
    if (!TestPair(finder, node, holds)) return false;
    if (holds && !rows.AddIfPasses(r, item)) return false;
    if (rows.IsFull()) return true;
  }
  return true;
}

CScopeShape ShapeOfPairs(const QueryContext& context, const CFromReader& left,
                         const std::string& rightAlias) {
  CScopeShape shape(context.Scope);
  for (size_t i = 0; i < left.SourceCount(); ++i) shape.Add(left.Source(i).alias);
  shape.Add(rightAlias);
  return shape;
}

bool RunJoinOnCondition(Value& out, ParseNode& node, bool isChained, int32_t limit) {
  Value leftResult;
  SourceDescriptor right;
  if (!ReadOperands(out, node, leftResult, right)) return false;
  const auto source = MakeRowSource(*node.ChildNode(2), right, kNoRowLimit);
  if (!source) return Fail(out);
  if (!source->Run(out)) return FailKeepingMessage(out);
  const CFromReader left(leftResult);
  if (!source->Rows().IsVector() || !left.IsValid()) return Fail(out);
  CJoinRows rows(node, left, limit);
  const ValueVector& rightRows = source->Rows().asVector();
  CRowFinder finder(*node.Context, node.ChildNode(4),
                    ShapeOfPairs(*node.Context, left, right.alias), rightRows, left.RowCount());
  for (size_t r = 0; r < left.RowCount() && rightRows.Count() > 0 && !rows.IsFull(); ++r) {
    if (!JoinMatching(r, left, rightRows, right, node, finder, rows)) return Fail(out);
  }
  rows.Finish(out, isChained, right.alias);
  return true;
}

}  // namespace

bool JoinByParent(Value& out, ParseNode& node) {
  return RunJoinByParent(out, node, false, kNoRowLimit);
}
bool JoinByParentLimit2(Value& out, ParseNode& node) {
  return RunJoinByParent(out, node, false, 2);
}
bool JoinByParentChained(Value& out, ParseNode& node) {
  return RunJoinByParent(out, node, true, kNoRowLimit);
}
bool JoinOnCondition(Value& out, ParseNode& node) {
  return RunJoinOnCondition(out, node, false, kNoRowLimit);
}
bool JoinOnConditionLimit2(Value& out, ParseNode& node) {
  return RunJoinOnCondition(out, node, false, 2);
}
bool JoinOnConditionChained(Value& out, ParseNode& node) {
  return RunJoinOnCondition(out, node, true, kNoRowLimit);
}

}  // namespace kestra
