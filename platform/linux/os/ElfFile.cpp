#include "platform/linux/os/ElfFile.h"

#include <elf.h>

#include <cstring>

// The place and width of a structure's field in a file of either width.
#define FIELD(Type, field)                                                    \
  (m_isWide ? offsetof(Elf64_##Type, field) : offsetof(Elf32_##Type, field)), \
      (m_isWide ? sizeof(Elf64_##Type::field) : sizeof(Elf32_##Type::field))

namespace kestra::os {
namespace {

// A library of ours has some forty sections with names of a few bytes. What is far beyond that was
// not made by a linker, and is not looked at.
constexpr size_t kMostNames = 1 << 20;
constexpr size_t kMostNotes = 1 << 16;
constexpr uint64_t kMostNoteParts = 16;
constexpr uint64_t kMostIdBytes = 256;

uint64_t RoundUp(uint64_t size, uint64_t alignment) {
  return (size + alignment - 1) / alignment * alignment;
}

}  // namespace

SystemError CElfFile::Open() {
  std::string header;
  const SystemError error = m_source.ReadAt(0, sizeof(Elf64_Ehdr), header);
  if (error != kErrorSuccess) return error;
  if (header.size() < EI_NIDENT || header.compare(0, SELFMAG, ELFMAG) != 0)
    return kErrorInvalidData;
  if (header[EI_CLASS] != ELFCLASS32 && header[EI_CLASS] != ELFCLASS64) return kErrorInvalidData;
  if (header[EI_DATA] != ELFDATA2LSB && header[EI_DATA] != ELFDATA2MSB) return kErrorInvalidData;
  m_isWide = header[EI_CLASS] == ELFCLASS64;
  m_order = header[EI_DATA] == ELFDATA2MSB ? ByteOrder::Big : ByteOrder::Little;
  if (header.size() < (m_isWide ? sizeof(Elf64_Ehdr) : sizeof(Elf32_Ehdr)))
    return kErrorInvalidData;
  if (Number(header, FIELD(Ehdr, e_type)) != ET_DYN) return kErrorInvalidData;
  m_sections = {Number(header, FIELD(Ehdr, e_shoff)), Number(header, FIELD(Ehdr, e_shentsize)),
                Number(header, FIELD(Ehdr, e_shnum))};
  m_segments = {Number(header, FIELD(Ehdr, e_phoff)), Number(header, FIELD(Ehdr, e_phentsize)),
                Number(header, FIELD(Ehdr, e_phnum))};
  m_namesIndex = Number(header, FIELD(Ehdr, e_shstrndx));
  return kErrorSuccess;
}

SystemError CElfFile::ReadSection(std::string_view name, size_t limit, std::string& content) {
  content.clear();
  std::string sections;
  SystemError error =
      ReadTable(m_sections, m_isWide ? sizeof(Elf64_Shdr) : sizeof(Elf32_Shdr), sections);
  if (error != kErrorSuccess) return error;
  const Part nameTable = SectionAt(sections, m_namesIndex);
  if (nameTable.type != SHT_STRTAB) return kErrorSuccess;
  std::string names;
  error = m_source.ReadAt(nameTable.offset, std::min<uint64_t>(nameTable.size, kMostNames), names);
  if (error != kErrorSuccess) return error;
  for (uint64_t i = 0; i < m_sections.count; ++i) {
    const Part section = SectionAt(sections, i);
    if (section.name >= names.size() || name != names.c_str() + section.name) continue;
    if (section.type == SHT_NULL || section.type == SHT_NOBITS) continue;
    return m_source.ReadAt(section.offset, std::min<uint64_t>(section.size, limit), content);
  }
  return kErrorSuccess;
}

// The loader's view is asked first, since what strips a library may take its section headers.
SystemError CElfFile::ReadBuildId(std::string& id) {
  id.clear();
  std::string table;
  uint64_t looks = 0;
  SystemError error =
      ReadTable(m_segments, m_isWide ? sizeof(Elf64_Phdr) : sizeof(Elf32_Phdr), table);
  for (uint64_t i = 0; error == kErrorSuccess && id.empty() && i < m_segments.count; ++i) {
    const Part segment = SegmentAt(table, i);
    if (segment.type != PT_NOTE || ++looks > kMostNoteParts) continue;
    error = ReadNote(segment, id);
  }
  if (error != kErrorSuccess || !id.empty()) return error;
  error = ReadTable(m_sections, m_isWide ? sizeof(Elf64_Shdr) : sizeof(Elf32_Shdr), table);
  for (uint64_t i = 0; error == kErrorSuccess && id.empty() && i < m_sections.count; ++i) {
    const Part section = SectionAt(table, i);
    if (section.type != SHT_NOTE || ++looks > kMostNoteParts) continue;
    error = ReadNote(section, id);
  }
  return error;
}

uint64_t CElfFile::Number(std::string_view bytes, uint64_t offset, size_t width) const {
  uint64_t value = 0;
  LoadNumber(bytes, offset, width, m_order, value);
  return value;
}

// A table whose entries are of another size than the ABI says counts as empty.
SystemError CElfFile::ReadTable(const Table& table, size_t entrySize, std::string& bytes) {
  bytes.clear();
  if (table.offset == 0 || table.entrySize != entrySize) return kErrorSuccess;
  return m_source.ReadAt(table.offset, static_cast<size_t>(table.count) * entrySize, bytes);
}

// An entry that lies beyond the table has type 0, which both kinds of tables have for "unused".
CElfFile::Part CElfFile::SectionAt(std::string_view sections, uint64_t index) const {
  const size_t size = m_isWide ? sizeof(Elf64_Shdr) : sizeof(Elf32_Shdr);
  if (index >= sections.size() / size) return Part();
  const std::string_view entry = sections.substr(static_cast<size_t>(index) * size, size);
  return {Number(entry, FIELD(Shdr, sh_type)), Number(entry, FIELD(Shdr, sh_offset)),
          Number(entry, FIELD(Shdr, sh_size)), Number(entry, FIELD(Shdr, sh_addralign)),
          Number(entry, FIELD(Shdr, sh_name))};
}

CElfFile::Part CElfFile::SegmentAt(std::string_view segments, uint64_t index) const {
  const size_t size = m_isWide ? sizeof(Elf64_Phdr) : sizeof(Elf32_Phdr);
  if (index >= segments.size() / size) return Part();
  const std::string_view entry = segments.substr(static_cast<size_t>(index) * size, size);
  return {Number(entry, FIELD(Phdr, p_type)), Number(entry, FIELD(Phdr, p_offset)),
          Number(entry, FIELD(Phdr, p_filesz)), Number(entry, FIELD(Phdr, p_align)), 0};
}

SystemError CElfFile::ReadNote(const Part& part, std::string& id) {
  std::string notes;
  const SystemError error =
      m_source.ReadAt(part.offset, std::min<uint64_t>(part.size, kMostNotes), notes);
  if (error == kErrorSuccess) id = FindBuildId(notes, part.alignment);
  return error;
}

// Names and contents are padded to the part's alignment, which is 4 unless it says 8.
std::string CElfFile::FindBuildId(std::string_view notes, uint64_t alignment) const {
  static_assert(sizeof(Elf64_Nhdr) == sizeof(Elf32_Nhdr));
  const uint64_t unit = alignment == 8 ? 8 : 4;
  uint64_t at = 0;
  while (at + sizeof(Elf64_Nhdr) <= notes.size()) {
    const std::string_view header = notes.substr(static_cast<size_t>(at));
    const uint64_t nameSize = Number(header, FIELD(Nhdr, n_namesz));
    const uint64_t contentSize = Number(header, FIELD(Nhdr, n_descsz));
    const uint64_t name = at + sizeof(Elf64_Nhdr);
    const uint64_t content = RoundUp(name + nameSize, unit);
    const uint64_t end = content + contentSize;
    if (end > notes.size()) break;
    const bool isGnu = notes.substr(static_cast<size_t>(name), static_cast<size_t>(nameSize)) ==
                       std::string_view(ELF_NOTE_GNU, sizeof ELF_NOTE_GNU);
    const bool isId = isGnu && Number(header, FIELD(Nhdr, n_type)) == NT_GNU_BUILD_ID;
    if (isId && contentSize > 0 && contentSize <= kMostIdBytes) {
      return std::string(
          notes.substr(static_cast<size_t>(content), static_cast<size_t>(contentSize)));
    }
    at = RoundUp(end, unit);
  }
  return std::string();
}

}  // namespace kestra::os
