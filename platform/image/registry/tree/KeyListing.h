// The names of a key's subkeys or values, made for looking up.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/image/registry/tree/KeyTree.h"

namespace kestra::image {

// Never changes once it is made.
class CKeyListing {
 public:
  CKeyListing() = default;
  explicit CKeyListing(std::vector<TreeEntry> entries);
  const std::vector<TreeEntry>& Entries() const { return m_entries; }
  // The entry of that name, in any case; null if there is none. The first of several, as damage
  // can make them.
  const TreeEntry* Find(std::string_view name) const;

 private:
  std::vector<TreeEntry> m_entries;
  std::unordered_map<std::string, size_t> m_places;  // by folded name, if there are many
};

}  // namespace kestra::image
