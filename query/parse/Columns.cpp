#include "query/parse/Columns.h"

#include <algorithm>

#include "Modules/Files/FileClasses.h"
#include "Modules/IniFile/IniFileClasses.h"
#include "Modules/Registry/RegistryClasses.h"
#include "VLib/src/text/Text.h"

namespace kestra {
namespace {

// A walk over more sources than this asks which of them have the alias, or whether any can have the
// name.
constexpr size_t kManySources = 16;

// Whether a token can be a name at all. Most tokens of a long text are literals and marks.
bool CanBeName(std::string_view token) {
  if (!IsAsciiAlnum(token[0]) && token[0] != '_') return false;
  return !std::all_of(token.begin(), token.end(), IsAsciiDigit);
}

}  // namespace

CColumnSearch::CColumnSearch(const QueryContext& context)
    : m_tokens(context.Tokens),
      m_poRootClass(context.RootClass),
      m_map(context.Tokens),
      m_sources(context.Tokens.size()) {}

// Moves m behind the parenthesis that closes the one at m, if one opens there.
bool CColumnSearch::SkipGroup(Place& m) const {
  if (KeywordAt(m) != kKwOpen) return true;
  m = m_map.Partner(m) + 1;
  return m != CTokenMap::kNowhere + 1;
}

DiagClass* CColumnSearch::FindSourceClass(Place k, Place c) const {
  const std::string_view source = TextAt(k + 1);
  const std::string_view className = TextAt(c);
  const bool isBuiltInShape = c == k + 3 && KeywordAt(c + 1) == kKwOpen;
  if (isBuiltInShape && EqualsNoCase(source, "FILES") && EqualsNoCase(className, "FILE")) {
    return kFileClass.Get().get();
  }
  if (isBuiltInShape && EqualsNoCase(source, "REGISTRY")) {
    if (EqualsNoCase(className, "REGISTRYKEY")) return kRegistryKeyClass.Get().get();
    if (EqualsNoCase(className, "REGISTRYVALUE")) return kRegistryValueClass.Get().get();
  }
  if (EqualsNoCase(source, "INIFILES")) {
    return FindClass(kIniFileModule.Get().get(), className);
  }
  if (!m_poRootClass) return nullptr;
  for (const Ref<DiagClass>& module : m_poRootClass->ChildClasses()) {
    if (module && module->Name == source) return FindClass(module.get(), className);
  }
  return nullptr;
}

const CColumnSearch::Source& CColumnSearch::SourceBehind(Place k) {
  Source& source = m_sources[static_cast<size_t>(k)];
  if (source.isKnown) return source;
  source.isKnown = true;
  Place m = k + 2;
  if (!SkipGroup(m)) return source;
  if (KeywordAt(m) == kKwHash) {
    m += 2;
    // Only behind an age: a column of "Module*.Class" does not resolve.
    if (KeywordAt(m) == kKwStar) ++m;
  }
  source.pClass = FindSourceClass(k, m + 1);
  Place alias = m + 2;
  if (SkipGroup(alias)) source.alias = alias;
  return source;
}

// Whether the source behind the keyword at k has the alias that is asked for and declares the name.
bool CColumnSearch::TrySource(Place k, const Name& name, ColumnBinding& found) {
  const Place needed = k + 3 + (name.alias.empty() ? 0 : 1);
  if (!IsInside(needed)) return false;
  const Source& source = SourceBehind(k);
  if (!source.pClass) return false;
  if (!name.alias.empty() && TextAt(source.alias) != name.alias) return false;
  const DiagParamDef* pDef = source.pClass->Params->Find(name.text, false);
  if (!pDef) return false;
  found = {pDef, source.pClass};
  return true;
}

void CColumnSearch::IndexSources() {
  if (m_isIndexed) return;
  for (Place k = 0; IsInside(k); ++k) {
    if (KeywordAt(k) != kKwFrom && KeywordAt(k) != kKwJoin) continue;
    const Source& source = SourceBehind(k);
    m_byAlias[TextAt(source.alias)].push_back(k);
    if (source.pClass) m_classes.insert(source.pClass);
  }
  m_isIndexed = true;
}

const std::vector<CColumnSearch::Place>& CColumnSearch::SourcesNamed(std::string_view alias) {
  IndexSources();
  return m_byAlias[alias];
}

// Most names without an alias are aliases themselves, which stand before a dot.
bool CColumnSearch::IsDeclared(std::string_view name) {
  IndexSources();
  return std::any_of(m_classes.begin(), m_classes.end(), [&](const DiagClass* pClass) {
    return pClass->Params->Find(name, false) != nullptr;
  });
}

template <class Visit>
void CColumnSearch::VisitSources(Place q, const Name& name, Visit&& visit) {
  q = m_map.ClauseBefore(q);
  if (q == CTokenMap::kNowhere) return;
  const KeywordId keyword = KeywordAt(q);
  if (keyword == kKwUpdate || keyword == kKwDelete) {
    if (visit(q) || keyword == kKwDelete) return;
  }
  if (keyword == kKwSelect || keyword == kKwUpdate) {
    for (Place k = m_map.SourceOrEndFrom(q); KeywordAt(k) == kKwFrom || KeywordAt(k) == kKwJoin;
         k = m_map.SourceOrEndFrom(k + 1)) {
      if (visit(k)) return;
    }
    q = m_map.SourceBefore(q - 1);
  }
  for (size_t steps = 0; q != CTokenMap::kNowhere; q = m_map.SourceBefore(q - 1)) {
    if (visit(q)) return;
    if (++steps < kManySources) continue;
    if (name.alias.empty()) {
      if (steps == kManySources && !name.text.empty() && !IsDeclared(name.text)) return;
      continue;
    }
    const std::vector<Place>& named = SourcesNamed(name.alias);
    for (auto it = std::lower_bound(named.begin(), named.end(), q); it != named.begin();) {
      if (m_map.IsOnWayBack(*--it, q) && visit(*it)) return;
    }
    return;
  }
}

ColumnBinding CColumnSearch::Resolve(size_t position) {
  Name name{TextAt(static_cast<Place>(position)), {}};
  if (position == 0 || name.text.empty() || !CanBeName(name.text)) return {};
  Place q = static_cast<Place>(position) - 1;
  if (q >= 2 && KeywordAt(q) == kKwDot) {
    name.alias = TextAt(q - 1);
    q -= 2;
  }
  ColumnBinding found;
  VisitSources(q, name, [&](Place k) { return TrySource(k, name, found); });
  return found;
}

std::vector<CColumnSearch::VisibleSource> CColumnSearch::SourcesFor(size_t position) {
  std::vector<VisibleSource> sources;
  Place q = static_cast<Place>(position) - 1;
  if (q >= 2 && KeywordAt(q) == kKwDot) q -= 2;
  VisitSources(q, {}, [&](Place k) {
    if (!IsInside(k + 3)) return false;
    const Source& source = SourceBehind(k);
    if (source.pClass) sources.push_back({source.pClass, TextAt(source.alias)});
    return false;
  });
  return sources;
}

}  // namespace kestra
