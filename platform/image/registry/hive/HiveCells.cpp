#include "platform/image/registry/hive/HiveCells.h"

#include "platform/base/ByteSource.h"
#include "platform/base/text/Utf16.h"

namespace kestra::image {
namespace {

constexpr uint64_t kFirstBin = 0x1000;  // what cells name each other by counts from here
constexpr uint32_t kNoCell = 0xFFFFFFFF;
constexpr uint16_t kKeyIsLink = 0x10;
constexpr uint16_t kKeyNameIsNarrow = 0x20;
constexpr uint16_t kValueNameIsNarrow = 1;

// What stands behind the size of the cell; false unless all of it lies within the file. A size is
// negative for a cell that is in use.
bool CellContent(std::string_view hive, uint64_t cell, std::string_view& content) {
  uint32_t stored = 0;
  if (!LoadLittle(hive, cell, stored)) return false;
  const uint64_t size = 0u - stored;
  if (stored < 0x80000000 || size < 4 || size > hive.size() - cell) return false;
  content = hive.substr(static_cast<size_t>(cell) + 4, static_cast<size_t>(size) - 4);
  return true;
}

bool RecordContent(std::string_view hive, uint64_t cell, std::string_view mark,
                   std::string_view& content) {
  return CellContent(hive, cell, content) && content.substr(0, mark.size()) == mark;
}

// Names are of 8 bits, the first 256 characters of Unicode, or of 16.
std::string DecodeName(std::string_view bytes, bool isNarrow) {
  if (!isNarrow) return Utf8FromUtf16(bytes);
  std::string name;
  name.reserve(bytes.size());
  for (const char byte : bytes) {
    const auto character = static_cast<unsigned char>(byte);
    if (character < 0x80) {
      name += byte;
    } else {
      name += static_cast<char>(0xC0 | character >> 6);
      name += static_cast<char>(0x80 | (character & 0x3F));
    }
  }
  return name;
}

bool NameAt(std::string_view content, size_t begin, size_t length, bool isNarrow,
            std::string& name) {
  if (begin > content.size() || content.size() - begin < length) return false;
  name = DecodeName(content.substr(begin, length), isNarrow);
  return true;
}

// None for more entries than the file has room for: each is named by 4 bytes, and lies in 24 more.
std::optional<uint32_t> PossibleCount(std::string_view hive, std::string_view content,
                                      size_t place) {
  uint32_t count = 0;
  const bool isPossible = LoadLittle(content, place, count) && count <= hive.size() / 28;
  return isPossible ? std::optional(count) : std::nullopt;
}

}  // namespace

bool ReadKeyName(std::string_view hive, uint64_t cell, std::string& name) {
  std::string_view content;
  uint16_t flags = 0;
  uint16_t length = 0;
  return RecordContent(hive, cell, "nk", content) && LoadLittle(content, 2, flags) &&
         LoadLittle(content, 72, length) &&
         NameAt(content, 76, length, (flags & kKeyNameIsNarrow) != 0, name);
}

bool ReadKeyFacts(std::string_view hive, uint64_t cell, KeyFacts& facts, bool& isWhole) {
  std::string_view content;
  uint32_t classCell = 0;
  uint16_t classLength = 0;
  if (!RecordContent(hive, cell, "nk", content) ||
      !LoadLittle(content, 4, facts.lastWriteTime.ticks) || !LoadLittle(content, 48, classCell) ||
      !LoadLittle(content, 74, classLength)) {
    return false;
  }
  facts.subKeyCount = PossibleCount(hive, content, 20);
  facts.valueCount = PossibleCount(hive, content, 36);
  isWhole = facts.subKeyCount.has_value() && facts.valueCount.has_value();
  facts.className.clear();
  if (classLength == 0 || classCell == kNoCell) return true;
  std::string_view bytes;
  if (CellContent(hive, kFirstBin + classCell, bytes) && bytes.size() >= classLength) {
    facts.className = Utf8FromUtf16(bytes.substr(0, classLength));
  } else {
    isWhole = false;
  }
  return true;
}

bool IsLinkCell(std::string_view hive, uint64_t cell) {
  std::string_view content;
  uint16_t flags = 0;
  return RecordContent(hive, cell, "nk", content) && LoadLittle(content, 2, flags) &&
         (flags & kKeyIsLink) != 0;
}

bool ReadValueName(std::string_view hive, uint64_t cell, std::string& name) {
  std::string_view content;
  uint16_t flags = 0;
  uint16_t length = 0;
  return RecordContent(hive, cell, "vk", content) && LoadLittle(content, 2, length) &&
         LoadLittle(content, 16, flags) &&
         NameAt(content, 20, length, (flags & kValueNameIsNarrow) != 0, name);
}

bool ReadValueLength(std::string_view hive, uint64_t cell, uint32_t& length) {
  constexpr uint32_t kStoredInPlace = 0x80000000;
  std::string_view content;
  if (!RecordContent(hive, cell, "vk", content) || !LoadLittle(content, 4, length)) return false;
  length &= ~kStoredInPlace;
  return true;
}

}  // namespace kestra::image
