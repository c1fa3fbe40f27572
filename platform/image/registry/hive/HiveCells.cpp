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

}  // namespace

bool ReadKeyName(std::string_view hive, uint64_t cell, std::string& name) {
  std::string_view content;
  uint16_t flags = 0;
  uint16_t length = 0;
  return RecordContent(hive, cell, "nk", content) && LoadLittle(content, 2, flags) &&
         LoadLittle(content, 72, length) &&
         NameAt(content, 76, length, (flags & kKeyNameIsNarrow) != 0, name);
}

bool ReadKeyFacts(std::string_view hive, uint64_t cell, KeyFacts& facts) {
  std::string_view content;
  uint32_t classCell = 0;
  uint16_t classLength = 0;
  if (!RecordContent(hive, cell, "nk", content) ||
      !LoadLittle(content, 4, facts.lastWriteTime.ticks) || !LoadLittle(content, 48, classCell) ||
      !LoadLittle(content, 74, classLength)) {
    return false;
  }
  facts.className.clear();
  if (classLength == 0 || classCell == kNoCell) return true;
  std::string_view bytes;
  if (!CellContent(hive, kFirstBin + classCell, bytes) || bytes.size() < classLength) return false;
  facts.className = Utf8FromUtf16(bytes.substr(0, classLength));
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

}  // namespace kestra::image
