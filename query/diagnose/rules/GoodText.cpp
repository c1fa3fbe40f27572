// Texts that parse: what will fail when they are run, and what their authors will not have meant.
#include <fmt/format.h>

#include <functional>

#include "VLib/src/text/Text.h"
#include "query/diagnose/Wording.h"
#include "query/diagnose/rules/Rules.h"
#include "query/diagnose/rules/SourceWords.h"
#include "query/parse/Literals.h"

namespace kestra {
namespace {

class CGoodText {
 public:
  explicit CGoodText(const QueryContext& context)
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

  std::optional<Finding> Find() {
    for (const QuerySource& source : m_sources) {
      if (TestModule(source) || TestClass(source) || TestArguments(source) || TestTarget(source) ||
          TestAlias(source)) {
        return m_finding;
      }
    }
    for (size_t i = 0; i + 1 < m_tokens.size(); ++i) {
      if (m_tokens[i].keyword == kKwLike && TestPattern(i + 1)) return m_finding;
    }
    return std::nullopt;
  }

 private:
  KeywordId KeywordAt(size_t i) const {
    return i < m_tokens.size() ? m_tokens[i].keyword : kNoKeyword;
  }
  // Whether the statement that a source belongs to cannot be run without it: a sub-select may never
  // be asked, and a procedure is not run where it is made.
  bool IsAlwaysRun(const QuerySource& source) const {
    const KeywordId first = m_tokens[0].keyword;
    return first != kKwCreate && (m_depths[source.keyword] == 0 || first == kKwExecute);
  }
  bool Say(size_t i, bool isError, std::string message, std::vector<std::string> suggestions) {
    const std::string_view token = m_tokens[i].text;
    m_finding.offset = static_cast<size_t>(token.data() - m_context.QueryText.data());
    m_finding.length = token.size();
    m_finding.isError = isError;
    m_finding.message = std::move(message);
    m_finding.suggestions = std::move(suggestions);
    return true;
  }

  // An item class passes for a module's name until it is run.
  bool TestModule(const QuerySource& source) {
    if (source.pModule) return false;
    std::vector<std::string> suggestions;
    const bool isDrop = KeywordAt(source.keyword) == kKwModule;
    const std::string message =
        UnknownModuleText(m_tokens, source, m_context.RootClass.get(), suggestions);
    return Say(source.module, IsAlwaysRun(source) && !isDrop, message, suggestions);
  }

  bool TestClass(const QuerySource& source) {
    if (source.className == kNoToken) return false;
    const std::string_view module = m_tokens[source.module].text;
    const std::string_view name = m_tokens[source.className].text;
    const bool isInsert = KeywordAt(source.keyword) == kKwInsert;
    if (source.isBuiltIn && !EqualsNoCase(module, "INIFILES")) {
      return TestBuiltInClass(source, module, name);
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

  bool TestBuiltInClass(const QuerySource& source, std::string_view module, std::string_view name) {
    const std::string_view files[] = {"FILE"};
    const std::string_view registry[] = {"REGISTRYKEY", "REGISTRYVALUE"};
    const std::span<const std::string_view> names =
        EqualsNoCase(module, "FILES") ? std::span<const std::string_view>(files) : registry;
    std::vector<std::string> all;
    for (const std::string_view known : names) {
      if (EqualsNoCase(known, name)) return false;
      all.emplace_back(known);
    }
    return Say(
        source.className, IsAlwaysRun(source),
        fmt::format("{} has no class {}; it has {}", module, InQuotes(name), ListOf(all, " and ")),
        all);
  }

  // Calls test with the name and the first token of the value of each "Name = value", up to the
  // token at end, until it answers true.
  bool ForEachPair(size_t begin, size_t end, const std::function<bool(size_t)>& test) {
    if (begin >= end || end > m_tokens.size()) return false;
    const uint32_t depth = m_depths[begin];
    for (size_t i = begin; i + 2 < end + 1; ++i) {
      const bool isFirst = i == begin || (KeywordAt(i - 1) == kKwComma && m_depths[i - 1] == depth);
      if (isFirst && KeywordAt(i + 1) == kKwEquals && test(i)) return true;
    }
    return false;
  }

  // Whether the one literal that stands for a value does not fit its declaration.
  bool TestLiteral(size_t name, const DiagParamDef& def, bool isError) {
    const size_t i = name + 2;
    const KeywordId behind = KeywordAt(i + 1);
    const bool isAlone = i + 1 >= m_tokens.size() || behind == kKwComma || behind == kKwClose ||
                         behind == kKwWhere || behind == kKwFrom;
    if (i >= m_tokens.size() || !isAlone) return false;
    Value value;
    const std::string_view token = m_tokens[i].text;
    const bool isText = ReadStringLiteral(token, value);
    if (!isText && !ReadIntegerLiteral(token, value)) return false;
    const bool takesText = def.Type == ParamType::String || def.Type == ParamType::Version;
    if (!isText && takesText) {
      const std::string quoted = AsString(token);
      return Say(i, isError, fmt::format("{} takes text: {}", def.Name, quoted), {quoted});
    }
    if (isText && def.Type == ParamType::Dword) {
      return Say(i, isError, fmt::format("{} takes a number", def.Name), {});
    }
    const bool hasOptions = def.Type == ParamType::Enum || def.Type == ParamType::Bitmask;
    if (!isText || !hasOptions || DiagParam(&def).SetText(value.asString())) return false;
    std::vector<std::string> options;
    for (const std::string& option : def.Options) {
      if (!option.empty()) options.push_back(AsString(option));
    }
    return Say(i, isError, fmt::format("{} takes {}", def.Name, ListOf(options)), options);
  }

  bool TestPair(size_t name, const DiagParamDefs& defs, std::string_view hasNo, bool isError) {
    const std::string_view written = m_tokens[name].text;
    const DiagParamDef* const pDef = defs.Find(written, true);
    if (pDef) return TestLiteral(name, *pDef, isError);
    std::vector<std::string_view> names;
    for (size_t i = 0; i < defs.Count(); ++i) names.push_back(defs.Get(i)->Name);
    auto suggestions = NearestNames(written, names);
    std::string message = fmt::format("{} {}", hasNo, InQuotes(written));
    if (!suggestions.empty()) {
      message += DidYouMean(suggestions);
    } else if (!names.empty() && names.size() <= 8) {
      message +=
          "; it has " + ListOf({std::vector<std::string>(names.begin(), names.end())}, " and ");
    }
    return Say(name, isError, message, suggestions);
  }

  bool TestArguments(const QuerySource& source) {
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

  bool EndsAssignments(size_t i, uint32_t depth) const {
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
  bool TestTarget(const QuerySource& source) {
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
  bool TestAlias(const QuerySource& source) {
    const size_t behind = source.pathOpen == kNoToken ? source.className + 1 : kNoToken;
    if (behind >= m_tokens.size() || behind + 1 < m_tokens.size()) return false;
    if (KeywordAt(behind) == kNoKeyword || KeywordAt(behind) == kKwClose) return false;
    return Say(behind, false,
               fmt::format("{} is an alias here, since nothing follows it",
                           InQuotes(m_tokens[behind].text)),
               {});
  }

  bool TestPattern(size_t i) {
    Value value;
    if (!ReadStringLiteral(m_tokens[i].text, value)) return false;
    std::string pattern = value.asString();
    if (HasWildcard(pattern) || pattern.find_first_of("%_") == std::string::npos) return false;
    for (char& c : pattern) {
      if (c == '%') c = '*';
      if (c == '_') c = '?';
    }
    pattern = AsString(pattern);
    return Say(i, false, "the wildcards of LIKE are * and ?; did you mean " + pattern + "?",
               {pattern});
  }

  const QueryContext& m_context;
  const TokenList& m_tokens;
  const std::vector<QuerySource> m_sources;
  std::vector<uint32_t> m_depths;  // parentheses around each token
  Finding m_finding;
};

}  // namespace

std::optional<Finding> FindInGoodText(const QueryContext& context) {
  return CGoodText(context).Find();
}

}  // namespace kestra
