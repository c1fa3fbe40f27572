#include "platform/image/registry/wine/WineTree.h"

#include <algorithm>

#include "platform/image/registry/tree/FoldedName.h"
#include "platform/image/registry/tree/NameIndex.h"

namespace kestra::image {
namespace {

// A prefix has some tens of thousands of keys. Windows nests 512 deep.
constexpr size_t kMostKeys = size_t{1} << 20;
constexpr size_t kMostValues = size_t{1} << 22;
constexpr size_t kDeepest = 512;

std::vector<std::string_view> Pieces(std::string_view path) {
  std::vector<std::string_view> pieces;
  while (!path.empty() && pieces.size() <= kDeepest) {
    const size_t end = std::min(path.find('\\'), path.size());
    if (end != 0) pieces.push_back(path.substr(0, end));
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return pieces;
}

template <class Record>
SystemError Copy(const std::vector<Record>& records, const std::vector<uint32_t>& ids,
                 std::vector<TreeEntry>& entries) {
  entries.clear();
  entries.reserve(ids.size());
  os::CPacedTermination termination;
  for (const uint32_t id : ids) {
    if (termination.IsOver()) return kErrorCancelled;
    entries.push_back({records[id].name, id});
  }
  return kErrorSuccess;
}

}  // namespace

bool CWineTree::MakeKey(std::string_view path, FileTime time, TreeId& key) {
  const std::vector<std::string_view> pieces = Pieces(path);
  if (pieces.size() > kDeepest || m_keys.size() + pieces.size() > kMostKeys) return false;
  // Keys stand in the order of their paths: most of the way is that of the key before.
  uint32_t at = 0;
  size_t depth = 0;
  for (; depth < pieces.size() && depth < m_way.size(); ++depth) {
    if (m_keys[m_way[depth]].name != pieces[depth]) break;
    at = m_way[depth];
  }
  m_way.resize(depth);
  for (; depth < pieces.size(); ++depth) {
    at = MakeChild(at, pieces[depth], time);
    m_way.push_back(at);
  }
  key = at;
  return true;
}

uint32_t CWineTree::MakeChild(uint32_t parent, std::string_view name, FileTime time) {
  const auto next = static_cast<uint32_t>(m_keys.size());
  const auto [found, isNew] =
      m_childIndex.try_emplace(std::to_string(parent) + '\\' + FoldedName(name), next);
  if (isNew) {
    Key& key = m_keys.emplace_back();
    key.name = name;
    key.facts.lastWriteTime = time;
    m_keys[parent].subKeys.push_back(next);
  }
  return found->second;
}

bool CWineTree::AddValue(TreeId key, std::string name, uint32_t type, std::string data) {
  if (m_values.size() >= kMostValues) return false;
  Key& owner = m_keys[key];
  if (!owner.values.empty()) {
    const bool isNext = CompareNoCase(m_values[owner.values.back()].name, name) < 0;
    owner.isOrdered = owner.isOrdered && isNext;
  }
  owner.values.push_back(static_cast<uint32_t>(m_values.size()));
  m_values.push_back({std::move(name), type, std::move(data)});
  return true;
}

void CWineTree::Finish() {
  m_childIndex = {};
  m_way = {};
  os::CPacedTermination termination;
  for (Key& key : m_keys) {
    if (termination.IsOver()) return;
    if (!key.isOrdered) KeepLastValues(key, termination);
  }
}

void CWineTree::KeepLastValues(Key& key, os::CPacedTermination& termination) {
  CNameIndex places(key.values.size());
  std::vector<uint32_t> kept;
  kept.reserve(key.values.size());
  const auto nameAt = [&](uint32_t place) -> const std::string& {
    return m_values[kept[place]].name;
  };
  for (const uint32_t value : key.values) {
    if (termination.IsOver()) return;
    const auto next = static_cast<uint32_t>(kept.size());
    const uint32_t place = places.Add(m_values[value].name, next, nameAt);
    if (place == CNameIndex::kNone) {
      kept.push_back(value);
    } else {
      kept[place] = value;
    }
  }
  key.values = std::move(kept);
}

SystemError CWineTree::Facts(TreeId key, KeyFacts& facts) const {
  facts = m_keys[key].facts;
  facts.subKeyCount = static_cast<uint32_t>(m_keys[key].subKeys.size());
  facts.valueCount = static_cast<uint32_t>(m_keys[key].values.size());
  return kErrorSuccess;
}

SystemError CWineTree::SubKeys(TreeId key, std::vector<TreeEntry>& entries) const {
  return Copy(m_keys, m_keys[key].subKeys, entries);
}

SystemError CWineTree::Values(TreeId key, std::vector<TreeEntry>& entries) const {
  return Copy(m_values, m_keys[key].values, entries);
}

SystemError CWineTree::ReadValue(TreeId value, uint32_t& type, std::string& data) const {
  type = m_values[value].type;
  data = m_values[value].data;
  return kErrorSuccess;
}

}  // namespace kestra::image
