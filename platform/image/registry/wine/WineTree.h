// The tree that Wine's registry text is decoded into.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/image/registry/tree/KeyTree.h"
#include "platform/os/CurrentTermination.h"

namespace kestra::image {

// Filled by one thread, then given away as a CKeyTree. Ids are places in the two lists.
class CWineTree final : public CKeyTree {
 public:
  CWineTree() : m_keys(1) {}

  // The key at a path below the root, made with all that is missing on the way. What is made has
  // the time, until another is set: a key with nothing but subkeys has no line of its own, and Wine
  // gives it that of the first key below it. False, and nothing is made, if the path is deeper, or
  // the tree larger, than any registry is.
  bool MakeKey(std::string_view path, FileTime time, TreeId& key);
  void SetTime(TreeId key, FileTime time) { m_keys[key].facts.lastWriteTime = time; }
  void SetClass(TreeId key, std::string name) { m_keys[key].facts.className = std::move(name); }
  void SetLink(TreeId key) { m_keys[key].isLink = true; }
  // False if the tree is larger than any registry is.
  bool AddValue(TreeId key, std::string name, uint32_t type, std::string data);
  // Ends the filling: of values with one name in one key the last is kept. Left half-done when the
  // thread's work is terminated.
  void Finish();

  TreeId Root() const override { return 0; }
  bool IsLink(TreeId key) const override { return m_keys[key].isLink; }
  SystemError Facts(TreeId key, KeyFacts& facts) const override;
  std::string Name(TreeId key) const override { return m_keys[key].name; }
  SystemError SubKeys(TreeId key, std::vector<TreeEntry>& entries) const override;
  SystemError Values(TreeId key, std::vector<TreeEntry>& entries) const override;
  SystemError ReadValue(TreeId value, uint32_t& type, std::string& data) const override;

 private:
  struct Key {
    std::string name;
    KeyFacts facts;
    bool isLink = false;
    bool isOrdered = true;  // no value came before one that it is not less than
    std::vector<uint32_t> subKeys;
    std::vector<uint32_t> values;
  };
  struct Value {
    std::string name;
    uint32_t type = 0;
    std::string data;
  };

  uint32_t MakeChild(uint32_t parent, std::string_view name, FileTime time);
  void KeepLastValues(Key& key, os::CPacedTermination& termination);

  std::vector<Key> m_keys;
  std::vector<Value> m_values;
  std::vector<uint32_t> m_way;                             // of the key that was made last
  std::unordered_map<std::string, uint32_t> m_childIndex;  // by parent and folded name
};

}  // namespace kestra::image
