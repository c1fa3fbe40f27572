// Words of the language, misspelt.
#include <fmt/format.h>

#include "VLib/src/text/Text.h"
#include "query/diagnose/Wording.h"
#include "query/diagnose/rules/Rules.h"

namespace kestra {
namespace {

// The words that the language has in a place, as a reader knows them.
std::vector<std::string_view> WordsAt(const std::vector<std::string>& texts) {
  std::vector<std::string_view> words;
  for (const std::string& text : texts) {
    if (text.size() > 1 && UpperCase(text) == text && IsAsciiLetter(text[0])) words.push_back(text);
  }
  return words;
}

bool SayNearest(CFailedText& text, Finding& finding, size_t i,
                const std::vector<std::string_view>& words) {
  const std::string_view written = text.Text(i);
  for (const std::string& name : NearestNames(written, words)) {
    if (EqualsNoCase(name, written) || !IsNearlyThe(written, name)) continue;
    return text.Say(
        finding, i,
        fmt::format("{} is no word of the language; did you mean {}?", InQuotes(written), name),
        {name});
  }
  return false;
}

bool MisspeltHere(CFailedText& text, Finding& finding) {
  const size_t i = text.Position();
  if (!text.IsWord(i) || text.KeywordAt(i) != kNoKeyword) return false;
  // At the beginning, before a parenthesis, and where no column is wanted; elsewhere a name is
  // looked for among the columns.
  const bool isCall = text.KeywordAt(i + 1) == kKwOpen;
  if (i > 0 && text.Expected().HasColumn() && !isCall) return false;
  return SayNearest(text, finding, i, WordsAt(text.Expected().Texts()));
}

// A word that was taken for an alias because nothing else fitted.
bool MisspeltAlias(CFailedText& text, Finding& finding) {
  const size_t stop = text.Stop();
  if (stop == 0 || stop >= text.Count() || !text.SourceWithAliasAt(stop - 1)) return false;
  return text.KeywordAt(stop - 1) == kNoKeyword &&
         SayNearest(text, finding, stop - 1, {"WHERE", "JOIN", "ON", "SET"});
}

bool UnknownFunction(CFailedText& text, Finding& finding) {
  const size_t i = text.Position();
  const bool isCall = text.IsWord(i) && text.KeywordAt(i) == kNoKeyword &&
                      text.KeywordAt(i + 1) == kKwOpen && text.Expected().HasColumn();
  if (!isCall) return false;
  return text.Say(finding, i, "there is no function " + InQuotes(text.Text(i)) + " here");
}

constexpr FailureRule kKeywordRules[] = {MisspeltAlias, MisspeltHere, UnknownFunction};

}  // namespace

std::span<const FailureRule> KeywordRules() {
  return kKeywordRules;
}

}  // namespace kestra
