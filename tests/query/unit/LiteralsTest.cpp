#include <gtest/gtest.h>

#include <string>

#include "query/parse/Literals.h"
#include "tests/support/ScopedTimeZone.h"

namespace kestra {
namespace {

using Reader = bool (*)(std::string_view token, Value& out);

// What a reader makes of a token: the text form of its value, or "no". A refusal leaves out alone.
std::string Read(Reader read, std::string_view token) {
  Value out;
  out.SetAny();
  if (read(token, out)) return out.asString();
  EXPECT_TRUE(out.IsAny()) << token;
  return "no";
}

TEST(Literals, Integers) {
  constexpr struct {
    std::string_view token, value;
  } kCases[] = {
      {"0", "0"},           {"007", "7"},         {"2147483646", "2147483646"},
      {"2147483647", "no"}, {"2147483648", "no"}, {"99999999999999999999", "no"},
      {"1a", "no"},         {"0x1", "no"},        {"a", "no"},
      {"_", "no"},          {"'1'", "no"},        {"+", "no"},
      {"-", "no"},          {"", "no"},
  };
  for (const auto& c : kCases) EXPECT_EQ(Read(ReadIntegerLiteral, c.token), c.value) << c.token;
}

TEST(Literals, Strings) {
  constexpr struct {
    std::string_view token, value;
  } kCases[] = {
      {"''", ""},      {"'a'", "a"},   {"''''", "'"},      {"'it''s'", "it's"}, {"''''''", "''"},
      {"'", "no"},     {"'''", "no"},  {"'a", "no"},       {"a'", "no"},        {"'a'b'", "no"},
      {"'a'''", "a'"}, {"'\\'", "\\"}, {"'\xFF'", "\xFF"}, {"a", "no"},         {"", "no"},
  };
  for (const auto& c : kCases) EXPECT_EQ(Read(ReadStringLiteral, c.token), c.value) << c.token;
}

TEST(Literals, Versions) {
  constexpr struct {
    std::string_view token, value;
  } kCases[] = {
      {"'1.2'", "1.2"}, {"'1,2,3'", "1,2,3"}, {"'1.2b'", "1.2b"}, {"'1.2.3.4.5'", "no"},
      {"''", "no"},     {"'a'", "no"},        {"'1.2-3'", "no"},  {"'2147483647.1'", "no"},
      {"5", "5"},       {"2147483647", "no"}, {"1a", "no"},       {"'5'", "5"},
  };
  for (const auto& c : kCases) EXPECT_EQ(Read(ReadVersionLiteral, c.token), c.value) << c.token;
  Value out;
  ASSERT_TRUE(ReadVersionLiteral("5", out));
  EXPECT_EQ(out.Kind(), ValueKind::Number);
  ASSERT_TRUE(ReadVersionLiteral("'5'", out));
  EXPECT_EQ(out.Kind(), ValueKind::String);
}

TEST(Literals, Datimes) {
  const test::CScopedTimeZone zone("UTC");
  constexpr struct {
    std::string_view token, value;
  } kCases[] = {
      {"'2006-01-31'", "2006-01-31 00:00:00"},
      {"'2006-01-31 23:59:59'", "2006-01-31 23:59:59"},
      {"'1970-01-01'", "1970-01-01 00:00:00"},
      {"'2106-02-07 06:28:15'", "2106-02-07 06:28:15"},
      {"'2106-02-07 06:28:16'", "no"},
      {"'2106-12-31'", "no"},
      {"'1969-12-31'", "no"},
      {"'2107-01-01'", "no"},
      {"'2004-02-29'", "2004-02-29 00:00:00"},
      {"'2006-02-29'", "no"},
      {"'2006-02-30'", "no"},
      {"'2006-04-31'", "no"},
      {"'2006-00-01'", "no"},
      {"'2006-13-01'", "no"},
      {"'2006-01-00'", "no"},
      {"'2006-01-32'", "no"},
      {"'2006-01-31 24:00:00'", "no"},
      {"'2006-01-31 00:60:00'", "no"},
      {"'2006-01-31 00:00:60'", "no"},
      {"'2006-1-31'", "no"},
      {"'2006-01-31 1:00:00'", "no"},
      {"'2006-01-31T00:00:00'", "no"},
      {"'2006-01-31 00:00'", "no"},
      {"'2006-01-31 '", "no"},
      {"' 006-01-31'", "no"},
      {"'+006-01-31'", "no"},
      {"'2006-01-3\xC3\xA9'", "no"},
      {"'\?\?\?\?-\?\?-\?\?'", "no"},
      {"2006-01-31", "no"},
      {"''", "no"},
      {"", "no"},
  };
  for (const auto& c : kCases) EXPECT_EQ(Read(ReadDatimeLiteral, c.token), c.value) << c.token;
}

TEST(Literals, DatimesAreLocal) {
  const test::CScopedTimeZone zone("XYZ-5");  // five hours east of Greenwich
  Value out;
  ASSERT_TRUE(ReadDatimeLiteral("'2006-01-31 05:00:00'", out));
  EXPECT_EQ(out.asDatime(), 1138665600u);
  // The first moment of 1970 is before it in Greenwich.
  EXPECT_EQ(Read(ReadDatimeLiteral, "'1970-01-01'"), "no");
}

}  // namespace
}  // namespace kestra
