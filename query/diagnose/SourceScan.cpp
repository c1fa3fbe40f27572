#include "query/diagnose/SourceScan.h"

#include "Modules/Files/FileClasses.h"
#include "Modules/IniFile/IniFileClasses.h"
#include "Modules/Registry/RegistryClasses.h"
#include "VLib/src/text/Text.h"

namespace kestra {
namespace {

class CSourceScan {
 public:
  CSourceScan(const TokenList& tokens, DiagClass* pRootClass)
      : m_tokens(tokens), m_pRootClass(pRootClass), m_partners(tokens.size(), kNoToken) {
    std::vector<size_t> open;
    for (size_t i = 0; i < tokens.size(); ++i) {
      if (tokens[i].keyword == kKwOpen) {
        open.push_back(i);
      } else if (tokens[i].keyword == kKwClose && !open.empty()) {
        m_partners[open.back()] = i;
        open.pop_back();
      }
    }
  }

  QuerySource SourceAt(size_t keyword) const {
    QuerySource source;
    source.keyword = keyword;
    if (!IsName(keyword + 1)) return source;
    source.module = keyword + 1;
    size_t next = keyword + 2;
    if (KeywordAt(next) == kKwOpen) {
      source.argumentsOpen = next;
      source.argumentsClose = m_partners[next];
      if (source.argumentsClose != kNoToken) next = source.argumentsClose + 1;
    }
    const bool hasAge = KeywordAt(next) == kKwHash;
    if (hasAge) next += 2;
    if (KeywordAt(next) == kKwStar) {
      source.hasForce = !hasAge;
      ++next;
    }
    if (KeywordAt(next) == kKwDot && IsName(next + 1)) {
      source.className = next + 1;
      FindRest(source);
    }
    FindClasses(source);
    return source;
  }

 private:
  KeywordId KeywordAt(size_t i) const {
    return i < m_tokens.size() ? m_tokens[i].keyword : kNoKeyword;
  }
  bool IsName(size_t i) const {
    if (i >= m_tokens.size()) return false;
    const char c = m_tokens[i].text[0];
    return (IsAsciiLetter(c) || c == '_') && !IsClauseWord(m_tokens[i].keyword);
  }
  static bool IsClauseWord(KeywordId keyword) {
    return keyword == kKwSelect || keyword == kKwFrom || keyword == kKwWhere ||
           keyword == kKwJoin || keyword == kKwOn || keyword == kKwSet || keyword == kKwValues ||
           keyword == kKwInsert || keyword == kKwUpdate || keyword == kKwDelete ||
           keyword == kKwExecute || keyword == kKwDrop || keyword == kKwCreate;
  }

  // What stands behind the class.
  void FindRest(QuerySource& source) const {
    size_t next = source.className + 1;
    // The list of columns of an INSERT is no path.
    if (KeywordAt(next) == kKwOpen && KeywordAt(source.keyword) != kKwInsert) {
      source.pathOpen = next;
      next = m_partners[next] == kNoToken ? m_tokens.size() : m_partners[next] + 1;
    }
    if (IsName(next)) source.alias = next;
  }

  void FindClasses(QuerySource& source) const {
    const std::string_view name = m_tokens[source.module].text;
    source.isBuiltIn = IsBuiltInName(name) && source.pathOpen != kNoToken;
    source.pModule = source.isBuiltIn ? BuiltInModule(name) : FindModule(m_pRootClass, name, true);
    if (!source.pModule || source.className == kNoToken) return;
    source.pClass = FindClass(source.pModule, m_tokens[source.className].text);
  }

  const TokenList& m_tokens;
  DiagClass* const m_pRootClass;
  std::vector<size_t> m_partners;  // of opening parentheses
};

bool StandsBeforeSource(KeywordId keyword) {
  return keyword == kKwFrom || keyword == kKwJoin || keyword == kKwUpdate || keyword == kKwDelete ||
         keyword == kKwInsert;
}

}  // namespace

std::vector<QuerySource> ScanSources(const TokenList& tokens, DiagClass* pRootClass) {
  const CSourceScan scan(tokens, pRootClass);
  std::vector<QuerySource> sources;
  for (size_t i = 0; i < tokens.size(); ++i) {
    const bool isDrop = tokens[i].keyword == kKwModule && i > 0 && tokens[i - 1].keyword == kKwDrop;
    if (!isDrop && !StandsBeforeSource(tokens[i].keyword)) continue;
    // UPDATE alias SET and DELETE alias FROM name no source there.
    const KeywordId behind = i + 2 < tokens.size() ? tokens[i + 2].keyword : kNoKeyword;
    const bool isAlias = (tokens[i].keyword == kKwUpdate && behind == kKwSet) ||
                         (tokens[i].keyword == kKwDelete && behind == kKwFrom);
    if (isAlias) continue;
    sources.push_back(scan.SourceAt(i));
    if (sources.back().module == kNoToken) sources.pop_back();
  }
  return sources;
}

DiagClass* FindModule(DiagClass* pRootClass, std::string_view name, bool ignoreCase) {
  if (!pRootClass) return nullptr;
  for (const Ref<DiagClass>& module : pRootClass->ChildClasses()) {
    if (module && (ignoreCase ? EqualsNoCase(module->Name, name) : module->Name == name)) {
      return module.get();
    }
  }
  return nullptr;
}

bool IsBuiltInName(std::string_view name) {
  return BuiltInModule(name) != nullptr;
}

DiagClass* BuiltInModule(std::string_view name) {
  if (EqualsNoCase(name, "FILES")) return kFilesModule.Get().get();
  if (EqualsNoCase(name, "REGISTRY")) return kRegistryModule.Get().get();
  if (EqualsNoCase(name, "INIFILES")) return kIniFileModule.Get().get();
  return nullptr;
}

}  // namespace kestra
