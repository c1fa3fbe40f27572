// A registry in memory.
//
//   CFakeRegistry registry;
//   registry.SetString(RegistryRoot::LocalMachine, "Software\\Acme", "Name", "text");
//
// Names compare without regard to case and keep the order they were added in. Open keys go on
// working after their key was deleted, as far as a registry's do: with kErrorKeyDeleted. All
// methods may be called from any thread. An operation that the access of its key does not cover is
// refused.
//
// A key is in all views, or in one (kKeyWow64Key32, kKeyWow64Key64), which then has it in place of
// one of the same name that is in all:
//
//   registry.AddViewKey(kKeyWow64Key32, RegistryRoot::LocalMachine, "Software\\Acme");
//   registry.Find(RegistryRoot::LocalMachine, "Software\\Acme", kKeyWow64Key32)
#pragma once

#include <atomic>
#include <functional>
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
  std::string data{};
  SystemError readError = kErrorSuccess;  // given by every attempt to read it
};

struct FakeRegistryKey {
  std::string name;
  std::string className;
  FileTime lastWriteTime;
  bool isDeleted = false;
  uint32_t view = 0;                            // 0: in all views
  SystemError openError = kErrorSuccess;        // given by every attempt to open the key
  std::shared_ptr<FakeRegistryKey> linkTarget;  // of a symbolic link; null for any other key
  std::vector<FakeRegistryValue> values;
  std::vector<std::shared_ptr<FakeRegistryKey>> subKeys;

  FakeRegistryValue* FindValue(const std::string& valueName);
  std::shared_ptr<FakeRegistryKey> FindSubKey(const std::string& subKeyName,
                                              uint32_t wantedView = 0) const;
  // Whether a view shows the key that stands at a place in the list.
  bool Shows(const FakeRegistryKey& subKey, uint32_t wantedView) const;
};

class CFakeRegistry final : public CRegistry {
 public:
  SystemError OpenRoot(RegistryRoot root, std::unique_ptr<CRegistryKey>& key) override;

  // Called at the beginning of every operation on an open key; set before the registry is used.
  std::function<void()> onCall;

  // For the script. Keys on the way are made. path is separated by backslashes and may be empty.
  void AddKey(RegistryRoot root, const std::string& path);
  // Adds a key that only one view has. Keys on the way are those of that view, or of all.
  std::shared_ptr<FakeRegistryKey> AddViewKey(uint32_t view, RegistryRoot root,
                                              const std::string& path);
  // Adds a symbolic link to a key of the same root, which is made too.
  void AddLink(RegistryRoot root, const std::string& path, const std::string& target);
  void SetValue(RegistryRoot root, const std::string& path, const std::string& name, uint32_t type,
                const std::string& data);
  void SetNumber(RegistryRoot root, const std::string& path, const std::string& name,
                 uint32_t value);
  void SetString(RegistryRoot root, const std::string& path, const std::string& name,
                 const std::string& text);
  // Lets every attempt to open the key fail; with an empty path, to open the root.
  void DenyKey(RegistryRoot root, const std::string& path, SystemError error);
  // A link itself. Null if there is no such key.
  std::shared_ptr<FakeRegistryKey> Find(RegistryRoot root, const std::string& path,
                                        uint32_t view = 0);

  // The access that the last key was opened with.
  std::atomic<uint32_t> lastAccess{0};

 private:
  friend class CFakeRegistryKey;
  std::shared_ptr<FakeRegistryKey> Root(RegistryRoot root);
  std::shared_ptr<FakeRegistryKey> Make(RegistryRoot root, const std::string& path);

  std::mutex m_lock;  // guards the whole tree
  std::map<RegistryRoot, std::shared_ptr<FakeRegistryKey>> m_roots;
};

}  // namespace kestra::test
