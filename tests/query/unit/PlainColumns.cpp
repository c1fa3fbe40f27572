#include "tests/query/unit/PlainColumns.h"

#include <string>
#include <vector>

#include "Modules/Files/FileClasses.h"
#include "Modules/IniFile/IniFileClasses.h"
#include "Modules/Registry/RegistryClasses.h"
#include "VLib/src/text/Text.h"

namespace kestra::test {
namespace {

using Words = std::vector<std::string>;

class CPlainColumnSearch {
 public:
  CPlainColumnSearch(QueryContext& context, int p) : m_context(context), m_name(At(p)) {}

  const DiagParamDef* Run(int p) {
    if (p == 0) return nullptr;
    int q = p - 1;
    if (q >= 2 && At(q) == ".") {
      m_alias = At(q - 1);
      q -= 2;
    }
    const int stop = ScanBack(q, {"FROM", "JOIN", "SELECT", "UPDATE", "DELETE"});
    if (stop < 0) return nullptr;
    if (stop >= 3) {
      if (const DiagParamDef* pDef = TrySource(q)) return pDef;
      if (stop == 4) return nullptr;
    }
    if (stop >= 2) {
      const int start = q;
      for (int found = ScanForward(q, {"WHERE", ")", "FROM", "JOIN"}); found >= 2;
           found = ScanForward(++q, {"WHERE", ")", "FROM", "JOIN"})) {
        if (const DiagParamDef* pDef = TrySource(q)) return pDef;
      }
      if (start == 0) return nullptr;
      q = start - 1;
      if (ScanBack(q, {"FROM", "JOIN"}) < 0) return nullptr;
    }
    for (;;) {
      if (const DiagParamDef* pDef = TrySource(q)) return pDef;
      --q;
      if (ScanBack(q, {"FROM", "JOIN"}) < 0) return nullptr;
    }
  }

 private:
  int Count() const { return static_cast<int>(m_context.Tokens.size()); }
  std::string At(int q) const {
    return q >= 0 && q < Count() ? std::string(m_context.Tokens[static_cast<size_t>(q)].text)
                                 : std::string();
  }

  // Which of the words the token is; -1 for none.
  int IndexOf(int q, const Words& words) const {
    for (size_t i = 0; i < words.size(); ++i) {
      if (EqualsNoCase(At(q), words[i])) return static_cast<int>(i);
    }
    return -1;
  }
  int ScanBack(int& q, const Words& words) const {
    for (int depth = 0; q >= 0; --q) {
      if (At(q) == ")") {
        ++depth;
      } else if (depth > 0) {
        if (At(q) == "(") --depth;
      } else if (const int index = IndexOf(q, words); index >= 0) {
        return index;
      }
    }
    return -1;
  }
  int ScanForward(int& q, const Words& words) const {
    for (int depth = 0; q < Count(); ++q) {
      if (At(q) == "(") {
        ++depth;
      } else if (depth > 0) {
        if (At(q) == ")") --depth;
      } else if (const int index = IndexOf(q, words); index >= 0) {
        return index;
      }
    }
    return -1;
  }
  bool SkipGroup(int& m) const {
    if (At(m) != "(") return true;
    for (int depth = 0; m < Count(); ++m) {
      if (At(m) == "(") ++depth;
      if (At(m) == ")" && --depth == 0) {
        ++m;
        return true;
      }
    }
    return false;
  }
  DiagClass* ClassOf(int k, int c) const {
    const bool hasPath = c == k + 3 && At(c + 1) == "(";
    if (hasPath && EqualsNoCase(At(k + 1), "FILES") && EqualsNoCase(At(c), "FILE")) {
      return kFileClass.Get().get();
    }
    if (hasPath && EqualsNoCase(At(k + 1), "REGISTRY")) {
      if (EqualsNoCase(At(c), "REGISTRYKEY")) return kRegistryKeyClass.Get().get();
      if (EqualsNoCase(At(c), "REGISTRYVALUE")) return kRegistryValueClass.Get().get();
    }
    if (EqualsNoCase(At(k + 1), "INIFILES")) return FindClass(kIniFileModule.Get().get(), At(c));
    const Ref<DiagClass> root = m_context.Root->GetTypeInfo();
    for (const Ref<DiagClass>& module : root->ChildClasses()) {
      if (module->Name == At(k + 1)) return FindClass(module.get(), At(c));
    }
    return nullptr;
  }
  const DiagParamDef* TrySource(int k) const {
    if (k + 3 + (m_alias.empty() ? 0 : 1) >= Count()) return nullptr;
    int m = k + 2;
    if (!SkipGroup(m)) return nullptr;
    if (At(m) == "#") {
      m += 2;
      if (At(m) == "*") ++m;
    }
    const int c = m + 1;
    int n = c + 1;
    if (!m_alias.empty() && (!SkipGroup(n) || At(n) != m_alias)) return nullptr;
    const DiagClass* pClass = ClassOf(k, c);
    return pClass ? pClass->Params->Find(m_name, false) : nullptr;
  }

  QueryContext& m_context;
  const std::string m_name;
  std::string m_alias;
};

}  // namespace

const DiagParamDef* PlainColumn(QueryContext& context, size_t p) {
  const int position = static_cast<int>(p);
  return CPlainColumnSearch(context, position).Run(position);
}

}  // namespace kestra::test
