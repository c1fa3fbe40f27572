#include <gtest/gtest.h>

#include "platform/linux/os/process/CommandLine.h"
#include "platform/os/process/ChildProcess.h"

namespace kestra::os {
namespace {

using Words = std::vector<std::string>;

TEST(SplitCommandLine, FollowsTheQuotingOfTheShell) {
  const struct {
    std::string_view text;
    Words words;
  } kCases[] = {
      {"", {}},
      {" \t\n ", {}},
      {"a  b\tc\nd ", {"a", "b", "c", "d"}},
      {"'a b' \"c d\"", {"a b", "c d"}},
      {"a'b'\"c\"d", {"abcd"}},
      {"'' \"\"", {"", ""}},
      {R"('a\b"$`' "e'f")", {R"(a\b"$`)", "e'f"}},
      {R"("\"\\\$\`\a\'")", {R"("\$`\a\')"}},
      {R"(a\ b \' \\ \n)", {"a b", "'", "\\", "n"}},
      {"a\\\nb \"c\\\nd\" 'e\\\nf'", {"ab", "cd", "e\\\nf"}},
      {"$HOME *.c ~ $(x) a=b;c|d", {"$HOME", "*.c", "~", "$(x)", "a=b;c|d"}},
      {"\xC3\xA4\xFF \"\xFF\"", {"\xC3\xA4\xFF", "\xFF"}},
  };
  for (const auto& test : kCases) {
    Words words;
    EXPECT_TRUE(SplitCommandLine(test.text, words)) << test.text;
    EXPECT_EQ(words, test.words) << test.text;
  }
}

TEST(SplitCommandLine, RefusesWhatIsNotClosed) {
  for (const std::string_view text :
       {std::string_view("'"), std::string_view("a \"b"), std::string_view("a\\"),
        std::string_view("\"a\\"), std::string_view("'a\\''"), std::string_view("a\0b", 3),
        std::string_view("'\0'", 3)}) {
    Words words;
    EXPECT_FALSE(SplitCommandLine(text, words)) << text;
  }
}

TEST(QuotedProgram, IsOneWordAgain) {
  for (const std::string program :
       {"", "/bin/sh", "a b", "a\"b", "a\\", "a\\\"b", "$x`y`", "it's", "a\nb", "\\\n"}) {
    Words words;
    EXPECT_TRUE(SplitCommandLine(QuotedProgram(program) + " x", words)) << program;
    EXPECT_EQ(words, (Words{program, "x"}));
  }
}

}  // namespace
}  // namespace kestra::os
