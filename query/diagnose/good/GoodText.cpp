// The sources of a text that parses: modules, classes, arguments and aliases.
#include "query/diagnose/good/GoodText.h"

#include <fmt/format.h>

#include "VLib/src/text/Text.h"
#include "query/diagnose/Wording.h"
#include "query/diagnose/rules/Rules.h"
#include "query/diagnose/rules/SourceWords.h"

namespace kestra {
namespace {

constexpr size_t kMostNames = 12;  // that a sentence lists

}  // namespace

CGoodText::CGoodText(const QueryContext& context)
    : m_context(context),
      m_tokens(context.Tokens),
      m_sources(ScanSources(context.Tokens, context.RootClass.get())),
      m_depths(context.Tokens.size()) {
  uint32_t depth = 0;
  for (size_t i = 0; i < m_tokens.size(); ++i) {
    if (m_tokens[i].keyword == kKwClose && depth > 0) --depth;
    m_depths[i] = depth;
    if (m_tokens[i].keyword == kKwOpen) ++depth;
  }
}

std::optional<Finding> CGoodText::Find() {
  for (const QuerySource& source : m_sources) {
    if (TestModule(source) || TestClass(source) || TestArguments(source) || TestTarget(source) ||
        TestAlias(source) || TestPath(source)) {
      return m_finding;
    }
  }
  for (size_t i = 0; i < m_tokens.size(); ++i) {
    const KeywordId keyword = m_tokens[i].keyword;
    if (keyword == kKwLike && i + 1 < m_tokens.size() && TestPattern(i + 1)) return m_finding;
    if (keyword == kKwSelect && TestStar(i)) return m_finding;
    if ((keyword == kKwUpdate || keyword == kKwDelete) && TestChangedAlias(i)) return m_finding;
    if (keyword == kKwAttachedTo && TestJoinByParent(i)) return m_finding;
    if (TestOption(i)) return m_finding;
  }
  return std::nullopt;
}

KeywordId CGoodText::KeywordAt(size_t i) const {
  return i < m_tokens.size() ? m_tokens[i].keyword : kNoKeyword;
}

// Whether the statement that a source belongs to cannot be run without it: a sub-select may never
// be asked, and a procedure is not run where it is made.
bool CGoodText::IsAlwaysRun(const QuerySource& source) const {
  const KeywordId first = m_tokens[0].keyword;
  return first != kKwCreate && (m_depths[source.keyword] == 0 || first == kKwExecute);
}

bool CGoodText::Say(size_t i, bool isError, std::string message,
                    std::vector<std::string> suggestions) {
  const std::string_view token = m_tokens[i].text;
  m_finding.offset = static_cast<size_t>(token.data() - m_context.QueryText.data());
  m_finding.length = token.size();
  m_finding.isError = isError;
  m_finding.message = std::move(message);
  m_finding.suggestions = std::move(suggestions);
  return true;
}

// An item class passes for a module's name until it is run.
bool CGoodText::TestModule(const QuerySource& source) {
  if (source.pModule) return false;
  std::vector<std::string> suggestions;
  const bool isDrop = KeywordAt(source.keyword) == kKwModule;
  const std::string message =
      UnknownModuleText(m_tokens, source, m_context.RootClass.get(), suggestions);
  return Say(source.module, IsAlwaysRun(source) && !isDrop, message, suggestions);
}

bool CGoodText::TestClass(const QuerySource& source) {
  if (source.className == kNoToken) return false;
  const std::string_view module = m_tokens[source.module].text;
  const std::string_view name = m_tokens[source.className].text;
  const bool isInsert = KeywordAt(source.keyword) == kKwInsert;
  std::vector<std::string> classes;
  if (const std::string message = UnknownBuiltInClassText(m_tokens, source, classes);
      !message.empty()) {
    return Say(source.className, IsAlwaysRun(source), message, classes);
  }
  if (!source.pClass) {
    std::vector<std::string> suggestions;
    const std::string message = UnknownClassText(m_tokens, source, suggestions);
    return Say(source.className, isInsert && IsAlwaysRun(source), message, suggestions);
  }
  // FILES.FILE without its path is the module Files, which has other arguments.
  if (!source.isBuiltIn && source.argumentsOpen == kNoToken && IsBuiltInName(module) &&
      UpperCase(module) == module && UpperCase(name) == name) {
    return Say(source.className, false,
               fmt::format("{0}.{1} needs a path: {0}.{1}('...')", module, name), {});
  }
  if (isInsert && !source.pClass->CanBeAdded) {
    return Say(source.className, IsAlwaysRun(source),
               fmt::format("items of the class {} cannot be added", source.pClass->Name), {});
  }
  return false;
}

// Calls test with the name and the first token of the value of each "Name = value", up to the
// token at end, until it answers true.
bool CGoodText::ForEachPair(size_t begin, size_t end, const std::function<bool(size_t)>& test) {
  if (begin >= end || end > m_tokens.size()) return false;
  const uint32_t depth = m_depths[begin];
  for (size_t i = begin; i + 2 < end + 1; ++i) {
    const bool isFirst = i == begin || (KeywordAt(i - 1) == kKwComma && m_depths[i - 1] == depth);
    if (isFirst && KeywordAt(i + 1) == kKwEquals && test(i)) return true;
  }
  return false;
}

bool CGoodText::TestPair(size_t name, const DiagParamDefs& defs, std::string_view hasNo,
                         bool isError) {
  const std::string_view written = m_tokens[name].text;
  const DiagParamDef* const pDef = defs.Find(written, true);
  if (pDef) return TestLiteral(name, *pDef, isError);
  std::vector<std::string_view> names;
  for (size_t i = 0; i < defs.Count(); ++i) names.push_back(defs.Get(i)->Name);
  auto suggestions = NearestNames(written, names);
  std::string message = fmt::format("{} {}", hasNo, InQuotes(written));
  if (!suggestions.empty()) {
    message += DidYouMean(suggestions);
  } else if (!names.empty() && names.size() <= kMostNames) {
    message +=
        "; it has " + ListOf({std::vector<std::string>(names.begin(), names.end())}, " and ");
  }
  return Say(name, isError, message, suggestions);
}

bool CGoodText::TestArguments(const QuerySource& source) {
  if (source.argumentsClose == kNoToken || !source.pModule) return false;
  const auto& defs = source.pModule->Args->Defs();
  const DiagParamDefs& known = defs ? *defs : *EmptyParamDefs();
  const std::string hasNo = fmt::format("{} has no argument", source.pModule->Name);
  const bool isError = IsAlwaysRun(source);
  std::vector<std::string_view> given;
  return ForEachPair(source.argumentsOpen + 1, source.argumentsClose, [&](size_t name) {
    if (TestPair(name, known, hasNo, isError)) return true;
    for (const std::string_view before : given) {
      if (EqualsNoCase(before, m_tokens[name].text)) {
        return Say(name, isError,
                   fmt::format("the argument {} is given twice", m_tokens[name].text), {});
      }
    }
    given.push_back(m_tokens[name].text);
    return false;
  });
}

bool CGoodText::EndsAssignments(size_t i, uint32_t depth) const {
  if (m_depths[i] != depth) return m_depths[i] < depth;
  switch (KeywordAt(i)) {
    case kKwWhere:
    case kKwInsert:
    case kKwUpdate:
    case kKwDelete:
    case kKwExecute:
    case kKwDrop:
      return true;
    default:
      return false;
  }
}

// The columns that UPDATE sets and INSERT names. Without a row UPDATE does not fail.
bool CGoodText::TestTarget(const QuerySource& source) {
  if (!source.pClass) return false;
  const std::string hasNo = fmt::format("{} has no property", source.pClass->Name);
  if (KeywordAt(source.keyword) == kKwUpdate) {
    size_t set = source.className;
    while (set < m_tokens.size() && KeywordAt(set) != kKwSet) ++set;
    size_t end = set;
    while (end < m_tokens.size() && !EndsAssignments(end, m_depths[source.keyword])) ++end;
    return ForEachPair(set + 1, end, [&](size_t name) {
      return TestPair(name, *source.pClass->Params, hasNo, false);
    });
  }
  if (KeywordAt(source.keyword) != kKwInsert) return false;
  size_t end = source.className + 2;
  while (KeywordAt(end + 1) == kKwComma) end += 2;
  // A SELECT may have no rows.
  const bool isError = IsAlwaysRun(source) && KeywordAt(end + 2) == kKwValues;
  for (size_t i = source.className + 2; i <= end && i < m_tokens.size(); i += 2) {
    if (KeywordAt(i) != kKwAttachedTo && !source.pClass->Params->Find(m_tokens[i].text, true)) {
      return TestPair(i, *source.pClass->Params, hasNo, isError);
    }
  }
  return false;
}

// FROM Module.Class WHERE, and nothing behind it.
bool CGoodText::TestAlias(const QuerySource& source) {
  const size_t behind = source.pathOpen == kNoToken ? source.className + 1 : kNoToken;
  if (behind >= m_tokens.size() || behind + 1 < m_tokens.size()) return false;
  if (KeywordAt(behind) == kNoKeyword || KeywordAt(behind) == kKwClose) return false;
  return Say(
      behind, false,
      fmt::format("{} is an alias here, since nothing follows it", InQuotes(m_tokens[behind].text)),
      {});
}

std::optional<Finding> FindInGoodText(const QueryContext& context) {
  return CGoodText(context).Find();
}

}  // namespace kestra
