#include "VLib/src/version/PeFile.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "VLib/src/text/Text.h"
#include "platform/base/text/Utf16.h"

namespace kestra {
namespace {

constexpr uint16_t kDosSignature = 0x5A4D;     // "MZ"
constexpr uint32_t kPeSignature = 0x00004550;  // "PE\0\0"
constexpr uint64_t kPeOffsetPlace = 0x3C;
constexpr size_t kFileHeaderSize = 24;  // with the signature
constexpr uint16_t kMagic32 = 0x10B;
constexpr uint16_t kMagic64 = 0x20B;
constexpr uint64_t kResourceDirectory = 2;  // its place among the data directories
constexpr size_t kSectionHeaderSize = 40;
constexpr size_t kMostSections = 1024;  // the loader takes 96
constexpr size_t kDirectoryHeaderSize = 16;
constexpr size_t kDirectoryEntrySize = 8;
constexpr uint32_t kMostEntries = 0x1000;  // of one resource directory that are looked at
constexpr uint32_t kVersionType = 16;
constexpr uint32_t kIsDirectory = 0x80000000;
constexpr size_t kDataEntrySize = 16;

struct Section {
  uint32_t address = 0;
  uint32_t rawSize = 0;
  uint32_t rawOffset = 0;
};

// Takes one file apart, step by step. Every step answers with the error that ends the search.
class CPeReader {
 public:
  explicit CPeReader(CByteSource& source) : m_source(source) {}

  SystemError ReadVersionResource(std::string& block) {
    SystemError error = ReadHeaders();
    uint32_t offset = 0;
    if (error == kErrorSuccess) error = FindEntry(0, kVersionType, offset);
    if (error == kErrorSuccess) error = FindEntry(offset, kAnyEntry, offset);
    if (error == kErrorSuccess) error = FindEntry(offset, kAnyEntry, offset);
    return error == kErrorSuccess ? ReadData(offset, block) : error;
  }

  SystemError ReadNamed(std::string_view type, std::string_view name, std::string& bytes) {
    SystemError error = ReadHeaders();
    uint32_t offset = 0;
    if (error == kErrorSuccess) error = FindNamed(kIsDirectory, type, offset);
    if (error != kErrorSuccess) return error;
    error = FindNamed(offset, name, offset);
    if (error == kErrorSuccess) error = FindEntry(offset, kAnyEntry, offset);
    if (error == kErrorResourceTypeNotFound) return kErrorResourceNameNotFound;
    return error == kErrorSuccess ? ReadWholeData(offset, bytes) : error;
  }

 private:
  static constexpr uint32_t kAnyEntry = 0;

  // For what the format needs: bytes that end early are a file without the resource.
  SystemError ReadWhole(uint64_t offset, size_t length, std::string& bytes) {
    const SystemError error = m_source.ReadAt(offset, length, bytes);
    if (error != kErrorSuccess) return error;
    return bytes.size() == length ? kErrorSuccess : kErrorResourceTypeNotFound;
  }

  SystemError ReadHeaders() {
    std::string bytes;
    SystemError error = ReadWhole(0, kLeastProgramSize, bytes);
    if (error != kErrorSuccess) return error;
    uint16_t signature = 0;
    uint32_t at = 0;
    LoadLittle(bytes, 0, signature);
    LoadLittle(bytes, kPeOffsetPlace, at);
    if (signature != kDosSignature) return kErrorResourceTypeNotFound;
    error = ReadWhole(at, kFileHeaderSize, bytes);
    if (error != kErrorSuccess) return error;
    uint32_t peSignature = 0;
    uint16_t sectionCount = 0, optionalSize = 0;
    LoadLittle(bytes, 0, peSignature);
    LoadLittle(bytes, 6, sectionCount);
    LoadLittle(bytes, 20, optionalSize);
    if (peSignature != kPeSignature) return kErrorResourceTypeNotFound;
    const uint64_t optional = uint64_t{at} + kFileHeaderSize;
    error = ReadResourcePlace(optional, optionalSize);
    if (error != kErrorSuccess) return error;
    return ReadSections(optional + optionalSize, sectionCount);
  }

  SystemError ReadResourcePlace(uint64_t offset, size_t size) {
    std::string bytes;
    const SystemError error = m_source.ReadAt(offset, size, bytes);
    if (error != kErrorSuccess) return error;
    uint16_t magic = 0;
    LoadLittle(bytes, 0, magic);
    if (magic != kMagic32 && magic != kMagic64) return kErrorResourceTypeNotFound;
    const uint64_t countPlace = magic == kMagic64 ? 108 : 92;
    uint32_t count = 0;
    LoadLittle(bytes, countPlace, count);
    if (count <= kResourceDirectory) return kErrorResourceTypeNotFound;
    LoadLittle(bytes, countPlace + 4 + kResourceDirectory * 8, m_resources);
    return m_resources != 0 ? kErrorSuccess : kErrorResourceTypeNotFound;
  }

  SystemError ReadSections(uint64_t offset, size_t count) {
    std::string bytes;
    const size_t size = std::min(count, kMostSections) * kSectionHeaderSize;
    const SystemError error = m_source.ReadAt(offset, size, bytes);
    if (error != kErrorSuccess) return error;
    for (size_t at = 0; at + kSectionHeaderSize <= bytes.size(); at += kSectionHeaderSize) {
      Section section;
      LoadLittle(bytes, at + 12, section.address);
      LoadLittle(bytes, at + 16, section.rawSize);
      LoadLittle(bytes, at + 20, section.rawOffset);
      m_sections.push_back(section);
    }
    return kErrorSuccess;
  }

  // Where an address of the loaded program lies in the file, and how much of it is there.
  bool Locate(uint64_t address, uint64_t& offset, uint64_t& available) const {
    for (const Section& section : m_sections) {
      if (address < section.address || address - section.address >= section.rawSize) continue;
      const uint64_t within = address - section.address;
      offset = section.rawOffset + within;
      available = section.rawSize - within;
      return true;
    }
    return false;
  }

  SystemError ReadResource(uint64_t offset, size_t length, std::string& bytes) {
    uint64_t place = 0, available = 0;
    if (!Locate(uint64_t{m_resources} + offset, place, available) || available < length) {
      return kErrorResourceTypeNotFound;
    }
    return ReadWhole(place, length, bytes);
  }

  // Goes from the directory at offset to the entry of that number, or to the first one; its offset
  // keeps the bit that tells a directory. Entries with names come before those with numbers.
  SystemError FindEntry(uint32_t directory, uint32_t wanted, uint32_t& offset) {
    // The three levels are counted, so that a tree that leads back into itself ends as any other.
    const bool isRoot = wanted != kAnyEntry;
    if (!isRoot && !(directory & kIsDirectory)) return kErrorResourceTypeNotFound;
    const uint64_t place = directory & ~kIsDirectory;
    std::string bytes;
    SystemError error = ReadResource(place, kDirectoryHeaderSize, bytes);
    if (error != kErrorSuccess) return error;
    uint16_t named = 0, numbered = 0;
    LoadLittle(bytes, 12, named);
    LoadLittle(bytes, 14, numbered);
    const uint32_t first = isRoot ? named : 0;
    const uint32_t count = isRoot ? std::min<uint32_t>(numbered, kMostEntries)
                                  : std::min<uint32_t>(named + numbered, 1);
    if (count == 0) return kErrorResourceTypeNotFound;
    error = ReadResource(place + kDirectoryHeaderSize + first * kDirectoryEntrySize,
                         count * kDirectoryEntrySize, bytes);
    if (error != kErrorSuccess) return error;
    for (size_t at = 0; at < bytes.size(); at += kDirectoryEntrySize) {
      uint32_t id = 0;
      LoadLittle(bytes, at, id);
      if (isRoot && id != wanted) continue;
      LoadLittle(bytes, at + 4, offset);
      return kErrorSuccess;
    }
    return kErrorResourceTypeNotFound;
  }

  // Goes from the directory at offset to the entry that is called so, a text or "#" and a number.
  SystemError FindNamed(uint32_t directory, std::string_view wanted, uint32_t& offset) {
    if (!(directory & kIsDirectory)) return kErrorResourceTypeNotFound;
    const uint64_t place = directory & ~kIsDirectory;
    std::string bytes;
    SystemError error = ReadResource(place, kDirectoryHeaderSize, bytes);
    if (error != kErrorSuccess) return error;
    uint16_t named = 0, numbered = 0;
    LoadLittle(bytes, 12, named);
    LoadLittle(bytes, 14, numbered);
    const uint32_t count = std::min<uint32_t>(uint32_t{named} + numbered, kMostEntries);
    error = ReadResource(place + kDirectoryHeaderSize, count * kDirectoryEntrySize, bytes);
    for (size_t at = 0; error == kErrorSuccess && at < bytes.size(); at += kDirectoryEntrySize) {
      uint32_t id = 0;
      LoadLittle(bytes, at, id);
      bool isWanted = false;
      error = IsCalled(id, wanted, isWanted);
      if (isWanted) LoadLittle(bytes, at + 4, offset);
      if (isWanted) return kErrorSuccess;
    }
    return error == kErrorSuccess ? kErrorResourceTypeNotFound : error;
  }

  SystemError IsCalled(uint32_t id, std::string_view wanted, bool& isWanted) {
    if (!(id & kIsDirectory)) {
      size_t consumed = 0;
      isWanted = wanted.starts_with('#') && ParseUInt32(wanted.substr(1), consumed) == id &&
                 consumed != 0 && consumed == wanted.size() - 1;
      return kErrorSuccess;
    }
    const uint64_t place = id & ~kIsDirectory;
    std::string bytes;
    SystemError error = ReadResource(place, sizeof(uint16_t), bytes);
    uint16_t length = 0;
    LoadLittle(bytes, 0, length);
    if (error == kErrorSuccess) error = ReadResource(place + sizeof length, length * 2u, bytes);
    isWanted = error == kErrorSuccess && EqualsNoCase(Utf8FromUtf16(bytes), wanted);
    // A name that leads nowhere is nobody's.
    return error == kErrorResourceTypeNotFound ? kErrorSuccess : error;
  }

  // The place of what an entry tells of, how much there is to be, and how much the file has of it.
  SystemError FindData(uint32_t entry, uint64_t& offset, uint32_t& size, uint64_t& available) {
    if (entry & kIsDirectory) return kErrorResourceTypeNotFound;
    std::string bytes;
    const SystemError error = ReadResource(entry, kDataEntrySize, bytes);
    if (error != kErrorSuccess) return error;
    uint32_t address = 0;
    LoadLittle(bytes, 0, address);
    LoadLittle(bytes, 4, size);
    return Locate(address, offset, available) ? kErrorSuccess : kErrorResourceTypeNotFound;
  }

  SystemError ReadWholeData(uint32_t entry, std::string& bytes) {
    uint64_t offset = 0, available = 0;
    uint32_t size = 0;
    SystemError error = FindData(entry, offset, size, available);
    if (error == kErrorResourceTypeNotFound || (error == kErrorSuccess && available < size))
      return kErrorBadExeFormat;
    if (error == kErrorSuccess && size > kMostResource) error = kErrorFileTooLarge;
    if (error != kErrorSuccess) return error;
    error = m_source.ReadAt(offset, size, bytes);
    return error == kErrorSuccess && bytes.size() != size ? kErrorBadExeFormat : error;
  }

  SystemError ReadData(uint32_t entry, std::string& block) {
    uint64_t offset = 0, available = 0;
    uint32_t size = 0;
    const SystemError error = FindData(entry, offset, size, available);
    if (error != kErrorSuccess) return error;
    const uint64_t length = std::min({uint64_t{size}, available, uint64_t{kMostVersionBlock}});
    return m_source.ReadAt(offset, static_cast<size_t>(length), block);
  }

  CByteSource& m_source;
  std::vector<Section> m_sections;
  uint32_t m_resources = 0;  // the address of the resource directory
};

}  // namespace

SystemError ReadVersionResource(CByteSource& source, std::string& block) {
  block.clear();
  return CPeReader(source).ReadVersionResource(block);
}

SystemError ReadResource(CByteSource& source, std::string_view type, std::string_view name,
                         std::string& bytes) {
  bytes.clear();
  const SystemError error = CPeReader(source).ReadNamed(type, name, bytes);
  if (error != kErrorSuccess) bytes.clear();
  return error;
}

}  // namespace kestra
