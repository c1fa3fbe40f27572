#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "query/parse/Tokeniser.h"

namespace kestra {
namespace {

using namespace std::string_literals;

std::vector<std::string> TokensOf(const std::string& text) {
  TokenList tokens;
  if (!Tokenise(text, tokens)) {
    EXPECT_TRUE(tokens.empty()) << text;
    return {"<fault>"};
  }
  std::vector<std::string> texts;
  for (const Token& token : tokens) texts.emplace_back(token.text);
  return texts;
}

struct Case {
  std::string text;
  std::vector<std::string> tokens;
};
const std::vector<std::string> kFault = {"<fault>"};

TEST(Tokeniser, CutsTexts) {
  const Case cases[] = {
      {"", {}},
      {" \t\r\n\v\f", {}},
      {"a", {"a"}},
      {"_a1 1a_", {"_a1", "1a_"}},
      {"a.b", {"a", ".", "b"}},
      {"1.2", {"1", ".", "2"}},
      {"-1", {"-", "1"}},
      {"a--b", {"a", "-", "-", "b"}},
      // Two marks of comparison are one token, also those that mean nothing; a third begins anew.
      {"a<=b", {"a", "<=", "b"}},
      {"<>", {"<>"}},
      {"=<", {"=<"}},
      {"==", {"=="}},
      {"<<=", {"<<", "="}},
      {"<=>=", {"<=", ">="}},
      {"< =", {"<", "="}},
      {"=!", {"=", "!"}},
      {"!=", {"!", "="}},
      {"=", {"="}},
      // Strings.
      {"'a'", {"'a'"}},
      {"''", {"''"}},
      {"''''", {"''''"}},
      {"'it''s'", {"'it''s'"}},
      {"'a''", kFault},
      {"'", kFault},
      {"'''", kFault},
      {"a'b'c", {"a", "'b'", "c"}},
      {"'a' 'b'", {"'a'", "'b'"}},
      {"'a\nb'", {"'a\nb'"}},
      {"'/*'", {"'/*'"}},
      {"'\\'", {"'\\'"}},
      {"'a\\'b'", kFault},
      {"\"a\"", {"\"", "a", "\""}},
      // Comments separate words, do not nest, and hide quotes.
      {"a/**/b", {"a", "b"}},
      {"/*'*/a", {"a"}},
      {"/* /* */ */", {"*", "/"}},
      {"/*/", kFault},
      {"/**", kFault},
      {"/*/*/", {}},
      {"a/ *b", {"a", "/", "*", "b"}},
      {"a*/b", {"a", "*", "/", "b"}},
      {"/", {"/"}},
      {"-- a", {"-", "-", "a"}},
      // What is no ASCII letter, digit or punctuation separates outside of strings.
      {"a\xC3\xA4z", {"a", "z"}},
      {"\xFF\x80", {}},
      {"a\0b"s, {"a", "b"}},
      {"'a\0b'"s, {"'a\0b'"s}},
      {"'\xC3'", {"'\xC3'"}},
      {"\x7F\x01", {}},
      {"a,(b)#*~|^&;@$", {"a", ",", "(", "b", ")", "#", "*", "~", "|", "^", "&", ";", "@", "$"}},
  };
  for (const Case& c : cases) EXPECT_EQ(TokensOf(c.text), c.tokens) << c.text;
}

TEST(Tokeniser, RefersToTheText) {
  const std::string text = "SELECT 'x'";
  TokenList tokens;
  ASSERT_TRUE(Tokenise(text, tokens));
  EXPECT_EQ(tokens[1].text.data(), text.data() + 7);
}

TEST(Tokeniser, KnowsKeywordsInAnyCase) {
  for (KeywordId keyword = 1; keyword < kKeywordCount; ++keyword) {
    std::string lower(KeywordText(keyword)), upper = lower;
    for (char& c : lower) c = static_cast<char>(std::tolower(c));
    for (char& c : upper) c = static_cast<char>(std::toupper(c));
    EXPECT_EQ(FindKeyword(lower), keyword) << lower;
    EXPECT_EQ(FindKeyword(upper), keyword) << upper;
    TokenList tokens;
    ASSERT_TRUE(Tokenise(lower, tokens));
    ASSERT_EQ(tokens.size(), 1u) << lower;
    EXPECT_EQ(tokens[0].keyword, keyword) << lower;
  }
  for (const char* pWord : {"", "SELEC", "SELECTS", "MIN", "FILES", "PID", "<=", "-", "'a'", "0",
                            "CHAR_LENGTHS", "ATTACHEDTOO", "IT", "\xE2\x84\xAA"}) {
    EXPECT_EQ(FindKeyword(pWord), kNoKeyword) << pWord;
  }
}

TEST(Tokeniser, TakesAsManyTokensAsPositionsGo) {
  std::string text;
  for (size_t i = 0; i < kMaxTokens; ++i) text += "1 ";
  TokenList tokens;
  EXPECT_TRUE(Tokenise(text + "/* no token */", tokens));
  EXPECT_EQ(tokens.size(), kMaxTokens);
  EXPECT_FALSE(Tokenise(text + "1", tokens));
  EXPECT_TRUE(tokens.empty());
}

}  // namespace
}  // namespace kestra
