// Reads a version block: the tree that a version resource holds. Follows Microsoft's pages on
// VS_VERSIONINFO, StringFileInfo, StringTable, String, VarFileInfo, Var and VS_FIXEDFILEINFO, and
// that of VerQueryValue for the paths.
//
//   CVersionBlock(block).FindText("\\StringFileInfo\\040904b0\\CompanyName");
//
// The bytes may be anything. Of a block that was cut off, what is there can be asked for.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kestra {

// The two versions of VS_FIXEDFILEINFO, highest part first.
struct FixedVersions {
  uint16_t file[4] = {};
  uint16_t product[4] = {};
};

class CVersionBlock {
 public:
  // Does not own the bytes.
  explicit CVersionBlock(std::string_view bytes) : m_bytes(bytes) {}

  // The text at a path, its parts compared without regard to case. UTF-8; it ends at its first NUL.
  // Nothing if there is no such place or it holds no text.
  std::optional<std::string> FindText(std::string_view path) const;
  // The first language and code page that the block has texts in, high and low word.
  std::optional<uint32_t> FirstTranslation() const;
  std::optional<FixedVersions> Fixed() const;

 private:
  // A part of the tree; its places are offsets into the block, to which it is aligned.
  struct Node {
    std::string key;
    size_t value = 0;
    size_t valueSize = 0;  // bytes
    size_t children = 0;
    size_t end = 0;
    bool isText = false;
  };

  bool ReadNode(size_t offset, size_t limit, Node& node) const;
  bool FindChild(const Node& parent, std::string_view key, Node& child) const;
  bool Find(std::string_view path, Node& node, size_t& depth) const;
  std::string_view ValueOf(const Node& node) const;

  std::string_view m_bytes;
};

}  // namespace kestra
