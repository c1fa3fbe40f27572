#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "VLib/src/text/Text.h"

namespace kestra {
namespace {

struct Match {
  const char* text;
  const char* pattern;
  bool expected;
};

TEST(Matches, WithoutEscape) {
  const Match cases[] = {
      {"", "", true},
      {"", "*", true},
      {"", "?", false},
      {"a", "", false},
      {"Abc", "aBC", true},
      {"abc", "a*", true},
      {"abc", "*c", true},
      {"abc", "a?c", true},
      {"abc", "a?", false},
      {"abc", "a???", false},
      {"abc", "***", true},
      {"abab", "*ab", true},
      {"a%b", "a%b", true},
      {"axb", "a%b", false},
      {"a\\b", "a\\b", true},
      {"äöü", "?ÖÜ", true},
      {"äöü", "???", true},
      {"äöü", "??????", false},
      {"a\xFF", "a?", true},
      {"x.tar.gz", "*.gz", true},
      {"x.gz.tar", "*.gz", false},
  };
  for (const Match& test : cases)
    EXPECT_EQ(Matches(test.text, test.pattern, true, false), test.expected)
        << test.text << " LIKE " << test.pattern;
  EXPECT_FALSE(Matches("Abc", "abc", false, false));
  EXPECT_FALSE(Matches("Ä", "ä", false, false));
}

TEST(Matches, WithEscape) {
  const Match cases[] = {
      {"a*b", "a\\*b", true},  {"axb", "a\\*b", false},  {"a?b", "*\\?b", true},
      {"axb", "*\\?b", false}, {"a\\b", "a\\\\b", true}, {"a\\", "a\\", false},
      {"a", "a\\", false},     {"xxa*", "*\\*", true},   {"a*bc*d", "*\\*d", true},
  };
  for (const Match& test : cases)
    EXPECT_EQ(Matches(test.text, test.pattern, true, true), test.expected)
        << test.text << " LIKE " << test.pattern << " ESCAPE";
}

// What the wildcards mean, with all ways tried.
bool MatchesPlainly(std::string_view text, std::string_view pattern) {
  if (pattern.empty()) return text.empty();
  if (pattern[0] == '*')
    return MatchesPlainly(text, pattern.substr(1)) ||
           (!text.empty() && MatchesPlainly(text.substr(1), pattern));
  return !text.empty() && (pattern[0] == '?' || pattern[0] == text[0]) &&
         MatchesPlainly(text.substr(1), pattern.substr(1));
}

std::vector<std::string> AllTexts(const std::string& letters, size_t maxLength) {
  std::vector<std::string> texts{""};
  for (size_t i = 0; i < texts.size(); ++i) {
    if (texts[i].size() == maxLength) break;
    for (const char letter : letters) texts.push_back(texts[i] + letter);
  }
  return texts;
}

TEST(Matches, AgreesWithTryingAllWays) {
  const std::vector<std::string> texts = AllTexts("ab", 6);
  for (const std::string& pattern : AllTexts("ab*?", 5)) {
    for (const std::string& text : texts)
      ASSERT_EQ(Matches(text, pattern, false, false), MatchesPlainly(text, pattern))
          << text << " LIKE " << pattern;
  }
}

// With a power of the lengths this would not end in our time.
TEST(Matches, TakesNoMoreThanTheProductOfTheLengths) {
  const std::string text(20000, 'a');
  std::string pattern;
  for (int i = 0; i < 50; ++i) pattern += "*a";
  EXPECT_FALSE(Matches(text, pattern + "*b", true, false));
  EXPECT_TRUE(Matches(text, pattern, true, false));
}

}  // namespace
}  // namespace kestra
