// The plan of a FROM clause: its sources, its joins, and where its WHERE is tested.
#include <algorithm>
#include <set>

#include "query/eval/Actions.h"
#include "query/eval/compiled/NodeNeeds.h"
#include "query/explain/PlanWriter.h"
#include "query/rows/index/EqualityPlan.h"

namespace kestra {
namespace {

constexpr size_t kAgeSymbol = 2, kAnyUserSymbol = 3;

bool IsGiven(const ParseNode* pNode) {
  return pNode && !pNode->IsEmptyRule();
}

// One of the conditions that an AND joins, and the sources of its clause that it names.
struct WherePart {
  TokenRange range;
  std::set<std::string_view> named;
};

std::set<std::string_view> NamedOf(const ParseNode& condition,
                                   const std::set<std::string_view>& aliases) {
  std::set<std::string_view> named = OuterAliases(condition);
  std::erase_if(named, [&](std::string_view alias) { return !aliases.contains(alias); });
  return named;
}

// A WHERE where AND parts it, outside of parentheses.
std::vector<WherePart> PartedByAnd(const ParseNode& where, const std::vector<PlanSource>& sources) {
  const QueryContext& context = *where.Context;
  std::set<std::string_view> aliases;
  for (const PlanSource& source : sources) aliases.insert(source.alias);
  const TokenRange whole = ConditionRange(where, kKwWhere);
  const std::vector<int> depths = DepthsOf(context, whole);
  std::vector<WherePart> parts;
  const ParseNode* pNode = &where;
  size_t end = whole.end;
  while (pNode->Rule->Action == And) {
    const size_t position = pNode->Children[1].position;
    if (depths[position - whole.first] != 0) break;
    parts.push_back({{position + 1, end}, NamedOf(*pNode->ChildNode(2), aliases)});
    end = position;
    pNode = pNode->ChildNode(0);
  }
  parts.push_back({{whole.first, end}, NamedOf(*pNode, aliases)});
  std::reverse(parts.begin(), parts.end());
  return parts;
}

// What of a WHERE is known when of its sources that one alone is bound.
std::string DecidedBy(const std::vector<WherePart>& where, const PlanSource& source,
                      const QueryContext& context) {
  std::string text;
  for (const WherePart& part : where) {
    const auto& named = part.named;
    if (named.size() > 1 || (named.size() == 1 && *named.begin() != source.alias)) continue;
    if (text.size() > kMostText) return text + " AND ...";
    if (!text.empty()) text += " AND ";
    text += TextOf(context, part.range);
  }
  return text;
}

// Whether the rows of the last source can be looked up in an index instead of being tried one by
// one. It is made only for more than a few rows, and not where they turn out to be of different
// classes, which is known when they are there.
bool IsByIndex(ParseNode& condition, const std::vector<PlanSource>& sources, size_t last) {
  CScopeShape shape;
  for (size_t i = 0; i <= last; ++i) shape.Add(sources[i].alias);
  const auto compiled = CCompiledCondition::Make(condition, shape);
  return compiled && FindEquality(*compiled, last);
}

// Whether a FROM clause stands in a sub-select whose items are kept from run to run.
bool IsRunAgain(const ParseNode& from) {
  const ParseNode* pSelect = from.Parent;
  if (!pSelect || PartOf(*pSelect) != PlanPart::Select || IsSteadySelect(*pSelect)) return false;
  for (const ParseNode* pNode = pSelect->Parent; pNode; pNode = pNode->Parent) {
    if (PartOf(*pNode) == PlanPart::Select) return !IsInChangingStatement(from);
  }
  return false;
}

// Whether its arguments are the same each time.
bool IsSameModule(const ParseNode& source) {
  return source.Rule->Action == ModuleDescriptor && NeedsOf(*source.ChildNode(1)).IsConstant();
}

}  // namespace

bool CPlanWriter::IsInChange(const ParseNode& node) const {
  for (const ParseNode* pNode = &node; pNode; pNode = pNode->Parent) {
    if (PartOf(*pNode) == PlanPart::Change) return true;
    if (PartOf(*pNode) == PlanPart::Select) return false;
  }
  return false;
}

void CPlanWriter::WriteFrom(const ParseNode& from) {
  WriteSources(*from.ChildNode(1), from.ChildNode(2));
}

void CPlanWriter::WriteSources(const ParseNode& body, ParseNode* pWhere) {
  const std::vector<PlanSource> sources = SourcesOf(body);
  const bool hasWhere = IsGiven(pWhere);
  std::vector<WherePart> parts;
  if (hasWhere) parts = PartedByAnd(*pWhere, sources);
  for (size_t i = 0; i < sources.size(); ++i) {
    const PlanSource& source = sources[i];
    if (source.pJoin)
      WriteJoin(source,
                !source.isJoinedByParent && IsByIndex(*source.pJoin->ChildNode(4), sources, i));
    else
      WriteSource(source, false);
    const CIndent indent(*this);
    if (sources.size() == 1 && hasWhere && IsRunAgain(*body.Parent) &&
        IsSameModule(*source.pSource) && IsByIndex(*pWhere, sources, 0))
      Line("from the second run on: rows found by index if there are many");
    // What a join by parent finds is tested by the join alone. The others try the WHERE on each row
    // as they find it; what is not known then is left to the join.
    const std::string decided =
        source.isJoinedByParent ? std::string() : DecidedBy(parts, source, m_context);
    if (!decided.empty()) Line("where, on each row while it is read: " + decided);
  }
  if (!hasWhere) return;
  if (sources.size() > 1)
    Line("where, on each joined row: " + TextOf(m_context, ConditionRange(*pWhere, kKwWhere)));
  const CIndent indent(*this);
  if (PartOf(*pWhere) == PlanPart::None) WriteNested(*pWhere, "run for each row that is tested");
}

void CPlanWriter::WriteSource(const PlanSource& source, bool isByIndex) {
  const ParseNode& node = *source.pSource;
  const size_t first = node.Children[0].position;
  size_t end = node.Children[node.Rule->Length - size_t{1}].position + 1;
  std::string line = source.pJoin ? "join " : "read ";
  line += TextOf(m_context, {first, end});
  if (!source.alias.empty()) line.append(" ").append(source.alias);
  if (source.pJoin) {
    line += source.isJoinedByParent ? ": the children of the row on its left"
            : isByIndex             ? ": rows found by index if there are many"
                                    : ": each pair of rows is tested";
  }
  Line(line);
  const CIndent indent(*this);
  if (!source.isJoinedByParent) WriteContent(node);
  WriteNested(node, "run first");
}

// Where the content comes from.
void CPlanWriter::WriteContent(const ParseNode& source) {
  if (source.Rule->Action == BuiltInDescriptor) {
    Line("content: read anew each time");
    return;
  }
  const std::string_view name = m_context.Tokens[source.Children[0].position].text;
  const auto state = m_context.Root ? m_context.Root->StateOf(name) : std::nullopt;
  if (state == ModuleState::NotBuilt) Line("declared and not built yet: it shows nothing");
  if (state == ModuleState::NotHere) Line("nothing of it is on this machine");
  const ParseNode* pAge = source.ChildNode(kAgeSymbol);
  if (!IsGiven(pAge)) {
    Line("content: what is in memory, else filled");
    return;
  }
  std::string line = "content: what is in memory, else ";
  if (IsInChange(source)) {
    line += "filled; kept in the cache";
  } else {
    line += "from the cache if it is at most ";
    line.append(m_context.Tokens[pAge->Children[1].position].text)
        .append(" seconds old, else filled");
  }
  const ParseNode* pAnyUser = source.ChildNode(kAnyUserSymbol);
  if (IsGiven(pAnyUser)) line += "; shared by all users";
  Line(line);
}

void CPlanWriter::WriteJoin(const PlanSource& source, bool isByIndex) {
  WriteSource(source, isByIndex);
  const CIndent indent(*this);
  if (source.isJoinedByParent) return;
  const ParseNode& condition = *source.pJoin->ChildNode(4);
  Line("on: " + TextOf(m_context, ConditionRange(condition, kKwOn)));
  const CIndent deeper(*this);
  WriteNested(condition, "run for each pair");
}

}  // namespace kestra
