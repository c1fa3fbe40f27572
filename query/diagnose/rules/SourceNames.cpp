// Modules and classes.
#include <fmt/format.h>

#include <algorithm>

#include "VLib/src/text/Text.h"
#include "query/diagnose/Wording.h"
#include "query/diagnose/rules/Rules.h"
#include "query/diagnose/rules/SourceWords.h"

namespace kestra {
namespace {

constexpr size_t kMostClasses = 6;

// Each name once: a class can stand in two places of a module.
void AddClasses(const DiagClass& parent, std::vector<std::string_view>& names) {
  for (const Ref<DiagClass>& child : parent.ChildClasses()) {
    if (std::find(names.begin(), names.end(), child->Name) == names.end())
      names.push_back(child->Name);
    AddClasses(*child, names);
  }
}

// Whether a source could be why a name was not found.
bool MayHide(CFailedText& text, const QuerySource& source) {
  const size_t name = text.Position();
  if (text.KeywordAt(name - 1) != kKwDot) return true;
  return source.alias == kNoToken || text.Text(source.alias) == text.Text(name - 2);
}

bool SayUnknownModule(CFailedText& text, const QuerySource& source, Finding& finding) {
  std::vector<std::string> suggestions;
  const std::string message =
      UnknownModuleText(text.Tokens(), source, text.RootClass(), suggestions);
  return text.Say(finding, source.module, message, suggestions);
}

bool SayUnknownClass(CFailedText& text, const QuerySource& source, Finding& finding) {
  std::vector<std::string> suggestions;
  const std::string message = UnknownClassText(text.Tokens(), source, suggestions);
  return text.Say(finding, source.className, message, suggestions);
}

bool UnknownModuleHere(CFailedText& text, Finding& finding) {
  const size_t i = text.Position();
  // Behind UPDATE and DELETE the name was taken for an alias.
  for (const QuerySource& source : text.Sources()) {
    if (source.pModule || source.module == kNoToken) continue;
    const KeywordId keyword = text.KeywordAt(source.keyword);
    const bool isAliasThere =
        (keyword == kKwUpdate || keyword == kKwDelete) && source.module + 1 == text.Stop();
    if (source.module == i || isAliasThere) {
      return SayUnknownModule(text, source, finding);
    }
  }
  return false;
}

bool SourceHidesName(CFailedText& text, Finding& finding) {
  if (!text.IsUnknownName()) return false;
  for (const QuerySource& source : text.Sources()) {
    if (!MayHide(text, source)) continue;
    if (!source.pModule) {
      return SayUnknownModule(text, source, finding);
    }
    if (source.className == kNoToken) continue;
    std::vector<std::string> classes;
    if (const std::string message = UnknownBuiltInClassText(text.Tokens(), source, classes);
        !message.empty()) {
      return text.Say(finding, source.className, message, classes);
    }
    if (!source.pClass) return SayUnknownClass(text, source, finding);
  }
  return false;
}

// Names of columns are looked up under the exact name of the module.
bool ModuleInOtherCase(CFailedText& text, Finding& finding) {
  if (!text.IsUnknownName()) return false;
  const std::string_view name = text.Text(text.Position());
  for (const QuerySource& source : text.Sources()) {
    if (!MayHide(text, source) || source.isBuiltIn || !source.pClass) continue;
    const std::string_view written = text.Text(source.module);
    if (IsBuiltInName(written) && UpperCase(written) == written && !source.isBuiltIn) {
      return text.Say(finding, source.className,
                      fmt::format("{0}.{1} needs a path: {0}.{1}('...')", written,
                                  text.Text(source.className)));
    }
    if (source.pModule->Name != written) {
      return text.Say(finding, source.module,
                      fmt::format("the module is spelt {}; columns are found under exactly this "
                                  "name",
                                  source.pModule->Name),
                      {source.pModule->Name});
    }
    if (source.hasForce && source.pClass->Params->Find(name, false)) {
      return text.Say(finding, source.module + 1,
                      "columns of a source with \"*\" cannot be named; write an age before it, "
                      "such as #0*",
                      {"#0*"});
    }
  }
  return false;
}

// FROM Module without a class.
bool NoClass(CFailedText& text, Finding& finding) {
  const bool isHere = text.ExpectedAtStop().HasIn(NonTerminal::Source, kKwDot) ||
                      text.ExpectedAtStop().HasIn(NonTerminal::Source, Predicate::Identifier);
  for (const QuerySource& source : text.Sources()) {
    if (source.className != kNoToken) continue;
    const bool hidesName = text.IsUnknownName() && MayHide(text, source);
    const bool endsHere =
        isHere && (source.module + 1 == text.Stop() || source.argumentsClose + 1 == text.Stop() ||
                   text.KeywordAt(text.Stop() - 1) == kKwDot);
    const bool isSource = text.KeywordAt(source.keyword) != kKwModule;
    if (!isSource || (!hidesName && !endsHere)) continue;
    const std::string module(text.Text(source.module));
    DiagClass* pModule = source.pModule;
    if (IsBuiltInName(module) && UpperCase(module) == module) {
      const bool isRegistry = module == "REGISTRY", isFiles = module == "FILES";
      const char* const pClass = isFiles ? "FILE" : isRegistry ? "REGISTRYVALUE" : "IniKey";
      const std::string whole = fmt::format("{}.{}('...')", module, pClass);
      return text.Say(finding, source.module, "a class and a path are missing: " + whole, {whole});
    }
    if (!pModule) return SayUnknownModule(text, source, finding);
    std::vector<std::string_view> names;
    AddClasses(*pModule, names);
    std::vector<std::string> suggestions;
    for (size_t i = 0; i < names.size() && i < kMostClasses; ++i) {
      suggestions.push_back(fmt::format("{}.{}", pModule->Name, names[i]));
    }
    return text.Say(
        finding, source.module,
        fmt::format("a class is missing behind {}; write {}", module, ListOf(suggestions)),
        suggestions);
  }
  return false;
}

// INIFILES.IniKey, which is nothing without a path.
bool NoPath(CFailedText& text, Finding& finding) {
  const size_t stop = text.Stop();
  if (!text.ExpectedAtStop().HasIn(NonTerminal::Source, kKwOpen) || stop < 3 ||
      !IsBuiltInName(text.Text(stop - 3))) {
    return false;
  }
  return text.Say(finding, stop - 1,
                  fmt::format("{0}.{1} needs a path: {0}.{1}('...')", text.Text(stop - 3),
                              text.Text(stop - 1)));
}

constexpr FailureRule kSourceRules[] = {UnknownModuleHere, NoPath, NoClass, SourceHidesName,
                                        ModuleInOtherCase};

}  // namespace

std::string UnknownModuleText(const TokenList& tokens, const QuerySource& source,
                              DiagClass* pRootClass, std::vector<std::string>& suggestions) {
  const std::string_view written = tokens[source.module].text;
  std::vector<std::string_view> names;
  if (pRootClass) {
    for (const Ref<DiagClass>& module : pRootClass->ChildClasses()) names.push_back(module->Name);
  }
  if (!IsBuiltInName(written)) {
    for (const char* pName : {"FILES", "REGISTRY", "INIFILES"}) names.emplace_back(pName);
  }
  if (IsBuiltInName(written) && source.className != kNoToken) {
    return fmt::format("{0}.{1} needs a path: {0}.{1}('...')", written,
                       tokens[source.className].text);
  }
  suggestions = NearestNames(written, names);
  std::string text = fmt::format("there is no module {}", InQuotes(written));
  for (const Ref<DiagClass>& module :
       pRootClass ? pRootClass->ChildClasses() : std::span<const Ref<DiagClass>>()) {
    if (!FindClass(module.get(), written)) continue;
    suggestions.insert(suggestions.begin(), module->Name);
    return fmt::format("{} is a class of the module {}, and no module", InQuotes(written),
                       module->Name);
  }
  return text + DidYouMean(suggestions);
}

std::string UnknownBuiltInClassText(const TokenList& tokens, const QuerySource& source,
                                    std::vector<std::string>& classes) {
  const std::string_view module = tokens[source.module].text;
  if (!source.isBuiltIn || EqualsNoCase(module, "INIFILES")) return {};
  const std::string_view name = tokens[source.className].text;
  classes = EqualsNoCase(module, "FILES")
                ? std::vector<std::string>{"FILE"}
                : std::vector<std::string>{"REGISTRYKEY", "REGISTRYVALUE"};
  for (const std::string& known : classes) {
    if (EqualsNoCase(known, name)) return {};
  }
  return fmt::format("{} has no class {}; it has {}", module, InQuotes(name),
                     ListOf(classes, " and "));
}

std::string UnknownClassText(const TokenList& tokens, const QuerySource& source,
                             std::vector<std::string>& suggestions) {
  const std::string_view written = tokens[source.className].text;
  std::vector<std::string_view> names;
  AddClasses(*source.pModule, names);
  suggestions = NearestNames(written, names);
  std::string text =
      fmt::format("{} has no class {}", tokens[source.module].text, InQuotes(written));
  if (!suggestions.empty() || names.empty() || names.size() > kMostClasses) {
    return text + DidYouMean(suggestions);
  }
  const std::vector<std::string> all(names.begin(), names.end());
  return fmt::format("{}; it has {}", text, ListOf(all, " and "));
}

std::span<const FailureRule> SourceRules() {
  return kSourceRules;
}

}  // namespace kestra
