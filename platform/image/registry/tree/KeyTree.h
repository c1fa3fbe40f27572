// The content of one registry file, whatever its form: keys below a root, each with values.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/base/FileTime.h"
#include "platform/base/SystemError.h"

namespace kestra::image {

// A key or a value of one tree; means nothing to any other tree.
using TreeId = uint64_t;

struct TreeEntry {
  std::string name;  // UTF-8; a value's may be empty
  TreeId id = 0;
};

struct KeyFacts {
  std::string className;
  FileTime lastWriteTime;
  // As the key itself tells; none where it tells what cannot be. A list may turn out shorter.
  std::optional<uint32_t> subKeyCount;
  std::optional<uint32_t> valueCount;
};

// Never changes. All methods may be called from any thread; ids are those that the tree gave. What
// cannot be read because the file is damaged is kErrorRegistryCorrupt. A damaged tree may be
// endless: a key may be found below itself. Listing answers kErrorCancelled when the thread's work
// is terminated.
class CKeyTree {
 public:
  virtual ~CKeyTree() = default;
  virtual TreeId Root() const = 0;
  // Whether the key is a symbolic link, which its value "SymbolicLinkValue" leads on.
  virtual bool IsLink(TreeId key) const = 0;
  // Of several facts that are damaged in part the others are given.
  virtual SystemError Facts(TreeId key, KeyFacts& facts) const = 0;
  // The key's own name; empty if it cannot be read.
  virtual std::string Name(TreeId key) const = 0;
  // In the order of the file.
  virtual SystemError SubKeys(TreeId key, std::vector<TreeEntry>& entries) const = 0;
  virtual SystemError Values(TreeId key, std::vector<TreeEntry>& entries) const = 0;
  // The data as CRegistryKey::QueryValue gives them.
  virtual SystemError ReadValue(TreeId value, uint32_t& type, std::string& data) const = 0;
};

// The data of a value as CRegistryKey gives them, out of the bytes that are stored.
std::string DataFromStored(uint32_t type, std::string_view bytes);

}  // namespace kestra::image
