#include "Modules/Registry/RegistryWalk.h"

#include <iterator>
#include <utility>

#include "Modules/PassOver.h"
#include "VLib/src/text/Text.h"

namespace kestra {
namespace {

std::string Join(const std::string& path, const std::string& name) {
  return path.empty() ? name : path + "\\" + name;
}

}  // namespace

bool MatchesName(const std::string& name, const std::string& pattern,
                 const std::function<bool()>& stop) {
  return pattern == "*" || MatchesUnlessStopped(name, pattern, true, false, stop).value_or(false);
}

// False for a path with an empty part, which no key has for a name.
bool CRegistryWalk::ReadPieces(const std::string& path) {
  const std::string_view trimmed = TrimRight(path, "\\");
  if (trimmed.empty()) return true;
  for (std::string& part : Split(trimmed, '\\')) {
    if (part.empty()) return false;
    const bool isWild = HasWildcard(part);
    if (!isWild && !m_pieces.empty() && !m_pieces.back().isWild)
      m_pieces.back().text += "\\" + part;
    else
      m_pieces.push_back({std::move(part), isWild});
  }
  return true;
}

SystemError CRegistryWalk::OpenHive() {
  std::unique_ptr<CRegistryKey> root;
  const SystemError error = OpenRegistryKey(m_machine, m_hive, std::string(), 0, root);
  return IsGoneFromRegistry(error) ? kErrorSuccess : error;
}

SystemError CRegistryWalk::Run(const std::string& path, const Leaf& leaf) {
  m_pieces.clear();
  m_open.clear();
  m_isEnded = false;
  if (!ReadPieces(path)) return kErrorSuccess;
  m_open.push_back({std::string(), 0});
  while (!m_open.empty() && !IsOver()) {
    Branch branch = std::move(m_open.back());
    m_open.pop_back();
    const SystemError error = Visit(std::move(branch), leaf);
    if (error != kErrorSuccess) return error;
  }
  return kErrorSuccess;
}

void CRegistryWalk::PassOver(const std::string& subPath, SystemError error) {
  const std::string path = HivePath(m_hive, subPath);
  LogUnread(path, error);
  m_message.NoteProblem(path, error);
}

SystemError CRegistryWalk::Visit(Branch branch, const Leaf& leaf) {
  const bool isNamed = branch.next == 0;  // up to the first wildcard
  if (branch.next < m_pieces.size() && !m_pieces[branch.next].isWild)
    branch.subPath = Join(branch.subPath, m_pieces[branch.next++].text);
  const bool isLeaf = branch.next == m_pieces.size();
  std::unique_ptr<CRegistryKey> key;
  SystemError error = OpenRegistryKey(m_machine, m_hive, branch.subPath,
                                      kKeyQueryValue | kKeyEnumerateSubKeys, key);
  if (IsGoneFromRegistry(error)) return kErrorSuccess;
  if (error != kErrorSuccess) {
    if ((isNamed && isLeaf) || !MayPassOver(error)) return error;
    PassOver(branch.subPath, error);
    return kErrorSuccess;
  }
  if (isLeaf) {
    m_isEnded = !leaf(branch.subPath, std::move(key));
    return kErrorSuccess;
  }
  error = ListMatches(*key, branch);
  if (error == kErrorSuccess || error == kErrorNoMoreItems || IsGoneFromRegistry(error))
    return kErrorSuccess;
  if (isNamed || !MayPassOver(error)) return error;
  PassOver(branch.subPath, error);
  return kErrorSuccess;
}

// Puts what matches on the list of branches, so that the first comes next.
SystemError CRegistryWalk::ListMatches(CRegistryKey& key, const Branch& branch) {
  std::vector<Branch> found;
  SystemError error = kErrorSuccess;
  std::string name;
  for (uint32_t i = 0; error == kErrorSuccess && !IsOver(); ++i) {
    error = key.EnumSubKey(i, name);
    if (error == kErrorSuccess &&
        MatchesName(name, m_pieces[branch.next].text, [this] { return IsOver(); }))
      found.push_back({Join(branch.subPath, name), branch.next + 1});
  }
  m_open.insert(m_open.end(), std::make_move_iterator(found.rbegin()),
                std::make_move_iterator(found.rend()));
  return error;
}

}  // namespace kestra
