#include "VLib/src/version/VersionBlock.h"

#include <algorithm>

#include "VLib/src/text/Text.h"
#include "platform/base/ByteSource.h"
#include "platform/base/text/Utf16.h"

namespace kestra {
namespace {

constexpr size_t kNodeHeaderSize = 6;
constexpr uint32_t kFixedSignature = 0xFEEF04BD;
constexpr size_t kFixedVersionsEnd = 24;  // of VS_FIXEDFILEINFO, what is looked at here
constexpr size_t kStringDepth = 3;        // StringFileInfo, a table, a string

size_t AlignToFour(size_t offset) {
  return (offset + 3) / 4 * 4;
}

// The bytes of the text that begins at offset, without its NUL, which ends it before the limit.
std::string_view TextAt(std::string_view bytes, size_t offset, size_t limit) {
  size_t end = offset;
  uint16_t unit = 0;
  while (LoadLittle(bytes.substr(0, limit), end, unit) && unit != 0) end += 2;
  return bytes.substr(offset, end - offset);
}

void LoadVersion(std::string_view bytes, size_t offset, uint16_t (&parts)[4]) {
  LoadLittle(bytes, offset + 2, parts[0]);
  LoadLittle(bytes, offset, parts[1]);
  LoadLittle(bytes, offset + 6, parts[2]);
  LoadLittle(bytes, offset + 4, parts[3]);
}

}  // namespace

std::optional<std::string> CVersionBlock::FindText(std::string_view path) const {
  Node node;
  size_t depth = 0;
  if (!Find(path, node, depth) || depth == 0) return std::nullopt;
  // Some resource compilers mark no string as text.
  if (!node.isText && depth != kStringDepth) return std::nullopt;
  // And some count a text's length in bytes: its NUL tells where it ends, the length only whether
  // there is any.
  if (node.valueSize == 0) return std::string();
  return Utf8FromUtf16(TextAt(m_bytes, node.value, node.end));
}

std::optional<uint32_t> CVersionBlock::FirstTranslation() const {
  Node node;
  size_t depth = 0;
  if (!Find("VarFileInfo\\Translation", node, depth)) return std::nullopt;
  uint16_t language = 0, codePage = 0;
  const std::string_view value = ValueOf(node);
  if (!LoadLittle(value, 0, language) || !LoadLittle(value, 2, codePage)) return std::nullopt;
  return uint32_t{language} << 16 | codePage;
}

std::optional<FixedVersions> CVersionBlock::Fixed() const {
  Node root;
  if (!ReadNode(0, m_bytes.size(), root)) return std::nullopt;
  const std::string_view value = ValueOf(root);
  uint32_t signature = 0;
  LoadLittle(value, 0, signature);
  if (signature != kFixedSignature || value.size() < kFixedVersionsEnd) return std::nullopt;
  FixedVersions versions;
  LoadVersion(value, 8, versions.file);
  LoadVersion(value, 16, versions.product);
  return versions;
}

// A node that promises more than its parent holds ends with it.
bool CVersionBlock::ReadNode(size_t offset, size_t limit, Node& node) const {
  const std::string_view bytes = m_bytes.substr(0, limit);
  uint16_t length = 0, valueLength = 0, type = 0;
  if (!LoadLittle(bytes, offset, length) || !LoadLittle(bytes, offset + 2, valueLength) ||
      !LoadLittle(bytes, offset + 4, type) || length < kNodeHeaderSize) {
    return false;
  }
  node.end = std::min(limit, offset + length);
  node.isText = type == 1;
  const size_t key = offset + kNodeHeaderSize;
  const std::string_view keyBytes = TextAt(m_bytes, key, node.end);
  node.key = Utf8FromUtf16(keyBytes);
  node.value = std::min(AlignToFour(key + keyBytes.size() + 2), node.end);
  const size_t valueSize = node.isText ? size_t{valueLength} * 2 : valueLength;
  node.valueSize = std::min(valueSize, node.end - node.value);
  node.children = AlignToFour(node.value + node.valueSize);
  return true;
}

bool CVersionBlock::FindChild(const Node& parent, std::string_view key, Node& child) const {
  for (size_t at = parent.children; ReadNode(at, parent.end, child); at = AlignToFour(child.end)) {
    if (EqualsNoCase(child.key, key)) return true;
  }
  return false;
}

bool CVersionBlock::Find(std::string_view path, Node& node, size_t& depth) const {
  if (!ReadNode(0, m_bytes.size(), node)) return false;
  depth = 0;
  for (const std::string& part : Split(path, '\\')) {
    if (part.empty()) continue;
    Node child;
    if (!FindChild(node, part, child)) return false;
    node = child;
    ++depth;
  }
  return true;
}

std::string_view CVersionBlock::ValueOf(const Node& node) const {
  return m_bytes.substr(node.value, node.valueSize);
}

}  // namespace kestra
