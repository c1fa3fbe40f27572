#include "query/diagnose/completion/Candidates.h"

#include <algorithm>
#include <map>

#include "Modules/Files/FileClasses.h"
#include "Modules/Registry/RegistryClasses.h"
#include "VLib/src/text/Text.h"
#include "query/diagnose/Wording.h"
#include "query/parse/Literals.h"
#include "query/parse/Predicates.h"

namespace kestra {
namespace {

using Entries = std::vector<Completion>;

std::string DescriptionOf(const DiagClass& diagClass) {
  return diagClass.pDeclaration ? diagClass.pDeclaration->description : std::string();
}

void AddDescendants(const DiagClass& parent, Entries& entries) {
  for (const Ref<DiagClass>& child : parent.ChildClasses()) {
    entries.push_back({child->Name, CompletionKind::Class, DescriptionOf(*child)});
    AddDescendants(*child, entries);
  }
}

struct BuiltInClass {
  std::string_view source;
  std::string_view name;
  const ClassDecl* pDeclaration;
};
constexpr BuiltInClass kBuiltInClasses[] = {
    {"FILES", "FILE", &kFileClass},
    {"REGISTRY", "REGISTRYKEY", &kRegistryKeyClass},
    {"REGISTRY", "REGISTRYVALUE", &kRegistryValueClass},
};

void AddParams(const DiagParamDefs& defs, CompletionKind kind, bool onlyChangeable,
               Entries& entries) {
  for (size_t i = 0; i < defs.Count(); ++i) {
    const DiagParamDef& def = *defs.Get(i);
    if (!onlyChangeable || def.CanBeChanged) entries.push_back({def.Name, kind, def.Description});
  }
}

// A column that several classes may have.
struct SharedColumn {
  std::vector<std::string> classes;  // "Module.Class", each once
  std::string description;           // of the first
};
using SharedColumns = std::map<std::string, SharedColumn>;

template <class FitsPlace>
void CollectColumns(const DiagClass& parent, const std::string& module, const FitsPlace& fits,
                    SharedColumns& columns) {
  for (const Ref<DiagClass>& child : parent.ChildClasses()) {
    const std::string path = module + '.' + child->Name;
    for (size_t i = 0; i < child->Params->Count(); ++i) {
      const DiagParamDef& def = *child->Params->Get(i);
      if (!fits(def)) continue;
      SharedColumn& column = columns[def.Name];
      if (column.classes.empty()) column.description = def.Description;
      const auto known = std::find(column.classes.begin(), column.classes.end(), path);
      if (known == column.classes.end()) column.classes.push_back(path);
    }
    CollectColumns(*child, module, fits, columns);
  }
}

// "Module.Class, Module.Other: description".
std::string DescriptionOf(const SharedColumn& column) {
  constexpr size_t kMostClasses = 3;
  std::string text;
  for (size_t i = 0; i < std::min(column.classes.size(), kMostClasses); ++i) {
    text += (i == 0 ? "" : ", ") + column.classes[i];
  }
  if (column.classes.size() > kMostClasses) text += ", ...";
  return column.description.empty() ? text : text + ": " + column.description;
}

bool IsName(const std::string_view text) {
  return !text.empty() && (IsAsciiLetter(text[0]) || text[0] == '_') && text != "_" &&
         FindKeyword(text) == kNoKeyword;
}

bool HasColumn(const std::vector<Completion>& entries, std::string_view name) {
  return std::any_of(entries.begin(), entries.end(), [&](const Completion& entry) {
    return entry.kind == CompletionKind::Column && entry.text == name;
  });
}

}  // namespace

CCandidates::CCandidates(QueryContext& context, const CExpected& expected, size_t place)
    : m_context(context),
      m_tokens(context.Tokens),
      m_expected(expected),
      m_place(place),
      m_sources(ScanSources(context.Tokens, context.RootClass.get())),
      m_open(OpenBefore(place)) {}

size_t CCandidates::OpenBefore(size_t i) const {
  size_t depth = 0;
  while (i-- > 0) {
    if (KeywordAt(i) == kKwClose) ++depth;
    if (KeywordAt(i) == kKwOpen && depth-- == 0) return i;
  }
  return kNoToken;
}

void CCandidates::AddAll(Entries& entries) {
  AddColumns(entries);
  AddAliases(entries);
  AddTargetColumns(entries);
  AddKeywords(entries);
  AddModules(entries);
  AddClasses(entries);
  AddArguments(entries);
  AddOptions(entries);
}

void CCandidates::AddKeywords(Entries& entries) const {
  for (const std::string& text : m_expected.Texts()) {
    const bool isWord = text.size() > 1 && IsAsciiLetter(text[0]) && UpperCase(text) == text;
    if (!isWord || IsBuiltInName(text)) continue;
    const char* const pBehind = text == "GETDATE" ? "()" : IsFunctionName(text) ? "(" : "";
    entries.push_back({text + pBehind, CompletionKind::Keyword, ""});
  }
  if (!m_expected.Has(Predicate::DatePartName)) return;
  for (const char* pPart : {"yy", "mm", "wk", "dd", "dw", "hh", "mi", "ss"}) {
    entries.push_back({pPart, CompletionKind::Keyword, ""});
  }
}

void CCandidates::AddModules(Entries& entries) const {
  if (m_expected.Has(Predicate::ModuleName) && m_context.RootClass) {
    for (const Ref<DiagClass>& module : m_context.RootClass->ChildClasses()) {
      entries.push_back({module->Name, CompletionKind::Module, DescriptionOf(*module)});
    }
  }
  if (!m_expected.Has(Predicate::BuiltInSource)) return;
  for (const char* pName : {"FILES", "REGISTRY", "INIFILES"}) {
    entries.push_back({pName, CompletionKind::Module, DescriptionOf(*BuiltInModule(pName))});
  }
}

// FILES in capitals is taken for the built-in source, and Files for the module.
void CCandidates::AddClasses(Entries& entries) const {
  if (!m_expected.HasIn(NonTerminal::Source, Predicate::Identifier)) return;
  for (const QuerySource& source : m_sources) {
    if (source.className != m_place) continue;
    const std::string_view module = TextAt(source.module);
    const bool isExact = source.pModule && source.pModule->Name == module;
    bool isBuiltIn = false;
    for (const BuiltInClass& known : kBuiltInClasses) {
      if (isExact || !EqualsNoCase(module, known.source)) continue;
      entries.push_back({std::string(known.name) + '(', CompletionKind::Class,
                         DescriptionOf(*known.pDeclaration->Get())});
      isBuiltIn = module == known.source;
    }
    const DiagClass* pModule = source.pModule ? source.pModule : BuiltInModule(module);
    if (pModule && !isBuiltIn) AddDescendants(*pModule, entries);
  }
}

bool CCandidates::Fits(const DiagParamDef& def) const {
  const bool isVersion = def.Type == ParamType::Version;
  return (def.HoldsNumber() && m_expected.Has(Predicate::NumberColumn)) ||
         (def.HoldsText() && !isVersion && m_expected.Has(Predicate::StringColumn)) ||
         (isVersion && m_expected.Has(Predicate::VersionColumn)) ||
         (def.Type == ParamType::Datime && m_expected.Has(Predicate::DatimeColumn));
}

void CCandidates::AddColumns(Entries& entries) {
  if (!m_expected.HasColumn()) return;
  const bool hasAlias = m_place >= 2 && KeywordAt(m_place - 1) == kKwDot;
  const std::string_view alias = hasAlias ? TextAt(m_place - 2) : std::string_view();
  std::vector<const DiagParamDefs*> before;  // the first source that has a name decides its type
  for (const auto& source : m_context.Predicates->Search().SourcesFor(m_place)) {
    if (hasAlias && source.alias != alias) continue;
    const DiagParamDefs& defs = *source.pClass->Params;
    if (std::find(before.begin(), before.end(), &defs) != before.end()) continue;
    for (size_t i = 0; i < defs.Count(); ++i) {
      const DiagParamDef& def = *defs.Get(i);
      const bool isHidden = std::any_of(before.begin(), before.end(), [&](const auto* pOther) {
        return pOther->Find(def.Name, false) != nullptr;
      });
      if (!isHidden && Fits(def)) {
        entries.push_back({def.Name, CompletionKind::Column, def.Description});
      }
    }
    before.push_back(&defs);
  }
  if (IsSelectWithoutSource()) AddColumnsOfAnyClass(entries);
}

// Whether the place is in a SELECT whose FROM is not written yet: the usual case, since one writes
// from left to right.
bool CCandidates::IsSelectWithoutSource() const {
  size_t closed = 0;  // groups behind the token and before the place
  size_t open = 0;    // groups that the place is in
  for (size_t i = m_place; i-- > 0;) {
    const KeywordId keyword = KeywordAt(i);
    if (keyword == kKwClose) ++closed;
    if (keyword == kKwOpen) closed > 0 ? --closed : ++open;
    if (closed > 0) continue;
    if (keyword == kKwFrom) return false;
    if (keyword == kKwSelect) return !HasSourceBehind(open);
  }
  return false;
}

// Whether a FROM follows the place, as many groups further out.
bool CCandidates::HasSourceBehind(size_t groups) const {
  size_t depth = groups;
  for (size_t i = m_place; i < m_tokens.size(); ++i) {
    const KeywordId keyword = KeywordAt(i);
    if (keyword == kKwOpen) ++depth;
    if (keyword == kKwClose && depth-- == 0) return false;
    if (keyword == kKwFrom && depth == 0) return true;
  }
  return false;
}

void CCandidates::AddColumnsOfAnyClass(Entries& entries) const {
  if (!m_context.Root) return;
  SharedColumns columns;
  for (const Ref<DiagClass>& module : m_context.RootClass->ChildClasses()) {
    if (m_context.Root->StateOf(module->Name) != ModuleState::Ready) continue;
    CollectColumns(
        *module, module->Name, [this](const DiagParamDef& def) { return Fits(def); }, columns);
  }
  for (const auto& [name, column] : columns) {
    if (!HasColumn(entries, name))
      entries.push_back({name, CompletionKind::Column, DescriptionOf(column)});
  }
}

void CCandidates::AddAliases(Entries& entries) {
  const bool isColumnPlace = m_expected.HasIn(NonTerminal::OptAlias, Predicate::Identifier) ||
                             m_expected.HasIn(NonTerminal::JoinChain, Predicate::Identifier);
  const bool isStatement = m_expected.HasIn(NonTerminal::ActiveStatement, Predicate::Identifier);
  const auto add = [&](std::string_view alias, std::string description) {
    if (!HasColumn(entries, alias) && IsName(alias)) {
      entries.push_back({std::string(alias), CompletionKind::Column, std::move(description)});
    }
  };
  if (isColumnPlace) {
    for (const auto& source : m_context.Predicates->Search().SourcesFor(m_place)) {
      add(source.alias, "alias of a source of the class " + source.pClass->Name);
    }
  }
  if (!isStatement) return;
  for (const QuerySource& source : m_sources) {
    if (source.alias != kNoToken && source.pClass) {
      add(TextAt(source.alias), "alias of a source of the class " + source.pClass->Name);
    }
  }
}

const QuerySource* CCandidates::SourceWithArgumentsAt(size_t open) const {
  for (const QuerySource& source : m_sources) {
    if (open != kNoToken && source.argumentsOpen == open) return &source;
  }
  return nullptr;
}

void CCandidates::AddArguments(Entries& entries) const {
  if (!m_expected.HasIn(NonTerminal::Argument, Predicate::Identifier)) return;
  const QuerySource* const pSource = SourceWithArgumentsAt(m_open);
  const DiagAction* const pAction = GivenAction();
  const DiagParams* const pArgs = pAction                       ? pAction->Args.get()
                                  : pSource && pSource->pModule ? pSource->pModule->Args.get()
                                                                : nullptr;
  if (!pArgs || !pArgs->Defs()) return;
  const size_t first = entries.size();
  AddParams(*pArgs->Defs(), CompletionKind::Argument, false, entries);
  for (size_t i = first; i < entries.size(); ++i) entries[i].text += '=';
}

// The class of the items that the EXECUTE ACTION acts on whose parenthesis is open; null where none
// is.
const DiagClass* CCandidates::ActedOnClass() const {
  if (m_open == kNoToken || m_open == 0 || KeywordAt(m_open - 1) != kKwAction) return nullptr;
  for (const QuerySource& source : m_sources) {
    if (source.keyword > m_open) return source.keyword < m_place ? source.pClass : nullptr;
  }
  return nullptr;
}

// The action whose arguments stand at the place; null where none do.
const DiagAction* CCandidates::GivenAction() const {
  const DiagClass* const pClass = ActedOnClass();
  if (!pClass || !pClass->Actions) return nullptr;
  size_t depth = 0;
  for (size_t i = m_open + 1; i + 1 < m_place; ++i) {
    if (KeywordAt(i) == kKwOpen) ++depth;
    if (KeywordAt(i) == kKwClose) --depth;
    Value name;
    if (depth == 0 && KeywordAt(i) == kKwComma && ReadStringLiteral(TextAt(i + 1), name)) {
      return pClass->Actions->Find(name.asString(), true);
    }
  }
  return nullptr;
}

void CCandidates::AddActions(Entries& entries) const {
  const DiagClass* const pClass = ActedOnClass();
  if (!pClass || !pClass->Actions || KeywordAt(m_place - 1) != kKwComma) return;
  for (size_t i = 0; i < pClass->Actions->Count(); ++i) {
    const DiagAction& action = *pClass->Actions->Get(i);
    entries.push_back({AsString(action.Name), CompletionKind::Option, action.Description});
  }
}

// The class of the items that an UPDATE ... SET changes; null where none is begun.
const DiagClass* CCandidates::UpdatedClass() const {
  size_t i = m_place;
  while (i > 0 && KeywordAt(i) != kKwUpdate) --i;
  if (KeywordAt(i) != kKwUpdate) return nullptr;
  for (const QuerySource& source : m_sources) {
    const bool isAlias = source.alias != kNoToken && KeywordAt(i + 2) == kKwSet &&
                         TextAt(source.alias) == TextAt(i + 1);
    if (source.keyword == i || isAlias) return source.pClass;
  }
  return nullptr;
}

// Names of properties that a statement gives values to.
void CCandidates::AddTargetColumns(Entries& entries) const {
  if (m_expected.HasIn(NonTerminal::ColumnList, Predicate::Identifier)) {
    for (const QuerySource& source : m_sources) {
      const bool isList = KeywordAt(source.keyword) == kKwInsert && m_open != kNoToken &&
                          source.className + 1 == m_open;
      if (isList && source.pClass) {
        AddParams(*source.pClass->Params, CompletionKind::Column, false, entries);
      }
    }
  }
  const bool isAssignment = m_expected.HasIn(NonTerminal::Argument, Predicate::Identifier) &&
                            !SourceWithArgumentsAt(m_open) && !ActedOnClass();
  const DiagClass* const pClass = isAssignment ? UpdatedClass() : nullptr;
  if (pClass) AddParams(*pClass->Params, CompletionKind::Column, true, entries);
}

// What a value at the cursor is compared with or given to; null if that is nothing that is
// declared.
const DiagParamDef* CCandidates::ComparedWith() {
  if (m_place < 2) return nullptr;
  size_t name = m_place - 2;
  const std::string_view mark = TextAt(m_place - 1);
  const bool isList = m_open != kNoToken && m_open > 1 && KeywordAt(m_open - 1) == kKwIn &&
                      (m_open == m_place - 1 || KeywordAt(m_place - 1) == kKwComma);
  if (isList) {
    name = KeywordAt(m_open - 2) == kKwNot ? m_open - 3 : m_open - 2;
  } else if (mark != "=" && mark != "<>" && KeywordAt(m_place - 1) != kKwLike) {
    return nullptr;
  }
  if (name >= m_place) return nullptr;
  if (const QuerySource* const pSource = SourceWithArgumentsAt(m_open)) {
    const bool isArgument = name == m_open + 1 || KeywordAt(name - 1) == kKwComma;
    if (isArgument && pSource->pModule && pSource->pModule->Args->Defs()) {
      return pSource->pModule->Args->Defs()->Find(TextAt(name), true);
    }
  }
  return m_context.Predicates->Column(name).pDef;
}

void CCandidates::AddOptions(Entries& entries) {
  if (!m_expected.Has(Predicate::StringLiteral)) return;
  AddActions(entries);
  const DiagParamDef* const pDef = ComparedWith();
  if (!pDef || (pDef->Type != ParamType::Enum && pDef->Type != ParamType::Bitmask)) return;
  for (const std::string& option : pDef->Options) {
    if (!option.empty()) entries.push_back({AsString(option), CompletionKind::Option, ""});
  }
}

}  // namespace kestra
