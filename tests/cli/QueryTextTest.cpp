#include <gtest/gtest.h>

#include <string>

#include "cli/QueryText.h"

namespace kestra::cli {
namespace {

using namespace std::string_literals;

std::string Joined(const std::string& text) {
  std::string joined;
  for (const std::string_view query : SplitQueries(text))
    joined.append("[").append(query).append("]");
  return joined;
}

TEST(SplitQueries, CutsOutsideQuotesAndComments) {
  const std::pair<std::string, std::string> cases[] = {
      {"", ""},
      {"a", "[a]"},
      {"a;b", "[a][b]"},
      {"a; b ;", "[a][ b ]"},
      {" ;;\n;\t; /* ; */ ;", ""},
      {"/* a; */ b; c", "[/* a; */ b][ c]"},
      {"'a;b';c", "['a;b'][c]"},
      {"'it''s; so';c", "['it''s; so'][c]"},
      {"'/*';b;'*/'", "['/*'][b]['*/']"},
      {"/* ' */;b;'x'", "[b]['x']"},
      {"''; ''", "[''][ '']"},
      {"'open; b", "['open; b]"},
      {"a; /* open; b", "[a][ /* open; b]"},
      {"/*/;*/ a", "[/*/;*/ a]"},
      {"a / b * c;d", "[a / b * c][d]"},
      {"\0;\0a\0;"s, "[\0a\0]"s},
      {"\xFF;\xC3", "[\xFF][\xC3]"},  // for the engine to judge
      {";", ""},
      {"/", "[/]"},
      {"'", "[']"},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(Joined(text), expected) << text;
}

TEST(ReadQueryFile, TellsWhatIsWrongWithAFile) {
  for (const char* path : {"/no such file", "/", ""}) {
    try {
      ReadQueryFile(path);
      ADD_FAILURE() << path;
    } catch (const std::runtime_error& error) {
      EXPECT_TRUE(std::string(error.what()).starts_with(std::string(path) + ": ")) << error.what();
    }
  }
}

}  // namespace
}  // namespace kestra::cli
