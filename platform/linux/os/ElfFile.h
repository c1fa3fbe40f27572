// ElfFile: takes an ELF library apart. Follows elf(5) and the System V ABI's chapters on the ELF
// header, sections, program headers and notes.
//
//   CElfFile file(source);
//   if (file.Open() == kErrorSuccess) file.ReadSection(".comment", 4096, content);
//
// Both widths and both byte orders. The bytes may be anything: every offset is checked, and what is
// read stays within a few MiB whatever the headers promise.
#pragma once

#include <string>
#include <string_view>

#include "platform/base/ByteSource.h"

namespace kestra::os {

class CElfFile {
 public:
  // The source must outlive the object.
  explicit CElfFile(CByteSource& source) : m_source(source) {}

  // Reads the file's header. To be called first; kErrorInvalidData for what is no shared library.
  SystemError Open();
  // At most limit bytes of the first section of that name; empty if there is none, or where the
  // file ends before it.
  SystemError ReadSection(std::string_view name, size_t limit, std::string& content);
  // The bytes of the note that tells one build from another; empty if there is none.
  SystemError ReadBuildId(std::string& id);

 private:
  struct Table {
    uint64_t offset = 0;
    uint64_t entrySize = 0;
    uint64_t count = 0;
  };
  // What sections and program headers have in common.
  struct Part {
    uint64_t type = 0;
    uint64_t offset = 0;
    uint64_t size = 0;
    uint64_t alignment = 0;
    uint64_t name = 0;  // sections only: the offset in the table of names
  };

  uint64_t Number(std::string_view bytes, uint64_t offset, size_t width) const;
  SystemError ReadTable(const Table& table, size_t entrySize, std::string& bytes);
  Part SectionAt(std::string_view sections, uint64_t index) const;
  Part SegmentAt(std::string_view segments, uint64_t index) const;
  SystemError ReadNote(const Part& part, std::string& id);
  std::string FindBuildId(std::string_view notes, uint64_t alignment) const;

  CByteSource& m_source;
  ByteOrder m_order = ByteOrder::Little;
  bool m_isWide = false;  // 64 bits
  Table m_sections;
  Table m_segments;
  uint64_t m_namesIndex = 0;
};

}  // namespace kestra::os
