#include "tests/support/FakeRegistry.h"

#include <algorithm>
#include <cstring>

#include "VLib/src/text/Text.h"

namespace kestra::test {
namespace {

using KeyPointer = std::shared_ptr<FakeRegistryKey>;

constexpr uint32_t kViews = kKeyWow64Key32 | kKeyWow64Key64;

enum class LastKey { FollowLink, KeepLink };

KeyPointer Walk(KeyPointer key, const std::string& path, uint32_t view, bool make,
                LastKey lastKey = LastKey::FollowLink) {
  if (path.empty()) return key;
  for (const std::string& name : Split(path, '\\')) {
    if (key->linkTarget) key = key->linkTarget;
    KeyPointer next = key->FindSubKey(name, view);
    if (!next && !make) return nullptr;
    if (!next) {
      next = std::make_shared<FakeRegistryKey>();
      next->name = name;
      // Keys of one view stand behind those of all.
      const auto end = std::find_if(key->subKeys.begin(), key->subKeys.end(),
                                    [](const KeyPointer& other) { return other->view != 0; });
      key->subKeys.insert(end, next);
    }
    key = next;
  }
  return key->linkTarget && lastKey == LastKey::FollowLink ? key->linkTarget : key;
}

void Store(FakeRegistryKey& key, const std::string& name, uint32_t type, const std::string& data) {
  if (FakeRegistryValue* pValue = key.FindValue(name)) {
    pValue->type = type;
    pValue->data = data;
  } else {
    key.values.push_back({.name = name, .type = type, .data = data});
  }
}

}  // namespace

FakeRegistryValue* FakeRegistryKey::FindValue(const std::string& valueName) {
  const auto found = std::find_if(values.begin(), values.end(), [&](const auto& value) {
    return EqualsNoCase(value.name, valueName);
  });
  return found == values.end() ? nullptr : &*found;
}

KeyPointer FakeRegistryKey::FindSubKey(const std::string& subKeyName, uint32_t wantedView) const {
  KeyPointer shared;
  for (const KeyPointer& key : subKeys) {
    if (!EqualsNoCase(key->name, subKeyName)) continue;
    if (key->view == 0) shared = key;
    if (key->view != 0 && key->view == wantedView) return key;
  }
  return shared;
}

bool FakeRegistryKey::Shows(const FakeRegistryKey& subKey, uint32_t wantedView) const {
  return FindSubKey(subKey.name, wantedView).get() == &subKey;
}

class CFakeRegistryKey final : public CRegistryKey {
 public:
  CFakeRegistryKey(CFakeRegistry& registry, KeyPointer key, uint32_t access)
      : m_registry(registry), m_key(std::move(key)), m_access(access) {}

  SystemError OpenSubKey(const std::string& path, uint32_t access,
                         std::unique_ptr<CRegistryKey>& key) override {
    m_registry.lastAccess = access;
    return Guarded(0, [&] { return Open(path, access, false, key); });
  }
  SystemError OpenLinkItself(const std::string& path, uint32_t access,
                             std::unique_ptr<CRegistryKey>& key) override {
    return Guarded(0, [&] { return Open(path, access, false, key, LastKey::KeepLink); });
  }
  SystemError CreateSubKey(const std::string& path, uint32_t access,
                           std::unique_ptr<CRegistryKey>& key) override {
    return Guarded(kKeyCreateSubKey, [&] { return Open(path, access, true, key); });
  }
  SystemError DeleteSubKey(const std::string& path, uint32_t access) override {
    return Guarded(0, [&] { return Delete(path, access & kViews); });
  }
  SystemError QueryInfo(RegistryKeyInfo& info) override {
    return Guarded(kKeyQueryValue, [&] {
      info = {m_key->className, static_cast<uint32_t>(m_key->subKeys.size()),
              static_cast<uint32_t>(m_key->values.size()), m_key->lastWriteTime};
      return kErrorSuccess;
    });
  }
  SystemError EnumSubKey(uint32_t index, std::string& name) override {
    return Guarded(kKeyEnumerateSubKeys, [&] {
      // Keys of one view stand behind those of all, which are counted without looking at each.
      const auto& keys = m_key->subKeys;
      if (keys.empty() || keys.back()->view == 0) {
        if (index >= keys.size()) return kErrorNoMoreItems;
        name = keys[index]->name;
        return kErrorSuccess;
      }
      for (const KeyPointer& key : keys) {
        if (!m_key->Shows(*key, m_access & kViews) || index-- != 0) continue;
        name = key->name;
        return kErrorSuccess;
      }
      return kErrorNoMoreItems;
    });
  }
  SystemError EnumValue(uint32_t index, std::string& name) override {
    return Guarded(kKeyQueryValue, [&] {
      if (index >= m_key->values.size()) return kErrorNoMoreItems;
      name = m_key->values[index].name;
      return kErrorSuccess;
    });
  }
  SystemError QueryValue(const std::string& name, uint32_t& type, std::string& data) override {
    return Guarded(kKeyQueryValue, [&] {
      const FakeRegistryValue* pValue = m_key->FindValue(name);
      if (!pValue) return kErrorFileNotFound;
      if (pValue->readError != kErrorSuccess) return pValue->readError;
      type = pValue->type;
      data = pValue->data;
      return kErrorSuccess;
    });
  }
  SystemError SetValue(const std::string& name, uint32_t type, const std::string& data) override {
    return Guarded(kKeySetValue, [&] {
      Store(*m_key, name, type, data);
      return kErrorSuccess;
    });
  }
  SystemError DeleteValue(const std::string& name) override {
    return Guarded(kKeySetValue, [&] {
      const bool isFound = std::erase_if(m_key->values, [&](const auto& value) {
                             return EqualsNoCase(value.name, name);
                           }) != 0;
      return isFound ? kErrorSuccess : kErrorFileNotFound;
    });
  }

 private:
  template <class Operation>
  SystemError Guarded(uint32_t needed, Operation operation) {
    if (m_registry.onCall) m_registry.onCall();
    std::lock_guard guard(m_registry.m_lock);
    if (m_key->isDeleted) return kErrorKeyDeleted;
    return (m_access & needed) == needed ? operation() : kErrorAccessDenied;
  }
  SystemError Open(const std::string& path, uint32_t access, bool make,
                   std::unique_ptr<CRegistryKey>& key, LastKey lastKey = LastKey::FollowLink) {
    const uint32_t view = access & kViews;
    const KeyPointer found = Walk(m_key, path, view, make, lastKey);
    if (!found) return kErrorFileNotFound;
    if (found->openError != kErrorSuccess) return found->openError;
    key = std::make_unique<CFakeRegistryKey>(m_registry, found, access);
    return kErrorSuccess;
  }
  SystemError Delete(const std::string& path, uint32_t view) {
    const size_t last = path.rfind('\\');
    const bool isDirect = last == std::string::npos;
    const KeyPointer parent = isDirect ? m_key : Walk(m_key, path.substr(0, last), view, false);
    const KeyPointer found =
        parent ? parent->FindSubKey(path.substr(isDirect ? 0 : last + 1), view) : nullptr;
    if (!found) return kErrorFileNotFound;
    if (!found->subKeys.empty()) return kErrorAccessDenied;
    found->isDeleted = true;
    std::erase(parent->subKeys, found);
    return kErrorSuccess;
  }

  CFakeRegistry& m_registry;
  KeyPointer m_key;
  const uint32_t m_access;
};

SystemError CFakeRegistry::OpenRoot(RegistryRoot root, std::unique_ptr<CRegistryKey>& key) {
  std::lock_guard guard(m_lock);
  const KeyPointer found = Root(root);
  if (found->openError != kErrorSuccess) return found->openError;
  key = std::make_unique<CFakeRegistryKey>(*this, found, ~kViews);
  return kErrorSuccess;
}

void CFakeRegistry::AddKey(RegistryRoot root, const std::string& path) {
  std::lock_guard guard(m_lock);
  Make(root, path);
}

KeyPointer CFakeRegistry::AddViewKey(uint32_t view, RegistryRoot root, const std::string& path) {
  std::lock_guard guard(m_lock);
  const size_t last = path.rfind('\\');
  const bool isDirect = last == std::string::npos;
  const KeyPointer parent = Walk(Root(root), isDirect ? "" : path.substr(0, last), view, true);
  auto key = std::make_shared<FakeRegistryKey>();
  key->name = path.substr(isDirect ? 0 : last + 1);
  key->view = view;
  parent->subKeys.push_back(key);
  return key;
}

void CFakeRegistry::AddLink(RegistryRoot root, const std::string& path, const std::string& target) {
  std::lock_guard guard(m_lock);
  Make(root, path)->linkTarget = Make(root, target);
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

std::shared_ptr<FakeRegistryKey> CFakeRegistry::Find(RegistryRoot root, const std::string& path,
                                                     uint32_t view) {
  std::lock_guard guard(m_lock);
  return Walk(Root(root), path, view, false, LastKey::KeepLink);
}

std::shared_ptr<FakeRegistryKey> CFakeRegistry::Root(RegistryRoot root) {
  KeyPointer& key = m_roots[root];
  if (!key) key = std::make_shared<FakeRegistryKey>();
  return key;
}

std::shared_ptr<FakeRegistryKey> CFakeRegistry::Make(RegistryRoot root, const std::string& path) {
  return Walk(Root(root), path, 0, true);
}

}  // namespace kestra::test
