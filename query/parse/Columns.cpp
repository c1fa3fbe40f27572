#include "query/parse/Columns.h"

#include "Modules/Files/FileClasses.h"
#include "Modules/IniFile/IniFileClasses.h"
#include "Modules/Registry/RegistryClasses.h"
#include "VLib/src/text/Text.h"

#include <initializer_list>
#include <optional>

namespace kestra {
namespace {

// Walks the tokens of one query. Positions are signed: -1 stands before the first token.
class CColumnSearch {
 public:
  CColumnSearch(QueryContext& context, std::ptrdiff_t p)
      : m_tokens(context.Tokens), m_name(m_tokens[static_cast<size_t>(p)].text) {
    if (context.Root) m_poRootClass = context.Root->GetTypeInfo();
  }

  ColumnBinding Run(std::ptrdiff_t p);

 private:
  using Words = std::initializer_list<KeywordId>;

  KeywordId KeywordAt(std::ptrdiff_t q) const {
    return IsInside(q) ? m_tokens[static_cast<size_t>(q)].keyword : kNoKeyword;
  }
  std::string_view TextAt(std::ptrdiff_t q) const {
    return IsInside(q) ? m_tokens[static_cast<size_t>(q)].text : std::string_view();
  }
  bool IsInside(std::ptrdiff_t q) const { return q >= 0 && q < Count(); }
  std::ptrdiff_t Count() const { return static_cast<std::ptrdiff_t>(m_tokens.size()); }

  KeywordId Scan(std::ptrdiff_t& q, std::ptrdiff_t step, Words words) const;
  bool SkipGroup(std::ptrdiff_t& m) const;
  bool TrySource(std::ptrdiff_t k, ColumnBinding& found) const;
  DiagClass* ClassOfSource(std::ptrdiff_t k, std::ptrdiff_t c) const;

  const TokenList& m_tokens;
  const std::string_view m_name;
  std::string_view m_alias;
  Ref<DiagClass> m_poRootClass;
};

// Walks until one of the words stands outside of parentheses opened on the way, and answers it; q
// stays there. kNoKeyword past the end of the text. A parenthesis that was opened before the walk
// began is passed by.
KeywordId CColumnSearch::Scan(std::ptrdiff_t& q, std::ptrdiff_t step, Words words) const {
  const KeywordId opens = step < 0 ? kKwClose : kKwOpen;
  const KeywordId closes = step < 0 ? kKwOpen : kKwClose;
  for (size_t depth = 0; IsInside(q); q += step) {
    const KeywordId keyword = KeywordAt(q);
    if (keyword == kNoKeyword) continue;
    if (keyword == opens) {
      ++depth;
    } else if (depth > 0) {
      if (keyword == closes) --depth;
    } else {
      for (const KeywordId word : words) {
        if (word == keyword) return keyword;
      }
    }
  }
  return kNoKeyword;
}

// Moves m behind the parenthesis that closes the one at m, if one opens there.
bool CColumnSearch::SkipGroup(std::ptrdiff_t& m) const {
  if (KeywordAt(m) != kKwOpen) return true;
  size_t depth = 0;
  for (; IsInside(m); ++m) {
    const KeywordId keyword = KeywordAt(m);
    if (keyword == kKwOpen) ++depth;
    if (keyword == kKwClose && --depth == 0) {
      ++m;
      return true;
    }
  }
  return false;
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
  const KeywordId keyword = Scan(q, -1, {kKwFrom, kKwJoin, kKwSelect, kKwUpdate, kKwDelete});
  if (keyword == kNoKeyword) return {};
  if (keyword == kKwUpdate || keyword == kKwDelete) {
    if (TrySource(q, found)) return found;
    if (keyword == kKwDelete) return {};
  }
  if (keyword == kKwSelect || keyword == kKwUpdate) {
    const std::ptrdiff_t start = q;
    for (;;) {
      const KeywordId stop = Scan(q, 1, {kKwWhere, kKwClose, kKwFrom, kKwJoin});
      if (stop != kKwFrom && stop != kKwJoin) break;
      if (TrySource(q, found)) return found;
      ++q;
    }
    q = start - 1;
    if (Scan(q, -1, {kKwFrom, kKwJoin}) == kNoKeyword) return {};
  }
  do {
    if (TrySource(q, found)) return found;
    --q;
  } while (Scan(q, -1, {kKwFrom, kKwJoin}) != kNoKeyword);
  return {};
}

}  // namespace

ColumnBinding ResolveColumn(QueryContext& context, size_t p) {
  if (p >= context.Tokens.size()) return {};
  const auto position = static_cast<std::ptrdiff_t>(p);
  return CColumnSearch(context, position).Run(position);
}

}  // namespace kestra
