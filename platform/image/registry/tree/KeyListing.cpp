#include "platform/image/registry/tree/KeyListing.h"

#include "platform/image/registry/tree/FoldedName.h"

namespace kestra::image {
namespace {

constexpr size_t kFewEntries = 16;  // so few are compared one by one

}  // namespace

CKeyListing::CKeyListing(std::vector<TreeEntry> entries) : m_entries(std::move(entries)) {
  if (m_entries.size() <= kFewEntries) return;
  m_places.reserve(m_entries.size());
  for (size_t i = 0; i < m_entries.size(); ++i) {
    m_places.try_emplace(FoldedName(m_entries[i].name), i);
  }
}

const TreeEntry* CKeyListing::Find(std::string_view name) const {
  if (m_places.empty()) {
    for (const TreeEntry& entry : m_entries) {
      if (EqualsNoCase(entry.name, name)) return &entry;
    }
    return nullptr;
  }
  const auto found = m_places.find(FoldedName(name));
  return found == m_places.end() ? nullptr : &m_entries[found->second];
}

}  // namespace kestra::image
