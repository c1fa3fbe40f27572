// Names of columns and aliases.
#include <fmt/format.h>

#include <algorithm>

#include "VLib/src/text/Text.h"
#include "query/diagnose/Wording.h"
#include "query/diagnose/rules/Rules.h"

namespace kestra {
namespace {

constexpr size_t kMostAliases = 6;  // that a sentence names

// The column or alias and column at a token, as it is written.
std::string WrittenName(const CFailedText& text, size_t i) {
  if (i >= 2 && text.KeywordAt(i - 1) == kKwDot && text.IsWord(i - 2)) {
    return fmt::format("{}.{}", text.Text(i - 2), text.Text(i));
  }
  return std::string(text.Text(i));
}

bool WrongType(CFailedText& text, Finding& finding) {
  const size_t i = text.Position();
  if (!text.IsWord(i) || !text.Expected().HasColumn()) return false;
  const DiagParamDef* const pDef = text.Column(i).pDef;
  if (!pDef) return false;
  const std::string wanted = WantedKind(text.Expected());
  if (wanted.empty()) return false;
  const std::string name = WrittenName(text, i);
  const std::string instead = ConversionOf(name, pDef->Type, text.Expected());
  std::string message =
      fmt::format("{} holds {}; {} is wanted here", pDef->Name, HoldsWhat(pDef->Type), wanted);
  if (instead.empty()) return text.Say(finding, i, message);
  const size_t first = name.size() > text.Text(i).size() ? i - 2 : i;
  return text.Say(finding, first, i, message + ": " + instead, {instead});
}

// LIKE behind a column that holds no text.
bool LikeOfOtherType(CFailedText& text, Finding& finding) {
  const size_t stop = text.Stop();
  if (stop == 0 || text.KeywordAt(stop) != kKwLike || !text.IsWord(stop - 1)) return false;
  const DiagParamDef* const pDef = text.Column(stop - 1).pDef;
  if (!pDef) return false;
  std::string message =
      fmt::format("{} holds {}, and LIKE takes text", pDef->Name, HoldsWhat(pDef->Type));
  if (pDef->Type == ParamType::Datime) return text.Say(finding, stop - 1, message);
  const std::string name = WrittenName(text, stop - 1);
  const std::string instead = fmt::format("CONVERT(varchar, {})", name);
  const size_t first = name.size() > text.Text(stop - 1).size() ? stop - 3 : stop - 1;
  return text.Say(finding, first, stop - 1, message + ": " + instead, {instead});
}

// ATTACHEDTO and ITEMID, which look like columns.
bool ColumnOfJoin(CFailedText& text, Finding& finding) {
  for (const size_t i : {text.Position(), text.Stop()}) {
    if (text.KeywordAt(i) != kKwAttachedTo && text.KeywordAt(i) != kKwItemId) continue;
    return text.Say(finding, i,
                    fmt::format("{} is no column; the rows below another one are joined by JOIN "
                                "... child ON child.ATTACHEDTO = parent.ITEMID",
                                UpperCase(text.Text(i))));
  }
  return false;
}

// Module.Class.Column
bool ColumnOfThreeNames(CFailedText& text, Finding& finding) {
  const size_t i = text.Position();
  if (!text.IsUnknownName() || i < 2 || text.KeywordAt(i - 1) != kKwDot ||
      text.KeywordAt(i + 1) != kKwDot || !text.IsWord(i + 2)) {
    return false;
  }
  const std::string name(text.Text(i + 2));
  return text.Say(finding, i - 2, i + 2,
                  fmt::format("a column has only an alias before it; write {} alone, or give the "
                              "source an alias",
                              name),
                  {name});
}

// The alias of a source whose FROM comes later, outside of the parentheses that the name stands in.
bool AliasOfLaterSource(CFailedText& text, Finding& finding) {
  const size_t i = text.Position();
  if (!text.IsUnknownName() || i < 2 || text.KeywordAt(i - 1) != kKwDot) return false;
  const std::string_view alias = text.Text(i - 2);
  const auto visible = text.SourcesFor(i);
  const auto& sources = text.Sources();
  const bool isSeen = std::any_of(visible.begin(), visible.end(),
                                  [&](const auto& source) { return source.alias == alias; });
  const bool comesLater =
      std::any_of(sources.begin(), sources.end(), [&](const QuerySource& source) {
        return source.alias != kNoToken && source.alias > i && text.Text(source.alias) == alias;
      });
  if (isSeen || !comesLater) return false;
  return text.Say(finding, i - 2,
                  fmt::format("a sub-select sees the sources that stand before it, and {} comes "
                              "behind it; join the two, or ask in WHERE",
                              alias));
}

bool UnknownAlias(CFailedText& text, Finding& finding) {
  const size_t i = text.Position();
  if (!text.IsUnknownName() || i < 2 || text.KeywordAt(i - 1) != kKwDot) return false;
  const std::string_view alias = text.Text(i - 2);
  std::vector<std::string_view> aliases;
  for (const QuerySource& source : text.Sources()) {
    if (source.alias != kNoToken) aliases.push_back(text.Text(source.alias));
    // Where a source's own name stands for it, it has to be given as an alias.
    const bool isOwnName = EqualsNoCase(text.Text(source.className), alias) ||
                           EqualsNoCase(text.Text(source.module), alias);
    if (isOwnName && source.alias == kNoToken) {
      return text.Say(finding, i - 2,
                      fmt::format("a column has only an alias before it; write {} alone, or give "
                                  "the source an alias",
                                  text.Text(i)));
    }
  }
  if (std::find(aliases.begin(), aliases.end(), alias) != aliases.end()) return false;
  const auto suggestions = NearestNames(alias, aliases);
  std::string message = fmt::format("there is no alias {} here", InQuotes(alias));
  if (suggestions.empty() && !aliases.empty() && aliases.size() <= kMostAliases) {
    const std::vector<std::string> all(aliases.begin(), aliases.end());
    message += "; there is " + ListOf(all, " and ");
  }
  return text.Say(finding, i - 2, message + DidYouMean(suggestions), suggestions);
}

// The columns that a name is looked for among.
std::vector<std::string_view> VisibleColumns(CFailedText& text, size_t i) {
  const std::string_view alias =
      i >= 2 && text.KeywordAt(i - 1) == kKwDot ? text.Text(i - 2) : std::string_view();
  std::vector<std::string_view> names;
  for (const auto& source : text.SourcesFor(i)) {
    if (!alias.empty() && source.alias != alias) continue;
    const DiagParamDefs& defs = *source.pClass->Params;
    for (size_t k = 0; k < defs.Count(); ++k) names.push_back(defs.Get(k)->Name);
  }
  return names;
}

// An alias that no dot follows.
bool AliasAlone(CFailedText& text, Finding& finding) {
  if (!text.IsUnknownName()) return false;
  const size_t i = text.Position();
  if (i > 0 && text.KeywordAt(i - 1) == kKwDot) return false;
  for (const auto& source : text.SourcesFor(i)) {
    if (source.alias.empty() || source.alias != text.Text(i)) continue;
    return text.Say(
        finding, i,
        fmt::format("{0} is an alias; a column of its source is {0}.Name", source.alias));
  }
  return false;
}

bool UnknownColumn(CFailedText& text, Finding& finding) {
  if (!text.IsUnknownName() || text.IsClauseWord(text.Position())) return false;
  const size_t i = text.Position();
  const auto columns = VisibleColumns(text, i);
  if (columns.empty()) return false;
  const std::string_view name = text.Text(i);
  auto suggestions = NearestNames(name, columns);
  std::string message = fmt::format("there is no column {} here", InQuotes(name));
  const bool mayBeText = text.Expected().Has(Predicate::StringLiteral) && text.IsComparison(i - 1);
  if (!mayBeText) {
    const std::string wanted = WantedKind(text.Expected());
    const bool isOneKind = wanted.find(" or ") == std::string::npos;
    if (suggestions.empty() && isOneKind) message += "; " + wanted + " is wanted";
    return text.Say(finding, i, message + DidYouMean(suggestions), suggestions);
  }
  const std::string quoted = AsString(text.RunAt(i));
  const bool isNear = !suggestions.empty() && IsNearlyThe(name, suggestions.front());
  if (!isNear) suggestions.clear();
  message += suggestions.empty() ? "; text stands in quotes: " + quoted
                                 : DidYouMean(suggestions) + " Text stands in quotes: " + quoted;
  const size_t last = suggestions.empty() ? text.EndOfRunAt(i) : i;
  suggestions.push_back(quoted);
  return text.Say(finding, i, last, message, suggestions);
}

// A name where columns belong to no source at all.
bool NameWithoutSource(CFailedText& text, Finding& finding) {
  if (!text.IsUnknownName() || text.Stop() == 0) return false;
  const size_t i = text.Position();
  const bool isTextAlone =
      i > 0 && !text.Expected().Has(Predicate::IntegerLiteral) && text.Sources().empty();
  if ((text.IsComparison(i - 1) || isTextAlone) && text.Expected().Has(Predicate::StringLiteral)) {
    const std::string quoted = AsString(text.RunAt(i));
    return text.Say(finding, i, text.EndOfRunAt(i), "text stands in quotes: " + quoted, {quoted});
  }
  return false;
}

constexpr FailureRule kColumnRules[] = {LikeOfOtherType,    WrongType,          ColumnOfJoin,
                                        ColumnOfThreeNames, AliasOfLaterSource, UnknownAlias,
                                        AliasAlone,         UnknownColumn,      NameWithoutSource};

}  // namespace

const char* HoldsWhat(ParamType type) {
  switch (type) {
    case ParamType::Dword:
      return "a number";
    case ParamType::Datime:
      return "a date";
    case ParamType::Version:
      return "a version";
    case ParamType::Enum:
      return "one of several texts";
    case ParamType::Bitmask:
      return "a set of texts";
    default:
      return "text";
  }
}

std::string WantedKind(const CExpected& expected) {
  struct Kind {
    bool isWanted;
    const char* name;
  };
  const Kind kinds[] = {{expected.Has(Predicate::NumberColumn), "a number"},
                        {expected.Has(Predicate::StringColumn), "text"},
                        {expected.Has(Predicate::VersionColumn), "a version"},
                        {expected.Has(Predicate::DatimeColumn), "a date"}};
  std::string wanted;
  for (const Kind& kind : kinds) {
    if (!kind.isWanted) continue;
    if (!wanted.empty()) wanted += " or ";
    wanted += kind.name;
  }
  return wanted;
}

std::string ConversionOf(std::string_view expression, ParamType type, const CExpected& expected) {
  const bool isText = type == ParamType::String;
  const bool isConvertible = isText || type == ParamType::Dword || type == ParamType::Version;
  if (!isConvertible) return {};
  const char* pTarget = nullptr;
  if (expected.Has(Predicate::StringColumn)) {
    pTarget = "varchar";
  } else if (expected.Has(Predicate::NumberColumn) && isText) {
    pTarget = "int";
  } else if (expected.Has(Predicate::VersionColumn) && isText) {
    pTarget = "version";
  }
  return pTarget ? fmt::format("CONVERT({}, {})", pTarget, expression) : std::string();
}

std::span<const FailureRule> ColumnRules() {
  return kColumnRules;
}

}  // namespace kestra
