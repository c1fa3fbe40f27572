// The names of a key's subkeys or values, made for looking up.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/image/registry/tree/KeyTree.h"
#include "platform/image/registry/tree/NameIndex.h"

namespace kestra::image {

enum class NameRule {
  Any,   // of values
  Path,  // of keys: a part of a path, so not empty and without a backslash
};

// What a listing left out, as damage and ill will make it.
struct LeftOut {
  size_t unnameable = 0;  // names against the rule
  size_t repeated = 0;    // names that an entry before them has, in any case
};

// Never changes once it is made.
class CKeyListing {
 public:
  // kErrorCancelled, and nothing made, when the thread's work is terminated.
  static SystemError Make(std::vector<TreeEntry> entries, NameRule rule,
                          std::shared_ptr<const CKeyListing>& listing, LeftOut& leftOut);

  const std::vector<TreeEntry>& Entries() const { return m_entries; }
  // The entry of that name, in any case; null if there is none.
  const TreeEntry* Find(std::string_view name) const;

 private:
  // False if there is an entry of that name already.
  bool Add(TreeEntry&& entry);
  // False when the thread's work is terminated.
  bool Take(std::vector<TreeEntry>&& entries, NameRule rule, LeftOut& leftOut);

  std::vector<TreeEntry> m_entries;
  CNameIndex m_index;  // empty if there are few
};

}  // namespace kestra::image
