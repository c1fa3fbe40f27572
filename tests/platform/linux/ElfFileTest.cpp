#include <gtest/gtest.h>

#include <vector>

#include "platform/linux/os/ElfFile.h"

namespace kestra::os {
namespace {

struct Shape {
  bool isWide;
  ByteOrder order;
};

// Writes a library of three sections: none, the names, and comments; and one segment of notes.
class CElfWriter {
 public:
  explicit CElfWriter(Shape shape) : m_shape(shape) {}

  std::string Library(uint64_t promisedSize = 0) {
    const uint64_t word = m_shape.isWide ? 8 : 4;
    const uint64_t head = m_shape.isWide ? 64 : 52;
    const uint64_t segmentSize = m_shape.isWide ? 56 : 32;
    const uint64_t sectionSize = m_shape.isWide ? 64 : 40;
    const std::string names("\0.names\0.comments\0", 18);
    const std::string comments("hello\0there", 11);
    const uint64_t segments = head, sections = segments + segmentSize;
    const uint64_t notesAt = sections + 3 * sectionSize;
    const std::string notes = Notes();
    const uint64_t namesAt = notesAt + notes.size(), commentsAt = namesAt + names.size();

    std::string file(
        "\x7f"
        "ELF",
        4);
    file += {m_shape.isWide ? '\2' : '\1', m_shape.order == ByteOrder::Big ? '\2' : '\1', '\1'};
    file.resize(16);
    Add(file, 3, 2), Add(file, 0, 2), Add(file, 1, 4);
    Add(file, 0, word), Add(file, segments, word), Add(file, sections, word), Add(file, 0, 4);
    for (const uint64_t number : {head, segmentSize, uint64_t{1}, sectionSize, uint64_t{3}}) {
      Add(file, number, 2);
    }
    Add(file, 1, 2);
    AddSegment(file, notesAt, promisedSize ? promisedSize : notes.size());
    AddSection(file, {});
    AddSection(file, {1, 3, namesAt, promisedSize ? promisedSize : names.size()});
    AddSection(file, {8, 1, commentsAt, promisedSize ? promisedSize : comments.size()});
    return file + notes + names + comments;
  }

 private:
  struct Section {
    uint64_t name = 0, type = 0, offset = 0, size = 0;
  };

  void Add(std::string& bytes, uint64_t number, uint64_t width) const {
    for (uint64_t i = 0; i < width; ++i) {
      const uint64_t shift = m_shape.order == ByteOrder::Big ? width - 1 - i : i;
      bytes += static_cast<char>(number >> (8 * shift));
    }
  }
  void AddSegment(std::string& file, uint64_t offset, uint64_t size) const {
    const uint64_t word = m_shape.isWide ? 8 : 4;
    Add(file, 4, 4);
    if (m_shape.isWide) Add(file, 4, 4);
    for (const uint64_t number : {offset, uint64_t{0}, uint64_t{0}, size, size}) {
      Add(file, number, word);
    }
    if (!m_shape.isWide) Add(file, 4, 4);
    Add(file, 4, word);
  }
  void AddSection(std::string& file, const Section& section) const {
    const uint64_t word = m_shape.isWide ? 8 : 4;
    Add(file, section.name, 4), Add(file, section.type, 4);
    Add(file, 0, word), Add(file, 0, word), Add(file, section.offset, word);
    Add(file, section.size, word), Add(file, 0, 4), Add(file, 0, 4), Add(file, 1, word);
    Add(file, 0, word);
  }
  // A note of somebody else's before ours, of a length that needs padding.
  std::string Notes() const {
    std::string notes;
    Add(notes, 3, 4), Add(notes, 5, 4), Add(notes, 3, 4);
    notes += std::string(
        "ab\0\0"
        "12345\0\0\0",
        12);
    Add(notes, 4, 4), Add(notes, 3, 4), Add(notes, 3, 4);
    return notes + std::string(
                       "GNU\0"
                       "\x01\x80\xff\0",
                       8);
  }

  Shape m_shape;
};

const std::vector<Shape> kShapes = {{false, ByteOrder::Little},
                                    {false, ByteOrder::Big},
                                    {true, ByteOrder::Little},
                                    {true, ByteOrder::Big}};

TEST(ElfFile, BothWidthsAndByteOrders) {
  for (const Shape& shape : kShapes) {
    const std::string library = CElfWriter(shape).Library();
    CMemorySource source(library);
    CElfFile file(source);
    ASSERT_EQ(file.Open(), kErrorSuccess);
    std::string text;
    EXPECT_EQ(file.ReadSection(".comments", 7, text), kErrorSuccess);
    EXPECT_EQ(text, std::string("hello\0t", 7));
    EXPECT_EQ(file.ReadSection(".missing", 7, text), kErrorSuccess);
    EXPECT_EQ(text, "");
    EXPECT_EQ(file.ReadBuildId(text), kErrorSuccess);
    EXPECT_EQ(text, "\x01\x80\xff");
  }
}

// Whatever is cut off: no crash (the sanitizers look), and nothing that is not in the file.
TEST(ElfFile, CutOffAtEveryByte) {
  for (const Shape& shape : kShapes) {
    const std::string library = CElfWriter(shape).Library();
    const size_t head = shape.isWide ? 64 : 52;
    for (size_t length = 0; length < library.size(); ++length) {
      const std::string part = library.substr(0, length);
      CMemorySource source(part);
      CElfFile file(source);
      ASSERT_EQ(file.Open(), length < head ? kErrorInvalidData : kErrorSuccess) << length;
      if (length < head) continue;
      std::string comments, id;
      EXPECT_EQ(file.ReadSection(".comments", 100, comments), kErrorSuccess);
      EXPECT_TRUE(std::string("hello\0there", 11).starts_with(comments)) << length;
      EXPECT_EQ(file.ReadBuildId(id), kErrorSuccess);
      EXPECT_TRUE(id.empty() || id == "\x01\x80\xff") << length;
    }
  }
}

// A source that fails the test when a header's promise is believed.
class CThriftySource final : public CByteSource {
 public:
  explicit CThriftySource(std::string_view content) : m_source(content) {}
  SystemError ReadAt(uint64_t offset, size_t length, std::string& bytes) override {
    EXPECT_LE(length, size_t{8} << 20);
    return m_source.ReadAt(offset, length, bytes);
  }

 private:
  CMemorySource m_source;
};

TEST(ElfFile, PromisedSizesAreNotBelieved) {
  for (const Shape& shape : kShapes) {
    const std::string library = CElfWriter(shape).Library(shape.isWide ? ~uint64_t{0} : 0xFFFFFFFF);
    CThriftySource source(library);
    CElfFile file(source);
    ASSERT_EQ(file.Open(), kErrorSuccess);
    std::string text;
    EXPECT_EQ(file.ReadSection(".comments", 5, text), kErrorSuccess);
    EXPECT_EQ(text, "hello");
    EXPECT_EQ(file.ReadBuildId(text), kErrorSuccess);
    EXPECT_EQ(text, "\x01\x80\xff");
  }
}

// An unreadable file is not one without comments.
TEST(ElfFile, FailedReadsAreTold) {
  class CFailingSource final : public CByteSource {
   public:
    CFailingSource(std::string_view content, int goodReads)
        : m_source(content), m_goodReads(goodReads) {}
    SystemError ReadAt(uint64_t offset, size_t length, std::string& bytes) override {
      return m_goodReads-- > 0 ? m_source.ReadAt(offset, length, bytes) : kErrorIoDevice;
    }

   private:
    CMemorySource m_source;
    int m_goodReads;
  };
  const std::string library = CElfWriter(kShapes[2]).Library();
  const auto comments = [&](int goodReads) {
    CFailingSource source(library, goodReads);
    CElfFile file(source);
    std::string text;
    const SystemError error = file.Open();
    return error != kErrorSuccess ? error : file.ReadSection(".comments", 5, text);
  };
  EXPECT_EQ(comments(0), kErrorIoDevice);
  EXPECT_EQ(comments(1), kErrorIoDevice);
  EXPECT_EQ(comments(2), kErrorIoDevice);
  EXPECT_EQ(comments(3), kErrorIoDevice);
  EXPECT_EQ(comments(4), kErrorSuccess);
}

}  // namespace
}  // namespace kestra::os
