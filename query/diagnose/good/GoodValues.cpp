// The literals of a text that parses: what is given to an argument, compared with a column, or read
// as a path.
#include <fmt/format.h>

#include "Modules/Registry/RegistryHive.h"
#include "VLib/src/paths/ExpandPath.h"
#include "VLib/src/text/Text.h"
#include "platform/machine/SystemFacts.h"
#include "query/diagnose/Wording.h"
#include "query/diagnose/good/GoodText.h"
#include "query/parse/Literals.h"
#include "query/parse/Predicates.h"

namespace kestra {
namespace {

// As strings of the language; a bit that has no name is left out.
std::vector<std::string> OptionsOf(const DiagParamDef& def) {
  std::vector<std::string> options;
  for (const std::string& option : def.Options) {
    if (!option.empty()) options.push_back(AsString(option));
  }
  return options;
}

}  // namespace

// Whether the one literal that stands for a value does not fit its declaration.
bool CGoodText::TestLiteral(size_t name, const DiagParamDef& def, bool isError) {
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
  const std::vector<std::string> options = OptionsOf(def);
  return Say(i, isError, fmt::format("{} takes {}", def.Name, ListOf(options)), options);
}

bool CGoodText::TestPattern(size_t i) {
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

// The column on the left of the = or <> before a literal, or of the IN that it is listed in;
// kNoToken for none.
size_t CGoodText::ColumnComparedWith(size_t literal) const {
  if (literal < 2) return kNoToken;
  if (m_tokens[literal - 1].text == "=" || m_tokens[literal - 1].text == "<>") return literal - 2;
  size_t i = literal - 1;
  while (i > 1 && (KeywordAt(i) == kKwComma || IsStringLiteral(m_tokens[i].text))) --i;
  if (i < 2 || KeywordAt(i) != kKwOpen || KeywordAt(i - 1) != kKwIn) return kNoToken;
  const size_t column = KeywordAt(i - 2) == kKwNot ? i - 3 : i - 2;
  return column < i ? column : kNoToken;
}

bool CGoodText::TestOption(size_t i) {
  Value value;
  if (!ReadStringLiteral(m_tokens[i].text, value)) return false;
  const size_t column = ColumnComparedWith(i);
  if (column == kNoToken) return false;
  const DiagParamDef* const pDef = m_context.Predicates->Column(column).pDef;
  const bool hasOptions = pDef && !pDef->Options.empty() &&
                          (pDef->Type == ParamType::Enum || pDef->Type == ParamType::Bitmask);
  if (!hasOptions || DiagParam(pDef).SetText(value.asString())) return false;
  const std::vector<std::string> options = OptionsOf(*pDef);
  const bool isOne = pDef->Type == ParamType::Enum;
  return Say(i, false,
             fmt::format("{} is {} {}, and never {}", pDef->Name, isOne ? "one of" : "made of",
                         ListOf(options, " and "), m_tokens[i].text),
             NearestNames(m_tokens[i].text,
                          std::vector<std::string_view>(options.begin(), options.end())));
}

bool CGoodText::TestFilePath(size_t i, const std::string& path, bool isError) {
  if (!m_context.Root) return false;
  CMachine& machine = *m_context.Root->Machine();
  std::string whole;
  if (!ExpandPath(path, whole, machine, PathTokens::FileRows)) {
    return Say(i, isError, "the path begins with the name of a folder that there is not", {});
  }
  const size_t separator = whole.rfind(machine.System().PathSeparator());
  if (separator == std::string::npos) {
    return Say(i, isError, "a path begins with its directory, and has none here", {});
  }
  if (!HasWildcard(std::string_view(whole).substr(0, separator))) return false;
  return Say(i, isError, "wildcards stand in the last piece of a path alone", {});
}

bool CGoodText::TestPath(const QuerySource& source) {
  const size_t i = source.pathOpen + 1;
  Value value;
  if (!source.isBuiltIn || KeywordAt(i + 1) != kKwClose) return false;
  if (!ReadStringLiteral(m_tokens[i].text, value)) return false;
  const std::string path = value.asString();
  const std::string_view module = m_tokens[source.module].text;
  if (EqualsNoCase(module, "FILES")) return TestFilePath(i, path, IsAlwaysRun(source));
  if (!EqualsNoCase(module, "REGISTRY") || !m_context.Root) return false;
  const std::string word = path.substr(0, path.find('\\'));
  if (ReadHive(word, *m_context.Root->Machine())) return false;
  return Say(
      i, IsAlwaysRun(source),
      fmt::format("{} is no root of the registry; they are HKLM, HKCU, HKCR, HKU, HKCC, HKDD "
                  "and HKPD, and with 64 behind them for the view of 64-bit programs",
                  InQuotes(word)),
      {});
}

}  // namespace kestra
