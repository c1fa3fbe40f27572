#include "query/rows/repeated/Repeats.h"

namespace kestra {
namespace {

// Some 32 bytes each, with an index.
constexpr size_t kMostKeptRows = size_t{1} << 23;

bool IsAskedAgain(const QueryContext& context) {
  return context.UsesShortcuts && !context.Scope.empty();
}

}  // namespace

CRepeatedSource* CRepeats::SourceAt(ParseNode& node) {
  if (!IsAskedAgain(*node.Context)) return nullptr;
  auto& source = m_sources[&node];
  if (!source) source = std::make_unique<CRepeatedSource>(node);
  return source.get();
}

CRepeatedSource* CRepeats::ListedSourceAt(const ParseNode& node) const {
  const auto found = m_sources.find(&node);
  return found != m_sources.end() && found->second->IsListed() ? found->second.get() : nullptr;
}

bool CRepeats::TakeRoomFor(size_t rows) {
  if (m_keptRows > 0 && (rows > kMostKeptRows || m_keptRows > kMostKeptRows - rows)) return false;
  m_keptRows += rows;
  return true;
}

// The time is looked at as it would be if it ran. A value that is not known yet may be known later.
bool CRepeats::RunSelect(Value& out, ParseNode& node, SemanticAction run) {
  if (!IsAskedAgain(*node.Context)) return run(out, node);
  const auto [entry, isNew] = m_selects.try_emplace(&node);
  Select& select = entry->second;
  if (isNew) select.isSteady = IsSteadySelect(node);
  if (!select.isSteady) return run(out, node);
  if (select.isKept) {
    if (node.Context->CheckTimeOut(out)) return false;
    out = select.value;
    return true;
  }
  if (!run(out, node)) return false;
  if (!out.IsAny()) {
    select.value = out;
    select.isKept = true;
  }
  return true;
}

}  // namespace kestra
