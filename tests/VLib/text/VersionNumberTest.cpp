#include <gtest/gtest.h>

#include "VLib/src/text/VersionNumber.h"

namespace kestra {
namespace {

struct ParseCase {
  std::string_view text;
  uint32_t count;
};

TEST(ParseVersion, CountsTheComponents) {
  using namespace std::string_view_literals;
  const ParseCase cases[] = {
      {"1", 1},           {"1.2.3.4", 4}, {"1.2.3.4.5", 0},  {"1,2,3", 3},        {"1,2.3", 0},
      {"1.2b.3", 3},      {"1.2-3", 0},   {"", 0},           {"1.", 0},           {".1", 0},
      {"1..2", 0},        {"a1", 0},      {"2147483646", 1}, {"2147483647.1", 0}, {"1.-2", 0},
      {"99999999999", 0}, {"1.2 ", 0},    {" 1.2", 2},       {"1.2\xC3\xA4", 0},  {"1.2b3", 0},
      {"1.2\0"sv, 0},     {"1.-0", 2},
  };
  for (const ParseCase& test : cases)
    EXPECT_EQ(ParseVersion(test.text).Count, test.count) << test.text;
  EXPECT_EQ(ParseVersion("1.2b.3").Suffixes[1], "b");
  EXPECT_EQ(ParseVersion("1.2b.3").Parts[1], 2);
}

struct CompareCase {
  const char* a;
  const char* b;
  int sign;
};

TEST(CompareVersions, TakesAbsentComponentsForZero) {
  const CompareCase cases[] = {
      {"1.2", "1.2.0", 0}, {"1.2", "1.2.0a", -1}, {"1.10", "1.9", 1},
      {"1.2A", "1.2a", 0}, {"1.2a", "1.2b", -1},  {"1,2", "1.2", 0},
      {"x", "0.0", 0},     {"x", "y", 0},         {"0", "2147483646", -1},
  };
  for (const CompareCase& test : cases) {
    const int order = CompareVersions(ParseVersion(test.a), ParseVersion(test.b));
    EXPECT_EQ((order > 0) - (order < 0), test.sign) << test.a << " | " << test.b;
  }
}

}  // namespace
}  // namespace kestra
