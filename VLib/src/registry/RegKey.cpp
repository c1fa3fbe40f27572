#include "VLib/src/registry/RegKey.h"

#include <cstring>

namespace kestra {
namespace {

void Check(SystemError status) {
  if (status != kErrorSuccess) throw CVRegKey::CSystemException(status);
}

}  // namespace

CVRegKey::CInvalidType::CInvalidType(const std::string& valueName)
    : CVException("Attempt to treat registry value \"" + valueName + "\" with invalid type") {}

CVRegKey::CVRegKey(CRegistry& registry, RegistryRoot root) {
  std::unique_ptr<CRegistryKey> key;
  Check(registry.OpenRoot(root, key));
  m_pKey = std::move(key);
}

CRegistryKey& CVRegKey::Key() const {
  if (!m_pKey) throw CSystemException(kErrorInvalidHandle);
  return *m_pKey;
}

CVRegKey CVRegKey::OpenSubKey(const std::string& path, uint32_t access) const {
  std::unique_ptr<CRegistryKey> key;
  Check(Key().OpenSubKey(path, access, key));
  return CVRegKey(std::move(key));
}

CVRegKey CVRegKey::CreateSubKey(const std::string& path, uint32_t access) const {
  std::unique_ptr<CRegistryKey> key;
  Check(Key().CreateSubKey(path, access, key));
  return CVRegKey(std::move(key));
}

void CVRegKey::SetNumber(const std::string& name, uint32_t value) const {
  std::string data(sizeof value, '\0');
  std::memcpy(data.data(), &value, sizeof value);
  Check(Key().SetValue(name, kRegDword, data));
}

void CVRegKey::SetRaw(const std::string& name, uint32_t type, const std::string& data) const {
  Check(Key().SetValue(name, type, data));
}

void CVRegKey::DeleteValue(const std::string& name) const {
  Check(Key().DeleteValue(name));
}

uint32_t CVRegKey::ValueType(const std::string& name) const {
  uint32_t type = 0;
  std::string data;
  const SystemError status = Key().QueryValue(name, type, data);
  if (status == kErrorFileNotFound) return 0;
  Check(status);
  return type;
}

uint32_t CVRegKey::ReadNumber(const std::string& name, uint32_t defaultValue) const {
  uint32_t type = 0;
  std::string data;
  const SystemError status = Key().QueryValue(name, type, data);
  if (status == kErrorFileNotFound) return defaultValue;
  Check(status);
  if (type == kRegNone) return defaultValue;
  if (type != kRegDword) throw CSystemException(kErrorInvalidData);
  if (data.size() > sizeof defaultValue) throw CSystemException(kErrorMoreData);
  // What a shorter value does not fill is 0.
  uint32_t value = 0;
  std::memcpy(&value, data.data(), data.size());
  return value;
}

std::string CVRegKey::ReadString(const std::string& name, const std::string& defaultValue) const {
  uint32_t type = 0;
  std::string data;
  const SystemError status = Key().QueryValue(name, type, data);
  if (status == kErrorFileNotFound) return defaultValue;
  Check(status);
  if (type == kRegNone) return defaultValue;
  if (type != kRegSz) throw CInvalidType(name);
  if (data.empty()) return defaultValue;
  return data.substr(0, data.find('\0'));
}

std::string CVRegKey::ReadRaw(const std::string& name) const {
  uint32_t type = 0;
  std::string data;
  Check(Key().QueryValue(name, type, data));
  return data;
}

}  // namespace kestra
