// Sources that are written in another shape than Module(Argument=...).Class alias.
#include <fmt/format.h>

#include "VLib/src/text/Text.h"
#include "query/diagnose/Wording.h"
#include "query/diagnose/rules/Rules.h"

namespace kestra {
namespace {

constexpr size_t kMostArguments = 4;  // that a sentence names

// The text from one token to another.
std::string_view Piece(const CFailedText& text, size_t first, size_t last) {
  const size_t begin = text.OffsetOf(first);
  return std::string_view(text.Query())
      .substr(begin, text.OffsetOf(last) + text.Text(last).size() - begin);
}

// FROM WHERE, and a text that ends with FROM.
bool NothingBehindFrom(CFailedText& text, Finding& finding) {
  for (size_t i = 0; i < text.Count(); ++i) {
    if (text.KeywordAt(i) != kKwFrom && text.KeywordAt(i) != kKwJoin) continue;
    const KeywordId behind = text.KeywordAt(i + 1);
    const bool isNothing = i + 1 >= text.Count() || behind == kKwWhere || behind == kKwOn ||
                           behind == kKwJoin || behind == kKwClose;
    if (!isNothing || (text.Stop() != i + 1 && !text.IsUnknownName())) continue;
    return text.Say(
        finding, i + 1,
        fmt::format("a source is missing behind {}; it is written Module.Class", text.Text(i)));
  }
  return false;
}

// Module(Argument=1.Class
bool UnclosedArguments(CFailedText& text, Finding& finding) {
  for (const QuerySource& source : text.Sources()) {
    if (source.argumentsOpen == kNoToken || source.argumentsClose != kNoToken) continue;
    const bool stopsThere = text.Stop() > source.argumentsOpen &&
                            text.ExpectedAtStop().Has(kKwClose) &&
                            (text.KeywordAt(text.Stop()) == kKwDot || text.Stop() >= text.Count());
    if (!stopsThere && !text.IsUnknownName()) continue;
    return text.Say(finding, source.argumentsOpen, "there is no \")\" for this \"(\"");
  }
  return false;
}

// The parenthesis that closes one, or the last token.
size_t CloseOf(const CFailedText& text, size_t open) {
  size_t depth = 0;
  for (size_t i = open; i < text.Count(); ++i) {
    if (text.KeywordAt(i) == kKwOpen) ++depth;
    if (text.KeywordAt(i) == kKwClose && --depth == 0) return i;
  }
  return text.Count() - 1;
}

// Module.Class(Argument=1), FILES.FILE(Path='...')
bool ArgumentsBehindClass(CFailedText& text, Finding& finding) {
  for (const QuerySource& source : text.Sources()) {
    const size_t open = source.pathOpen;
    if (open == kNoToken || !text.IsWord(open + 1) || !text.Is(open + 2, "=")) continue;
    const std::string_view module = text.Text(source.module);
    if (IsBuiltInName(module) && UpperCase(module) == module) {
      return text.Say(
          finding, open + 1, open + 2,
          fmt::format("the path stands alone: {}.{}('...')", module, text.Text(source.className)));
    }
    const size_t close = CloseOf(text, open);
    const std::string instead = fmt::format("{}{}.{}", text.Text(source.module),
                                            Piece(text, open, close), text.Text(source.className));
    return text.Say(finding, open, close,
                    "arguments stand behind the module: " + std::string(InQuotes(instead)),
                    {instead});
  }
  return false;
}

// Module#60(Argument=1).Class
bool ArgumentsBehindAge(CFailedText& text, Finding& finding) {
  for (const QuerySource& source : text.Sources()) {
    const size_t hash = source.module + 1;
    if (text.KeywordAt(hash) != kKwHash || !text.IsInteger(hash + 1)) continue;
    const size_t open = hash + (text.KeywordAt(hash + 2) == kKwStar ? 3 : 2);
    if (text.KeywordAt(open) != kKwOpen) continue;
    if (text.Stop() != open && !text.IsUnknownName()) continue;
    const size_t close = CloseOf(text, open);
    const std::string instead = fmt::format("{}{}{}", text.Text(source.module),
                                            Piece(text, open, close), Piece(text, hash, open - 1));
    return text.Say(finding, source.module, close,
                    "arguments stand before the age: " + std::string(InQuotes(instead)), {instead});
  }
  return false;
}

// Module#-1.Class, Module#1h.Class
bool AgeOfCache(CFailedText& text, Finding& finding) {
  for (const QuerySource& source : text.Sources()) {
    const size_t before = source.argumentsClose == kNoToken ? source.module : source.argumentsClose;
    const size_t age = before + 2;
    if (text.KeywordAt(age - 1) != kKwHash || text.IsInteger(age)) continue;
    if (text.Stop() != age && !text.IsUnknownName()) continue;
    const size_t last = text.Is(age, "-") && text.IsInteger(age + 1) ? age + 1 : age;
    return text.Say(finding, age, last, "an age is a number of seconds, from 0");
  }
  return false;
}

std::string ArgumentNames(const QuerySource& source) {
  const auto& defs = source.pModule->Args->Defs();
  std::vector<std::string> names;
  for (size_t i = 0; defs && i < defs->Count() && i < kMostArguments; ++i) {
    names.push_back(defs->Get(i)->Name);
  }
  if (names.empty()) return source.pModule->Name + " has no arguments";
  const bool isAll = defs->Count() == names.size();
  return fmt::format("arguments are given by name; {} has {}", source.pModule->Name,
                     isAll ? ListOf(names, " and ") : ListOf(names, ", ") + " and others");
}

// Module('...'), Module()
bool ArgumentWithoutName(CFailedText& text, Finding& finding) {
  const size_t stop = text.Stop();
  if (!text.ExpectedAtStop().HasIn(NonTerminal::Argument, Predicate::Identifier)) return false;
  for (const QuerySource& source : text.Sources()) {
    const bool isInside = source.argumentsOpen < stop && stop <= source.argumentsClose;
    if (source.argumentsOpen == kNoToken || !isInside || !source.pModule) continue;
    if (IsBuiltInName(text.Text(source.module)) && source.className == kNoToken) continue;
    // Behind a comma there need not be one.
    if (text.KeywordAt(stop - 1) == kKwComma && text.KeywordAt(stop) == kKwClose) return false;
    const bool isEmpty = source.argumentsOpen + 1 == source.argumentsClose;
    return text.Say(finding, stop,
                    (isEmpty ? "nothing stands in the parentheses; " : "") + ArgumentNames(source));
  }
  return false;
}

// DROP MODULE Module.Class
bool DropOfClass(CFailedText& text, Finding& finding) {
  const size_t stop = text.Stop();
  if (stop < 2 || text.KeywordAt(stop) != kKwDot || text.KeywordAt(stop - 2) != kKwModule) {
    return false;
  }
  return text.Say(finding, stop, stop + 1, "DROP MODULE takes a module without a class");
}

// database.Module.Class, Module.Class.Column
bool ThreeNames(CFailedText& text, Finding& finding) {
  for (const QuerySource& source : text.Sources()) {
    const size_t third = source.className == kNoToken ? kNoToken : source.className + 2;
    if (third == kNoToken || text.KeywordAt(third - 1) != kKwDot || !text.IsWord(third)) continue;
    const bool isHere = text.Stop() + 1 == third || text.Position() == source.module;
    if (!isHere && !text.IsUnknownName()) continue;
    const char* const pAdvice = "a source is written Module.Class";
    if (!FindModule(text.RootClass(), text.Text(source.className), true)) {
      if (!source.pModule) continue;
      return text.Say(finding, third - 1, third, pAdvice);
    }
    const std::string instead = fmt::format("{}.{}", text.Text(source.className), text.Text(third));
    return text.Say(finding, source.module, third, fmt::format("{}: {}", pAdvice, instead),
                    {instead});
  }
  return false;
}

constexpr FailureRule kSourceShapeRules[] = {
    NothingBehindFrom,   UnclosedArguments, ArgumentsBehindClass, ArgumentsBehindAge,
    ArgumentWithoutName, DropOfClass,       ThreeNames,           AgeOfCache};

}  // namespace

std::span<const FailureRule> SourceShapeRules() {
  return kSourceShapeRules;
}

}  // namespace kestra
