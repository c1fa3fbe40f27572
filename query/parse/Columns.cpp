#include "query/parse/Columns.h"

#include "Modules/Files/FileClasses.h"
#include "Modules/IniFile/IniFileClasses.h"
#include "Modules/Registry/RegistryClasses.h"
#include "VLib/src/text/Text.h"

namespace kestra {
namespace {

// Looks through the tokens of one query. Positions are signed: -1 stands before the first token.
class CColumnSearch {
 public:
  CColumnSearch(QueryContext& context, const CTokenMap& map, std::ptrdiff_t p)
      : m_tokens(context.Tokens), m_map(map), m_name(m_tokens[static_cast<size_t>(p)].text) {
    if (context.Root) m_poRootClass = context.Root->GetTypeInfo();
  }

  ColumnBinding Run(std::ptrdiff_t p);

 private:
  KeywordId KeywordAt(std::ptrdiff_t q) const {
    return IsInside(q) ? m_tokens[static_cast<size_t>(q)].keyword : kNoKeyword;
  }
  std::string_view TextAt(std::ptrdiff_t q) const {
    return IsInside(q) ? m_tokens[static_cast<size_t>(q)].text : std::string_view();
  }
  bool IsInside(std::ptrdiff_t q) const { return q >= 0 && q < Count(); }
  std::ptrdiff_t Count() const { return static_cast<std::ptrdiff_t>(m_tokens.size()); }

  bool SkipGroup(std::ptrdiff_t& m) const;
  bool TrySource(std::ptrdiff_t k, ColumnBinding& found) const;
  DiagClass* ClassOfSource(std::ptrdiff_t k, std::ptrdiff_t c) const;

  const TokenList& m_tokens;
  const CTokenMap& m_map;
  const std::string_view m_name;
  std::string_view m_alias;
  Ref<DiagClass> m_poRootClass;
};

// Moves m behind the parenthesis that closes the one at m, if one opens there.
bool CColumnSearch::SkipGroup(std::ptrdiff_t& m) const {
  if (KeywordAt(m) != kKwOpen) return true;
  m = m_map.Partner(m) + 1;
  return m != CTokenMap::kNowhere + 1;
}

DiagClass* CColumnSearch::ClassOfSource(std::ptrdiff_t k, std::ptrdiff_t c) const {
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

// Whether the source behind the keyword at k has the alias that is asked for and declares the name.
bool CColumnSearch::TrySource(std::ptrdiff_t k, ColumnBinding& found) const {
  if (k + 3 + (m_alias.empty() ? 0 : 1) >= Count()) return false;
  std::ptrdiff_t m = k + 2;
  if (!SkipGroup(m)) return false;
  if (KeywordAt(m) == kKwHash) {
    m += 2;
    // Only behind an age: a column of "Module*.Class" does not resolve.
    if (KeywordAt(m) == kKwStar) ++m;
  }
  const std::ptrdiff_t c = m + 1;
  if (!m_alias.empty()) {
    std::ptrdiff_t n = c + 1;
    if (!SkipGroup(n) || TextAt(n) != m_alias) return false;
  }
  DiagClass* pClass = ClassOfSource(k, c);
  const DiagParamDef* pDef = pClass ? pClass->Params->Find(m_name, false) : nullptr;
  if (!pDef) return false;
  found = {pDef, pClass};
  return true;
}

ColumnBinding CColumnSearch::Run(std::ptrdiff_t p) {
  if (p == 0) return {};
  ColumnBinding found;
  std::ptrdiff_t q = p - 1;
  if (q >= 2 && KeywordAt(q) == kKwDot) {
    m_alias = TextAt(q - 1);
    q -= 2;
  }
  q = m_map.ClauseBefore(q);
  if (q == CTokenMap::kNowhere) return {};
  const KeywordId keyword = KeywordAt(q);
  if (keyword == kKwUpdate || keyword == kKwDelete) {
    if (TrySource(q, found)) return found;
    if (keyword == kKwDelete) return {};
  }
  if (keyword == kKwSelect || keyword == kKwUpdate) {
    for (std::ptrdiff_t k = m_map.SourceOrEndFrom(q);
         KeywordAt(k) == kKwFrom || KeywordAt(k) == kKwJoin; k = m_map.SourceOrEndFrom(k + 1)) {
      if (TrySource(k, found)) return found;
    }
    q = m_map.SourceBefore(q - 1);
  }
  for (; q != CTokenMap::kNowhere; q = m_map.SourceBefore(q - 1)) {
    if (TrySource(q, found)) return found;
  }
  return {};
}

// Whether a token can be a name at all. Most tokens of a long text are literals and marks.
bool CanBeName(std::string_view token) {
  return IsAsciiAlnum(token[0]) || token[0] == '_';
}

}  // namespace

ColumnBinding ResolveColumn(QueryContext& context, const CTokenMap& map, size_t p) {
  if (p >= context.Tokens.size() || !CanBeName(context.Tokens[p].text)) return {};
  const auto position = static_cast<std::ptrdiff_t>(p);
  return CColumnSearch(context, map, position).Run(position);
}

}  // namespace kestra
