#include "platform/image/registry/tree/KeyListing.h"

#include "platform/os/CurrentTermination.h"

namespace kestra::image {
namespace {

constexpr size_t kFewEntries = 16;  // so few are compared one by one

bool IsAllowed(const std::string& name, NameRule rule) {
  return rule == NameRule::Any || (!name.empty() && name.find('\\') == std::string::npos);
}

}  // namespace

SystemError CKeyListing::Make(std::vector<TreeEntry> entries, NameRule rule,
                              std::shared_ptr<const CKeyListing>& listing, LeftOut& leftOut) {
  auto made = std::make_shared<CKeyListing>();
  if (!made->Take(std::move(entries), rule, leftOut)) return kErrorCancelled;
  listing = std::move(made);
  return kErrorSuccess;
}

bool CKeyListing::Take(std::vector<TreeEntry>&& entries, NameRule rule, LeftOut& leftOut) {
  m_entries.reserve(entries.size());
  if (entries.size() > kFewEntries) m_index = CNameIndex(entries.size());
  os::CPacedTermination termination;
  for (TreeEntry& entry : entries) {
    if (termination.IsOver()) return false;
    if (!IsAllowed(entry.name, rule)) {
      ++leftOut.unnameable;
    } else if (!Add(std::move(entry))) {
      ++leftOut.repeated;
    }
  }
  return true;
}

bool CKeyListing::Add(TreeEntry&& entry) {
  const auto nameAt = [this](uint32_t place) -> const std::string& {
    return m_entries[place].name;
  };
  const auto place = static_cast<uint32_t>(m_entries.size());
  const bool isNew = m_index.IsEmpty()
                         ? Find(entry.name) == nullptr
                         : m_index.Add(entry.name, place, nameAt) == CNameIndex::kNone;
  if (isNew) m_entries.push_back(std::move(entry));
  return isNew;
}

const TreeEntry* CKeyListing::Find(std::string_view name) const {
  if (!m_index.IsEmpty()) {
    const auto nameAt = [this](uint32_t at) -> const std::string& { return m_entries[at].name; };
    const uint32_t place = m_index.Find(name, nameAt);
    return place == CNameIndex::kNone ? nullptr : &m_entries[place];
  }
  for (const TreeEntry& entry : m_entries) {
    if (EqualsNoCase(entry.name, name)) return &entry;
  }
  return nullptr;
}

}  // namespace kestra::image
