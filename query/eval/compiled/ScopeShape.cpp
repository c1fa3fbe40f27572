#include "query/eval/compiled/ScopeShape.h"

#include <algorithm>

namespace kestra {

size_t CScopeShape::FindSlot(std::string_view alias) const {
  if (alias.empty()) return m_aliases.empty() ? kNone : m_aliases.size() - 1;
  const auto found = std::find(m_aliases.begin(), m_aliases.end(), alias);
  return found == m_aliases.end() ? kNone : static_cast<size_t>(found - m_aliases.begin());
}

bool CScopeShape::Begins(const std::vector<ScopeEntry>& scope, size_t count) const {
  if (scope.size() != count || m_aliases.size() < count) return false;
  for (size_t i = 0; i < count; ++i) {
    if (scope[i].Alias != m_aliases[i]) return false;
  }
  return true;
}

}  // namespace kestra
