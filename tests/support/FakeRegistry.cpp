#include "tests/support/FakeRegistry.h"

#include <algorithm>
#include <cstring>

#include "VLib/src/text/Text.h"

namespace kestra::test {
namespace {

using KeyPointer = std::shared_ptr<FakeRegistryKey>;

KeyPointer Walk(KeyPointer key, const std::string& path, bool make) {
  if (path.empty()) return key;
  for (const std::string& name : Split(path, '\\')) {
    KeyPointer next = key->FindSubKey(name);
    if (!next && !make) return nullptr;
    if (!next) {
      next = std::make_shared<FakeRegistryKey>();
      next->name = name;
      key->subKeys.push_back(next);
    }
    key = next;
  }
  return key;
}

void Store(FakeRegistryKey& key, const std::string& name, uint32_t type, const std::string& data) {
  if (FakeRegistryValue* pValue = key.FindValue(name)) {
    pValue->type = type;
    pValue->data = data;
  } else {
    key.values.push_back({name, type, data});
  }
}

}  // namespace

FakeRegistryValue* FakeRegistryKey::FindValue(const std::string& valueName) {
  const auto found = std::find_if(values.begin(), values.end(), [&](const auto& value) {
    return EqualsNoCase(value.name, valueName);
  });
  return found == values.end() ? nullptr : &*found;
}

KeyPointer FakeRegistryKey::FindSubKey(const std::string& subKeyName) const {
  const auto found = std::find_if(subKeys.begin(), subKeys.end(), [&](const auto& key) {
    return EqualsNoCase(key->name, subKeyName);
  });
  return found == subKeys.end() ? nullptr : *found;
}

class CFakeRegistryKey final : public CRegistryKey {
 public:
  CFakeRegistryKey(CFakeRegistry& registry, KeyPointer key)
      : m_registry(registry), m_key(std::move(key)) {}

  SystemError OpenSubKey(const std::string& path, uint32_t access,
                         std::unique_ptr<CRegistryKey>& key) override {
    m_registry.lastAccess = access;
    return Guarded([&] { return Open(Walk(m_key, path, false), key); });
  }
  SystemError CreateSubKey(const std::string& path, uint32_t,
                           std::unique_ptr<CRegistryKey>& key) override {
    return Guarded([&] { return Open(Walk(m_key, path, true), key); });
  }
  SystemError DeleteSubKey(const std::string& path, uint32_t) override {
    return Guarded([&] { return Delete(path); });
  }
  SystemError QueryInfo(RegistryKeyInfo& info) override {
    return Guarded([&] {
      info = {m_key->className, static_cast<uint32_t>(m_key->subKeys.size()),
              static_cast<uint32_t>(m_key->values.size()), m_key->lastWriteTime};
      return kErrorSuccess;
    });
  }
  SystemError EnumSubKey(uint32_t index, std::string& name) override {
    return Guarded([&] {
      if (index >= m_key->subKeys.size()) return kErrorNoMoreItems;
      name = m_key->subKeys[index]->name;
      return kErrorSuccess;
    });
  }
  SystemError EnumValue(uint32_t index, std::string& name) override {
    return Guarded([&] {
      if (index >= m_key->values.size()) return kErrorNoMoreItems;
      name = m_key->values[index].name;
      return kErrorSuccess;
    });
  }
  SystemError QueryValue(const std::string& name, uint32_t& type, std::string& data) override {
    return Guarded([&] {
      const FakeRegistryValue* pValue = m_key->FindValue(name);
      if (!pValue) return kErrorFileNotFound;
      type = pValue->type;
      data = pValue->data;
      return kErrorSuccess;
    });
  }
  SystemError SetValue(const std::string& name, uint32_t type, const std::string& data) override {
    return Guarded([&] {
      Store(*m_key, name, type, data);
      return kErrorSuccess;
    });
  }
  SystemError DeleteValue(const std::string& name) override {
    return Guarded([&] {
      const bool isFound = std::erase_if(m_key->values, [&](const auto& value) {
                             return EqualsNoCase(value.name, name);
                           }) != 0;
      return isFound ? kErrorSuccess : kErrorFileNotFound;
    });
  }

 private:
  template <class Operation>
  SystemError Guarded(Operation operation) {
    std::lock_guard guard(m_registry.m_lock);
    return m_key->isDeleted ? kErrorKeyDeleted : operation();
  }
  SystemError Open(const KeyPointer& found, std::unique_ptr<CRegistryKey>& key) {
    if (!found) return kErrorFileNotFound;
    if (found->openError != kErrorSuccess) return found->openError;
    key = std::make_unique<CFakeRegistryKey>(m_registry, found);
    return kErrorSuccess;
  }
  SystemError Delete(const std::string& path) {
    const size_t last = path.rfind('\\');
    const bool isDirect = last == std::string::npos;
    const KeyPointer parent = isDirect ? m_key : Walk(m_key, path.substr(0, last), false);
    const KeyPointer found =
        parent ? parent->FindSubKey(path.substr(isDirect ? 0 : last + 1)) : nullptr;
    if (!found) return kErrorFileNotFound;
    if (!found->subKeys.empty()) return kErrorAccessDenied;
    found->isDeleted = true;
    std::erase(parent->subKeys, found);
    return kErrorSuccess;
  }

  CFakeRegistry& m_registry;
  KeyPointer m_key;
};

SystemError CFakeRegistry::OpenRoot(RegistryRoot root, std::unique_ptr<CRegistryKey>& key) {
  std::lock_guard guard(m_lock);
  key = std::make_unique<CFakeRegistryKey>(*this, Root(root));
  return kErrorSuccess;
}

void CFakeRegistry::AddKey(RegistryRoot root, const std::string& path) {
  std::lock_guard guard(m_lock);
  Make(root, path);
}

void CFakeRegistry::SetValue(RegistryRoot root, const std::string& path, const std::string& name,
                             uint32_t type, const std::string& data) {
  std::lock_guard guard(m_lock);
  Store(*Make(root, path), name, type, data);
}

void CFakeRegistry::SetNumber(RegistryRoot root, const std::string& path, const std::string& name,
                              uint32_t value) {
  std::string data(sizeof value, '\0');
  std::memcpy(data.data(), &value, sizeof value);
  SetValue(root, path, name, kRegDword, data);
}

void CFakeRegistry::SetString(RegistryRoot root, const std::string& path, const std::string& name,
                              const std::string& text) {
  SetValue(root, path, name, kRegSz, text + '\0');
}

void CFakeRegistry::DenyKey(RegistryRoot root, const std::string& path, SystemError error) {
  std::lock_guard guard(m_lock);
  Make(root, path)->openError = error;
}

std::shared_ptr<FakeRegistryKey> CFakeRegistry::Find(RegistryRoot root, const std::string& path) {
  std::lock_guard guard(m_lock);
  return Walk(Root(root), path, false);
}

std::shared_ptr<FakeRegistryKey> CFakeRegistry::Root(RegistryRoot root) {
  KeyPointer& key = m_roots[root];
  if (!key) key = std::make_shared<FakeRegistryKey>();
  return key;
}

std::shared_ptr<FakeRegistryKey> CFakeRegistry::Make(RegistryRoot root, const std::string& path) {
  return Walk(Root(root), path, true);
}

}  // namespace kestra::test
