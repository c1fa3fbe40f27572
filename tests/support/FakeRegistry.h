// A registry in memory.
//
//   CFakeRegistry registry;
//   registry.SetString(RegistryRoot::LocalMachine, "Software\\Acme", "Name", "text");
//
// Names compare without regard to case and keep the order they were added in. Open keys go on
// working after their key was deleted, as far as a registry's do: with kErrorKeyDeleted. All
// methods may be called from any thread.
#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/machine/Registry.h"

namespace kestra::test {

struct FakeRegistryValue {
  std::string name;
  uint32_t type = 0;
  std::string data;
};

struct FakeRegistryKey {
  std::string name;
  std::string className;
  FileTime lastWriteTime;
  bool isDeleted = false;
  SystemError openError = kErrorSuccess;  // given by every attempt to open the key
  std::vector<FakeRegistryValue> values;
  std::vector<std::shared_ptr<FakeRegistryKey>> subKeys;

  FakeRegistryValue* FindValue(const std::string& valueName);
  std::shared_ptr<FakeRegistryKey> FindSubKey(const std::string& subKeyName) const;
};

class CFakeRegistry final : public CRegistry {
 public:
  SystemError OpenRoot(RegistryRoot root, std::unique_ptr<CRegistryKey>& key) override;

  // For the script. Keys on the way are made. path is separated by backslashes and may be empty.
  void AddKey(RegistryRoot root, const std::string& path);
  void SetValue(RegistryRoot root, const std::string& path, const std::string& name, uint32_t type,
                const std::string& data);
  void SetNumber(RegistryRoot root, const std::string& path, const std::string& name,
                 uint32_t value);
  void SetString(RegistryRoot root, const std::string& path, const std::string& name,
                 const std::string& text);
  // Lets every attempt to open the key fail.
  void DenyKey(RegistryRoot root, const std::string& path, SystemError error);
  // Null if there is no such key.
  std::shared_ptr<FakeRegistryKey> Find(RegistryRoot root, const std::string& path);

  // The access that the last key was opened with. There is one tree for every view.
  std::atomic<uint32_t> lastAccess{0};

 private:
  friend class CFakeRegistryKey;
  std::shared_ptr<FakeRegistryKey> Root(RegistryRoot root);
  std::shared_ptr<FakeRegistryKey> Make(RegistryRoot root, const std::string& path);

  std::mutex m_lock;  // guards the whole tree
  std::map<RegistryRoot, std::shared_ptr<FakeRegistryKey>> m_roots;
};

}  // namespace kestra::test
