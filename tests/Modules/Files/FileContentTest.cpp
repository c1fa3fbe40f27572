// Stretches and lines of files that come in pieces of any size.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "Modules/Files/FileContent.h"

namespace kestra {
namespace {

// Gives at most so many bytes at a time, and counts them.
class CPiecewiseReader final : public CFileReader {
 public:
  CPiecewiseReader(std::string content, size_t most)
      : m_content(std::move(content)), m_most(most) {}
  SystemError Info(FileInfo&) override { return kErrorSuccess; }
  SystemError Read(size_t limit, std::string& bytes) override {
    const std::string piece = m_content.substr(given, std::min(limit, m_most));
    bytes += piece;
    given += piece.size();
    return kErrorSuccess;
  }
  SystemError Seek(uint64_t) override { return kErrorNotSupported; }

  size_t given = 0;

 private:
  std::string m_content;
  size_t m_most;
};

bool Never() {
  return false;
}

struct TextCase {
  const char* content;
  uint32_t from, count;
  const char* expected;
  size_t read;  // bytes
};

TEST(FileContent, TakesAStretchOfCharacters) {
  const TextCase cases[] = {
      {"0123456789", 5, 100, "456789", 10},
      {"0123456789", 2, 3, "123", 4},
      {"0123456789", 11, 5, "", 10},
      {"0123456789", 4294967295, 5, "", 10},
      {"0123456789", 3, 0, "", 0},
      {"\xC3\xA4\xE2\x82\xACz", 2, 1, "\xE2\x82\xAC", 5},
      {"\xC3\xA4\xE2\x82\xACz", 1, 9, "\xC3\xA4\xE2\x82\xACz", 6},
      {"\xFF\xFEz", 2, 1, "\xFE", 2},
      {"a\xE2\x82", 2, 9, "\xE2\x82", 3},
      {"", 1, 1, "", 0},
  };
  for (const TextCase& c : cases) {
    for (const size_t most : {1, 2, 3, 100}) {
      SCOPED_TRACE(std::string(c.content) + " in pieces of " + std::to_string(most));
      CPiecewiseReader reader(c.content, most);
      std::string text = "before";
      EXPECT_EQ(ReadCharacters(reader, c.from, c.count, Never, text), kErrorSuccess);
      EXPECT_EQ(text, c.expected);
      EXPECT_EQ(reader.given, c.read);
    }
  }
}

std::string Lines(const std::string& content, size_t most, const FilesOptions& options) {
  CPiecewiseReader reader(content, most);
  std::string out;
  EXPECT_EQ(ReadLines(reader, options, Never,
                      [&](uint32_t number, std::string line) {
                        out += std::to_string(number) + "[" + line + "]";
                      }),
            kErrorSuccess);
  return out;
}

struct LineCase {
  std::string content;
  bool isLfLineEnd;
  uint32_t from, count, size;
  std::string expected;
};

TEST(FileContent, CutsLines) {
  constexpr uint32_t kWhole = FilesOptions::kWholeLine;
  const std::string longLine(2000, 'x'), exact(1024, 'y'), umlauts = [] {
    std::string text;
    for (int i = 0; i < 1100; ++i) text += "\xC3\xA4";
    return text;
  }();
  const LineCase cases[] = {
      {"a\r\nb\r\n", false, 1, 9, kWhole, "1[a]2[b]"},
      {"a\nb\r\nc", false, 1, 9, kWhole, "1[a\nb]2[c]"},
      {"a\nb\r\nc", true, 1, 9, kWhole, "1[a]2[b]3[c]"},
      {"\r\n\r\n", false, 1, 9, kWhole, "1[]2[]"},
      {"\n\n", true, 2, 9, kWhole, "2[]"},
      {"a\rb\r\n", true, 1, 9, kWhole, "1[a\rb]"},
      {"a\r", true, 1, 9, kWhole, "1[a\r]"},
      {"a\r\r\nb", true, 1, 9, kWhole, "1[a\r]2[b]"},
      {"", true, 1, 9, kWhole, ""},
      {"a\nb\nc\nd", true, 2, 2, kWhole, "2[b]3[c]"},
      {"a\nb", true, 4294967295, 2, kWhole, ""},
      {"abc\r\nd", true, 1, 9, 2, "1[ab]2[d]"},
      {"abc\nd", true, 1, 9, 0, "1[]2[]"},
      {longLine + "\r\nz", true, 1, 9, kWhole, "1[" + longLine.substr(0, 1024) + "]2[z]"},
      {exact + "\r\nz", false, 1, 9, 1024, "1[" + exact + "]2[z]"},
      {umlauts + "\r\nz", true, 1, 9, kWhole, "1[" + umlauts.substr(0, 2048) + "]2[z]"},
  };
  for (const LineCase& c : cases) {
    FilesOptions options;
    options.isLfLineEnd = c.isLfLineEnd;
    options.lineFrom = c.from;
    options.lineCount = c.count;
    options.lineSize = c.size;
    for (const size_t most : {1, 2, 3, 70000})
      EXPECT_EQ(Lines(c.content, most, options), c.expected) << c.content.substr(0, 20) << most;
  }
}

TEST(FileContent, StopsWhenItIsTold) {
  CPiecewiseReader reader("a\nb\nc\nd\n", 2);
  FilesOptions options;
  options.isLfLineEnd = true;
  options.lineFrom = 1;
  options.lineCount = 9;
  uint32_t taken = 0;
  EXPECT_EQ(ReadLines(
                reader, options, [&] { return taken == 2; },
                [&](uint32_t, const std::string&) { ++taken; }),
            kErrorCancelled);
  EXPECT_EQ(taken, 2u);
  std::string text;
  EXPECT_EQ(ReadCharacters(
                reader, 1, 9, [] { return true; }, text),
            kErrorCancelled);
}

}  // namespace
}  // namespace kestra
