#include <gtest/gtest.h>

#include "VLib/src/version/PeFile.h"
#include "VLib/src/version/VersionBlock.h"
#include "tests/support/TempDirectory.h"

namespace kestra {
namespace {

std::string Sample(const std::string& name) {
  return test::ReadWholeFile(std::string(KESTRA_PE_SAMPLES) + "/" + name);
}

SystemError Read(const std::string& file, std::string& block) {
  CMemorySource source(file);
  return ReadVersionResource(source, block);
}

// Places in sample_wide.dll, as `objdump -p` shows them.
constexpr size_t kResources = 0xA00;  // the resource directory
constexpr size_t kBlock = 0xA58;      // the version block
constexpr size_t kBlockSize = 0x2D0;

TEST(PeFile, BothWidths) {
  for (const char* name : {"sample_wide.dll", "sample_narrow.dll"}) {
    std::string block;
    ASSERT_EQ(Read(Sample(name), block), kErrorSuccess) << name;
    EXPECT_EQ(block.size(), kBlockSize) << name;
    EXPECT_EQ(CVersionBlock(block).FindText("\\StringFileInfo\\040904b0\\Comments"),
              "Diagnostic plugin");
  }
}

// Up to the block there is none; then there is what the file has of it.
TEST(PeFile, CutOffAtEveryByte) {
  const std::string whole = Sample("sample_wide.dll");
  const std::string wholeBlock = whole.substr(kBlock, kBlockSize);
  for (size_t length = 0; length < whole.size(); ++length) {
    std::string block = "before";
    const SystemError error = Read(whole.substr(0, length), block);
    ASSERT_EQ(error, length < kBlock ? kErrorResourceTypeNotFound : kErrorSuccess) << length;
    EXPECT_EQ(block, length < kBlock ? "" : wholeBlock.substr(0, length - kBlock)) << length;
  }
}

TEST(PeFile, ResourcesByTypeAndName) {
  const std::string whole = Sample("sample_wide.dll");
  const std::string block = whole.substr(kBlock, kBlockSize);
  // The type, and then the name, made a text that stands where the block's own text was.
  const std::string text("\x03\0A\0b\0\xDC\0", 8);
  const std::string offset("\xF8\0\0\x80", 4);
  std::string named = whole;
  named.replace(kResources + 0xF8, text.size(), text);
  std::string namedType = named, namedName = named;
  namedType.replace(kResources + 16, 4, offset);
  namedName.replace(kResources + 40, 4, offset);
  std::string cut = whole, huge = whole;
  cut.replace(kResources + 76, 4, std::string("\xFF\xFF\0\0", 4));
  huge.replace(kResources + 76, 4, std::string("\0\0\0\x20", 4));
  const struct {
    const std::string& file;
    const char* type;
    const char* name;
    SystemError expected;
  } cases[] = {
      {whole, "#16", "#1", kErrorSuccess},
      {whole, "#16", "#2", kErrorResourceNameNotFound},
      {whole, "#15", "#1", kErrorResourceTypeNotFound},
      {whole, "16", "#1", kErrorResourceTypeNotFound},
      {whole, "#", "#1", kErrorResourceTypeNotFound},
      {whole, "#16x", "#1", kErrorResourceTypeNotFound},
      {whole, "", "", kErrorResourceTypeNotFound},
      {namedType, "AB\xC3\xBC", "#1", kErrorSuccess},
      {namedType, "#16", "#1", kErrorResourceTypeNotFound},
      {namedName, "#16", "ab\xC3\x9C", kErrorSuccess},
      {namedName, "#16", "ab", kErrorResourceNameNotFound},
      {cut, "#16", "#1", kErrorBadExeFormat},
      {huge, "#16", "#1", kErrorBadExeFormat},
      {"no program", "#16", "#1", kErrorResourceTypeNotFound},
  };
  for (const auto& one : cases) {
    CMemorySource source(one.file);
    std::string bytes = "before";
    EXPECT_EQ(ReadResource(source, one.type, one.name, bytes), one.expected)
        << one.type << " " << one.name;
    const bool isWhole = one.expected == kErrorSuccess;
    EXPECT_EQ(bytes.size(), isWhole ? block.size() : 0u) << one.type << " " << one.name;
  }
  CMemorySource source(whole);
  std::string bytes;
  ReadResource(source, "#16", "#1", bytes);
  EXPECT_EQ(bytes, block);
}

struct Patch {
  const char* what;
  size_t offset;
  std::string bytes;
  SystemError expected;
};

TEST(PeFile, HeadersThatLie) {
  const std::string whole = Sample("sample_wide.dll");
  const size_t pe = static_cast<uint8_t>(whole[0x3C]);
  const size_t sections = pe + 24 + 240;
  const std::string most(4, '\xff');
  const SystemError none = kErrorResourceTypeNotFound;
  const Patch patches[] = {
      {"no DOS signature", 0, "ZM", none},
      {"headers behind the end", 0x3C, most, none},
      {"no PE signature", pe, "NE", none},
      {"no sections", pe + 6, std::string(2, '\0'), none},
      {"more sections than there are", pe + 6, "\xff\xff", kErrorSuccess},
      {"no optional header", pe + 20, std::string(2, '\0'), none},
      {"an optional header without directories", pe + 20, std::string("\x70\0", 2), none},
      {"an unknown width", pe + 24, "\x07\x01", none},
      {"two data directories", pe + 24 + 108, "\x02", none},
      {"resources at 0", pe + 24 + 128, std::string(4, '\0'), none},
      {"resources in no section", pe + 24 + 128, most, none},
      {"a section that lies behind the end", sections + 3 * 40 + 20, most, none},
      {"a section that is longer than the file", sections + 3 * 40 + 16, most, kErrorSuccess},
      {"a section that ends before the block", sections + 3 * 40 + 16, std::string("\x58\0\0\0", 4),
       none},
      {"no entries", kResources + 14, std::string(2, '\0'), none},
      {"more entries than there can be", kResources + 14, "\xff\xff", none},
      {"names that there are not", kResources + 12, "\xff\xff", none},
      {"another type", kResources + 16, "\x0f", none},
      {"a type that is no directory", kResources + 20, std::string("\x18\0\0\0", 4), none},
      {"a type that is the root again", kResources + 20, std::string("\0\0\0\x80", 4), none},
      {"a name that is the root again", kResources + 44, std::string("\0\0\0\x80", 4), none},
      {"a language that is a directory", kResources + 68, std::string("\x48\0\0\x80", 4), none},
      {"data in no section", kResources + 72, most, none},
      {"a block without an end", kResources + 76, most, kErrorSuccess},
      {"an empty block", kResources + 76, std::string(4, '\0'), kErrorSuccess},
  };
  for (const Patch& patch : patches) {
    std::string file = whole;
    file.replace(patch.offset, patch.bytes.size(), patch.bytes);
    std::string block;
    EXPECT_EQ(Read(file, block), patch.expected) << patch.what;
    EXPECT_LE(block.size(), whole.size() - kBlock) << patch.what;
  }
}

// "It has none" and "it could not be read" differ, whichever read fails.
TEST(PeFile, FailedReadsAreTold) {
  class CFailingSource final : public CByteSource {
   public:
    CFailingSource(std::string_view content, int goodReads)
        : m_source(content), m_goodReads(goodReads) {}
    SystemError ReadAt(uint64_t offset, size_t length, std::string& bytes) override {
      return m_goodReads-- > 0 ? m_source.ReadAt(offset, length, bytes) : kErrorIoDevice;
    }
    bool HasFailed() const { return m_goodReads < 0; }

   private:
    CMemorySource m_source;
    int m_goodReads;
  };
  const std::string whole = Sample("sample_wide.dll");
  int goodReads = 0;
  for (;; ++goodReads) {
    CFailingSource source(whole, goodReads);
    std::string block;
    const SystemError error = ReadVersionResource(source, block);
    if (!source.HasFailed()) break;
    EXPECT_EQ(error, kErrorIoDevice) << goodReads;
    EXPECT_EQ(block, "") << goodReads;
  }
  EXPECT_GT(goodReads, 4);
  EXPECT_LT(goodReads, 20);
}

}  // namespace
}  // namespace kestra
