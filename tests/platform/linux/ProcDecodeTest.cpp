#include <gtest/gtest.h>

#include "platform/linux/machine/ProcDecode.h"

namespace kestra {
namespace {

using namespace std::string_view_literals;

// Captured on a running machine; the second one's name was chosen by the process itself.
constexpr std::string_view kBash =
    "2848 (cat) R 2836 2836 2280 0 -1 4194304 99 0 0 0 0 0 0 0 20 0 1 0 109208 3133440 412 "
    "18446744073709551615 94293351596032 94293351615913 140731218420896 0 0 0 0 0 0 0 0 0 17 1 0 0 "
    "0 0 0 94293351631920 94293351633536 94293587226624 140731218422214 140731218422234 "
    "140731218422234 140731218423787 0\n";
constexpr std::string_view kOddName =
    "77 (a) S 1 ((b c\n) Z 12 2836 2280 0 -1 4227084 99 0 0 0 0 0 0 0 20 0 1 0 109300 0 0 0 0 0 0 "
    "0 "
    "0 0 0 0 0 0 0 0 17 1 0 0 0 0 0 0 0 0 0 0 0 0 9\n";
constexpr std::string_view kKernelThread =
    "43 (kworker/R-quota_events_unbound) I 2 0 0 0 -1 69238880 0 0 0 0 0 0 0 0 0 -20 1 0 25 0 0 "
    "18446744073709551615 0 0 0 0 0 0 0 2147483647 0 0 0 0 17 0 0 0 0 0 0 0 0 0 0 0 0 0 0\n";

TEST(DecodeStat, ReadsCapturedLines) {
  ProcStat stat;
  ASSERT_TRUE(DecodeStat(kBash, stat));
  EXPECT_EQ(stat.name, "cat");
  EXPECT_EQ(stat.state, 'R');
  EXPECT_EQ(stat.parentPid, 2836u);
  EXPECT_EQ(stat.startTime, 109208u);
  EXPECT_EQ(stat.residentPages, 412u);
  EXPECT_FALSE(stat.IsKernelThread());
  EXPECT_FALSE(stat.IsZombie());

  ASSERT_TRUE(DecodeStat(kOddName, stat));
  EXPECT_EQ(stat.name, "a) S 1 ((b c\n");
  EXPECT_TRUE(stat.IsZombie());
  EXPECT_EQ(stat.parentPid, 12u);
  EXPECT_EQ(stat.startTime, 109300u);

  ASSERT_TRUE(DecodeStat(kKernelThread, stat));
  EXPECT_TRUE(stat.IsKernelThread());
  EXPECT_EQ(stat.startTime, 25u);
}

TEST(DecodeStat, RefusesWhatIsCutOff) {
  ProcStat stat;
  // The last field that is needed ends at this place; every shorter line lacks it or a part.
  const size_t needed = kBash.find(" 412 ") + 4;
  EXPECT_TRUE(DecodeStat(kBash.substr(0, needed), stat));
  for (size_t length = 0; length < needed - 3; ++length) {
    EXPECT_FALSE(DecodeStat(kBash.substr(0, length), stat)) << length;
  }
  EXPECT_FALSE(DecodeStat(") x (", stat));
  EXPECT_FALSE(DecodeStat("1 (x) S -1 0", stat));
}

TEST(DecodeEffectiveUid, TakesTheSecondOfFour) {
  EXPECT_EQ(DecodeEffectiveUid("Name:\tx\nUid:\t1000\t7\t0\t0\nGid:\t1\t1\t1\t1\n"), 7u);
  EXPECT_EQ(DecodeEffectiveUid("Name:\tUid:\t5\nUid:\t0\t4294967295\t"), 4294967295u);
  EXPECT_EQ(DecodeEffectiveUid("Name:\tx\n"), std::nullopt);
  EXPECT_EQ(DecodeEffectiveUid("Name:\tx\nUid:\t1"), std::nullopt);
  EXPECT_EQ(DecodeEffectiveUid("Name:\tx\nUid:\t1\n"), std::nullopt);
  EXPECT_EQ(DecodeEffectiveUid("Name:\tx\nUid:\t1\tx\n"), std::nullopt);
  EXPECT_EQ(DecodeEffectiveUid("Name:\tx\nUid:\t1\t99999999999\t"), std::nullopt);
}

struct CommandLineCase {
  std::string_view bytes;
  std::optional<std::string> line;
};

TEST(DecodeCommandLine, JoinsAndQuotes) {
  const CommandLineCase cases[] = {
      {"", std::nullopt},
      {"\0\0"sv, std::nullopt},
      {"sleep\0"
       "60\0"sv,
       "sleep 60"},
      {"sh\0-c\0echo \"a\\b\"\0"sv, "sh -c \"echo \\\"a\\\\b\\\"\""},
      {"p\0\0x\0"sv, "p \"\" x"},
      {"p\0it's\0a\\b\0"sv, "p \"it's\" a\\b"},
      {"p\0a\nb\0"sv, "p \"a\nb\""},
      {"sshd: ann [priv]\0\0\0\0"sv, "sshd: ann [priv]"},
      {"sshd: ann [priv]"sv, "sshd: ann [priv]"},  // no NUL at all
      {"\0x\0"sv, "\"\" x"},
      {"p\0\xFF\xC3\0"sv, "p \xFF\xC3"},
  };
  for (const CommandLineCase& test : cases) EXPECT_EQ(DecodeCommandLine(test.bytes), test.line);
}

TEST(DecodeCommandLine, IsBounded) {
  std::string bytes;
  while (bytes.size() < kMaxCommandLine) bytes += std::string("\"\0", 2);
  EXPECT_EQ(DecodeCommandLine(bytes)->size(), kMaxCommandLine);
  // Not cut inside a character.
  const std::string line = *DecodeCommandLine(std::string(kMaxCommandLine - 2, 'x') + "\u20AC");
  EXPECT_EQ(line, std::string(kMaxCommandLine - 2, 'x'));
}

TEST(DecodeElfWidth, ByTheClassByte) {
  EXPECT_EQ(DecodeElfWidth("\x7f"
                           "ELF\x01"),
            32u);
  EXPECT_EQ(DecodeElfWidth("\x7f"
                           "ELF\x02"),
            64u);
  EXPECT_EQ(DecodeElfWidth("\x7f"
                           "ELF\x03"),
            0u);
  EXPECT_EQ(DecodeElfWidth("\x7f"
                           "ELF"),
            0u);
  EXPECT_EQ(DecodeElfWidth("#!/bin/sh"), 0u);
  EXPECT_EQ(DecodeElfWidth(""), 0u);
}

TEST(DecodeExecutableLink, DropsTheKernelsMark) {
  EXPECT_EQ(DecodeExecutableLink("/usr/bin/x"), "/usr/bin/x");
  EXPECT_EQ(DecodeExecutableLink("/usr/bin/x (deleted)"), "/usr/bin/x");
  EXPECT_EQ(DecodeExecutableLink("/memfd:sealed (deleted)"), "");
}

struct NameCase {
  const char* executable;
  const char* name;
  std::string_view commandLine;
  const char* expected;
};

TEST(DecodeImageName, IsTheFullestNameThatIsKnown) {
  const NameCase cases[] = {
      {"/usr/bin/python3.11", "script", "python3\0script\0"sv, "python3.11"},
      {"", "short", "/x/other\0"sv, "short"},
      {"", "a-very-long-nam", "/x/a-very-long-name-indeed\0arg\0"sv, "a-very-long-name-indeed"},
      {"", "a-very-long-nam", "/x/something-else-entirely\0"sv, "a-very-long-nam"},
      {"", "a-very-long-nam", ""sv, "a-very-long-nam"},
  };
  for (const NameCase& test : cases) {
    ProcStat stat;
    stat.name = test.name;
    EXPECT_EQ(DecodeImageName(test.executable, stat, test.commandLine), test.expected);
  }
  ProcStat thread;
  ASSERT_TRUE(DecodeStat(kKernelThread, thread));
  EXPECT_EQ(DecodeImageName("", thread, ""), "kworker/R-quota_events_unbound");
}

}  // namespace
}  // namespace kestra
